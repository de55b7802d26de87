// Not part of any program. The flat interface must compile without the universal C runtime and C++20.

#include <vorel/vorelCoreC.h>

const vorel_char16* text();
const vorel_char16* text() {
    return vorel_utf16(u"text");
}
