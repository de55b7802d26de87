/// \file
/// Class-level allocation for client classes, with a place for an observer, the spy, and points for leak tracking. The
/// accounting is deliberately minimal: allocation goes straight to the runtime's heap, the spy is only kept for clients
/// to consult, and the leak detector does nothing, so that code with tracking points compiles, links and costs nothing.
///
///     class Node : public vorel::AllocBase {
///     public:
///         static void* operator new(std::size_t size) { return _alloc(size); }
///         static void operator delete(void* node) { _free(node); }
///     };
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Figures about allocations, for a spy to fill.
struct VOREL_API MemAllocInfo {
    /// Every figure is 0.
    MemAllocInfo() noexcept;

    /// Sets every figure to 0.
    void clear() noexcept;

    /// How many counters there are.
    static constexpr unsigned int kCounters = 32;

    /// The figures; what they count is for the spy to say.
    unsigned long long allocatedTotal;
    unsigned long long freedTotal;
    unsigned int counters[kCounters];
};

/// What a client registers to observe allocations. The library carries the pointer and never calls it; its meaning is
/// the client's to define.
class VOREL_API AllocSpy {
public:
    /// A spy holds nothing.
    AllocSpy() noexcept = default;
    AllocSpy(const AllocSpy&) noexcept = default;
    AllocSpy& operator=(const AllocSpy&) noexcept = default;
    virtual ~AllocSpy();

    /// A block of `size` bytes was allocated.
    virtual void allocated(void* block, unsigned long long size) = 0;

    /// A block is about to be freed.
    virtual void freed(void* block) = 0;

    /// Fills in the figures so far.
    virtual void report(MemAllocInfo& info) = 0;
};

/// A base for client classes that want class-level allocation. It has no fields.
class VOREL_API AllocBase {
public:
    /// Makes `spy` the registered spy in the place of the one before; null registers none. The spy stays the caller's,
    /// and must outlive its registration. Thread-safe while the thread-safety switch is on.
    static void registerSpy(AllocSpy* spy);

protected:
    /// `size` bytes from the runtime's `malloc`; null when there is no memory. Thread-safe.
    static void* _alloc(unsigned long long size) noexcept;

    /// Gives a block of `_alloc` back to the runtime's `free`; null is ignored. Thread-safe.
    static void _free(void* p) noexcept;

    /// The registered spy, null when there is none.
    static AllocSpy* registeredSpy() noexcept;

    /// For clients that report a failing constructor.
    static const wchar_t* const msgConstructorError;      ///< "Error when calling class constructor."
    static const wchar_t* const msgCopyConstructorError;  ///< "Error when calling class copy constructor."

private:
    static AllocSpy* m_spy;
};

/// A leak-tracking point in its release form: every operation takes any argument, null included, and does nothing. They
/// stand in the library all the same, so that clients built against another form of it link.
class VOREL_API LeakDetector {
public:
    /// The arguments are not looked at.
    LeakDetector() noexcept;
    LeakDetector(const char* name, bool) noexcept;
    LeakDetector(const wchar_t* name, bool) noexcept;
    LeakDetector(const LeakDetector&) noexcept = default;
    LeakDetector& operator=(const LeakDetector&) noexcept = default;
    ~LeakDetector();  // NOLINT(performance-trivially-destructible): the library has it, as it has all the others

    /// Do nothing.
    void Add(void* block, const char* where) noexcept;
    void Add(void* block, const wchar_t* where) noexcept;
    void Sub(void* block) noexcept;

    /// Return the object itself.
    LeakDetector& SetName(const char* name) noexcept;
    LeakDetector& SetName(const wchar_t* name) noexcept;

    /// Does nothing.
    static void ResetClass() noexcept;

private:
    unsigned long long m_record[4] = {};
};

}  // namespace vorel
