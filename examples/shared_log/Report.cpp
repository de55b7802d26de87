#include "Report.h"

#include <sstream>

#include "support/Files.h"

namespace shared_log {

namespace {

// The last line of a report. A report without it is incomplete.
constexpr char kEnd[] = "end";

}  // namespace

std::string reportPath(const std::string& folder, unsigned long number) {
    return folder + "\\worker-" + std::to_string(number) + ".txt";
}

bool writeReport(const std::string& path, const Report& report) {
    std::ostringstream out;
    const RecordCounts& records = report.records;
    out << "process " << report.processId << '\n'
        << "records " << records.errors << ' ' << records.warnings << ' ' << records.debugs << '\n';
    for (const CheckedFile& file : report.files) {
        out << "file " << file.lines;
        for (const unsigned int line : file.damagedLines) {
            out << ' ' << line;
        }
        out << '\n';
    }
    out << kEnd << '\n';
    return examples::writeFile(path, out.str());
}

bool readReport(const std::string& path, Report& report) {
    for (const std::string& line : examples::split(examples::readFile(path).value_or(""), "\n")) {
        std::istringstream fields(line);
        std::string key;
        fields >> key;
        if (key == kEnd) {
            return true;
        }
        if (key == "process") {
            fields >> report.processId;
        } else if (key == "records") {
            fields >> report.records.errors >> report.records.warnings >> report.records.debugs;
        } else if (key == "file") {
            CheckedFile file;
            fields >> file.lines;
            for (unsigned int number = 0; fields >> number;) {
                file.damagedLines.push_back(number);
            }
            report.files.push_back(std::move(file));
        }
    }
    return false;
}

}  // namespace shared_log
