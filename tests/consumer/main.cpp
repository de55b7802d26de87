// A user's program. It formats texts, fills arrays, throws, catches and logs, and checks the results. It is built with
// the DLL, and again with the static library.
//
//     consumer <log file>        exit code 0 if all results are as documented

#include <vorel/vorelCore.h>

#include <cstdio>
#include <string>

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    std::printf("%s: %s\n", holds ? "ok" : "FAILED", what);
    failures += holds ? 0 : 1;
}

/// Throws an exception to which a handler adds a record, as the handlers in the operations of the library do.
void failInTwoLayers() {
    try {
        throw vorel::Exception(L"no entry named %ls", L"colour");
    } catch (vorel::Exception& exception) {
        exception.rethrowClass(L"Settings", L"read");
    }
}

void checkVersion() {
    expect(std::string(vorel::version()) == VOREL_VERSION_STRING, "library and headers have the same version");
}

void useStringsAndArrays() {
    vorel::BaseString<wchar_t> line;
    line.format(L"%ls = %d", L"width", 640);
    expect(line == L"width = 640", "a string is formatted");

    vorel::Array<int> squares;
    for (int number = 0; number != 5; ++number) {
        squares.append(number * number);
    }
    expect(squares.size() == 5 && squares[4] == 16, "an array contains the appended elements");

    bool thrown = false;
    try {
        squares[5] = 25;
    } catch (const vorel::InvalidIndexException&) {
        thrown = true;
    }
    expect(thrown, "an invalid index throws InvalidIndexException");
}

void useExceptionsAndLog(const char* logPath) {
    vorel::Exception::SetErrorLogLocation(logPath, vorel::Exception::DefaultLogSize);
    vorel::BaseString<wchar_t> messages;
    try {
        failInTwoLayers();
    } catch (vorel::Exception& exception) {
        messages = exception.getErrorMessageBlock(L" | ");
    }
    expect(messages == L"no entry named colour | Settings::read: Vorel exception rethrown",
           "an exception keeps all its messages when it is rethrown");

    // Uses the files of the C runtime, because the file streams of this toolchain's C++ library do not work with the
    // UCRT.
    std::FILE* const log = std::fopen(logPath, "r");
    unsigned int found = 0;
    char text[256];
    while (log && std::fgets(text, sizeof text, log)) {
        const std::string line = text;
        found += line.find("no entry named colour") != std::string::npos ? 1 : 0;
        found += line.find("Settings::read: Vorel exception rethrown") != std::string::npos ? 1 : 0;
    }
    if (log) {
        (void)std::fclose(log);
    }
    expect(found == 2, "the error log has one line for each message");
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::puts("usage: consumer <log file>");
        return 2;
    }
    try {
        checkVersion();
        useStringsAndArrays();
        useExceptionsAndLog(arguments[1]);
    } catch (...) {
        expect(false, "no uncaught exception");
    }
    return failures == 0 ? 0 : 1;
}
