#include "LibraryState.h"

#include <atomic>
#include <new>

namespace vorel::detail {

namespace {

enum class Phase { NotBuilt, Building, Alive, Gone };

constinit std::atomic<Phase> s_phase{Phase::NotBuilt};
alignas(LibraryState) constinit unsigned char s_storage[sizeof(LibraryState)] = {};

LibraryState* stored() noexcept {
    return std::launder(reinterpret_cast<LibraryState*>(s_storage));
}

void build() noexcept {
    Phase expected = Phase::NotBuilt;
    if (!s_phase.compare_exchange_strong(expected, Phase::Building)) {
        return;
    }
    try {
        new (s_storage) LibraryState;
        s_phase = Phase::Alive;
    } catch (...) {
        s_phase = Phase::Gone;  // everything works without the state, if less well
    }
}

/// Ties the life of the state to that of the module.
struct Owner {
    Owner() noexcept { build(); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    ~Owner() {
        if (s_phase.exchange(Phase::Gone) == Phase::Alive) {
            stored()->~LibraryState();
        }
    }
} const s_owner;

}  // namespace

LibraryState* libraryState() noexcept {
    Phase phase = s_phase.load(std::memory_order_acquire);
    if (phase == Phase::NotBuilt) {
        build();
        phase = s_phase.load(std::memory_order_acquire);
    }
    return phase == Phase::Alive ? stored() : nullptr;
}

}  // namespace vorel::detail
