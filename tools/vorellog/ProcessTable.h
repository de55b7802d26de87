/// \file
/// Assigns small numbers to the processes of a log, so that counts by process need little memory. Memory is bounded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/Record.h"

namespace vorellog {

/// The number of a process. Processes are numbered from 0, in the order of their first records.
using ProcessNumber = std::uint32_t;

class ProcessTable {
public:
    static constexpr std::size_t kMaxProcesses = 65536;

    /// The number that all processes beyond the limit share.
    static constexpr ProcessNumber kOthers = kMaxProcesses;

    /// The number of the process that wrote `record`, whose header is `header`.
    ProcessNumber numberOf(const Record& record, const LogHeader& header);

    /// "host7.4312". `number` must not be kOthers.
    [[nodiscard]] std::string nameOf(ProcessNumber number) const;

    /// Number of processes, up to the limit.
    [[nodiscard]] std::size_t size() const noexcept { return m_order.size(); }

private:
    template <class Text>
    struct Key {
        Text host;
        unsigned long process = 0;
    };
    struct Less {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(const Key<A>& a, const Key<B>& b) const noexcept {
            return a.process != b.process ? a.process < b.process : a.host < b.host;
        }
    };
    // Not a hash table, because a log may contain ids whose hashes collide.
    using Numbers = std::map<Key<std::string>, ProcessNumber, Less>;

    Numbers m_numbers;
    std::vector<const Numbers::value_type*> m_order;
};

/// A set of process numbers.
class ProcessSet {
public:
    /// Adds a process. All processes with the number `kOthers`, and all processes beyond the current range of a set
    /// that may not grow, are counted together as one process.
    void add(ProcessNumber number, bool mayGrow);

    [[nodiscard]] std::size_t size() const noexcept { return m_size; }

    [[nodiscard]] bool contains(ProcessNumber number) const noexcept {
        return number / kBits < m_bits.size() && (m_bits[number / kBits] >> (number % kBits) & 1U) != 0;
    }

    [[nodiscard]] std::size_t sizeBytes() const noexcept { return m_bits.size() * sizeof m_bits[0]; }

    /// Whether processes beyond a limit were added. All of them are counted together as one process.
    [[nodiscard]] bool hasOthers() const noexcept { return m_hasOthers; }

private:
    static constexpr std::size_t kBits = 64;  ///< bits of a word

    std::vector<std::uint64_t> m_bits;
    std::size_t m_size = 0;
    ProcessNumber m_last = ProcessTable::kOthers + 1;  ///< the process that was added last; initially none
    bool m_hasOthers = false;
};

}  // namespace vorellog
