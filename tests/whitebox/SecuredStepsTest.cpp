/// \file
/// Each step of building the security descriptor of a shared object fails in turn. Every operation must report the
/// failed step in its own way and free the memory of the previous steps.

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Expect.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"
#include "whitebox/SecurityCalls.h"

namespace {

using test::refuse;
using Texts = std::vector<std::string>;

struct Step {
    const char* name;
    std::shared_ptr<void> (*refused)();
    const wchar_t* mutexWarning;  // both texts are followed by the system's text
    const wchar_t* eventText;
    bool isIdentifier = false;

    friend void PrintTo(const Step& step, std::ostream* out) { *out << step.name; }
};

const Step kSteps[] = {
    {"AllocateAndInitializeSid", [] { return refuse(importedAllocateAndInitializeSid); },
     L"ObtainAccessableMutex: AllocateAndInitializeSid failed: ", L"AllocateAndInitializeSid failed: ", true},
    {"LocalAlloc", [] { return refuse(importedLocalAlloc); }, L"ObtainAccessableMutex: LocalAlloc failed: ",
     L"ObtainAccessableEvent: LocalAlloc failed: "},
    {"InitializeAcl", [] { return refuse(importedInitializeAcl); }, L"ObtainAccessableMutex: InitializeAcl failed: ",
     L"ObtainAccessableEvent: InitializeAcl failed: "},
    {"AddAccessDeniedAce", [] { return refuse(importedAddAccessDeniedAce); },
     L"ObtainAccessableMutex: AddAccessDeniedAce failed: ", L"AddAccessDeniedAce failed: "},
    {"AddAccessAllowedAce", [] { return refuse(importedAddAccessAllowedAce); },
     L"ObtainAccessableMutex: AddAccessAllowedAce failed: ", L"AddAccessAllowedAce failed: "},
    {"InitializeSecurityDescriptor", [] { return refuse(importedInitializeSecurityDescriptor); },
     L"ObtainAccessableMutex: InitializeSecurityDescriptor failed: ", L"InitializeSecurityDescriptor failed: "},
    {"SetSecurityDescriptorDacl", [] { return refuse(importedSetSecurityDescriptorDacl); },
     L"ObtainAccessableMutex: SetSecurityDescriptorDacl failed: ", L"SetSecurityDescriptorDacl failed: "},
};

/// Counts the calls that create or open objects. Without a security descriptor, no such call may happen.
class SecurityStep : public testing::TestWithParam<Step> {
protected:
    ~SecurityStep() override {
        EXPECT_EQ(m_objectCalls, 0);
        EXPECT_EQ(m_blocks.live(), 0u);
        EXPECT_EQ(m_blocks.allocations() == 0, GetParam().isIdentifier);
    }

    /// Makes the step fail during the lifetime of the result.
    static std::shared_ptr<void> failStep() { return GetParam().refused(); }

    const std::wstring m_name = test::NamedEvent::uniqueName(L"steps");
    const test::TemporaryLog m_log;
    test::LiveBlocks m_blocks;
    int m_objectCalls = 0;

private:
    /// The hook of each of these calls.
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
        const auto refused = failStep();
        mutex = vorel::ObtainAccessableMutex(0, m_name.c_str(), 5, 60000, &created);
    }
    EXPECT_EQ(mutex, nullptr);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(m_log.messages(),
              Texts{"WARN: " + test::utf8(GetParam().mutexWarning + test::systemText(test::kRefusal))});
}

TEST_P(SecurityStep, FailureReturnsNoEventAndSetsTheText) {
    vorel::BaseString<wchar_t> text(L"before");
    void* event = nullptr;
    {
        const auto refused = failStep();
        event = vorel::ObtainAccessableEvent(0, 0, m_name.c_str(), 5, 60000, text);
    }
    EXPECT_EQ(event, nullptr);
    EXPECT_EQ(text.view(), GetParam().eventText + test::systemText(test::kRefusal));
    EXPECT_FALSE(m_log.exists()) << "the failure is reported to the caller only";
}

TEST_P(SecurityStep, FailureReturnsNoMapping) {
    int created = 7;
    void* mapping = nullptr;
    {
        const auto refused = failStep();
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
        const auto refused = failStep();
        mapping = vorel::ObtainAccessableFileMappingEx(L"some.file", PAGE_READWRITE, FILE_MAP_WRITE, 0, 4096,
                                                       m_name.c_str(), &fileCreated, &mappingCreated);
    };
    if (GetParam().isIdentifier) {
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
                         [](const auto& step) { return std::string(step.param.name); });

}  // namespace
