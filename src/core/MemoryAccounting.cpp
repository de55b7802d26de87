#include "vorel/core/MemoryAccounting.h"

#include <atomic>
#include <cstdlib>
#include <type_traits>

#include "core/SpyLock.h"
#include "vorel/core/Guard.h"
#include "vorel/core/Protocol.h"

namespace vorel {

const wchar_t* const AllocBase::msgConstructorError = L"Error when calling class constructor.";
const wchar_t* const AllocBase::msgCopyConstructorError = L"Error when calling class copy constructor.";

AllocSpy* AllocBase::m_spy = nullptr;

AllocSpy::~AllocSpy() = default;

void AllocBase::registerSpy(AllocSpy* spy) {
    detail::runRethrowing(L"AllocBase", L"registerSpy", [spy] {
        const auto store = [spy] { std::atomic_ref(m_spy).store(spy, std::memory_order_release); };
        if (AutoCriticalSection* const lock = detail::spyLock.get()) {
            const Guard<AutoCriticalSection> held(*lock);
            store();
        } else {
            store();
        }
    });
}

AllocSpy* AllocBase::registeredSpy() noexcept {
    return std::atomic_ref(m_spy).load(std::memory_order_acquire);
}

void* AllocBase::_alloc(unsigned long long size) noexcept {
    return std::malloc(size);
}

void AllocBase::_free(void* p) noexcept {
    std::free(p);
}

MemAllocInfo::MemAllocInfo() noexcept : allocatedTotal(0), freedTotal(0), counters() {}

void MemAllocInfo::clear() noexcept {
    *this = MemAllocInfo();
}

LeakDetector::LeakDetector() noexcept = default;
LeakDetector::LeakDetector(const char*, bool) noexcept {}
LeakDetector::LeakDetector(const wchar_t*, bool) noexcept {}
LeakDetector::~LeakDetector() = default;

void LeakDetector::Add(void*, const char*) noexcept {}
void LeakDetector::Add(void*, const wchar_t*) noexcept {}
void LeakDetector::Sub(void*) noexcept {}

LeakDetector& LeakDetector::SetName(const char*) noexcept {
    return *this;
}

LeakDetector& LeakDetector::SetName(const wchar_t*) noexcept {
    return *this;
}

void LeakDetector::ResetClass() noexcept {}

static_assert(sizeof(MemAllocInfo) == 2 * 8 + 32 * 4 && std::is_standard_layout_v<MemAllocInfo>);
static_assert(std::is_empty_v<AllocBase> && std::is_standard_layout_v<LeakDetector>);

}  // namespace vorel
