/// \file
/// Creates records from log lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vorellog/RecordReader.h"

namespace test {

/// The header of a line written on 2026-11-16 at `clock`.
inline std::string header(unsigned long thread = 9876, unsigned long process = 4312,
                          std::string_view clock = "01:43:08") {
    return "[Mon Nov 16 " + std::string(clock) + " 2026] host7." + std::to_string(process) + "." +
           std::to_string(thread) + ": ";
}

/// The records that a RecordReader creates from `lines`.
inline std::vector<vorellog::Record> recordsOf(const std::vector<std::string>& lines) {
    std::vector<vorellog::Record> records;
    vorellog::RecordReader reader([&](const vorellog::Record& record) { records.push_back(record); });
    for (const std::string& line : lines) {
        reader.add({line});
    }
    reader.flush();
    return records;
}

inline vorellog::Record recordOf(const std::string& line) {
    return recordsOf({line}).front();
}

}  // namespace test
