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
constexpr std::size_t kRegionPages = std::size_t{1} << 22;    // 16 GiB of address space; only a small part is in use
constexpr std::size_t kMaxBlockBytes = std::size_t{1} << 28;  // larger blocks come from the runtime
constexpr std::size_t kQuarantine = 8192;                     // other small blocks that are freed before one is reused
constexpr std::size_t kMaxRetired = 2 * kQuarantine;
constexpr std::size_t kMaxForbidden = 20'000;
constexpr std::size_t kLeadingBytes = 256;      // maximum number of checked bytes before a block
constexpr unsigned char kLeadingFill = 0xA7;    // bytes before a block
constexpr unsigned char kUnwrittenFill = 0xC9;  // new blocks
constexpr unsigned char kFreedFill = 0xDB;      // freed blocks
constexpr DWORD kWaitTimeoutMs = 5000;

enum class State : std::uint32_t { Free, Live, Forbidden, Filled };

/// Describes consecutive pages that contain one block or are free. `pieces` stores the description at the index of the
/// first of these pages.
struct Piece {
    std::uint64_t serial;
    std::uint32_t bytes;  // size of the block
    std::uint32_t pages;  // includes the inaccessible page at the end; 0 if no piece begins at this page
    State state;
};

/// A queue of freed small blocks, that is, of pieces with one page before the inaccessible page at the end. Their pages
/// stay allocated.
struct Retired {
    std::uint32_t pages[kMaxRetired];
    std::size_t first;
    std::size_t count;

    void push(std::size_t page) noexcept { pages[(first + count++) % kMaxRetired] = static_cast<std::uint32_t>(page); }
    std::size_t pop() noexcept {
        const std::size_t page = pages[first];
        first = (first + 1) % kMaxRetired;
        --count;
        return page;
    }
};

/// A lock that works before any object is constructed and after all objects are destroyed, because the heap must work
/// at these times.
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
constinit std::size_t forbidden = 0;  // number of small blocks that were made inaccessible
constinit std::size_t next = 0;       // the page at which the next search for free pages starts
constinit std::size_t liveCount = 0;
constinit std::uint64_t lastSerial = 0;
constinit std::size_t awaited = 0;  // `reached` is set when `liveCount` falls to this value
constinit HANDLE reached = nullptr;

/// Prints without allocating memory.
template <class... Values>
void report(const char* format, Values... values) noexcept {
    char text[160];
    (void)std::snprintf(text, sizeof text, format, values...);
    (void)std::fputs(text, stderr);
    (void)std::fflush(stderr);
}

