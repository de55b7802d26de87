/// \file
/// Selects records. Several values for one field are alternatives. A record must match every field for which a value is
/// given.
///
/// A damaged record is matched by its readable parts. A record without a header has no process, thread, prefix or time,
/// so a filter on one of these fields rejects the record.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/Pattern.h"
#include "vorellog/Record.h"

namespace vorellog {

/// A process id, on any host or on one host.
struct ProcessChoice {
    unsigned long id = 0;
    /// nullopt: any host. An empty text: only records whose host is empty. The case of A to Z is ignored.
    std::optional<std::string> host{};
};

struct FilterChoices {
    std::vector<ProcessChoice> processes{};
    std::vector<unsigned long> threads{};
    std::vector<std::string> prefixes{};  ///< without the colon; the case of A to Z is ignored
    /// A record must contain one of `texts`, or match one of `patterns`, in its prefix and message. If both are empty,
    /// they exclude no record.
    std::vector<std::string> texts{};
    std::vector<std::shared_ptr<const Pattern>> patterns{};
    bool ignoreCase = false;  ///< ignores the case of A to Z in `texts`
    bool invert = false;      ///< selects records without any of `texts` and `patterns`, which must not both be empty
    std::optional<LocalMs> from{};  ///< inclusive
    std::optional<LocalMs> to{};    ///< exclusive
    bool damagedOnly = false;
};

/// Compares texts, ignoring the case of A to Z.
[[nodiscard]] bool equalButForCase(std::string_view a, std::string_view b) noexcept;

class RecordFilter {
public:
    explicit RecordFilter(FilterChoices choices);

    [[nodiscard]] bool matches(const Record& record) const { return matches({&record, 1}); }

    /// Whether an entry matches, that is, whether one of its records matches. With `invert`, one record must match the
    /// choices other than `texts` and `patterns`, and no record of the entry may match one of `texts` and `patterns`.
    [[nodiscard]] bool matches(std::span<const Record> records) const;

    /// Whether only a record with a header can match.
    [[nodiscard]] bool needsHeader() const noexcept { return m_needsHeader; }

private:
    [[nodiscard]] bool matchesKind(const Record& record) const;
    [[nodiscard]] bool matchesHeader(const Record& record) const;
    [[nodiscard]] bool matchesTexts(std::string_view text) const;

    FilterChoices m_choices;
    bool m_needsHeader;
};

}  // namespace vorellog
