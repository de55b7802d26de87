/// \file
/// Calls the library with a format that the runtime rejects, in a program without an invalid-parameter handler. Unless
/// the library protects its call of the runtime, the runtime ends the program. The argument is an index into
/// `kRejectedFormats`.
///
/// The exit code is 0, or 1 for an invalid index.

#include <cstdlib>
#include <iterator>

#include <vorel/vorelCore.h>

#include "support/RejectedFormats.h"

int main(int argumentCount, char** arguments) {
    const auto number = argumentCount > 1 ? std::strtoul(arguments[1], nullptr, 10) : std::size(test::kRejectedFormats);
    if (number >= std::size(test::kRejectedFormats)) {
        return 1;
    }
    vorel::Exception::SetErrorLogLocation("errors.txt", 0);
    _set_invalid_parameter_handler(nullptr);  // removes the handler of the library or of the start-up code
    test::kRejectedFormats[number].use();
    return 0;
}
