/// \file
/// Conversion of text line by line.
#pragma once

#include "Filter.h"

namespace conv {

/// Splits a stream of UTF-8 into lines. A line ends with LF or at the end of the text; a CR directly before this end is
/// dropped. A byte-order mark before the first line is dropped. A line that is not valid UTF-8 or contains a zero byte
/// is invalid input. Every line must fit into memory, and a line of more than 2^30 bytes is rejected.
class LineFilter : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) final;

protected:
    /// Converts `line`, which has no line end, and appends the result. Each line of the result ends with LF.
    /// \throws BadInput with an index relative to the start of the line.
    virtual void convertLine(const std::wstring& line, std::string& result) = 0;

    /// Called after the last line.
    virtual void finish(std::string&) {}

private:
    bool m_isFirst = true;  ///< no block has been converted yet
};

/// Appends `text` as UTF-8 and a line feed.
void appendLine(std::string& result, std::wstring_view text);

/// The form of a line in messages: in quotes, and truncated to 60 units.
std::wstring quoted(const std::wstring& line);

/// `line` without white space at either end.
std::wstring trimmed(const std::wstring& line);

}  // namespace conv
