#include "secure/SharedSecurity.h"

namespace vorel::detail {

SharedSecurity::SharedSecurity() noexcept {
    build();
}

bool SharedSecurity::build() noexcept {
    m_everyone = makeSid(SECURITY_WORLD_SID_AUTHORITY, SECURITY_WORLD_RID);
    if (!check(SecurityStep::MakeSid, m_everyone != nullptr)) {
        return false;
    }
    const DWORD listSize = 2 * GetLengthSid(m_everyone.get()) + 32;  // the ACL header and two ACEs, each with the SID
    m_list = allocateAcl(listSize);
    // The system checks the entries in order, so the denied rights come first.
    return check(SecurityStep::AllocateAcl, m_list != nullptr) &&
           check(SecurityStep::InitializeAcl, InitializeAcl(m_list.get(), listSize, ACL_REVISION) != FALSE) &&
           check(SecurityStep::AddDenied,
                 AddAccessDeniedAce(m_list.get(), ACL_REVISION, WRITE_DAC | WRITE_OWNER, m_everyone.get()) != FALSE) &&
           check(SecurityStep::AddAllowed,
                 AddAccessAllowedAce(m_list.get(), ACL_REVISION, GENERIC_ALL, m_everyone.get()) != FALSE) &&
           check(SecurityStep::InitializeDescriptor,
                 InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION) != FALSE) &&
           check(SecurityStep::SetAcl, SetSecurityDescriptorDacl(&m_descriptor, TRUE, m_list.get(), FALSE) != FALSE);
}

bool SharedSecurity::check(SecurityStep step, bool succeeded) noexcept {
    if (!succeeded) {
        m_error = GetLastError();
        m_failedStep = step;
    }
    return succeeded;
}

static_assert(sizeof(SECURITY_ATTRIBUTES) == 24 && SECURITY_DESCRIPTOR_REVISION == 1 && ACL_REVISION == 2);

}  // namespace vorel::detail
