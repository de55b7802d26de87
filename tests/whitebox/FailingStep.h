/// \file
/// The steps of operations that make many system calls. A test makes each call fail in turn.
///
///     const test::FailingStep kSteps[] = {{"LocalAlloc", test::failStep<importedLocalAlloc>}, …};
///     const auto failing = GetParam().fail();
#pragma once

#include <memory>
#include <ostream>

#include "support/ImportHook.h"

namespace test {

struct FailingStep {
    const char* name;
    std::shared_ptr<void> (*fail)();  ///< makes the call fail until the returned object is destroyed

    friend void PrintTo(const FailingStep& step, std::ostream* out) { *out << step.name; }
};

template <auto& Slot>
std::shared_ptr<void> failStep() {
    using Patch = decltype(failCalls<Slot>());
    return std::shared_ptr<Patch>(new Patch(failCalls<Slot>()));
}

}  // namespace test
