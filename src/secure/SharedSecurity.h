/// \file
/// The security of every object that is shared between users: Everyone may use it, nobody may change its security.
#pragma once

#include "secure/SecurityBlocks.h"

namespace vorel::detail {

/// A step on the way to the security attributes, by the name of its call.
struct SecurityStep {
    const wchar_t* call;
    bool namesOperation;  ///< whether a message about its failure always names the operation

    /// A step is itself alone. Its text tells nothing: every source has a literal of its own.
    friend bool operator==(const SecurityStep& a, const SecurityStep& b) noexcept { return &a == &b; }
};

inline constexpr SecurityStep kMakeSid{L"AllocateAndInitializeSid", false};
inline constexpr SecurityStep kAllocateAcl{L"LocalAlloc", true};
inline constexpr SecurityStep kInitializeAcl{L"InitializeAcl", true};
inline constexpr SecurityStep kAddDenied{L"AddAccessDeniedAce", false};
inline constexpr SecurityStep kAddAllowed{L"AddAccessAllowedAce", false};
inline constexpr SecurityStep kInitializeDescriptor{L"InitializeSecurityDescriptor", false};
inline constexpr SecurityStep kSetList{L"SetSecurityDescriptorDacl", false};

/// Security attributes with all that they point to, built by the constructor and freed with the object.
class SharedSecurity {
public:
    SharedSecurity() noexcept;
    ~SharedSecurity() = default;

    SharedSecurity(const SharedSecurity&) = delete;
    SharedSecurity& operator=(const SharedSecurity&) = delete;

    /// Whether every step succeeded; if not, `failedStep` and `error` tell which one did not, and why.
    [[nodiscard]] bool isComplete() const noexcept { return m_failedStep == nullptr; }
    [[nodiscard]] const SecurityStep& failedStep() const noexcept { return *m_failedStep; }
    [[nodiscard]] int error() const noexcept { return static_cast<int>(m_error); }

    /// For the calls that create objects. Handles are not inherited.
    [[nodiscard]] SECURITY_ATTRIBUTES* attributes() noexcept { return &m_attributes; }

private:
    bool build() noexcept;
    bool check(const SecurityStep& step, bool succeeded) noexcept;

    Sid m_everyone;
    Acl m_list;
    SECURITY_DESCRIPTOR m_descriptor{};
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), &m_descriptor, FALSE};
    const SecurityStep* m_failedStep = nullptr;
    DWORD m_error = 0;
};

}  // namespace vorel::detail
