/// \file
/// Hands the library a format that the runtime refuses, without an invalid-parameter handler: the runtime ends such a
/// program when a call of it is not protected. The argument is the number of the entry in `kRefusedFormats`.
///
/// Ends with 0, or with 1 for a wrong number.

#include <cstdlib>
#include <iterator>

#include <vorel/vorelCore.h>

#include "support/RefusedFormats.h"

int main(int argumentCount, char** arguments) {
    const auto number = argumentCount > 1 ? std::strtoul(arguments[1], nullptr, 10) : std::size(test::kRefusedFormats);
    if (number >= std::size(test::kRefusedFormats)) {
        return 1;
    }
    vorel::Exception::SetErrorLogLocation("errors.txt", 0);
    _set_invalid_parameter_handler(nullptr);  // the library's, or the one of the compiler's start-up code
    test::kRefusedFormats[number].use();
    return 0;
}
