/// \file
/// A copy of the security attributes that a call received.
#pragma once

#include <ostream>
#include <vector>

#include <windows.h>

#include "support/AccessList.h"

namespace test {

struct SharedAttributes {
    DWORD lengthBytes = 0;
    bool inherited = true;
    BYTE revision = 0;
    bool listPresent = false;
    bool listDefaulted = true;
    BYTE listRevision = 0;
    WORD listBytes = 0;
    std::vector<AccessEntry> entries;

    /// The attributes that the library passes for every object that processes share.
    static SharedAttributes expected() {
        return {.lengthBytes = 24,
                .inherited = false,
                .revision = 1,
                .listPresent = true,
                .listDefaulted = false,
                .listRevision = 2,
                .listBytes = 56,
                .entries = sharedEntries()};
    }

    friend bool operator==(const SharedAttributes&, const SharedAttributes&) = default;
    friend void PrintTo(const SharedAttributes& attributes, std::ostream* out) {
        *out << "length " << attributes.lengthBytes << ", inherited " << attributes.inherited << ", revision "
             << int{attributes.revision} << ", list of revision " << int{attributes.listRevision} << " and "
             << attributes.listBytes << " bytes with " << attributes.entries.size() << " entries";
    }
};

inline SharedAttributes sharedAttributes(const SECURITY_ATTRIBUTES* attributes) {
    if (!attributes || !attributes->lpSecurityDescriptor) {
        return {};
    }
    DWORD revision = 0;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    GetSecurityDescriptorControl(attributes->lpSecurityDescriptor, &control, &revision);
    const AccessList list = accessListOf(attributes->lpSecurityDescriptor);
    return {.lengthBytes = attributes->nLength,
            .inherited = attributes->bInheritHandle != FALSE,
            .revision = static_cast<BYTE>(revision),
            .listPresent = list.present,
            .listDefaulted = list.defaulted,
            .listRevision = list.revision,
            .listBytes = list.sizeBytes,
            .entries = list.entries};
}

}  // namespace test
