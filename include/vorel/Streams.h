/// \file
/// Output of strings and exceptions to the streams of the standard library. `vorelCore.h` does not include this header,
/// because `<ostream>` is large.
///
///     std::cout << vorel::util::urlEncode("a b", false, false) << '\n';
///     std::cerr << exception << '\n';
///
/// The field width, fill and alignment of the stream apply to the whole text. A string of `char` needs a stream of
/// `char`, and a string of `wchar_t` a stream of `wchar_t`. Threads may use different objects at the same time.
#pragma once

#include <ostream>

#include "vorel/Trail.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

/// Writes `text`, including the zeros in it.
template <class T, class Traits>
std::basic_ostream<T, Traits>& operator<<(std::basic_ostream<T, Traits>& stream, const BaseString<T>& text) {
    return stream << std::basic_string_view<T, Traits>(text.view().data(), text.length());
}

/// Writes all messages of `exception`, oldest first, separated by "; ": in UTF-8 to a stream of `char`, in UTF-16 to a
/// stream of `wchar_t`. The exception does not change, and texts that its functions have returned stay valid.
///
///     no entry named colour; Settings::read: Vorel exception rethrown
///
/// \throws MemoryException if the text cannot be allocated. In this case nothing is written.
template <class T, class Traits>
std::basic_ostream<T, Traits>& operator<<(std::basic_ostream<T, Traits>& stream, const Exception& exception) {
    return stream << detail::trailOf<T>(exception);
}

}  // namespace vorel
