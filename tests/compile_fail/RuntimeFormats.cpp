// Not part of any program. Without VOREL_CHECK_FORMATS the compiler must not warn about narrow formats that are valid
// for the Windows runtime, even if the compiler's own check does not know them.

#include <cstddef>
#include <cstdint>

#include <vorel/vorelCore.h>

void use(vorel::Exception& e, vorel::BaseString<char>& text, const wchar_t* wide, signed char byte);
void use(vorel::Exception& e, vorel::BaseString<char>& text, const wchar_t* wide, signed char byte) {
    vorel::Exception::warn("%hs %ls %s %S", "narrow", wide, "own", wide);
    vorel::Exception::warn("%I64d %I64u %I32d %Iu", 1LL, 2ULL, 3, sizeof byte);
    vorel::Exception::debug("target", "%hhd %zu %td %jd", byte, sizeof byte, std::ptrdiff_t{1}, std::intmax_t{2});
    e.appendMessage("%F %lld %hc", 1.0, 1LL, 'c');
    text.format("%hs %I64d", "narrow", 1LL);
    static_cast<void>(vorel::Exception("%hs %I64d", "narrow", 1LL));
    static_cast<void>(vorel::DiffException("%hs %I64d", "narrow", 1LL));
}
