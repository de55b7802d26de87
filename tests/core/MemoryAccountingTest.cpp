#include "vorel/core/MemoryAccounting.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vorel::AllocBase;
using vorel::AllocSpy;
using vorel::LeakDetector;
using vorel::MemAllocInfo;

static_assert(std::is_empty_v<AllocBase>, "the base adds no bytes to a client class");
static_assert(std::is_abstract_v<AllocSpy> && std::has_virtual_destructor_v<AllocSpy>);
static_assert(std::is_standard_layout_v<MemAllocInfo> && std::is_standard_layout_v<LeakDetector>);
static_assert(sizeof(MemAllocInfo) == 144 && offsetof(MemAllocInfo, allocatedTotal) == 0 &&
              offsetof(MemAllocInfo, freedTotal) == 8 && offsetof(MemAllocInfo, counters) == 16);
static_assert(MemAllocInfo::kCounters == 32 && sizeof(MemAllocInfo::counters) == 128);
static_assert(std::is_nothrow_copy_assignable_v<MemAllocInfo> && std::is_nothrow_move_assignable_v<MemAllocInfo>);
static_assert(std::is_copy_assignable_v<LeakDetector>);

/// A client class with access to the protected members.
struct Client : AllocBase {
    using AllocBase::_alloc;
    using AllocBase::_free;
    using AllocBase::msgConstructorError;
    using AllocBase::msgCopyConstructorError;
    using AllocBase::registeredSpy;
};

/// Counts its calls.
class CountingSpy : public AllocSpy {
public:
    void allocated(void*, unsigned long long) override { ++allocations; }
    void freed(void*) override { ++frees; }
    void report(MemAllocInfo&) override { ++reports; }

    int allocations = 0;
    int frees = 0;
    int reports = 0;
};

/// Unregisters the spy after each test.
class AllocationSpies : public testing::Test {
protected:
    ~AllocationSpies() override { AllocBase::registerSpy(nullptr); }
};

// ---- Allocation ----

TEST(AllocBase, BlocksComeFromTheHeapOfTheRuntime) {
    void* const block = Client::_alloc(100);
    ASSERT_NE(block, nullptr);
    std::memset(block, 0x5A, 100);
    std::free(block);
    Client::_free(std::malloc(100));
    Client::_free(Client::_alloc(1));
}

TEST(AllocBase, Free_IgnoresNull) {
    Client::_free(nullptr);
}

TEST(AllocBase, Alloc_OfZeroBytesReturnsWhatMallocReturns) {
    void* const ours = Client::_alloc(0);
    void* const runtimes = std::malloc(0);
    EXPECT_EQ(ours == nullptr, runtimes == nullptr);
    Client::_free(ours);
    std::free(runtimes);
}

TEST(AllocBase, Alloc_ReturnsNullIfMemoryRunsOut) {
    for (const unsigned long long size : {~0ull, ~0ull - 1, 1ull << 63, 1ull << 60}) {
        EXPECT_EQ(Client::_alloc(size), nullptr) << size;
    }
}

TEST(AllocBase, MessageTextsForClientsAreFixed) {
    EXPECT_STREQ(Client::msgConstructorError, L"Error when calling class constructor.");
    EXPECT_STREQ(Client::msgCopyConstructorError, L"Error when calling class copy constructor.");
}

/// The example in MemoryAccounting.h, with a field.
class Node : public AllocBase {
public:
    static void* operator new(std::size_t size) noexcept { return _alloc(size); }
    static void operator delete(void* node) { _free(node); }

    Node* next = nullptr;
};

TEST(AllocBase, ClientClassesMayUseAllocInOperatorNew) {
    static_assert(sizeof(Node) == sizeof(Node*));
    const auto last = std::make_unique<Node>();
    const auto first = std::make_unique<Node>();
    first->next = last.get();
    EXPECT_EQ(first->next->next, nullptr);
}

