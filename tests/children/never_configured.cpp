/// \file
/// Logs three lines without setting the location of the log.

#include <vorel/exceptions/Exception.h>

int main() {
    if (vorel::Exception::GetMirrorErrorLog()) {
        return 1;
    }
    vorel::Exception::warn("first");
    vorel::Exception::warn("second");
    vorel::Exception::warn("third");
    return 0;
}
