// Not part of any program. The compiler must reject every line with the comment "rejected", and no other line. The
// library's `round` and the runtime's `round` return different results for some values. So with a using-directive, a
// call of `round` must be ambiguous.

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
