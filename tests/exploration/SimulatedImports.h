/// \file
/// Redirects system calls of this program to the model, while a `SimulatedImports` and a model exist. Calls that are
/// not for the model are forwarded to the system.
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
