/// \file
/// Answers each signal of one named condition with a signal of another.
///
///     wait=<name> signal=<name> rounds=<count>

#include <vorel/sync/NamedCondition.h>

#include "support/ChildArguments.h"

namespace {

constexpr int kGenerousMs = 30000;

int echo(const test::ChildArguments& arguments) {
    vorel::NamedCondition asked(arguments.wide("wait").c_str());
    vorel::NamedCondition answered(arguments.wide("signal").c_str());
    for (long long round = 0; round != arguments.number("rounds"); ++round) {
        if (!asked.wait(kGenerousMs)) {
            return 1;
        }
        answered.signal();
    }
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return echo({argumentCount, arguments});
    } catch (...) {
        return 2;
    }
}
