#include "exceptions/DebugTargets.h"

#include "exceptions/LogState.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

constinit std::atomic<bool> DebugTargetsUsed{false};

void Exception::setDebugTarget(const char* name, bool active) {
    detail::runRethrowing(L"Exception", L"setDebugTarget", [=] {
        if (detail::LogState* const state = detail::logState.get(); state && name) {
            state->narrowDebugTargets.set(name, active);
        }
    });
}

void Exception::setDebugTarget(const wchar_t* name, bool active) {
    detail::runRethrowing(L"Exception", L"setDebugTarget", [=] {
        if (detail::LogState* const state = detail::logState.get(); state && name) {
            state->wideDebugTargets.set(name, active);
        }
    });
}

bool Exception::isDebugTargetActive(const char* name) noexcept {
    return DebugTargetsUsed.load(std::memory_order_relaxed) && name && isDebugTargetActiveInternal(name);
}

bool Exception::isDebugTargetActive(const wchar_t* name) noexcept {
    return DebugTargetsUsed.load(std::memory_order_relaxed) && name && isDebugTargetActiveInternal(name);
}

bool Exception::isDebugTargetActiveInternal(const char* name) noexcept {
    const detail::LogState* const state = detail::logState.get();
    return state && state->narrowDebugTargets.isActive(name);
}

bool Exception::isDebugTargetActiveInternal(const wchar_t* name) noexcept {
    const detail::LogState* const state = detail::logState.get();
    return state && state->wideDebugTargets.isActive(name);
}

}  // namespace vorel