TEST(AllocBase, Alloc_WorksOnManyThreads) {
    const auto work = [] {
        for (unsigned long long size = 0; size < 2000; ++size) {
            void* const block = Client::_alloc(size + 1);
            ASSERT_NE(block, nullptr);
            static_cast<unsigned char*>(block)[size] = 1;
            Client::_free(block);
        }
    };
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// ---- The spy ----

TEST_F(AllocationSpies, NoneIsRegisteredInitially) {
    EXPECT_EQ(Client::registeredSpy(), nullptr);
}

TEST_F(AllocationSpies, RegisterSpy_ReplacesTheSpyAndNullRemovesIt) {
    CountingSpy first;
    CountingSpy second;
    AllocBase::registerSpy(&first);
    EXPECT_EQ(Client::registeredSpy(), &first);
    AllocBase::registerSpy(&second);
    EXPECT_EQ(Client::registeredSpy(), &second);
    AllocBase::registerSpy(&second);
    EXPECT_EQ(Client::registeredSpy(), &second);
    AllocBase::registerSpy(nullptr);
    EXPECT_EQ(Client::registeredSpy(), nullptr);
    AllocBase::registerSpy(nullptr);
    EXPECT_EQ(Client::registeredSpy(), nullptr);
}

TEST_F(AllocationSpies, AreNeverCalledByTheLibrary) {
    CountingSpy spy;
    AllocBase::registerSpy(&spy);
    Client::_free(Client::_alloc(10));
    delete new Node;
    EXPECT_EQ(Client::_alloc(~0ull), nullptr);
    LeakDetector detector("blocks", true);
    detector.Add(&spy, "here");
    detector.Sub(&spy);
    AllocBase::registerSpy(nullptr);
    EXPECT_EQ(spy.allocations + spy.frees + spy.reports, 0);
}

TEST_F(AllocationSpies, MayBeRegisteredByManyThreads) {
    CountingSpy spies[4];
    std::vector<std::thread> threads;
    for (CountingSpy& spy : spies) {
        threads.emplace_back([&spy] {
            for (int count = 0; count < 2000; ++count) {
                AllocBase::registerSpy(&spy);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const AllocSpy* const last = Client::registeredSpy();
    EXPECT_TRUE(last == &spies[0] || last == &spies[1] || last == &spies[2] || last == &spies[3]);
}

TEST(AllocSpy, CopyAndAssignmentOfTheBaseDoNothing) {
    CountingSpy one;
    one.allocated(nullptr, 1);
    const CountingSpy copy(one);
    EXPECT_EQ(copy.allocations, 1) << "the derived class copies its own data";
    static_assert(sizeof(AllocSpy) == sizeof(void*), "only the pointer to the virtual table");
    AllocSpy& base = one;
    CountingSpy other;
    base = other;
    EXPECT_EQ(one.allocations, 1) << "assigning the base changes nothing";
}

/// Separately compiled clients call the operations through fixed slots of the virtual table. The first slots belong to
/// the destructor: one slot in Microsoft's ABI, two slots in the Itanium C++ ABI.
TEST(AllocSpy, VirtualTable_ListsTheOperationsInOrderAfterTheDestructor) {
    CountingSpy spy;
    AllocSpy* const object = &spy;
    void* const* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
#ifdef _CPPLIB_VER  // Microsoft's library, and so Microsoft's ABI
    constexpr std::size_t kDestructors = 1;
#else
    constexpr std::size_t kDestructors = 2;
#endif
    reinterpret_cast<void (*)(AllocSpy*, void*, unsigned long long)>(table[kDestructors])(object, nullptr, 8);
    EXPECT_EQ(spy.allocations, 1);
    reinterpret_cast<void (*)(AllocSpy*, void*)>(table[kDestructors + 1])(object, nullptr);
    EXPECT_EQ(spy.frees, 1);
    MemAllocInfo info;
    reinterpret_cast<void (*)(AllocSpy*, MemAllocInfo*)>(table[kDestructors + 2])(object, &info);
    EXPECT_EQ(spy.reports, 1);
    EXPECT_EQ(spy.allocations + spy.frees, 2);
}

// ---- Statistics ----

bool isZero(const MemAllocInfo& info) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&info);
    for (std::size_t index = 0; index < sizeof info; ++index) {
        if (bytes[index] != 0) {
            return false;
        }
    }
    return true;
}

MemAllocInfo sampleInfo() {
    MemAllocInfo info;
    info.allocatedTotal = 0xFEDCBA9876543210;
    info.freedTotal = 0x0123456789ABCDEF;
    for (unsigned int index = 0; index < MemAllocInfo::kCounters; ++index) {
        info.counters[index] = 0xF0000001u + index;
    }
    return info;
}

bool isSampleInfo(const MemAllocInfo& info) {
    const MemAllocInfo expected = sampleInfo();
    return std::memcmp(&expected, &info, sizeof info) == 0;
}

TEST(MemAllocInfo, EveryFieldStartsAtZero) {
    alignas(MemAllocInfo) unsigned char memory[sizeof(MemAllocInfo)];
    std::memset(memory, 0xFF, sizeof memory);
    const MemAllocInfo* const info = new (memory) MemAllocInfo;
    EXPECT_TRUE(isZero(*info));
}

TEST(MemAllocInfo, Clear_SetsEveryFieldToZero) {
    MemAllocInfo info = sampleInfo();
    EXPECT_FALSE(isZero(info));
    info.clear();
    EXPECT_TRUE(isZero(info));
    info.counters[31] = 1;
    info.clear();
    EXPECT_TRUE(isZero(info));
}

TEST(MemAllocInfo, AssignmentCopiesEveryField) {
    const MemAllocInfo source = sampleInfo();
    MemAllocInfo copy;
    EXPECT_EQ(&(copy = source), &copy);
    EXPECT_TRUE(isSampleInfo(copy));
    MemAllocInfo moved;
    EXPECT_EQ(&(moved = sampleInfo()), &moved);
    EXPECT_TRUE(isSampleInfo(moved));
    const MemAllocInfo constructed(moved);
    EXPECT_TRUE(isSampleInfo(constructed));
}

// ---- The leak detector ----

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const LeakDetector& detector) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&detector);
    return {bytes, bytes + sizeof detector};
}

