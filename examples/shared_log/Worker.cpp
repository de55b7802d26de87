#include "Worker.h"

#include <cstddef>
#include <string_view>

#include <windows.h>

#include <vorel/vorelCore.h>

#include "support/Files.h"

namespace shared_log {

namespace {

constexpr wchar_t kDebugTarget[] = L"SharedLog";

/// The file name without its folders, for messages.
std::string_view nameOf(std::string_view path) {
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

/// Converts `line` to wide text and back. Returns whether the line contains characters outside ASCII.
bool convertAndCompare(const std::string& line) {
    try {
        // If the line ends with a lead byte, the decoder reads trailing bytes past the end of the line. It then reads
        // the zeros that are appended here.
        constexpr std::size_t kLongestSequence = 6;
        std::string input = line;
        input.append(kLongestSequence, '\0');

        vorel::BaseString<wchar_t> wide;
        vorel::util::ConvertUTF8toString(wide, input.c_str(), static_cast<int>(line.size()), true);
        vorel::BaseString<char> narrow;
        vorel::util::ConvertStringtoUTF8(wide.c_str(), narrow, static_cast<int>(wide.length()));
        if (narrow.view() != line) {
            throw vorel::DiffErrorException(L"%u bytes became %u other bytes", static_cast<unsigned int>(line.size()),
                                            narrow.length());
        }
        return vorel::util::ContainsUnicode(wide);
    } catch (vorel::Exception& e) {
        e.rethrowClass(L"Line", L"convertAndCompare");
    } catch (...) {
        vorel::Exception::throwSevereClass(L"Line", L"convertAndCompare");
    }
}

bool checkLine(const char* file, unsigned int number, const std::string& line) {
    try {
        return convertAndCompare(line);
    } catch (vorel::Exception& e) {
        e.rethrowGeneric(L"%hs, line %u", file, number);
    } catch (...) {
        vorel::Exception::throwSevereGeneric(L"%hs, line %u", file, number);
    }
}

}  // namespace

Report Worker::run(const std::vector<std::string>& files) {
    m_report = {};
    m_report.processId = GetCurrentProcessId();
    for (const std::string& file : files) {
        checkFile(file);
    }
    return m_report;
}

void Worker::checkFile(const std::string& path) {
    using vorel::Exception;
    const std::string name(nameOf(path));
    CheckedFile& file = m_report.files.emplace_back();
    RecordCounts& records = m_report.records;

    for (const std::string& line : examples::split(examples::readFile(path).value_or(""), "\n")) {
        ++file.lines;
        try {
            if (checkLine(name.c_str(), file.lines, line)) {
                Exception::debug(kDebugTarget, L"%hs, line %u has characters outside ASCII", name.c_str(), file.lines);
                ++records.debugs;
            }
        } catch (Exception& e) {
            records.errors += e.getMessageTotal() + 1;  // the records of the exception and the record of this handler
            file.damagedLines.push_back(file.lines);
            e.catchClass(L"Worker", L"checkFile");
        }
    }
    if (!file.damagedLines.empty()) {
        Exception::warn(L"%hs: %u of %u lines are damaged", name.c_str(),
                        static_cast<unsigned int>(file.damagedLines.size()), file.lines);
        ++records.warnings;
    }
    Exception::debug(kDebugTarget, L"%hs: done", name.c_str());
    ++records.debugs;
}

}  // namespace shared_log
