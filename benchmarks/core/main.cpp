#include "Cases.h"

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    bench::appendToStrings(family);
    bench::readAndMoveStrings(family);
    bench::formatTexts(family);
    bench::fillArrays(family);
    bench::splitTexts(family);
    bench::findInMaps(family);
    bench::insertIntoMaps(family);
    return family.finish();
}
