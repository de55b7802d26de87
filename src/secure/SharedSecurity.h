/// \file
/// The security of objects that users share: every user may use the objects, but only the owner of an object can change
/// its access list.
#pragma once

#include <cstddef>
#include <optional>

#include "secure/SecurityBlocks.h"

namespace vorel::detail {

/// The steps that build the security attributes.
enum class SecurityStep { MakeSid, AllocateAcl, InitializeAcl, AddDenied, AddAllowed, InitializeDescriptor, SetAcl };

struct SecurityStepDescription {
    const wchar_t* call;  ///< the system call of the step
    bool namesOperation;  ///< whether the failure text of `ObtainAccessableEvent` begins with the operation's name
};

/// Indexed by `SecurityStep`.
inline constexpr SecurityStepDescription kSecurityStepDescriptions[] = {
    {L"AllocateAndInitializeSid", false},      // MakeSid
    {L"LocalAlloc", true},                     // AllocateAcl
    {L"InitializeAcl", true},                  // InitializeAcl
    {L"AddAccessDeniedAce", false},            // AddDenied
    {L"AddAccessAllowedAce", false},           // AddAllowed
    {L"InitializeSecurityDescriptor", false},  // InitializeDescriptor
    {L"SetSecurityDescriptorDacl", false},     // SetAcl
};

constexpr const SecurityStepDescription& descriptionOf(SecurityStep step) noexcept {
    return kSecurityStepDescriptions[static_cast<std::size_t>(step)];
}

/// Security attributes and the memory that they point to. The constructor builds them; the destructor frees them.
class SharedSecurity {
public:
    SharedSecurity() noexcept;
    ~SharedSecurity() = default;

    SharedSecurity(const SharedSecurity&) = delete;
    SharedSecurity& operator=(const SharedSecurity&) = delete;

    /// Whether every step succeeded. If not, `failedStep` is the step that failed, and `error` is its system error.
    [[nodiscard]] bool isComplete() const noexcept { return !m_failedStep; }
    [[nodiscard]] SecurityStep failedStep() const noexcept { return *m_failedStep; }
    [[nodiscard]] int error() const noexcept { return static_cast<int>(m_error); }

    /// The attributes for calls that create objects. Handles are not inherited.
    [[nodiscard]] SECURITY_ATTRIBUTES* attributes() noexcept { return &m_attributes; }

private:
    bool build() noexcept;
    bool check(SecurityStep step, bool succeeded) noexcept;

    Sid m_everyone;
    Acl m_list;
    SECURITY_DESCRIPTOR m_descriptor{};
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), &m_descriptor, FALSE};
    std::optional<SecurityStep> m_failedStep;
    DWORD m_error = 0;
};

}  // namespace vorel::detail
