/// \file
/// What a log holds, in numbers: records by process and prefix, damage, and how they spread over time.
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
    /// More pairs of process and prefix than this are counted together, under kOthers.
    static constexpr std::size_t kMostRows = 1000;
    static constexpr std::string_view kOthers = "(others)";

    void add(const Record& record);

    /// The summary for people: a table, and a bar for each step of time.
    [[nodiscard]] std::string text() const;

    /// The same as JSON objects, one in a line: "summary", then "count" for each row, then "step" for each step.
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
    Row m_all;  ///< records with a header
    std::array<unsigned long long, kDamages> m_damage{};
};

}  // namespace vorellog
