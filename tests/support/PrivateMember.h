/// \file
/// A way to a private member for tests of the inside: the language does not check access where a template is
/// instantiated by name.
///
///     namespace test {
///     struct LockLogFile {
///         using Type = bool (*)(int, bool) noexcept;
///         friend Type reveal(LockLogFile);
///     };
///     template struct Reveal<LockLogFile, &vorel::Exception::LockLogFile>;
///     }
///
///     reveal(test::LockLogFile())(descriptor, true);
#pragma once

namespace test {

/// Defines `reveal(Tag)`, which gives `Member`.
template <class Tag, typename Tag::Type Member>
struct Reveal {
    friend typename Tag::Type reveal(Tag) { return Member; }
};

}  // namespace test
