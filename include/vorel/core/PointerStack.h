/// \file
/// `PointerStack<T>`: the library's simple stack of pointers. It does not own what its pointers point to.
#pragma once

#include "vorel/core/Array.h"
#include "vorel/core/Protocol.h"

namespace vorel {

/// A stack of pointers that are not its own.
template <class T>
class PointerStack {
public:
    /// Puts `item` on top.
    /// \throws MemoryException(slots, 8) and leaves the stack as it was.
    void push(T* item) { m_items.append(item); }

    /// Takes the newest pointer off and returns it.
    /// \throws Exception "Stack is empty".
    T* pop() {
        if (m_items.empty()) {
            detail::throwFailure(L"Stack is empty");
        }
        return m_items.removeLast();
    }

    /// The pointer at `index`, counted from the oldest.
    /// \throws InvalidIndexException when `index` is not below the size.
    T* operator[](unsigned int index) const { return m_items[index]; }

    /// How many pointers there are, and whether there is none.
    [[nodiscard]] unsigned int size() const noexcept { return m_items.size(); }
    [[nodiscard]] bool empty() const noexcept { return m_items.empty(); }

private:
    Array<T*> m_items;
};

}  // namespace vorel
