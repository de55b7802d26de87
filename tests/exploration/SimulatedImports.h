/// \file
/// Redirects the system calls of this program to the model, while a model exists.
#pragma once

#include <memory>

namespace exploration {

class SimulatedImports {
public:
    SimulatedImports();
    ~SimulatedImports();

    SimulatedImports(const SimulatedImports&) = delete;
    SimulatedImports& operator=(const SimulatedImports&) = delete;

private:
    struct Patches;
    std::unique_ptr<Patches> m_patches;
};

}  // namespace exploration
