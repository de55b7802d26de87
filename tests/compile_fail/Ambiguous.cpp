// Not part of any program. The compiler must reject every line with the comment "rejected", and no other line: with a
// using-directive, `round` must be neither the library's nor the runtime's by chance, since their results differ.

#include <cmath>

#include <vorel/vorelCore.h>

double withDirective(double value);
double withDirective(double value) {
    using namespace vorel::util;
    double sum = vorel::util::round(value) + std::round(value) + ::round(value);
    sum += round(value);  // rejected: ambiguous
    return sum;
}

double withDeclaration(double value);
double withDeclaration(double value) {
    using vorel::util::round;
    return round(value);
}
