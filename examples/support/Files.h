/// \file
/// Reading and writing whole files. Uses <cstdio> instead of <fstream>, because this compiler's C++ runtime was built
/// for an older C runtime. So the size of a file stream in the C++ runtime differs from the size in the headers.
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
