#include "support/CapturedChild.h"

#include <stdexcept>
#include <thread>

namespace test {

namespace {

/// A pipe. A child process inherits only the end that `inheritable` was called with.
struct Pipe {
    Pipe() {
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        if (!CreatePipe(&readEnd, &writeEnd, nullptr, 0)) {
            throw std::runtime_error("cannot create a pipe");
        }
        reader = Handle(readEnd);
        writer = Handle(writeEnd);
    }

    Handle reader;
    Handle writer;
};

HANDLE inheritable(const Handle& handle) {
    if (!SetHandleInformation(handle.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT)) {
        throw std::runtime_error("cannot make a pipe inheritable");
    }
    return handle.get();
}

void writeAll(Handle& pipe, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!WriteFile(pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
            break;  // the child closed its end of the pipe
        }
        bytes.remove_prefix(written);
    }
    pipe.close();
}

void readAll(const Handle& pipe, std::string& bytes) {
    char block[65536];
    for (DWORD count = 0; ReadFile(pipe.get(), block, sizeof block, &count, nullptr) && count != 0;) {
        bytes.append(block, count);
    }
}

}  // namespace

Captured capture(const std::wstring& program, const std::vector<std::wstring>& arguments, std::string_view input,
                 ChildOptions options) {
    Pipe in;
    Pipe out;
    Pipe error;
    options.input = inheritable(in.reader);
    options.output = inheritable(out.writer);
    options.error = inheritable(error.writer);
    const ChildProcess child(program, arguments, options);
    // Reading from a pipe ends only after every handle to its write end is closed. Writing fails only after every
    // handle to its read end is closed. So this process closes its handles to the ends that the child uses.
    in.reader.close();
    out.writer.close();
    error.writer.close();

    Captured result;
    std::thread writerThread([&] { writeAll(in.writer, input); });
    std::thread readerThread([&] { readAll(error.reader, result.error); });
    readAll(out.reader, result.output);
    writerThread.join();
    readerThread.join();
    (void)child.wait();
    result.exitCode = child.exitCode();
    return result;
}

}  // namespace test
