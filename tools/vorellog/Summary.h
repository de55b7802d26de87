/// \file
/// Statistics of a log: records by process and prefix, damage, and records over time.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "vorellog/Histogram.h"
#include "vorellog/Record.h"

namespace vorellog {

class Summary {
public:
    /// Further pairs of process and prefix are counted together as kOthers.
    static constexpr std::size_t kMaxRows = 1000;
    static constexpr std::string_view kOthers = "(others)";

    void add(const Record& record);

    /// A readable summary: a table, and a bar for each time step.
    [[nodiscard]] std::string text() const;

    /// The summary as JSON, one object per line: "summary", a "count" for each row, a "step" for each time step.
    [[nodiscard]] std::string json() const;

private:
    struct Row {
        unsigned long long records = 0;
        LocalMs firstMs = 0;
        LocalMs lastMs = 0;

        void add(LocalMs time) noexcept;
    };
    using Key = std::pair<std::string, std::string>;  ///< "host7.4312", "WARN"

    Row& rowOf(const Record& record, const LogHeader& header);
    [[nodiscard]] unsigned long long damaged() const noexcept;
    [[nodiscard]] unsigned long long entries() const noexcept;
    [[nodiscard]] std::string damageText() const;
    [[nodiscard]] std::string table() const;
    [[nodiscard]] std::string bars() const;
    void appendHead(std::string& out) const;
    static void appendRow(std::string& out, const Key& key, const Row& row);

    std::map<Key, Row> m_rows;
    Histogram m_histogram;
    Row m_all;  ///< all records with a header
    std::array<unsigned long long, kDamages> m_damage{};
};

}  // namespace vorellog
