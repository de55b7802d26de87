#include "heap/GuardedBlocks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <windows.h>

#include "heap/Blocks.h"

namespace heap::blocks {

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kRegionPages = std::size_t{1} << 22;  // 16 GiB of addresses, of which little is ever in use
constexpr std::size_t kLargest = std::size_t{1} << 28;      // larger blocks are the runtime's
constexpr std::size_t kLeftAlone = 8192;                    // places of small blocks that are not used again yet
constexpr std::size_t kMostRetired = 2 * kLeftAlone;
constexpr std::size_t kMostForbidden = 20'000;
constexpr std::size_t kLeadingBytes = 256;  // of those in front of a block: filled, and looked at
constexpr unsigned char kLeading = 0xA7;
constexpr unsigned char kFresh = 0xC9;  // what nobody has written yet
constexpr unsigned char kGone = 0xDB;   // what was given back
constexpr DWORD kPatienceMs = 5000;

enum class State : std::uint32_t { Free, Live, Forbidden, Filled };

/// What is known about the pages from here on; kept for the first page of each piece of the region.
struct Piece {
    std::uint64_t serial;
    std::uint32_t bytes;  // of the block
    std::uint32_t pages;  // with the inaccessible one at the end; 0: nothing was ever here
    State state;
};

/// Pieces of one accessible page that came back, the longest retired one first. They keep their memory.
struct Retired {
    std::uint32_t pages[kMostRetired];
    std::size_t first;
    std::size_t count;

