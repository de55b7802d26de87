// Writes a log with lines of several kinds. Prints the expected fields of each line to the standard output.

#include <cstdio>
#include <string>

#include <windows.h>

#include <vorel/vorelCore.h>

namespace {

/// The computer name as in a log line: A to Z in lower case, and empty if the name has more than 15 characters or is
/// not available.
std::string computerName() {
    char name[16] = {};
    DWORD size = sizeof name;
    if (!GetComputerNameExA(ComputerNamePhysicalDnsHostname, name, &size)) {
        return {};
    }
    std::string lower(name);
    for (char& c : lower) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return lower;
}

class Expected {
public:
    void milliseconds() { m_milliseconds = "ms"; }

    void record(const char* kind, const char* cut, const char* message) const {
        std::printf("%s\t%s\t%lu\t%lu\t%s\t%s\t%s\n", m_milliseconds, m_host.c_str(), GetCurrentProcessId(),
                    GetCurrentThreadId(), kind, cut, message);
    }

private:
    const char* m_milliseconds = "";
    std::string m_host = computerName();
};

}  // namespace

int main() {
    const char* const path = "expression.log";
    vorel::Exception::SetErrorLogLocation(path, vorel::Exception::DefaultLogSize);
    Expected expected;

    const vorel::Exception failure(L"no such file: %ls", L"a.txt");
    expected.record("Vorel Error", "", "no such file: a.txt");

    vorel::Exception::warn("disk %d%% full: [C:]", 93);
    expected.record("WARN", "", "disk 93% full: [C:]");

    vorel::Exception::warn("two\nlines");
    expected.record("WARN", "", "two");
    std::printf("no record\tlines\n");

    vorel::Exception::log(path, vorel::Exception::DefaultLogSize, "Audit", "%s", "opened");
    expected.record("Audit", "", "opened");

    vorel::Exception::log(path, vorel::Exception::DefaultLogSize, "WARN Truncated", "%s", "a long text");
    expected.record("WARN", " Truncated", "a long text");

    vorel::Exception::warn(L"%ls", L"");
    expected.record("WARN", "", "");

    vorel::Exception::setDebugTarget(L"LogsIncludeMsecs", true);
    vorel::Exception::setDebugTarget(L"Parser", true);
    expected.milliseconds();
    vorel::Exception::debug(L"Parser", L"token %d: \x20AC", 12);
    expected.record("DEBUG", "", "Parser: token 12: \xE2\x82\xAC");
}
