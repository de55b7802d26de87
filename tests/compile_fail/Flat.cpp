// Not part of any program. The flat interface must also compile with another C runtime, and with C++11.

#include <vorel/vorelCoreC.h>

const vorel_char16* text();
const vorel_char16* text() {
    return vorel_utf16(u"text");
}
