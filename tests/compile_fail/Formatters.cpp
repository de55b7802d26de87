// Not part of any program. This source must compile with a standard library that has <format>.

#include <string>
#include <type_traits>

#include <vorel/Formatters.h>
#include <vorel/vorelCore.h>

#if !__has_include(<format>)
#error "the standard library has no <format>"
#endif

using vorel::BaseString;
using vorel::Exception;
using vorel::MemoryException;

template <class Value, class T>
constexpr bool kIsFormattable = std::is_default_constructible_v<std::formatter<Value, T>>;

static_assert(kIsFormattable<BaseString<char>, char> && kIsFormattable<BaseString<wchar_t>, wchar_t>);
static_assert(!kIsFormattable<BaseString<wchar_t>, char> && !kIsFormattable<BaseString<char>, wchar_t>);
static_assert(kIsFormattable<Exception, char> && kIsFormattable<MemoryException, wchar_t>);

std::string narrow(const BaseString<char>& text, const MemoryException& derived, const Exception& base);
std::string narrow(const BaseString<char>& text, const MemoryException& derived, const Exception& base) {
    return std::format("{} {:*>10} {:.3} {} {:>{}}", text, text, text, derived, base, 80);
}

std::wstring wide(const BaseString<wchar_t>& text, const MemoryException& derived, const Exception& base);
std::wstring wide(const BaseString<wchar_t>& text, const MemoryException& derived, const Exception& base) {
    return std::format(L"{} {:*>10} {:.3} {} {:>{}}", text, text, text, derived, base, 80);
}
