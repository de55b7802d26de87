/// \file
/// Output of strings and exceptions to the streams of the standard library. `vorelCore.h` does not include this header,
/// because `<ostream>` is large.
///
///     std::cout << vorel::util::urlEncode("a b", false, false) << '\n';
///     std::cerr << exception << '\n';
///
/// Width, fill and alignment apply to the whole text. The string and the stream must have the same width. Threads may
/// use different objects at the same time.
#pragma once

#include <ostream>

#include "vorel/Trail.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

/// Writes the text of `text`, including embedded zeros; nothing for the empty string.
template <class T, class Traits>
std::basic_ostream<T, Traits>& operator<<(std::basic_ostream<T, Traits>& stream, const BaseString<T>& text) {
    return stream << std::basic_string_view<T, Traits>(text.view().data(), text.length());
}

/// Writes all messages of `exception`, oldest first, separated by "; ": in UTF-8 to a stream of `char`, in UTF-16 to a
/// stream of `wchar_t`. The exception does not change, and texts that it returned stay valid.
///
///     no entry named colour; Settings::read: Vorel exception rethrown
///
/// \throws MemoryException if the text cannot be allocated; nothing is written.
template <class T, class Traits>
std::basic_ostream<T, Traits>& operator<<(std::basic_ostream<T, Traits>& stream, const Exception& exception) {
    return stream << detail::trailOf<T>(exception);
}

}  // namespace vorel
