#include "support/Options.h"

#include <windows.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>

#include "support/Clock.h"

namespace bench {

namespace {

constexpr unsigned long kFewestRounds = 15;

[[noreturn]] void reject(const char* argument) {
    std::fprintf(stderr, "wrong argument: %s\nusage: [--csv <file>] [--rounds <count>] [--server <id>] [<name>]\n",
                 argument);
    std::exit(2);
}

unsigned long numberOf(const char* text) {
    char* end = nullptr;
    const unsigned long number = std::strtoul(text, &end, 10);
    if (number == 0 || *end != '\0') {
        reject(text);
    }
    return number;
}

void bindToOneProcessor() {
    DWORD_PTR mine = 0;
    DWORD_PTR system = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &mine, &system) && mine != 0) {
        SetThreadAffinityMask(GetCurrentThread(), std::bit_floor(mine));
    }
}

}  // namespace

Options readOptions(int count, char** arguments) {
    Options options;
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        const char* const value = at + 1 < count ? arguments[at + 1] : "";
        if (argument == "--csv") {
            options.csv = value;
        } else if (argument == "--rounds") {
            const unsigned long rounds = numberOf(value);
            options.rounds = rounds == 1 ? 1 : std::max(rounds, kFewestRounds);
        } else if (argument == "--server") {
            options.server = numberOf(value);
        } else if (argument.starts_with("--")) {
            reject(arguments[at]);
        } else {
            options.filter = argument;
            continue;
        }
        ++at;
    }
    setWineServer(options.server);
    bindToOneProcessor();
    return options;
}

}  // namespace bench
