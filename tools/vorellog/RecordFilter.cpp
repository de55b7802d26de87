#include "vorellog/RecordFilter.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace vorellog {

namespace {

char lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool areSameLetter(char a, char b) noexcept {
    return lower(a) == lower(b);
}

/// An empty list accepts every value.
template <class T, class U>
bool isAmong(const std::vector<T>& choices, const U& value) {
    return choices.empty() || std::find(choices.begin(), choices.end(), value) != choices.end();
}

/// An empty list accepts every process.
bool isAmong(const std::vector<ProcessChoice>& choices, std::string_view host, unsigned long process) {
    return choices.empty() || std::any_of(choices.begin(), choices.end(), [&](const ProcessChoice& each) {
               return each.id == process && (!each.host || equalButForCase(*each.host, host));
           });
}

}  // namespace

bool equalButForCase(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), areSameLetter);
}

RecordFilter::RecordFilter(FilterChoices choices)
    : m_choices(std::move(choices)),
      m_needsHeader(!m_choices.processes.empty() || !m_choices.threads.empty() || !m_choices.prefixes.empty() ||
                    m_choices.from || m_choices.to) {}

bool RecordFilter::matches(std::span<const Record> records) const {
    const auto hasText = [this](const Record& record) { return matchesTexts(record.body()); };
    if (m_choices.invert) {
        return std::any_of(records.begin(), records.end(), [this](const Record& each) { return matchesKind(each); }) &&
               std::none_of(records.begin(), records.end(), hasText);
    }
    return std::any_of(records.begin(), records.end(),
                       [&](const Record& each) { return matchesKind(each) && hasText(each); });
}

bool RecordFilter::matchesKind(const Record& record) const {
    return (!m_choices.damagedOnly || record.damage() != Damage::None) && (!m_needsHeader || matchesHeader(record));
}

bool RecordFilter::matchesHeader(const Record& record) const {
    const LogHeader* const header = record.header();
    if (!header || !isAmong(m_choices.processes, record.host(), header->processId) ||
        !isAmong(m_choices.threads, header->threadId) || header->timeMs < m_choices.from.value_or(header->timeMs) ||
        (m_choices.to && header->timeMs >= *m_choices.to)) {
        return false;
    }
    const auto& prefixes = m_choices.prefixes;
    const std::string_view prefix = prefixes.empty() ? std::string_view() : record.parsedBody().prefix;
    return prefixes.empty() || std::any_of(prefixes.begin(), prefixes.end(),
                                           [&](const std::string& each) { return equalButForCase(each, prefix); });
}

bool RecordFilter::matchesTexts(std::string_view text) const {
    const auto isIn = [&](const std::string& wanted) {
        if (!m_choices.ignoreCase) {
            return text.find(wanted) != std::string_view::npos;
        }
        return wanted.empty() ||
               std::search(text.begin(), text.end(), wanted.begin(), wanted.end(), areSameLetter) != text.end();
    };
    const auto& [texts, patterns] = std::tie(m_choices.texts, m_choices.patterns);
    return (texts.empty() && patterns.empty()) || std::any_of(texts.begin(), texts.end(), isIn) ||
           std::any_of(patterns.begin(), patterns.end(), [text](const auto& each) { return each->isIn(text); });
}

}  // namespace vorellog
