/// \file
/// Which records are wanted. Choices of one kind are alternatives; all kinds that are given have to hold.
///
/// A damaged record has what can still be read from it. One without a header has no process, thread, prefix and time,
/// so no choice among these takes it; only its text can be looked for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorellog/Record.h"

namespace vorellog {

struct FilterChoices {
    std::vector<unsigned long> processes{};
    std::vector<unsigned long> threads{};
    std::vector<std::string> prefixes{};  ///< without their colon; letters of A to Z in either case
    std::vector<std::string> texts{};     ///< anywhere in prefix and message
    bool ignoreCase = false;              ///< of the letters A to Z in the texts
    std::optional<LocalMs> from{};
    std::optional<LocalMs> to{};  ///< the first millisecond that is not wanted any more
    bool damagedOnly = false;
};

class Filter {
public:
    explicit Filter(FilterChoices choices);

    [[nodiscard]] bool matches(const Record& record) const;

    /// Whether no record without a header can match.
    [[nodiscard]] bool needsHeader() const noexcept { return m_needsHeader; }

private:
    [[nodiscard]] bool matchesHeader(const Record& record) const;
    [[nodiscard]] bool matchesTexts(std::string_view text) const;

    FilterChoices m_choices;
    bool m_needsHeader;
};

}  // namespace vorellog
