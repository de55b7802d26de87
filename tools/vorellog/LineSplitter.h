/// \file
/// Cuts a stream of bytes, which comes in blocks, into lines. A line feed ends a line, and the carriage returns in
/// front of it belong to its end. Memory stays bounded: a line of more than kMostPieceBytes comes in pieces.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vorellog {

enum class LineEnd {
    Feed,      ///< as it should be
    MoreText,  ///< a piece of a line, which goes on
    File,      ///< the file ended within the line
};

/// A line, or a piece of one.
struct Line {
    std::string_view text;  ///< without its end; valid during the call that delivers it
    LineEnd end = LineEnd::Feed;
    bool begins = true;  ///< false for a piece that goes on with the one before
};

class LineSplitter {
public:
    static constexpr std::size_t kMostPieceBytes = std::size_t{1} << 20;

    explicit LineSplitter(std::function<void(const Line&)> deliver) : m_deliver(std::move(deliver)) {}

    /// Takes the next bytes, and delivers each line that ends in them.
    void add(std::string_view bytes);

    /// Delivers what has no end yet, and is ready for another file.
    void endOfFile();

    /// Whether bytes wait for the end of their line.
    [[nodiscard]] bool isWithinLine() const noexcept { return !m_rest.empty() || m_withinPieces; }

private:
    void deliver(std::string_view text, LineEnd end);
    void keep(std::string_view bytes);

    std::function<void(const Line&)> m_deliver;
    std::string m_rest;
    bool m_withinPieces = false;  ///< a piece of the current line was delivered
};

}  // namespace vorellog
