#include "exceptions/LogPath.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <windows.h>

#include "vorel/exceptions/Exception.h"

namespace vorel::detail {

namespace {

/// If the path changes while a reader copies it, the reader copies it again. Between the copies, the reader first
/// yields and later sleeps, because the writer's thread may be waiting for a processor. If the writer was killed, the
/// reader uses its last copy after 500 sleeps, because logging must not wait without limit. The system rounds a sleep
/// up to its timer's period (1 to 16 ms), so the 500 sleeps take 0.5 to 8 seconds.
constexpr unsigned int kQuickAttempts = 1000;
constexpr unsigned int kSlowAttempts = 500;
constexpr unsigned int kSleepMs = 1;

/// A copy is valid only if it ends before the next change begins. So the path is copied in words, which takes less time
/// than copying bytes.
using Word = std::uint64_t;
constexpr std::size_t kWords = kLogPathBytes / sizeof(Word);

std::atomic_ref<Word> sharedWord(char (&shared)[kLogPathBytes], std::size_t index) noexcept {
    static_assert(std::atomic_ref<Word>::required_alignment <= alignof(Word));
    // All other code accesses the array as characters, which may alias any object.
    return std::atomic_ref<Word>(reinterpret_cast<Word*>(shared)[index]);
}

/// Whether one of the bytes is zero (A. Mycroft, 1987).
bool hasZeroByte(Word word) noexcept {
    constexpr Word kOnes = 0x0101010101010101;
    constexpr Word kHighBits = 0x8080808080808080;
    return ((word - kOnes) & ~word & kHighBits) != 0;
}

}  // namespace

void LogPath::write(const char* path) noexcept {
    char bytes[kLogPathBytes] = {};
    std::memcpy(bytes, path ? path : "", path ? strnlen(path, kLogPathBytes - 1) : 0);
    // The counter is already odd if a writer was killed, or if another thread writes without the lock.
    const unsigned int version = LogPathVersion.load(std::memory_order_relaxed) | 1;
    LogPathVersion.store(version, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    for (std::size_t index = 0; index < kWords; ++index) {
        Word word = 0;
        std::memcpy(&word, bytes + index * sizeof word, sizeof word);
        sharedWord(Exception::ErrorLogLocation, index).store(word, std::memory_order_relaxed);
    }
    LogPathVersion.store(version + 1, std::memory_order_release);
}

void LogPath::read(char (&path)[kLogPathBytes]) noexcept {
    for (unsigned int attempt = 0; attempt < kQuickAttempts + kSlowAttempts; ++attempt) {
        const unsigned int before = LogPathVersion.load(std::memory_order_acquire);
        for (std::size_t index = 0; index < kWords; ++index) {
            const Word word = sharedWord(Exception::ErrorLogLocation, index).load(std::memory_order_relaxed);
            std::memcpy(path + index * sizeof word, &word, sizeof word);
            if (hasZeroByte(word)) {
                break;
            }
        }
        path[kLogPathBytes - 1] = 0;
        std::atomic_thread_fence(std::memory_order_acquire);
        if (before % 2 == 0 && LogPathVersion.load(std::memory_order_relaxed) == before) {
            return;
        }
        if (attempt < kQuickAttempts) {
            SwitchToThread();
        } else {
            ::Sleep(kSleepMs);
        }
    }
}

void LogPath::readOrDefault(char (&path)[kLogPathBytes]) noexcept {
    read(path);
    if (!*path) {
        std::memcpy(path, kDefaultLogPath, sizeof kDefaultLogPath);
    }
}

}  // namespace vorel::detail