TEST(LeakDetector, CallsHaveNoEffect) {
    for (const bool flag : {false, true}) {
        LeakDetector detectors[] = {LeakDetector(), LeakDetector("blocks", flag), LeakDetector(L"blocks", flag),
                                    LeakDetector(static_cast<const char*>(nullptr), flag),
                                    LeakDetector(static_cast<const wchar_t*>(nullptr), flag)};
        for (LeakDetector& detector : detectors) {
            const Bytes before = bytesOf(detector);
            for (void* const block : {static_cast<void*>(nullptr), static_cast<void*>(&detector)}) {
                detector.Add(block, "here");
                detector.Add(block, L"here");
                detector.Add(block, static_cast<const char*>(nullptr));
                detector.Add(block, static_cast<const wchar_t*>(nullptr));
                detector.Sub(block);
                detector.Sub(block);
            }
            detector.SetName("other");
            detector.SetName(L"other");
            LeakDetector::ResetClass();
            EXPECT_EQ(bytesOf(detector), before);
        }
    }
}

TEST(LeakDetector, SetName_ReturnsTheObject) {
    LeakDetector detector;
    EXPECT_EQ(&detector.SetName("name"), &detector);
    EXPECT_EQ(&detector.SetName(L"name"), &detector);
    EXPECT_EQ(&detector.SetName(static_cast<const char*>(nullptr)), &detector);
    EXPECT_EQ(&detector.SetName(static_cast<const wchar_t*>(nullptr)), &detector);
}

TEST(LeakDetector, AssignmentCopiesEveryByte) {
    Bytes record;
    while (record.size() < sizeof(LeakDetector)) {
        record.push_back(static_cast<unsigned char>(record.size() + 1));
    }
    LeakDetector source;
    std::memcpy(static_cast<void*>(&source), record.data(), record.size());
    LeakDetector target;
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(bytesOf(target), record);
    EXPECT_EQ(bytesOf(LeakDetector(source)), record);
}

}  // namespace
