/// \file
/// Class-level allocation for client classes, with an observer (the spy) and leak-tracking points. The accounting is
/// minimal by design: allocation calls the runtime's heap directly, the spy is only stored for clients, and the leak
/// detector does nothing. So code with tracking points compiles and links, and the tracking costs nothing.
///
///     class Node : public vorel::AllocBase {
///     public:
///         static void* operator new(std::size_t size) noexcept { return _alloc(size); }
///         static void operator delete(void* node) { _free(node); }
///     };
///
/// This `operator new` returns null if the allocation fails, so it must be `noexcept`. `new Node` is then null.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Allocation statistics, filled in by a spy.
struct VOREL_API MemAllocInfo {
    /// Sets every value to 0.
    MemAllocInfo() noexcept;

    /// Sets every value to 0.
    void clear() noexcept;

    /// The number of counters.
    static constexpr unsigned int kCounters = 32;

    /// The values; the spy defines their meaning.
    unsigned long long allocatedTotal;
    unsigned long long freedTotal;
    unsigned int counters[kCounters];
};

/// An observer of allocations, implemented and called by clients. The library stores the pointer and never calls it.
class VOREL_API AllocSpy {
public:
    /// The base class has no data.
    AllocSpy() noexcept = default;
    AllocSpy(const AllocSpy&) noexcept = default;
    AllocSpy& operator=(const AllocSpy&) noexcept = default;
    virtual ~AllocSpy();

    /// A block of `size` bytes was allocated.
    virtual void allocated(void* block, unsigned long long size) = 0;

    /// A block is about to be freed.
    virtual void freed(void* block) = 0;

    /// Fills in the current statistics.
    virtual void report(MemAllocInfo& info) = 0;
};

/// A base class for client classes with class-level allocation. It has no fields.
class VOREL_API AllocBase {
public:
    /// Registers `spy` and replaces the previous one; null unregisters it. The caller keeps ownership, and `spy` must
    /// outlive its registration. Thread-safe while the thread-safety switch is on.
    static void registerSpy(AllocSpy* spy);

protected:
    /// Allocates `size` bytes with the runtime's `malloc`; null if that fails. Thread-safe.
    static void* _alloc(unsigned long long size) noexcept;

    /// Releases a block of `_alloc` with the runtime's `free`; null is ignored. Thread-safe.
    static void _free(void* p) noexcept;

    /// The registered spy; null if there is none.
    static AllocSpy* registeredSpy() noexcept;

    /// Texts for clients that report a failing constructor.
    static const wchar_t* const msgConstructorError;      ///< "Error when calling class constructor."
    static const wchar_t* const msgCopyConstructorError;  ///< "Error when calling class copy constructor."

private:
    static AllocSpy* m_spy;
};

/// A leak-tracking point. Every operation accepts any argument, including null, and does nothing. The operations are
/// still exported, so that clients built with leak tracking still link.
class VOREL_API LeakDetector {
public:
    /// The arguments are ignored.
    LeakDetector() noexcept;
    LeakDetector(const char* name, bool) noexcept;
    LeakDetector(const wchar_t* name, bool) noexcept;
    LeakDetector(const LeakDetector&) noexcept = default;
    LeakDetector& operator=(const LeakDetector&) noexcept = default;
    ~LeakDetector();  // NOLINT(performance-trivially-destructible): exported, like all other members

    /// Does nothing.
    void Add(void* block, const char* where) noexcept;
    void Add(void* block, const wchar_t* where) noexcept;
    void Sub(void* block) noexcept;

    /// Returns the object itself.
    LeakDetector& SetName(const char* name) noexcept;
    LeakDetector& SetName(const wchar_t* name) noexcept;

    /// Does nothing.
    static void ResetClass() noexcept;

private:
    unsigned long long m_record[4] = {};
};

}  // namespace vorel
