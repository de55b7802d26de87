#include "exploration/RuntimeFiles.h"

#include <cerrno>

#include <fcntl.h>
#include <share.h>

// A title in quotation marks names a page of the documentation of the C runtime.

namespace exploration {

namespace {

/// "_doserrno, errno, _sys_errlist": how the runtime converts errors of the system.
int runtimeError(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND: return ENOENT;
    case ERROR_ALREADY_EXISTS:
    case ERROR_FILE_EXISTS: return EEXIST;
    case ERROR_INVALID_HANDLE: return EBADF;
    case ERROR_DISK_FULL: return ENOSPC;
    default: return EACCES;
    }
}

int fail() {
    errno = runtimeError(GetLastError());
    return -1;
}

}  // namespace

/// "_sopen_s": _SH_DENYNO shares reading and writing, but not deletion.
int RuntimeFiles::open(int& descriptor, const char* path, int flags, int sharing) {
    const DWORD shared = sharing == _SH_DENYNO ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0;
    HANDLE const handle =
        m_files.open(path, GENERIC_WRITE, shared, (flags & _O_CREAT) != 0 ? OPEN_ALWAYS : OPEN_EXISTING);
    if (handle == INVALID_HANDLE_VALUE) {
        descriptor = -1;
        fail();
        return errno;
    }
    descriptor = m_nextDescriptor++;
    m_descriptors[descriptor] = {handle, (flags & _O_APPEND) != 0};
    return 0;
}

HANDLE RuntimeFiles::handle(int descriptor) const {
    const auto found = m_descriptors.find(descriptor);
    return found == m_descriptors.end() ? nullptr : found->second.handle;
}

int RuntimeFiles::close(int descriptor) {
    const HANDLE closed = handle(descriptor);
    m_descriptors.erase(descriptor);
    return m_files.close(closed) ? 0 : fail();
}

std::FILE* RuntimeFiles::stream(int descriptor) {
    auto created = std::make_unique<Stream>();
    created->descriptor = descriptor;
    auto* const stream = reinterpret_cast<std::FILE*>(created.get());
    m_streams[stream] = std::move(created);
    return stream;
}

/// Writes the first `bytes` bytes of the buffer in one call. "Text and binary mode file I/O": a line feed becomes a
/// carriage return and a line feed.
bool RuntimeFiles::write(Stream& stream, std::size_t bytes) {
    std::string text;
    for (const char c : stream.buffer.substr(0, bytes)) {
        text += c == '\n' ? "\r\n" : std::string(1, c);
    }
    stream.buffer.erase(0, bytes);
    const Descriptor& descriptor = m_descriptors.at(stream.descriptor);
    return text.empty() ||
           (descriptor.appends ? m_files.append(descriptor.handle, text) : m_files.write(descriptor.handle, text));
}

void RuntimeFiles::print(std::FILE* file, std::string_view text) {
    constexpr std::size_t kBuffer = 4096;  // the size of a stream's buffer in the runtime
    Stream& stream = *m_streams.at(file);
    stream.buffer += text;
    while (stream.buffer.size() > kBuffer) {
        write(stream, kBuffer);
    }
}

int RuntimeFiles::flush(std::FILE* file) {
    Stream& stream = *m_streams.at(file);
    return write(stream, stream.buffer.size()) ? 0 : fail();
}

int RuntimeFiles::close(std::FILE* file) {
    const int flushed = flush(file);
    const int descriptor = m_streams.at(file)->descriptor;
    m_streams.erase(file);
    const int closed = close(descriptor);
    return flushed == 0 ? closed : flushed;
}

int RuntimeFiles::remove(const char* path) {
    return m_files.remove(path) ? 0 : fail();
}

int RuntimeFiles::rename(const char* from, const char* to) {
    return m_files.move(from, to) ? 0 : fail();
}

}  // namespace exploration
