/// \file
/// Conversions of a text line by line.
#pragma once

#include "Filter.h"

namespace conv {

/// Takes a stream of UTF-8 apart into lines. They end with a line feed, or a carriage return and a line feed; at the
/// end of the text nothing is needed. A line has to fit into memory. A byte-order mark in front of the first one is
/// left out.
class LineFilter : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) final;

protected:
    /// Appends the result for one line, its end included.
    /// \throws BadInput, with an index of 0 or within the line.
    virtual void convertLine(const std::wstring& line, std::string& result) = 0;

    /// Behind the last line.
    virtual void finish(std::string&) {}

private:
    bool m_isFirst = true;  ///< nothing of the text has been seen
};

/// Appends `text` in UTF-8, and the end of a line.
void appendLine(std::string& result, std::wstring_view text);

/// A line as a message shows it: in quotes, and cut when it is long.
std::wstring shown(const std::wstring& line);

/// Without white space at either end.
std::wstring trimmed(const std::wstring& line);

}  // namespace conv
