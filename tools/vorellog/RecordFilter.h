/// \file
/// Selects records. Values of one kind are alternatives; a record must match every kind that is given.
///
/// A damaged record is matched by what can still be read from it. A record without a header has no process, thread,
/// prefix or time, so a filter on one of these rejects it; only its text can match.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorellog/Record.h"

namespace vorellog {

struct FilterChoices {
    std::vector<unsigned long> processes{};
    std::vector<unsigned long> threads{};
    std::vector<std::string> prefixes{};  ///< without the colon; the case of A to Z is ignored
    std::vector<std::string> texts{};     ///< anywhere in prefix and message
    bool ignoreCase = false;              ///< ignores the case of A to Z in `texts`
    std::optional<LocalMs> from{};        ///< inclusive
    std::optional<LocalMs> to{};          ///< exclusive
    bool damagedOnly = false;
};

class RecordFilter {
public:
    explicit RecordFilter(FilterChoices choices);

    [[nodiscard]] bool matches(const Record& record) const;

    /// Whether only a record with a header can match.
    [[nodiscard]] bool needsHeader() const noexcept { return m_needsHeader; }

private:
    [[nodiscard]] bool matchesHeader(const Record& record) const;
    [[nodiscard]] bool matchesTexts(std::string_view text) const;

    FilterChoices m_choices;
    bool m_needsHeader;
};

}  // namespace vorellog
