/// \file
/// Logs three lines without setting the location of the log. The exit code is 1 if the log's mirror (see
/// `Exception::GetMirrorErrorLog`) is on at load.

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
