#include "Cases.h"

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    bench::messages(family);
    bench::debugTargets(family);
    return family.finish();
}
