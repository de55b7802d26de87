#include "Cases.h"

#include <cstdlib>
#include <string_view>

int main(int argc, char** argv) {
    if (argc > 1 && std::string_view(argv[1]) == "--writer") {
        return bench::writeLines(argv + 2);
    }
    bench::Growth growth(bench::readOptions(argc, argv));
    bench::strings(growth);
    bench::lists(growth);
    bench::maps(growth);
    const bool isComplete = bench::logWriters(growth);
    const int result = growth.finish();
    return isComplete ? result : EXIT_FAILURE;
}
