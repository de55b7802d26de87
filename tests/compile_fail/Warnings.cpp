// Not part of any program. With VOREL_CHECK_FORMATS the compiler must warn about every line with the comment "warns",
// and about no other line. About lines with "(GCC)", GCC must warn and clang must not warn, because clang knows
// these formats of the Windows runtime.

#include <vorel/vorelCore.h>

VOREL_DEPRECATED("use newName") void oldName();

void use(vorel::Exception& e, vorel::BaseString<char>& text, const wchar_t* wide, int number);
void use(vorel::Exception& e, vorel::BaseString<char>& text, const wchar_t* wide, int number) {
    vorel::Exception::warn("%d of %s: %ls, %zu, %lld", number, "narrow", wide, sizeof number, 1LL);
    vorel::Exception::warn("%s", number);   // warns: -Wformat=
    vorel::Exception::warn("%hs", "text");  // warns: -Wformat= (GCC)
    vorel::Exception::warn("%I64d", 1LL);   // warns: -Wformat= (GCC)
    vorel::Exception::swigwarn("%d");       // warns: -Wformat=
    vorel::Exception::debug("target", "%d", number);
    vorel::Exception::debug("target", "%s", number);  // warns: -Wformat=
    vorel::Exception::log(nullptr, 0, "prefix", "%d", number);
    vorel::Exception::log(nullptr, 0, "prefix", "%s", number);  // warns: -Wformat=
    vorel::Exception::trace("%s", number);                      // warns: -Wformat=
    e.appendMessage("%5.2f", 1.0);
    e.appendMessage("%5.2f", number);  // warns: -Wformat=
    text.format("%d", number);
    text.format("%s", wide);    // warns: -Wformat=
    text.format(text.c_str());  // warns: -Wformat-security
    static_cast<void>(vorel::Exception("%s", "text"));
    static_cast<void>(vorel::Exception("%s", number));              // warns: -Wformat=
    static_cast<void>(vorel::DiffException("%s", number));          // warns: -Wformat=
    static_cast<void>(vorel::DiffErrorException("%s", number));     // warns: -Wformat=
    static_cast<void>(vorel::DiffWarningException("%s", number));   // warns: -Wformat=
    static_cast<void>(vorel::InvalidIndexException("%s", number));  // warns: -Wformat=
    oldName();                                                      // warns: -Wdeprecated-declarations
}
