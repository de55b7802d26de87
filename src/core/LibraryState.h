/// \file
/// The objects that the library creates when it is loaded and destroys, in reverse order, when it is unloaded. Each
/// layer declares its own; LibraryState.cpp at the top knows all of them and their order.
#pragma once

#include <new>

namespace vorel::detail {

/// Whether the state exists. The first call creates it: that is when the library is loaded, or earlier, when a global
/// object of the program uses the static library.
bool libraryStateExists() noexcept;

/// One object of the state.
template <class T>
class StateObject {
public:
    constexpr StateObject() noexcept = default;
    ~StateObject() = default;
    StateObject(const StateObject&) = delete;
    StateObject& operator=(const StateObject&) = delete;

    /// The object. Null while the state is being created, after it was destroyed, and when it could not be created.
    /// Callers then work without the object: a library that logs while it is loaded or unloaded must not crash.
    [[nodiscard]] T* get() noexcept { return libraryStateExists() ? object() : nullptr; }

    /// For LibraryState.cpp.
    void create() { new (m_bytes) T; }
    void destroy() noexcept { object()->~T(); }

private:
    T* object() noexcept { return std::launder(reinterpret_cast<T*>(m_bytes)); }

    alignas(T) unsigned char m_bytes[sizeof(T)] = {};
};

/// The number of buckets of the tables in the state.
constexpr unsigned int kStateTableBuckets = 31;

}  // namespace vorel::detail
