#include <vorel/exceptions/Exception.h>

#include "Cases.h"

namespace bench {

namespace {

constexpr std::size_t kCalls = 100000;

/// The flag that the peer tests. A program without debug targets could test such a flag before it writes a debug line.
volatile bool s_isDebugging = false;
volatile int s_token = 12;

std::uint64_t testedFlag() {
    for (std::size_t call = 0; call != kCalls; ++call) {
        if (s_isDebugging) {
            s_token = s_token + 1;
        }
    }
    return kCalls;
}

template <class T>
Pass calls(const T* target, const T* format) {
    return [=] {
        for (std::size_t call = 0; call != kCalls; ++call) {
            vorel::Exception::debug(target, format, 12);
            asm volatile("" : : : "memory");
        }
        return std::uint64_t{kCalls};
    };
}

}  // namespace

void debugTargets(Family& family) {
    const std::vector<Peer> peers = {{"a test of a flag", &testedFlag}};
    family.compare("debug, no target ever on", kCalls, calls("Parser", "token %d"), peers);
    family.compare("debug, no target ever on, wide", kCalls, calls(L"Parser", L"token %d"), peers);
    vorel::Exception::setDebugTarget("Store", true);
    vorel::Exception::setDebugTarget(L"Store", true);
    family.compare("debug, another target on", kCalls, calls("Parser", "token %d"), peers);
    family.compare("debug, another target on, wide", kCalls, calls(L"Parser", L"token %d"), peers);
}

}  // namespace bench
