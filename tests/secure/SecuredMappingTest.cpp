#include "vorel/secure/SecuredMappings.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "secure/ObjectSecurity.h"
#include "secure/PeerResult.h"
#include "support/ChildProcess.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"

namespace {

using test::Handle;
using test::kPeerDone;
using test::kPeerObtained;
using test::NamedEvent;
using test::runChild;

constexpr DWORD kSize = 4096;

/// A view of the first number in a mapping.
class View {
public:
    explicit View(const Handle& mapping, DWORD access = FILE_MAP_WRITE)
        : m_view(MapViewOfFile(mapping.get(), access, 0, 0, 0)) {}
    ~View() {
        if (m_view) {
            UnmapViewOfFile(m_view);
        }
    }

    View(const View&) = delete;
    View& operator=(const View&) = delete;

    explicit operator bool() const { return m_view != nullptr; }
    [[nodiscard]] volatile long long& number() const { return *static_cast<volatile long long*>(m_view); }

private:
    void* m_view;
};

class SecuredMapping : public testing::Test {
protected:
    ~SecuredMapping() override { EXPECT_FALSE(log.exists()); }

    Handle obtain(DWORD access = FILE_MAP_WRITE) {
        return Handle(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, access, 0, kSize,
                                                         name.c_str(), &created));
    }

    const std::wstring name = NamedEvent::uniqueName(L"secured_mapping");
    const test::TemporaryLog log;
    int created = 7;
};

TEST_F(SecuredMapping, FirstCallCreatesItAndSecondCallOpensIt) {
    const Handle first = obtain();
    EXPECT_EQ(created, 1);
    const Handle second = obtain();
    EXPECT_EQ(created, 0);
    const View one(first);
    const View other(second);
    ASSERT_TRUE(one);
    ASSERT_TRUE(other);
    EXPECT_EQ(one.number(), 0);
    one.number() = 42;
    EXPECT_EQ(other.number(), 42);
}

TEST_F(SecuredMapping, OutputFlagMayBeNull) {
    for (int round = 0; round < 2; ++round) {
        const Handle mapping(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                                kSize, name.c_str(), nullptr));
        EXPECT_TRUE(mapping);
    }
}

TEST_F(SecuredMapping, IsDestroyedWithItsLastHandle) {
    for (int round = 0; round < 3; ++round) {
        const Handle mapping = obtain();
        EXPECT_EQ(created, 1);
    }
    const Handle gone(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    EXPECT_FALSE(gone);
}

TEST_F(SecuredMapping, WithoutANameEachCallCreatesAMapping) {
    for (int round = 0; round < 2; ++round) {
        const Handle mapping(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                                kSize, nullptr, &created));
        EXPECT_TRUE(mapping);
        EXPECT_EQ(created, 1);
    }
}

TEST_F(SecuredMapping, ExistingMappingIsOpenedWithTheRequestedAccess) {
    const Handle first = obtain();
    const View whole(first);
    ASSERT_TRUE(whole);
    whole.number() = 7;
    const Handle second = obtain(FILE_MAP_READ);
    EXPECT_EQ(created, 0);
    EXPECT_FALSE(View(second, FILE_MAP_WRITE)) << "only read access was requested";
    const View view(second, FILE_MAP_READ);
    ASSERT_TRUE(view);
    EXPECT_EQ(view.number(), 7);
}

TEST_F(SecuredMapping, NameOfAnotherKindOfObjectReturnsNull) {
    const NamedEvent taken(name);
    const Handle mapping = obtain();
    EXPECT_FALSE(mapping);
    EXPECT_EQ(created, 0);
}

TEST_F(SecuredMapping, UnmappableHandleReturnsNull) {
    const Handle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    EXPECT_EQ(vorel::ObtainAccessableFileMapping(event.get(), PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize, name.c_str(),
                                                 &created),
              nullptr);
    EXPECT_EQ(created, 0);
}

TEST_F(SecuredMapping, EveryoneMayUseItAndNobodyMayChangeItsSecurity) {
    const Handle mapping = obtain();
    test::expectSharedSecurity(mapping.get(), SECTION_ALL_ACCESS);
}

TEST_F(SecuredMapping, AnotherProcessSeesTheSameContent) {
    const Handle mapping = obtain();
    const View view(mapping);
    ASSERT_TRUE(view);
    view.number() = 123456789;
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mapping", L"name=" + name, L"expect=123456789", L"write=-5"}),
              kPeerObtained | kPeerDone);
    EXPECT_EQ(view.number(), -5);
    view.number() = 17;
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mapping", L"name=" + name, L"expect=17", L"write=18"}),
              kPeerObtained | kPeerDone);
    EXPECT_EQ(view.number(), 18);
}

TEST_F(SecuredMapping, IsDestroyedWhenTheOnlyProcessThatUsesItExits) {
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mapping", L"name=" + name, L"expect=0", L"write=3"}),
              kPeerObtained | test::kPeerCreated | kPeerDone);
    const Handle mapping = obtain();
    EXPECT_EQ(created, 1);
    const View view(mapping);
    ASSERT_TRUE(view);
    EXPECT_EQ(view.number(), 0);
}

}  // namespace
