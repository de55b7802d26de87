/// \file
/// One record of the log: a line with its header, the further lines of its message, and its damage.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vorellog/LogLine.h"

namespace vorellog {

enum class Damage {
    None,
    Cut,       ///< the last line ends early: its writer was killed, or a header within the line starts the next record
    MidLine,   ///< the record starts in the middle of a line
    NoHeader,  ///< the line has no header and cannot belong to the previous record
    BadUtf8,   ///< the record contains invalid UTF-8 and has no other damage
};

inline constexpr std::size_t kDamages = 5;  ///< number of values, including None

/// "cut", "mid-line", "no header", "bad UTF-8"; empty for None.
std::string_view nameOf(Damage damage) noexcept;

class Record {
public:
    /// Starts a record with its first line and the header of that line.
    void start(std::string_view line, const std::optional<LogHeader>& header, Damage damage = Damage::None);

    /// Appends a line feed and a further line of the message.
    void addLine(std::string_view line);

    /// Appends to the last line.
    void extendLine(std::string_view bytes) { m_text += bytes; }

    void setDamage(Damage damage) noexcept { m_damage = damage; }
    [[nodiscard]] Damage damage() const noexcept { return m_damage; }

    /// The lines, separated by line feeds, without the last line end. Carriage returns directly before a line feed are
    /// not included.
    [[nodiscard]] const std::string& text() const noexcept { return m_text; }

    /// The header; null if there is none. A record without a header is damaged, and only its text is known.
    [[nodiscard]] const LogHeader* header() const noexcept { return m_header ? &*m_header : nullptr; }

    /// The host; empty for a record without a header.
    [[nodiscard]] std::string_view host() const noexcept;

    /// Prefix and message; the whole text of a record without a header.
    [[nodiscard]] std::string_view body() const noexcept;
    [[nodiscard]] LogBody parsedBody() const noexcept;

private:
    std::string m_text;
    std::optional<LogHeader> m_header;
    Damage m_damage = Damage::None;
};

}  // namespace vorellog