bool isGuarded(const void* address) noexcept {
    const auto value = reinterpret_cast<std::uintptr_t>(address);
    const auto start = reinterpret_cast<std::uintptr_t>(region);
    return region && value >= start && value - start < kRegionPages * kPage;
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

/// Finds the block at or next to a faulting address. Prints the size of the block and, unless the address is in a freed
/// block, the offset of the address from the start of the block.
LONG CALLBACK explain(EXCEPTION_POINTERS* fault) noexcept {
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system reports the address as a number
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
        report("heap: %s in a freed block of %u bytes\n", access, piece.bytes);
    } else if (following < kRegionPages && pieces[following].state == State::Live &&
               startOf(following) - address < address - end) {
        report("heap: %s at offset %td of a block of %u bytes\n", access, address - blockOf(following),
               pieces[following].bytes);
    } else {
        report("heap: %s at offset %td of a block of %u bytes\n", access, address - blockOf(page), piece.bytes);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

template <class... Values>
[[noreturn]] void fail(const char* format, Values... values) noexcept {
    report(format, values...);
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
        fail("heap: %s\n", "cannot reserve memory for the guarded heap");
    }
    region = static_cast<unsigned char*>(reserved);
}

/// The first of `pages` consecutive free pages. Searches in a circle through the region, so pages are reused as late as
/// possible. Clears the descriptions of the pieces that these pages belonged to. Aborts if the region does not have so
/// many consecutive free pages.
std::size_t findPages(std::size_t pages) noexcept {
    bool wrapped = false;
    std::size_t first = next;
    std::size_t found = 0;
    while (found < pages) {
        const std::size_t page = first + found;
        if (page >= kRegionPages) {
            if (wrapped) {
                fail("heap: %s\n", "no guarded pages are left");
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
        pieces[first + pages].pages =
            static_cast<std::uint32_t>(found - pages);  // the remaining pages of the last free piece
    }
    next = first + pages;
    return first;
}

/// Makes pages accessible.
bool allow(std::size_t page, std::size_t pages) noexcept {
    // cppcheck-suppress leakReturnValNotUsed; the pages stay part of the region
    return VirtualAlloc(startOf(page), pages * kPage, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

bool areAll(const unsigned char* first, const unsigned char* end, unsigned char fill) noexcept {
    return std::all_of(first, end, [fill](unsigned char byte) { return byte == fill; });
}

/// The start of the checked bytes before a block.
unsigned char* leadingOf(std::size_t page) noexcept {
    unsigned char* const block = blockOf(page);
    return block - std::min(kLeadingBytes, static_cast<std::size_t>(block - startOf(page)));
}

/// Aborts if the block is filled with the pattern of freed blocks, and the pattern has changed.
void checkFreed(std::size_t page) noexcept {
    const unsigned char* const block = blockOf(page);
    if (pieces[page].state == State::Filled && !areAll(block, block + pieces[page].bytes, kFreedFill)) {
        fail("heap: write to a freed block of %u bytes\n", pieces[page].bytes);
    }
}

/// Makes the oldest retired piece accessible and stores its page number. Returns false if no piece may be reused yet,
/// or if the page cannot be made accessible. Aborts if the pattern in the freed block has changed.
bool reuse(std::size_t& page) noexcept {
    if (retired.count <= kQuarantine) {
        return false;
    }
    page = retired.pop();
    if (pieces[page].state == State::Forbidden) {
        return allow(page, 1);
    }
    checkFreed(page);
    return true;
}

/// A block with undefined contents, or null if the pages of the block cannot be made accessible.
unsigned char* placeBlock(std::size_t bytes) noexcept {
    const std::lock_guard lock(heapLock);
    prepare();
    const std::size_t accessible = (bytes + kPage - 1) / kPage;
    std::size_t page = 0;
    if (accessible != 1 || !reuse(page)) {
        page = findPages(accessible + 1);
        // cppcheck-suppress leakReturnValNotUsed; as above
        if (bytes != 0 && !allow(page, accessible)) {
            return nullptr;
        }
    }
    pieces[page] = {++lastSerial, static_cast<std::uint32_t>(bytes), static_cast<std::uint32_t>(accessible + 1),
                    State::Live};
    std::fill(leadingOf(page), blockOf(page), kLeadingFill);
    ++liveCount;
    return blockOf(page);
}

/// The first page of a live block. Aborts for any other address in the region.
std::size_t livePage(const void* block) noexcept {
    const std::size_t page = pageOf(block);
    const Piece& piece = pieces[page];
    if (piece.pages == 0 || blockOf(page) != block) {
        fail("heap: %s\n", "free of an address where no block starts");
    }
    if (piece.state != State::Live) {
        fail("heap: second free of a block of %u bytes\n", piece.bytes);
    }
    return page;
}

void discard(std::size_t page) noexcept {
    Piece& piece = pieces[page];
    VirtualFree(startOf(page), kPage * (piece.pages - 1), MEM_DECOMMIT);
    piece.state = State::Free;
}

/// Makes a freed block inaccessible. Small blocks after the first `kMaxForbidden` are overwritten instead. If the queue
/// of freed small blocks is full, first checks the pattern of the oldest one and frees its page.
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
    if (retired.count == kMaxRetired) {
        const std::size_t oldest = retired.pop();
        checkFreed(oldest);
        discard(oldest);
    }
    if (forbidden < kMaxForbidden) {
        ++forbidden;
        DWORD before = 0;
        VirtualProtect(startOf(page), kPage, PAGE_NOACCESS, &before);
        piece.state = State::Forbidden;
    } else {
        std::fill(blockOf(page), endOf(page), kFreedFill);
        piece.state = State::Filled;
    }
    retired.push(page);
}

void remove(const void* block) noexcept {
    const std::lock_guard lock(heapLock);
    const std::size_t page = livePage(block);
    if (!areAll(leadingOf(page), blockOf(page), kLeadingFill)) {
        fail("heap: write before a block of %u bytes\n", pieces[page].bytes);
    }
    retire(page);
    if (--liveCount == awaited) {
        SetEvent(reached);
    }
}

std::size_t sizeOf(const void* block) noexcept {
    const std::lock_guard lock(heapLock);
    return pieces[livePage(block)].bytes;
}

}  // namespace

void* allocate(std::size_t bytes) noexcept {
    if (bytes > kMaxBlockBytes) {
        return __real_malloc(bytes);
    }
    unsigned char* const block = placeBlock(bytes);
    if (block) {
        std::memset(block, kUnwrittenFill, bytes);
    }
    return block;
}

void* allocateZeroed(std::size_t count, std::size_t bytes) noexcept {
    if (bytes != 0 && count > kMaxBlockBytes / bytes) {
        return __real_calloc(count, bytes);
    }
    unsigned char* const block = placeBlock(count * bytes);
    if (block && count * bytes <= kPage) {
        std::memset(block, 0, count * bytes);  // larger blocks have new pages, which the system has filled with zeros
    }
    return block;
}

void* reallocate(void* block, std::size_t bytes) noexcept {
    if (block && !isGuarded(block)) {
        return __real_realloc(block, bytes);
    }
    void* const moved = allocate(bytes);
    if (block && moved) {
        std::memcpy(moved, block, std::min(bytes, sizeOf(block)));
        remove(block);
    }
    return moved;
}

void release(void* block) noexcept {
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
    const ULONGLONG deadline = GetTickCount64() + kWaitTimeoutMs;
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
    constexpr std::size_t kMaxSizes = 20;
    std::uint32_t sizes[kMaxSizes];
    std::size_t count = 0;
    {
        const std::lock_guard lock(heapLock);  // released before the text allocates blocks
        for (std::size_t page = 0; page < kRegionPages && pieces[page].pages != 0; page += pieces[page].pages) {
            if (pieces[page].state == State::Live && pieces[page].serial > serial && count < kMaxSizes) {
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

// The exception runtime stores a header before a thrown object, and requires that the header is aligned. A guarded
// block is aligned only if its size is a multiple of the alignment, so the size is rounded up.
extern "C" {
void* __real___cxa_allocate_exception(std::size_t bytes) noexcept;
void* __wrap___cxa_allocate_exception(std::size_t bytes) noexcept;
}

void* __wrap___cxa_allocate_exception(std::size_t bytes) noexcept {
    constexpr std::size_t kAlignment = 16;
    return __real___cxa_allocate_exception((bytes + kAlignment - 1) / kAlignment * kAlignment);
}
