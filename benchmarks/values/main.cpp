#include "Cases.h"

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    bench::parseIntegers(family);
    bench::parseDoubles(family);
    bench::formatDoubles(family);
    bench::formatIntegers(family);
    bench::splitAndJoin(family);
    bench::compareTexts(family);
    return family.finish();
}
