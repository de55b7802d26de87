/// \file
/// Each step of building the security descriptor of a shared object fails in turn. Every operation must report the
/// failure in the documented way, and free the memory of the previous steps.

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Expect.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"
#include "whitebox/FailingStep.h"
#include "whitebox/LiveBlocks.h"

namespace {

using test::failStep;
using Texts = std::vector<std::string>;

struct Step {
    test::FailingStep call;
    bool eventTextNamesTheOperation = false;  ///< whether "ObtainAccessableEvent: " precedes the error text of the step
    bool allocatesSid = false;  ///< whether this is the first step, which allocates the security identifier

    friend void PrintTo(const Step& step, std::ostream* out) { PrintTo(step.call, out); }
};

const Step kSteps[] = {
    {{"AllocateAndInitializeSid", failStep<importedAllocateAndInitializeSid>}, false, true},
    {{"LocalAlloc", failStep<importedLocalAlloc>}, true},
    {{"InitializeAcl", failStep<importedInitializeAcl>}, true},
    {{"AddAccessDeniedAce", failStep<importedAddAccessDeniedAce>}},
    {{"AddAccessAllowedAce", failStep<importedAddAccessAllowedAce>}},
    {{"InitializeSecurityDescriptor", failStep<importedInitializeSecurityDescriptor>}},
    {{"SetSecurityDescriptorDacl", failStep<importedSetSecurityDescriptorDacl>}},
};

/// Counts the calls that create or open objects. Without a security descriptor, no such call may happen.
class SecurityStep : public testing::TestWithParam<Step> {
protected:
    ~SecurityStep() override {
        EXPECT_EQ(m_objectCalls, 0);
        EXPECT_EQ(m_blocks.live(), 0u);
        EXPECT_EQ(m_blocks.allocations() == 0, GetParam().allocatesSid);
    }

    /// The step's error text, prefixed with `operation` (which may be empty).
    static std::wstring textOfStep(const std::wstring& operation) {
        return operation + test::widened(GetParam().call.name) + L" failed: " + test::systemText(test::kFailureError);
    }

    const std::wstring m_name = test::NamedEvent::uniqueName(L"steps");
    const test::TemporaryLog m_log;
    test::LiveBlocks m_blocks;
    int m_objectCalls = 0;

private:
    /// The hook of every call that creates or opens an object. The hook counts the call and fails.
    struct CountCall {
        HANDLE operator()(auto...) const {
            ++calls;
            return nullptr;
        }
        int& calls;
    };

    test::ImportHook<importedCreateMutexW> m_createMutex{CountCall{m_objectCalls}};
    test::ImportHook<importedOpenMutexW> m_openMutex{CountCall{m_objectCalls}};
    test::ImportHook<importedCreateEventW> m_createEvent{CountCall{m_objectCalls}};
    test::ImportHook<importedOpenEventW> m_openEvent{CountCall{m_objectCalls}};
    test::ImportHook<importedCreateFileW> m_createFile{CountCall{m_objectCalls}};
    test::ImportHook<importedCreateFileMappingW> m_createMapping{CountCall{m_objectCalls}};
    test::ImportHook<importedOpenFileMappingW> m_openMapping{CountCall{m_objectCalls}};
};

TEST_P(SecurityStep, FailureReturnsNoMutexAndLogsAWarning) {
    int created = 7;
    void* mutex = nullptr;
    {
        const auto failing = GetParam().call.fail();
        mutex = vorel::ObtainAccessableMutex(0, m_name.c_str(), 5, 60000, &created);
    }
    EXPECT_EQ(mutex, nullptr);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(m_log.messages(), Texts{"WARN: " + test::utf8(textOfStep(L"ObtainAccessableMutex: "))});
}

TEST_P(SecurityStep, FailureReturnsNoEventAndSetsTheErrorText) {
    vorel::BaseString<wchar_t> text(L"before");
    void* event = nullptr;
    {
        const auto failing = GetParam().call.fail();
        event = vorel::ObtainAccessableEvent(0, 0, m_name.c_str(), 5, 60000, text);
    }
    EXPECT_EQ(event, nullptr);
    EXPECT_EQ(text.view(), textOfStep(GetParam().eventTextNamesTheOperation ? L"ObtainAccessableEvent: " : L""));
    EXPECT_FALSE(m_log.exists()) << "the failure must be reported only to the caller, and not logged";
}

TEST_P(SecurityStep, FailureReturnsNoMapping) {
    int created = 7;
    void* mapping = nullptr;
    {
        const auto failing = GetParam().call.fail();
        mapping = vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0, 4096,
                                                     m_name.c_str(), &created);
    }
    EXPECT_EQ(mapping, nullptr);
    EXPECT_EQ(created, 0);
    EXPECT_FALSE(m_log.exists());
}

TEST_P(SecurityStep, FailureReturnsNoMappingOfANamedFile) {
    bool fileCreated = true;
    bool mappingCreated = true;
    void* mapping = nullptr;
    const auto obtain = [&] {
        const auto failing = GetParam().call.fail();
        mapping = vorel::ObtainAccessableFileMappingEx(L"some.file", PAGE_READWRITE, FILE_MAP_WRITE, 0, 4096,
                                                       m_name.c_str(), &fileCreated, &mappingCreated);
    };
    if (GetParam().allocatesSid) {
        EXPECT_NO_THROW(obtain());
        EXPECT_FALSE(m_log.exists());
    } else {
        test::expectThrows<vorel::Exception>(obtain,
                                             {L"ObtainAccessableFileMappingEx: Severe Error while opening some.file",
                                              L"Accessable::ObtainAccessableFileMappingEx: Vorel exception rethrown"});
    }
    EXPECT_EQ(mapping, nullptr);
    EXPECT_FALSE(fileCreated);
    EXPECT_FALSE(mappingCreated);
}

INSTANTIATE_TEST_SUITE_P(Each, SecurityStep, testing::ValuesIn(kSteps),
                         [](const auto& step) { return std::string(step.param.call.name); });

}  // namespace
