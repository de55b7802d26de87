#include "vorellog/ProcessTable.h"

namespace vorellog {

ProcessNumber ProcessTable::numberOf(const Record& record, const LogHeader& header) {
    const Key<std::string_view> key{record.host(), header.processId};
    const auto found = m_numbers.find(key);
    if (found != m_numbers.end()) {
        return found->second;
    }
    if (m_numbers.size() == kMaxProcesses) {
        return kOthers;
    }
    const auto number = static_cast<ProcessNumber>(m_order.size());
    const auto added = m_numbers.emplace(Key<std::string>{std::string(key.host), key.process}, number).first;
    m_order.push_back(&*added);
    return number;
}

std::string ProcessTable::nameOf(ProcessNumber number) const {
    const auto& key = m_order[number]->first;
    return key.host + '.' + std::to_string(key.process);
}

void ProcessSet::add(ProcessNumber number, bool mayGrow) {
    if (number == m_last) {
        return;
    }
    m_last = number;
    const std::size_t word = number / kBits;
    if (number >= ProcessTable::kOthers || (word >= m_bits.size() && !mayGrow)) {
        m_size += m_hasOthers ? 0U : 1U;
        m_hasOthers = true;
        return;
    }
    if (word >= m_bits.size()) {
        m_bits.resize(word + 1);
    }
    const std::uint64_t bit = std::uint64_t{1} << (number % kBits);
    m_size += (m_bits[word] & bit) == 0 ? 1U : 0U;
    m_bits[word] |= bit;
}

}  // namespace vorellog
