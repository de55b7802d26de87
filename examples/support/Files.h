/// \file
/// Text files, read whole. By the C runtime and not by <fstream>: this compiler's C++ runtime was built for an older C
/// runtime, and its file streams have another size than the headers say.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace examples {

/// The bytes of a file as they stand; nothing when it cannot be read.
std::optional<std::string> readFile(const std::string& path);

bool writeFile(const std::string& path, std::string_view content);

/// The pieces of `text` between `separator`s. A last piece that no separator ends counts too, unless it is empty.
std::vector<std::string> split(std::string_view text, std::string_view separator);

}  // namespace examples
