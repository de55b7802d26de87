/// \file
/// Access to a private member, for tests of the implementation. The language does not check access in an explicit
/// template instantiation, so `Reveal` can be instantiated with a private member.
///
///     namespace test {
///     struct LockLogFile : PrivateMember<LockLogFile, bool (*)(int, bool) noexcept> {};
///     template struct Reveal<LockLogFile, &vorel::Exception::LockLogFile>;
///     }
///
///     reveal(test::LockLogFile())(descriptor, true);
#pragma once

#include <cstddef>

namespace test {

#ifndef __clang__  // clang does not have this warning
// Each tag intentionally has one non-template function.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-template-friend"
#endif

/// Declares `reveal(Tag)`, which returns a `T`.
template <class Tag, class T>
struct PrivateMember {
    using Type = T;
    friend T reveal(Tag);
};

#ifndef __clang__
#pragma GCC diagnostic pop
#endif

/// Defines `reveal(Tag)`, which returns `Member`.
template <class Tag, typename Tag::Type Member>
struct Reveal {
    friend typename Tag::Type reveal(Tag) { return Member; }
};

/// The offset of a member from the start of its object, in bytes.
template <class Object, class Member>
std::size_t offsetOf(const Object& object, Member Object::*member) {
    return static_cast<std::size_t>(reinterpret_cast<const volatile char*>(&(object.*member)) -
                                    reinterpret_cast<const volatile char*>(&object));
}

}  // namespace test
