/// \file
/// Reading and writing whole files. Uses <cstdio>, because file streams (<fstream>) crash with GCC 12 and UCRT: its C++
/// runtime was built for an older C runtime, in which a stream object has another size.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace examples {

/// The bytes of a file, up to the first read error; nullopt if the file cannot be opened.
std::optional<std::string> readFile(const std::string& path);

/// Replaces the file. Returns false if it cannot be written.
bool writeFile(const std::string& path, std::string_view content);

/// The pieces of `text` that end at a `separator`, and the rest of the text unless it is empty.
std::vector<std::string> split(std::string_view text, std::string_view separator);

}  // namespace examples
