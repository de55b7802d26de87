/// \file
/// A model of the C runtime's files: descriptors and streams in text mode. It calls the model of the system's files,
/// `FileSystem`.
#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <windows.h>

#include "exploration/FileSystem.h"

namespace exploration {

/// Calls that return an error also set `errno`. `print` does not report failures.
class RuntimeFiles {
public:
    explicit RuntimeFiles(FileSystem& files) : m_files(files) {}

    /// `_sopen_s` with _O_WRONLY. Of the other flags, only _O_CREAT and _O_APPEND have an effect. Every `sharing`
    /// except _SH_DENYNO denies all sharing. Returns 0 or the error.
    int open(int& descriptor, const char* path, int flags, int sharing);

    /// The handle of a descriptor of this model; null for other descriptors.
    [[nodiscard]] HANDLE handle(int descriptor) const;

    int close(int descriptor);
    std::FILE* stream(int descriptor);

    /// Whether `stream` belongs to this model. The functions below with a stream parameter accept only such streams.
    [[nodiscard]] bool owns(const std::FILE* stream) const { return m_streams.contains(stream); }
    void print(std::FILE* file, std::string_view text);
    int flush(std::FILE* file);
    int close(std::FILE* file);

    int remove(const char* path);
    int rename(const char* from, const char* to);

private:
    struct Descriptor {
        HANDLE handle;
        bool appends;
    };

    struct Stream {
        int descriptor;
        std::string buffer;
    };

    bool write(Stream& stream, std::size_t bytes);

    FileSystem& m_files;
    std::map<int, Descriptor> m_descriptors;
    std::map<const std::FILE*, std::unique_ptr<Stream>> m_streams;
    int m_nextDescriptor = 1000;  // larger than any descriptor that the runtime gives to these tests
};

}  // namespace exploration
