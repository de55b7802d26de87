/// \file
/// Replaces a function that this program imports, by changing its import table. Affects calls of the static library.
///
///     extern "C" decltype(&::Sleep) importedSleep __asm__("__imp_Sleep");
///     const test::ImportPatch patch(importedSleep, &recordingSleep);
#pragma once

#include <stdexcept>

#include <windows.h>

namespace test {

template <class Function>
class ImportPatch {
public:
    ImportPatch(Function*& slot, Function* replacement) : m_slot(slot), m_original(slot) {
        if (!set(replacement)) {
            throw std::runtime_error("cannot write the import table");
        }
    }
    ~ImportPatch() { set(m_original); }

    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    /// The original function, for a replacement that forwards calls.
    [[nodiscard]] Function* original() const { return m_original; }

private:
    bool set(Function* function) {
        DWORD before = 0;
        if (!VirtualProtect(&m_slot, sizeof m_slot, PAGE_READWRITE, &before)) {
            return false;
        }
        m_slot = function;
        VirtualProtect(&m_slot, sizeof m_slot, before, &before);
        return true;
    }

    Function*& m_slot;
    Function* m_original;
};

}  // namespace test
