/// \file
/// Writes two lines, and never says where to.

#include <vorel/exceptions/Exception.h>

int main() {
    vorel::Exception::warn("first");
    vorel::Exception::warn("second");
    return 0;
}
