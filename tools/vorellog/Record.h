/// \file
/// What one write to the log left: a line with its header, the further lines of its message, and what is wrong with it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vorellog/LogLine.h"

namespace vorellog {

enum class Damage {
    None,
    Cut,       ///< its writer was ended before the end of the line, or its message contains a header
    MidLine,   ///< its header is in the middle of a line: it follows one that was cut, or a message imitates a header
    NoHeader,  ///< nothing says who wrote it, and there is no record that it could belong to
    BadUtf8,   ///< it has bytes that are not UTF-8
};

inline constexpr std::size_t kDamages = 5;  ///< number of the values, None among them

/// "cut", "mid-line", "no header", "bad UTF-8"; empty for none.
std::string_view nameOf(Damage damage) noexcept;

class Record {
public:
    /// A record that begins with `line`, whose header is `header`.
    void start(std::string_view line, const std::optional<LogHeader>& header, Damage damage = Damage::None);

    /// A further line of the message. In the text a line feed stands between lines.
    void addLine(std::string_view line);

    /// More bytes of the last line.
    void extendLine(std::string_view bytes) { m_text += bytes; }

    void setDamage(Damage damage) noexcept { m_damage = damage; }
    [[nodiscard]] Damage damage() const noexcept { return m_damage; }

    /// The lines as they stand in the log, without the last end.
    [[nodiscard]] const std::string& text() const noexcept { return m_text; }

    /// Null when there is none: then the record is a damaged one, and has nothing but a text.
    [[nodiscard]] const LogHeader* header() const noexcept { return m_header ? &*m_header : nullptr; }

    /// Empty without a header.
    [[nodiscard]] std::string_view host() const noexcept;

    /// Prefix and message; the whole text without a header.
    [[nodiscard]] std::string_view body() const noexcept;
    [[nodiscard]] LogBody parsedBody() const noexcept;

private:
    std::string m_text;
    std::optional<LogHeader> m_header;
    Damage m_damage = Damage::None;
};

}  // namespace vorellog
