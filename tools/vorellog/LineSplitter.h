/// \file
/// Splits a stream of bytes into lines. A line ends with a line feed. Carriage returns directly before the line feed
/// are removed. Memory is bounded: a line of more than kMaxPieceBytes bytes is delivered in pieces. Carriage returns at
/// the end of a piece are kept if the line feed does not follow directly.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vorellog {

enum class LineEnd {
    Feed,      ///< a line feed
    MoreText,  ///< the line continues in the next piece
    File,      ///< the file ended within the line
};

/// A line, or a piece of a line.
struct Line {
    std::string_view text;  ///< without the line end; valid only while the line is delivered
    LineEnd end = LineEnd::Feed;
    bool begins = true;  ///< false if this piece continues the previous piece
};

class LineSplitter {
public:
    static constexpr std::size_t kMaxPieceBytes = std::size_t{1} << 20;

    explicit LineSplitter(std::function<void(const Line&)> deliver) : m_deliver(std::move(deliver)) {}

    /// Processes the next bytes of the stream. Delivers each line that ends in these bytes, and each full piece of a
    /// longer line.
    void add(std::string_view bytes);

    /// Delivers the incomplete last line, if there is one. The next bytes belong to another file.
    void endOfFile();

    /// Whether the last line is incomplete.
    [[nodiscard]] bool isWithinLine() const noexcept { return !m_rest.empty() || m_withinPieces; }

private:
    void deliver(std::string_view text, LineEnd end);
    void keep(std::string_view bytes);

    std::function<void(const Line&)> m_deliver;
    std::string m_rest;
    bool m_withinPieces = false;  ///< a piece of the current line has been delivered
};

}  // namespace vorellog
