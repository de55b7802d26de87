#include "Cases.h"

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    bench::criticalSections(family);
    bench::mutexes(family);
    bench::conditions(family);
    bench::logLines(family);
    return family.finish();
}
