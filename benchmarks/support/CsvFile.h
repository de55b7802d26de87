/// \file
/// Writes CSV files as RFC 4180 defines them: a field with a comma, a quotation mark or a line end is quoted, and lines
/// end in CR LF. Texts are UTF-8.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

inline std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + '"';
}

inline std::string csvField(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.4f", value);
    return text;
}

/// Joins the fields, with commas between them, to a line. There must be at least one field. The fields are written
/// unchanged, so `csvField` must have quoted those fields that need quotes.
inline std::string csvLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        line += field + ',';
    }
    line.pop_back();
    return line + "\r\n";
}

/// Replaces the file. Returns whether everything was written. If not, prints the reason.
inline bool writeFile(const std::string& path, std::string_view text) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (!file) {
        std::perror(path.c_str());
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !written) {
        std::perror(path.c_str());
        return false;
    }
    return true;
}

}  // namespace bench
