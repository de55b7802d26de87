/// \file
/// Writes three lines, and never says where to.

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
