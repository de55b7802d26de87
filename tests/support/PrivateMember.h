/// \file
/// A way to a private member for tests of the inside: the language does not check access where a template is
/// instantiated by name.
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

#ifndef __clang__  // which knows no such warning
// A function for each tag, not a template, is what is meant.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-template-friend"
#endif

/// Declares `reveal(Tag)`, which gives a `T`.
template <class Tag, class T>
struct PrivateMember {
    using Type = T;
    friend T reveal(Tag);
};

#ifndef __clang__
#pragma GCC diagnostic pop
#endif

/// Defines `reveal(Tag)`, which gives `Member`.
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
