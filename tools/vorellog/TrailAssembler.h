/// \file
/// Assembles the records of one exception into one trail:
///
///     Vorel Error: line 7 is not a number                  the failure
///     Vorel Error: Parser::run: Vorel exception rethrown   a function that rethrew the exception
///     Vorel Error: Import::main: Vorel exception caught    the function that caught the exception
///
/// The log does not say which records belong together. But the records of a thread are in the order in which the thread
/// wrote them, and "…caught" ends a trail. So a trail is recognised by the writer and the form of its records. A
/// program may also catch an exception without writing a record. In that case the trail ends before the first record
/// that cannot belong to the same exception (a message and a system text are steps of TrailStep):
///
///   - "…: Severe error thrown" and "…: TestAndThrow test failed" always begin a trail;
///   - if a message of the trail is repeated, the repetition begins the next trail (numbers are not compared, so
///     "row 7" and "row 12" are equal);
///   - if the trail already contains an equal "…rethrown" record, the last message between the two records begins the
///     next trail;
///   - a message or a system text more than kFailureGapSeconds after the last record of the trail begins a new trail,
///     because a program adds messages to a failure at once, but unwinding may take time. Whole seconds are compared,
///     because not all lines have milliseconds;
///   - any record more than kTrailGapMs after the last record of the trail begins a new trail.
///
/// A cut record also ends its trail, because its thread was probably terminated. A trail of kMaxRecords records ends,
/// too.
///
/// A record whose header is in the middle of a line neither joins nor ends a trail, because the header may be part of a
/// message.
///
/// Trails are delivered in the order of their first records. Records that do not belong to an exception are delivered
/// as trails of one record. To bound the memory, the first trail ends and is delivered if more than kMaxWaitingRecords
/// records or more than kMaxWaitingBytes bytes are waiting.
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
    Suppressed,  ///< by a destructor, while another exception was unwinding the stack
    Open,        ///< the trail has no record of its end
};

/// "caught", "suppressed", "open".
std::string_view nameOf(TrailEnd end) noexcept;

/// The records of one exception in log order, or one record that does not belong to an exception.
struct Trail {
    std::vector<Record> records;
    bool isException = false;
    TrailEnd end = TrailEnd::Open;
};

class TrailAssembler {
public:
    static constexpr LocalMs kFailureGapSeconds = 2;
    static constexpr LocalMs kTrailGapMs = 5000;
    static constexpr std::size_t kMaxRecords = 512;                         ///< in one trail
    static constexpr std::size_t kMaxWaitingRecords = 8192;                 ///< records not yet delivered
    static constexpr std::size_t kMaxWaitingBytes = std::size_t{32} << 20;  ///< in the texts of these records

    /// The trail is valid only during the call of `deliver`.
    explicit TrailAssembler(std::function<void(const Trail&)> deliver) : m_deliver(std::move(deliver)) {}

    void add(const Record& record);

    /// Delivers all trails, including open trails.
    void flush();

private:
    using Writer = std::tuple<std::string, unsigned long, unsigned long>;  ///< host, process, thread

    /// A trail that is not delivered yet, because it or an earlier trail has not ended.
    struct Waiting {
        Writer writer;
        Trail trail;
        std::vector<unsigned long long> numbers;  ///< the numbers of the records, in log order
        LocalMs lastMs = 0;
        bool isOpen = false;
    };
    using Position = std::list<Waiting>::iterator;

    void addSingle(const Record& record, bool isException);
    void addToTrail(const Record& record, const LogHeader& header, TrailStep step);
    Position openTrail(const Writer& writer);
    Position begin(const Writer& writer);
    void append(Position position, const Record& record);
    Position splitBefore(Position position, std::size_t index);
    void close(Position position, TrailEnd end);
    void deliverReady();
    void deliverFront();
    Position addWaiting(Position before);

    std::function<void(const Trail&)> m_deliver;
    std::list<Waiting> m_waiting;
    std::list<Waiting> m_spare;          ///< delivered trails without records, kept for reuse
    std::vector<Record> m_spareRecords;  ///< records of delivered trails, whose memory is reused
    std::map<Writer, Position> m_open;
    std::size_t m_recordsWaiting = 0;
    std::size_t m_bytesWaiting = 0;
    unsigned long long m_number = 0;  ///< the number of records added so far
    LocalMs m_nowMs = 0;              ///< the latest time of a record
};

}  // namespace vorellog
