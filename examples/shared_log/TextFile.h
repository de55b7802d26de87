/// \file
/// Reading whole files through the C runtime: the file streams of this toolchain's C++ library do not work under the
/// universal runtime.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace shared_log {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

inline File openForReading(const std::string& path) {
    return {std::fopen(path.c_str(), "rb"), std::fclose};
}

inline bool isReadable(const std::string& path) {
    return openForReading(path) != nullptr;
}

/// The bytes of a file; empty when it cannot be read.
inline std::string readWhole(const std::string& path) {
    const File file = openForReading(path);
    std::string bytes;
    char block[4096];
    while (const std::size_t count = file ? std::fread(block, 1, sizeof block, file.get()) : 0) {
        bytes.append(block, count);
    }
    return bytes;
}

}  // namespace shared_log
