/// \file
/// The objects that the library creates when it is loaded, and destroys in reverse order when it is unloaded. Each
/// layer declares its own objects. src/LibraryState.cpp, which may include every layer, lists all objects in the order
/// in which they are created.
#pragma once

#include <new>

namespace vorel::detail {

/// Whether the state exists. Creates the state if its creation has not started yet. Usually, the state is created when
/// the library is loaded. It is created earlier if a global object of the program uses the static library first.
bool libraryStateExists() noexcept;

/// One object of the state.
template <class T>
class StateObject {
public:
    constexpr StateObject() noexcept = default;
    ~StateObject() = default;
    StateObject(const StateObject&) = delete;
    StateObject& operator=(const StateObject&) = delete;

    /// Returns the object. The result is null while the state is being created, from the start of its destruction, and
    /// if it cannot be created. Callers must then work without the object, because a program may log while the library
    /// is loaded or unloaded.
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
