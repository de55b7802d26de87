/// \file
/// Answers each signal of one named condition with a signal of another named condition.
///
///     wait=<name> signal=<name> rounds=<count>

#include <vorel/sync/NamedCondition.h>

#include "support/ChildArguments.h"

namespace {

constexpr int kGenerousMs = 30000;

int echo(const test::ChildArguments& arguments) {
    vorel::NamedCondition request(arguments.wide("wait").c_str());
    vorel::NamedCondition answer(arguments.wide("signal").c_str());
    for (long long round = 0; round != arguments.number("rounds"); ++round) {
        if (!request.wait(kGenerousMs)) {
            return 1;
        }
        answer.signal();
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
