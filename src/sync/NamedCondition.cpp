#include "vorel/sync/NamedCondition.h"

#include "sync/SystemEvent.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/secure/SecuredObjects.h"

namespace vorel {

const wchar_t* const NamedCondition::ClassName = L"NamedCondition";

NamedCondition::NamedCondition() {
    detail::throwFailure(L"You must use the const wchar_t* constructor for NamedCondition");
}

// NOLINTNEXTLINE(bugprone-copy-constructor-init): copies nothing
NamedCondition::NamedCondition(const NamedCondition&) {
    detail::throwFailure(L"Copy constructor is not available for NamedCondition");
}

// NOLINTNEXTLINE(cert-oop54-cpp,bugprone-unhandled-self-assignment): assigns nothing
// cppcheck-suppress operatorEqShouldBeLeftUnimplemented; programs link to this operator
NamedCondition& NamedCondition::operator=(const NamedCondition&) {
    detail::throwFailure(L"operator = is not available for NamedCondition");
}

NamedCondition::NamedCondition(const wchar_t* name) {
    createCondition(name);
}

NamedCondition::~NamedCondition() noexcept(false) {
    detail::runDestructor(ClassName, [this] { closeCondition(); });
}

void NamedCondition::createCondition(const wchar_t* name) {
    detail::runRethrowing(ClassName, L"createCondition", [this, name] {
        constexpr int kRetries = 10;
        constexpr int kSleepMs = 50;
        m_name = name;
        BaseString<wchar_t> errorText;
        m_event = detail::KernelHandle(ObtainAccessableEvent(0, 0, name, kRetries, kSleepMs, errorText));
        if (!m_event) {
            throw Exception(L"Failed to create condition '%ls': %ls", m_name.view().data(), errorText.view().data());
        }
    });
}

void NamedCondition::closeCondition() {
    detail::runRethrowing(ClassName, L"closeCondition", [this] { m_event.close(); });
}

void NamedCondition::signal() {
    detail::runRethrowing(ClassName, L"signal", [this] { detail::setEvent(m_event); });
}

bool NamedCondition::wait(int timeout) {
    return detail::runRethrowing(ClassName, L"wait",
                                 [this, timeout] { return m_event && detail::waitForEvent(m_event, timeout); });
}

static_assert(sizeof(NamedCondition) == 24);

}  // namespace vorel
