#include "Cases.h"

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    bench::binaryToText(family);
    bench::urls(family);
    bench::unicode(family);
    return family.finish();
}
