#include "LibraryState.h"

#include <atomic>
#include <iterator>

#include "core/LibraryState.h"
#include "core/SpyLock.h"
#include "exceptions/InvalidParameter.h"
#include "exceptions/LogState.h"
#include "exceptions/ThreadLogging.h"
#include "flat/LastError.h"
#include "text/Base64State.h"
#include "text/CodePageState.h"

namespace vorel::detail {

namespace {

template <auto& object>
constexpr StateEntry kObject = {&object, [] { object.create(); }, []() noexcept { object.destroy(); }};

constexpr StateEntry kObjects[] = {
    kObject<spyLock>,
    kObject<base64Tables>,
    kObject<logState>,
    kObject<codePageState>,
    kObject<flat::lastErrors>,
    kObject<silencedThreadEnds>,
    // Destroyed first, because the runtime must not call a handler after the objects that the handler uses are
    // destroyed.
    kObject<currentInvalidParameterHandler>,
};

enum class Phase { NotCreated, InCreation, Exists, Gone };

constinit std::atomic<Phase> s_phase{Phase::NotCreated};

void destroy(const StateEntry* end) noexcept {
    while (end != std::begin(kObjects)) {
        (--end)->destroy();
    }
}

void create() noexcept {
    Phase expected = Phase::NotCreated;
    if (!s_phase.compare_exchange_strong(expected, Phase::InCreation)) {
        return;
    }
    const StateEntry* object = std::begin(kObjects);
    try {
        for (; object != std::end(kObjects); ++object) {
            object->create();
        }
        s_phase = Phase::Exists;
    } catch (...) {
        destroy(object);
        s_phase = Phase::Gone;  // the library works without its state, with reduced functionality
    }
}

/// Creates the state when the module is loaded, unless the state already exists, and destroys it when the module is
/// unloaded.
struct Owner {
    Owner() noexcept { create(); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    ~Owner() {
        if (s_phase.exchange(Phase::Gone) == Phase::Exists) {
            destroy(std::end(kObjects));
        }
    }
} const s_owner;

}  // namespace

std::span<const StateEntry> stateEntries() noexcept {
    return kObjects;
}

bool libraryStateExists() noexcept {
    Phase phase = s_phase.load(std::memory_order_acquire);
    if (phase == Phase::NotCreated) {
        create();
        phase = s_phase.load(std::memory_order_acquire);
    }
    return phase == Phase::Exists;
}

}  // namespace vorel::detail
