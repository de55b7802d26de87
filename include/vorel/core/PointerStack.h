/// \file
/// `PointerStack<T>`: a stack of pointers to objects that the stack does not own.
#pragma once

#include "vorel/core/Array.h"
#include "vorel/core/Protocol.h"

namespace vorel {

/// A stack of non-owning pointers.
template <class T>
class PointerStack {
public:
    /// Pushes `item`.
    /// \throws MemoryException(slots, 8) if the stack cannot grow. The stack is unchanged.
    void push(T* item) { m_items.append(item); }

    /// Removes the newest pointer and returns it.
    /// \throws Exception "Stack is empty".
    T* pop() {
        if (m_items.empty()) {
            detail::throwFailure(L"Stack is empty");
        }
        return m_items.removeLast();
    }

    /// The pointer at `index`, counted from the oldest.
    /// \throws InvalidIndexException if `index` is not below the size.
    T* operator[](unsigned int index) const { return m_items[index]; }

    /// The number of pointers, and whether it is 0.
    [[nodiscard]] unsigned int size() const noexcept { return m_items.size(); }
    [[nodiscard]] bool empty() const noexcept { return m_items.empty(); }

private:
    Array<T*> m_items;
};

}  // namespace vorel