    void push(std::size_t page) noexcept { pages[(first + count++) % kMostRetired] = static_cast<std::uint32_t>(page); }
    std::size_t pop() noexcept {
        const std::size_t page = pages[first];
        first = (first + 1) % kMostRetired;
        --count;
        return page;
    }
};

/// The lock of a heap that is in use before any object was constructed and after all were destroyed.
class Lock {
public:
    void lock() noexcept { AcquireSRWLockExclusive(&m_lock); }
    void unlock() noexcept { ReleaseSRWLockExclusive(&m_lock); }

private:
    SRWLOCK m_lock = SRWLOCK_INIT;
};

constinit Lock heapLock;
constinit unsigned char* region = nullptr;
constinit Piece* pieces = nullptr;  // one for each page of the region
constinit Retired retired{};
constinit std::size_t forbidden = 0;  // small blocks that became inaccessible so far
constinit std::size_t next = 0;       // where the next piece is looked for
constinit std::size_t liveCount = 0;
constinit std::uint64_t lastSerial = 0;
constinit std::size_t awaited = 0;  // the count that `reached` tells of
constinit HANDLE reached = nullptr;

/// For what must not ask for memory.
template <class... Values>
void report(const char* format, Values... values) noexcept {
    char text[160];
    (void)std::snprintf(text, sizeof text, format, values...);
    (void)std::fputs(text, stderr);
    (void)std::fflush(stderr);
}

bool isGuarded(const void* address) noexcept {
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    const auto start = reinterpret_cast<std::uintptr_t>(region);
    return region && place >= start && place - start < kRegionPages * kPage;
}

std::size_t pageOf(const void* address) noexcept {
    return (reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(region)) / kPage;
}

unsigned char* startOf(std::size_t page) noexcept {
    return region + page * kPage;
}

unsigned char* endOf(std::size_t page) noexcept {
    return startOf(page + pieces[page].pages - 1);
}

unsigned char* blockOf(std::size_t page) noexcept {
    return pieces[page].bytes == 0 ? startOf(page) : endOf(page) - pieces[page].bytes;
}

/// Says what a faulting access has missed.
LONG CALLBACK explain(EXCEPTION_POINTERS* fault) noexcept {
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system tells the address as a number
    const auto* const address = reinterpret_cast<const unsigned char*>(record.ExceptionInformation[1]);
    if (!isGuarded(address)) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    const char* const access = record.ExceptionInformation[0] == 0 ? "read" : "write";
    std::size_t page = pageOf(address);
    while (page != 0 && pieces[page].pages == 0) {
        --page;
    }
    const Piece& piece = pieces[page];
    const unsigned char* const end = endOf(page);
    const std::size_t following = page + piece.pages;
    if (address < end && piece.state != State::Live) {
        report("heap: %s in a block of %u bytes that was given back\n", access, piece.bytes);
    } else if (following < kRegionPages && pieces[following].state == State::Live &&
               startOf(following) - address < address - end) {
        report("heap: %s %zu bytes in front of a block of %u bytes\n", access,
               static_cast<std::size_t>(blockOf(following) - address), pieces[following].bytes);
    } else {
        report("heap: %s %zu bytes behind the end of a block of %u bytes\n", access,
               static_cast<std::size_t>(address - (blockOf(page) + piece.bytes)), piece.bytes);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

[[noreturn]] void fail(const char* what, std::uint32_t bytes) noexcept {
    report("heap: %s, %u bytes\n", what, bytes);
    std::abort();
}

void prepare() noexcept {
    if (region) {
        return;
    }
    pieces = static_cast<Piece*>(
        VirtualAlloc(nullptr, (kRegionPages + 1) * sizeof(Piece), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    reached = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    void* const reserved = VirtualAlloc(nullptr, kRegionPages * kPage, MEM_RESERVE, PAGE_NOACCESS);
    if (!pieces || !reached || !reserved || !AddVectoredExceptionHandler(TRUE, &explain)) {
        fail("no room for the guarded heap", 0);
    }
    region = static_cast<unsigned char*>(reserved);
}

/// The first of `pages` pages that nobody holds, the longest unused ones. What they were before is forgotten.
std::size_t findPages(std::size_t pages) noexcept {
    bool wrapped = false;
    std::size_t first = next;
    std::size_t found = 0;
    while (found < pages) {
        const std::size_t page = first + found;
        if (page >= kRegionPages) {
            if (wrapped) {
                fail("no guarded pages are left", 0);
            }
            wrapped = true;
            first = 0;
            found = 0;
        } else if (pieces[page].state != State::Free) {
            first = page + pieces[page].pages;
            found = 0;
        } else {
            found += std::max<std::size_t>(pieces[page].pages, 1);
        }
    }
    std::fill_n(pieces + first, pages, Piece{});
    if (found > pages) {
        pieces[first + pages].pages = static_cast<std::uint32_t>(found - pages);  // what is left of the last piece
    }
    next = first + pages;
    return first;
}

/// Makes pages accessible that are not yet, or not any more.
bool allow(std::size_t page, std::size_t pages) noexcept {
    // cppcheck-suppress leakReturnValNotUsed; they stay part of the region
    return VirtualAlloc(startOf(page), pages * kPage, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

bool areAll(const unsigned char* first, const unsigned char* end, unsigned char fill) noexcept {
    return std::all_of(first, end, [fill](unsigned char byte) { return byte == fill; });
}

/// Where the looked-at bytes in front of a block begin.
unsigned char* leadingOf(std::size_t page) noexcept {
    unsigned char* const block = blockOf(page);
    return block - std::min(kLeadingBytes, static_cast<std::size_t>(block - startOf(page)));
}

/// The longest retired piece, accessible; the number of its page, or nothing.
bool reuse(std::size_t& page) noexcept {
    if (retired.count <= kLeftAlone) {
        return false;
    }
    page = retired.pop();
    if (pieces[page].state == State::Forbidden) {
        return allow(page, 1);
    }
    const unsigned char* const block = blockOf(page);
    if (!areAll(block, block + pieces[page].bytes, kGone)) {
        fail("write to a block that was given back", pieces[page].bytes);
    }
    return true;
}

/// A block whose bytes are undefined, or null.
unsigned char* place(std::size_t bytes) noexcept {
    const std::lock_guard lock(heapLock);
    prepare();
    const std::size_t accessible = (bytes + kPage - 1) / kPage;
    std::size_t page = 0;
    if (accessible != 1 || !reuse(page)) {
        page = findPages(accessible + 1);
        // cppcheck-suppress leakReturnValNotUsed; the same
        if (bytes != 0 && !allow(page, accessible)) {
            return nullptr;
        }
    }
    pieces[page] = {++lastSerial, static_cast<std::uint32_t>(bytes), static_cast<std::uint32_t>(accessible + 1),
                    State::Live};
    std::fill(leadingOf(page), blockOf(page), kLeading);
    ++liveCount;
    return blockOf(page);
}

/// The piece of a block that somebody holds.
std::size_t heldPage(const void* block) noexcept {
    const std::size_t page = pageOf(block);
    const Piece& piece = pieces[page];
    if (piece.pages == 0 || blockOf(page) != block) {
        fail("no block begins where one came back", piece.bytes);
    }
    if (piece.state != State::Live) {
        fail("a block came back twice", piece.bytes);
    }
    return page;
}

void discard(std::size_t page) noexcept {
    Piece& piece = pieces[page];
    VirtualFree(startOf(page), kPage * (piece.pages - 1), MEM_DECOMMIT);
    piece.state = State::Free;
}

/// Makes what a block had inaccessible. Small blocks beyond the first so many are overwritten instead.
void retire(std::size_t page) noexcept {
    Piece& piece = pieces[page];
    if (piece.pages == 1) {
        piece.state = State::Free;
        return;
    }
    if (piece.pages > 2) {
        discard(page);
        return;
    }
    if (retired.count == kMostRetired) {
        discard(retired.pop());
    }
    if (forbidden < kMostForbidden) {
        ++forbidden;
        DWORD before = 0;
        VirtualProtect(startOf(page), kPage, PAGE_NOACCESS, &before);
        piece.state = State::Forbidden;
    } else {
        std::fill(blockOf(page), endOf(page), kGone);
        piece.state = State::Filled;
    }
    retired.push(page);
}

void remove(const void* block) noexcept {
    const std::lock_guard lock(heapLock);
    const std::size_t page = heldPage(block);
    if (!areAll(leadingOf(page), blockOf(page), kLeading)) {
        fail("write in front of a block", pieces[page].bytes);
    }
    retire(page);
    if (--liveCount == awaited) {
        SetEvent(reached);
    }
}

std::size_t sizeOf(const void* block) noexcept {
    const std::lock_guard lock(heapLock);
    return pieces[heldPage(block)].bytes;
}

}  // namespace

void* take(std::size_t bytes) noexcept {
    if (bytes > kLargest) {
        return __real_malloc(bytes);
    }
    unsigned char* const block = place(bytes);
    if (block) {
        std::memset(block, kFresh, bytes);
    }
    return block;
}

void* takeZeroed(std::size_t count, std::size_t bytes) noexcept {
    if (bytes != 0 && count > kLargest / bytes) {
        return __real_calloc(count, bytes);
    }
    unsigned char* const block = place(count * bytes);
    if (block && count * bytes <= kPage) {
        std::memset(block, 0, count * bytes);  // larger ones have fresh pages, which are zero
    }
    return block;
}

void* resize(void* block, std::size_t bytes) noexcept {
    if (block && !isGuarded(block)) {
        return __real_realloc(block, bytes);
    }
    void* const moved = take(bytes);
    if (block && moved) {
        std::memcpy(moved, block, std::min(bytes, sizeOf(block)));
        remove(block);
    }
    return moved;
}

void giveBack(void* block) noexcept {
    if (!block) {
        return;
    }
    if (isGuarded(block)) {
        remove(block);
    } else {
        __real_free(block);
    }
}

std::size_t live() noexcept {
    const std::lock_guard lock(heapLock);
    return liveCount;
}

bool waitForLive(std::size_t count) noexcept {
    const ULONGLONG deadline = GetTickCount64() + kPatienceMs;
    for (;;) {
        {
            const std::lock_guard lock(heapLock);
            awaited = count;
            if (liveCount <= count) {
                return true;
            }
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= deadline || WaitForSingleObject(reached, static_cast<DWORD>(deadline - now)) != WAIT_OBJECT_0) {
            return live() <= count;
        }
    }
}

std::uint64_t serial() noexcept {
    const std::lock_guard lock(heapLock);
    return lastSerial;
}

std::string sizesSince(std::uint64_t serial) {
    constexpr std::size_t kMost = 20;
    std::uint32_t sizes[kMost];
    std::size_t count = 0;
    {
        const std::lock_guard lock(heapLock);  // building the text asks for blocks
        for (std::size_t page = 0; page < kRegionPages && pieces[page].pages != 0; page += pieces[page].pages) {
            if (pieces[page].state == State::Live && pieces[page].serial > serial && count < kMost) {
                sizes[count++] = pieces[page].bytes;
            }
        }
    }
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        text += (index == 0 ? "" : ", ") + std::to_string(sizes[index]);
    }
    return text;
}

}  // namespace heap::blocks

// The runtime of exceptions puts a header of its own in front of a thrown object and relies on its alignment.
extern "C" {
void* __real___cxa_allocate_exception(std::size_t bytes) noexcept;
void* __wrap___cxa_allocate_exception(std::size_t bytes) noexcept;
}

void* __wrap___cxa_allocate_exception(std::size_t bytes) noexcept {
    constexpr std::size_t kAlignment = 16;
    return __real___cxa_allocate_exception((bytes + kAlignment - 1) / kAlignment * kAlignment);
}
