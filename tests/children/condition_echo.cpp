/// \file
/// Answers the signals of one named condition with signals of another named condition, until the given number of
/// signals is answered.
///
///     wait=<name> signal=<name> rounds=<count>
///
/// The exit code is 0 if all signals were answered, 1 if a signal did not arrive in 30 seconds, and 2 after an
/// exception.

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
