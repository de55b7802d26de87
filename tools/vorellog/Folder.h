/// \file
/// Folds the records that one exception left on its way into one trail:
///
///     Vorel Error: line 7 is no number                     the failure
///     Vorel Error: Parser::run: Vorel exception rethrown   where it passed
///     Vorel Error: Import::main: Vorel exception caught    where it ended
///
/// The log does not say which records belong together, so a trail is found by its writer and by the form of its
/// records. Those of one thread follow each other in the order in which it wrote them, and "…caught" ends a trail. A
/// program may also catch an exception without a record; then its trail ends where the thread says something that this
/// exception cannot have said:
///
///   - "…: Severe error thrown" and "…: TestAndThrow test failed" always begin another one;
///   - a message that the trail already has, and a place that it passed before an earlier message, belong to the next
///     failure of the same kind ("row 7" and "row 8" are the same: digits do not count);
///   - after kTrailGapMs of silence nothing belongs to it any more.
///
/// A record whose header is in the middle of a line joins no trail and ends none: a message may have forged it.
///
/// Everything comes out in the order of its first record; what is no exception's passes through. Memory is bounded.
#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "vorellog/Record.h"
#include "vorellog/TrailStep.h"

namespace vorellog {

/// How a trail ended.
enum class TrailEnd {
    Caught,
    Suppressed,  ///< by a destructor, while another exception was on its way
    Open,        ///< no record tells
};

/// "caught", "suppressed", "open".
std::string_view nameOf(TrailEnd end) noexcept;

/// The records of one exception, in their order; or one record that is none of an exception.
struct Trail {
    std::vector<Record> records;
    bool isException = false;
    TrailEnd end = TrailEnd::Open;
};

class Folder {
public:
    static constexpr LocalMs kTrailGapMs = 5000;
    static constexpr std::size_t kMostRecords = 512;                         ///< of one trail
    static constexpr std::size_t kMostWaiting = 8192;                        ///< records that have not come out
    static constexpr std::size_t kMostBytesWaiting = std::size_t{32} << 20;  ///< of their texts

    /// `deliver` may look at the trail while it is called.
    explicit Folder(std::function<void(const Trail&)> deliver) : m_deliver(std::move(deliver)) {}

    void add(const Record& record);

    /// Delivers everything, with the open trails as far as they have come.
    void flush();

private:
    using Writer = std::tuple<std::string, unsigned long, unsigned long>;  ///< host, process, thread

    /// A trail that waits for its end, or for its turn.
    struct Waiting {
        Writer writer;
        Trail trail;
        std::vector<unsigned long long> numbers;  ///< of its records, in the order of the log
        LocalMs lastMs = 0;
        bool isOpen = false;
    };
    using Place = std::list<Waiting>::iterator;

    void addSingle(const Record& record, bool isException);
    void addToTrail(const Record& record, const LogHeader& header, TrailStep step);
    Place openTrail(const Writer& writer);
    Place begin(const Writer& writer);
    void append(Place place, const Record& record);
    Place splitBefore(Place place, std::size_t index);
    void close(Place place, TrailEnd end);
    void deliverWhatCan();
    void deliverFront();

    std::function<void(const Trail&)> m_deliver;
    std::list<Waiting> m_waiting;
    std::map<Writer, Place> m_open;
    std::size_t m_recordsWaiting = 0;
    std::size_t m_bytesWaiting = 0;
    unsigned long long m_number = 0;
    LocalMs m_nowMs = 0;  ///< the latest time seen
};

}  // namespace vorellog
