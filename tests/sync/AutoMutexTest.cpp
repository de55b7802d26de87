#include "vorel/sync/AutoMutex.h"

#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <windows.h>

#include "core/ThreadSafetySwitch.h"
#include "support/Expect.h"
#include "support/PageEdge.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "sync/ObjectNames.h"
#include "vorel/core/Guard.h"

namespace {

using test::expectThrows;
using test::isFreeForOthers;
using test::onAnotherThread;
using test::TemporaryLog;
using test::uniqueName;
using testing::ElementsAre;
using testing::IsEmpty;
using vorel::AutoMutex;
using vorel::BaseString;
using vorel::Exception;

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string timedOutWarning(const std::wstring& name) {
    return "WARN: AutoMutex::lock: Failed to lock mutex " + test::narrowed(name) + ": Timed out";
}

std::string abandonedWarning(const std::wstring& name) {
    return "WARN: AutoMutex::lock: WAIT_ABANDONED: Mutex " + test::narrowed(name) +
           " was not released by the owning thread before it exited";
}

/// Locks the mutex on a new thread, which exits without unlocking it.
void abandonOnAnotherThread(AutoMutex& mutex) {
    onAnotherThread([&] { return mutex.lock(1000, true); });
}

/// A thread that holds a mutex until `release` is called.
class Holder {
public:
    explicit Holder(AutoMutex& mutex)
        : m_thread([this, &mutex] {
              mutex.lock(1000, true);
              m_held.set();
              (void)m_release.wait();
              mutex.unlock();
          }) {
        (void)m_held.wait();
    }
    ~Holder() {
        release();
        m_thread.join();
    }

    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    void release() const { m_release.set(); }

private:
    test::NamedEvent m_held{uniqueName(L"held")};
    test::NamedEvent m_release{uniqueName(L"release")};
    std::thread m_thread;
};

// ---- Construction and initialize ------------------------------------------------------------------------------------

TEST(AutoMutex, ConstructorCreatesTheGlobalMutexAndDestructorClosesIt) {
    const std::wstring name = uniqueName(L"mutex");
    {
        const AutoMutex mutex(name.c_str(), false, false);
        EXPECT_TRUE(test::mutexExists(L"Global\\" + name));
        EXPECT_EQ(mutex.getInitializeError(), nullptr);
    }
    EXPECT_FALSE(test::mutexExists(L"Global\\" + name));
}

TEST(AutoMutex, NarrowUtf8NameAndItsWideNameShareTheMutex) {
    struct Case {
        std::string narrow;
        std::wstring wide;
    };
    const std::wstring stem = uniqueName(L"mutex");
    for (const Case& c : {Case{test::narrowed(stem), stem},
                          Case{test::narrowed(stem) + "\xC3\xBC\xF0\x9F\x98\x80", stem + L"\u00FC\U0001F600"}}) {
        AutoMutex wide(c.wide.c_str(), true, false);
        AutoMutex narrow(c.narrow.c_str(), false, false);
        EXPECT_FALSE(isFreeForOthers(narrow)) << c.narrow;
        wide.unlock();
        EXPECT_TRUE(isFreeForOthers(narrow)) << c.narrow;
        AutoMutex later(nullptr, false, false);
        EXPECT_TRUE(later.initialize(c.narrow.c_str(), false));
        EXPECT_TRUE(later.lock(0, true));
        EXPECT_FALSE(isFreeForOthers(wide)) << c.narrow;
        later.unlock();
    }
    char units[] = "written";
    EXPECT_TRUE(AutoMutex(units, true, false).initialize(units, false))
        << "a pointer to non-const characters must be accepted, too";
}

TEST(AutoMutex, NarrowNullMeansNoName) {
    const TemporaryLog log;
    const char* const none = nullptr;
    AutoMutex mutex(none, true, true);
    EXPECT_THROW(mutex.tryLock(), Exception);
    expectThrows<Exception>(
        [&] { mutex.initialize(none, false); },
        {L"AutoMutex::initialize: Name required for mutex", L"AutoMutex::initialize: Vorel exception rethrown"});
}

TEST(AutoMutex, NarrowNameThatIsNotUtf8Throws) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), true, false);
    for (const std::string invalid : {"\x80", "name\xFF"}) {
        const auto expectText = [&](auto&& action) {
            try {
                action();
                ADD_FAILURE() << "nothing was thrown";
            } catch (const Exception& e) {
                EXPECT_EQ(std::wstring(e.what()).find(L"Error converting UTF-8 character"), 0u) << e.what();
            }
        };
        expectText([&] { const AutoMutex other(invalid.c_str(), false, false); });
        expectText([&] { mutex.initialize(invalid.c_str(), false); });
    }
    EXPECT_FALSE(isFreeForOthers(mutex)) << "the mutex must not change";
    mutex.unlock();
}

TEST(AutoMutex, NarrowNameThatEndsInATruncatedCharacterIsNotReadPastItsEnd) {
    const TemporaryLog log;
    test::PageEdge<char> edge(64);
    for (const char lead : {'\xC3', '\xE2', '\xF0', '\xF8', '\xFC'}) {
        const std::string name = test::narrowed(uniqueName(L"mutex")) + lead;
        const char* const text = edge.placeAtEnd(std::string_view(name.c_str(), name.size() + 1));
        EXPECT_NO_THROW(AutoMutex(text, false, false)) << unsigned{static_cast<unsigned char>(lead)};
    }
}

TEST(AutoMutex, LockingAMutexWithoutANameThrows) {
    const TemporaryLog log;
    AutoMutex mutex(nullptr, true, true);
    const std::wstring message = L"AutoMutex::lock: Mutex not initialized";
    expectThrows<Exception>([&] { mutex.lock(0, false, nullptr); },
                            {message, L"AutoMutex::lock: Vorel exception rethrown"});
    expectThrows<Exception>([&] { mutex.tryLock(); }, {message, L"AutoMutex::tryLock: Vorel exception rethrown"});
    expectThrows<Exception>([&] { mutex.unlock(); }, {L"AutoMutex::unlock: Mutex not initialized",
                                                      L"AutoMutex::unlock: Vorel exception rethrown"});
    EXPECT_EQ(mutex.getInitializeError(), nullptr);
}

TEST(AutoMutex, MutexWithoutANameCanBeInitializedLater) {
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(nullptr, false, false);
    EXPECT_TRUE(mutex.initialize(name.c_str(), true));
    EXPECT_TRUE(test::mutexExists(L"Global\\" + name));
    EXPECT_TRUE(mutex.lock(0, true));
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();
}

TEST(AutoMutex, InitializeWithoutANameThrows) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), true, false);
    expectThrows<Exception>(
        [&] { mutex.initialize(nullptr, false); },
        {L"AutoMutex::initialize: Name required for mutex", L"AutoMutex::initialize: Vorel exception rethrown"});
    EXPECT_FALSE(isFreeForOthers(mutex)) << "the mutex must not change";
    mutex.unlock();
}

TEST(AutoMutex, InitializeWithTheSameNameDoesNotReleaseTheMutex) {
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), true, false);
    EXPECT_TRUE(mutex.initialize(std::wstring(name).c_str(), true));
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
}

TEST(AutoMutex, InitializeWithAnotherNameReleasesThePreviousMutex) {
    const std::wstring name = uniqueName(L"mutex");
    const std::wstring upper = name + L"_X";
    const std::wstring lower = name + L"_x";  // names are case-sensitive
    AutoMutex observer(upper.c_str(), false, false);
    AutoMutex mutex(upper.c_str(), true, false);
    EXPECT_TRUE(mutex.lock(0, true));
    EXPECT_FALSE(isFreeForOthers(observer));

    EXPECT_TRUE(mutex.initialize(lower.c_str(), false));
    EXPECT_TRUE(test::mutexExists(L"Global\\" + lower));
    EXPECT_TRUE(isFreeForOthers(observer)) << "every hold must be released";
    EXPECT_TRUE(isFreeForOthers(mutex)) << "the new mutex must not be held";
}

TEST(AutoMutex, ConstructorLocksIfRequested) {
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex other(name.c_str(), false, false);
    AutoMutex mutex(name.c_str(), true, false);
    EXPECT_FALSE(isFreeForOthers(other));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(other));
}

TEST(AutoMutex, NameOfAnotherKindOfObjectThrows) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"taken");
    const test::NamedEvent event(L"Global\\" + name);
    const Clock::time_point start = Clock::now();
    expectThrows<Exception>(
        [&] { const AutoMutex mutex(name.c_str(), false, false); },
        {L"AutoMutex: Failed to create mutex " + name + L": ", L"AutoMutex::AutoMutex(): Vorel exception rethrown"});
    EXPECT_GE(Clock::now() - start, milliseconds(900)) << "the constructor must sleep ten times for 100 ms";
    EXPECT_EQ(log.messages().front().rfind(
                  "WARN: ObtainAccessableMutex warning: OpenMutex Global\\" + test::narrowed(name), 0),
              0u);
}

TEST(AutoMutex, FailedInitializeCanBeRepeated) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"taken");
    AutoMutex mutex(nullptr, false, false);
    {
        const test::NamedEvent event(L"Global\\" + name);
        EXPECT_FALSE(mutex.initialize(name.c_str(), false));
    }
    EXPECT_TRUE(mutex.initialize(name.c_str(), false)) << "the name is the same, but the first call created no mutex";
    EXPECT_TRUE(mutex.tryLock());
    mutex.unlock();
}

// ---- Locking --------------------------------------------------------------------------------------------------------

TEST(AutoMutex, EachLockNeedsAnUnlock) {
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex other(name.c_str(), false, false);
    AutoMutex mutex(name.c_str(), false, false);
    EXPECT_TRUE(mutex.lock(1000, true));
    EXPECT_TRUE(mutex.tryLock());
    EXPECT_TRUE(mutex.lock(0, false));
    for (int held = 3; held != 0; --held) {
        EXPECT_FALSE(isFreeForOthers(mutex)) << held;
        EXPECT_FALSE(isFreeForOthers(other)) << held;
        mutex.unlock();
    }
    EXPECT_TRUE(isFreeForOthers(mutex));
    EXPECT_TRUE(isFreeForOthers(other));
    mutex.unlock();  // not held: does nothing
    EXPECT_TRUE(isFreeForOthers(mutex));
    EXPECT_TRUE(mutex.tryLock());
    EXPECT_FALSE(isFreeForOthers(mutex)) << "an unlock without a hold must not be counted";
    mutex.unlock();
}

TEST(AutoMutex, MutexIsFreeOnlyAfterBothObjectsOfAThreadUnlockIt) {
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex first(name.c_str(), true, false);
    AutoMutex second(name.c_str(), true, false);
    first.unlock();
    EXPECT_FALSE(isFreeForOthers(first)) << "the second object must still hold the mutex";
    first.unlock();  // the first object holds nothing
    EXPECT_FALSE(isFreeForOthers(first));
    second.unlock();
    EXPECT_TRUE(isFreeForOthers(first));
}

TEST(AutoMutex, UnlockFromAnotherThreadDoesNothing) {
    const TemporaryLog log;
    AutoMutex mutex(uniqueName(L"mutex").c_str(), true, false);
    onAnotherThread([&] {
        mutex.unlock();
        return 0;
    });
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(AutoMutex, GuardHoldsTheMutexUntilTheEndOfItsBlock) {
    AutoMutex mutex(uniqueName(L"mutex").c_str(), false, false);
    {
        const vorel::Guard held(mutex);
        EXPECT_FALSE(isFreeForOthers(mutex));
    }
    EXPECT_TRUE(isFreeForOthers(mutex));
}

TEST(AutoMutex, LocksTheSystemsMutexWhileTheThreadSafetySwitchIsOff) {
    const test::ThreadSafetySwitch restored;
    vorel::ThreadSafetyEnabledCount = 0;
    AutoMutex mutex(uniqueName(L"mutex").c_str(), false, false);
    EXPECT_TRUE(mutex.lock(0, true));
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
}

TEST(AutoMutex, FcntlTimeoutHasNoEffect) {
    AutoMutex mutex(uniqueName(L"mutex").c_str(), false, false);
    mutex.SetUseFcntlTimeout(true);
    EXPECT_TRUE(mutex.lock(0, true));
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
}

// ---- Busy mutex -----------------------------------------------------------------------------------------------------

struct BusyCase {
    unsigned int timeoutMs;
    bool throwOnFailure;
    bool givesErrorText;  // whether the caller passes a string for the error text
    // The expected behaviour of `lock`.
    bool throws;
    bool setsErrorText;
    bool warns;
};

class AutoMutexBusy : public testing::TestWithParam<BusyCase> {};

TEST_P(AutoMutexBusy, IsReportedAsRequested) {
    const BusyCase& rule = GetParam();
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), false, false);
    const Holder holder(mutex);

    BaseString<wchar_t> errorText(L"as before");
    BaseString<wchar_t>* const errorTextOrNull = rule.givesErrorText ? &errorText : nullptr;
    const Clock::time_point start = Clock::now();
    const auto attempt = [&] { EXPECT_FALSE(mutex.lock(rule.timeoutMs, rule.throwOnFailure, errorTextOrNull)); };
    if (rule.throws) {
        expectThrows<Exception>(attempt, {L"AutoMutex::lock: Failed to lock mutex " + name + L": Timed out",
                                          L"AutoMutex::lock: Vorel exception rethrown"});
        (void)log.messages();
    } else {
        attempt();
        EXPECT_THAT(log.messages(), testing::Conditional(rule.warns, ElementsAre(timedOutWarning(name)), IsEmpty()));
    }
    // The system's clock ticks about every 15 ms.
    EXPECT_GE(Clock::now() - start + milliseconds(16), milliseconds(rule.timeoutMs));
    EXPECT_EQ(std::wstring(errorText.view()),
              rule.setsErrorText ? L"Failed to lock mutex " + name + L": Timed out" : L"as before");
}

INSTANTIATE_TEST_SUITE_P(
    Rules, AutoMutexBusy,
    testing::Values(BusyCase{0, false, false, false, false, false}, BusyCase{60, false, false, false, false, true},
                    BusyCase{0, false, true, false, true, false}, BusyCase{60, false, true, false, true, true},
                    BusyCase{0, true, false, true, false, false}, BusyCase{60, true, false, true, false, false},
                    BusyCase{60, true, true, true, false, false}));

TEST(AutoMutex, TryLockOfABusyMutexLogsNothing) {
    const TemporaryLog log;
    AutoMutex mutex(uniqueName(L"mutex").c_str(), false, false);
    const Holder holder(mutex);
    EXPECT_FALSE(mutex.tryLock());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(AutoMutex, LockWaitsUntilTheMutexIsFree) {
    const TemporaryLog log;
    AutoMutex mutex(uniqueName(L"mutex").c_str(), false, false);
    const Holder holder(mutex);
    const std::jthread releasing([&] { holder.release(); });
    EXPECT_TRUE(mutex.lock(test::kGenerousMs, true));
    mutex.unlock();
    EXPECT_THAT(log.messages(), IsEmpty());
}

// ---- Abandoned mutex ------------------------------------------------------------------------------------------------

/// A function that locks a mutex, and logs a warning if the mutex was abandoned.
using Take = bool (*)(AutoMutex&);

class AbandonedAutoMutex : public testing::TestWithParam<Take> {};

INSTANTIATE_TEST_SUITE_P(LockAndTryLock, AbandonedAutoMutex,
                         testing::Values(Take([](AutoMutex& mutex) { return mutex.lock(1000, true); }),
                                         Take([](AutoMutex& mutex) { return mutex.tryLock(); })));

TEST_P(AbandonedAutoMutex, IsLockedWithAWarning) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), false, false);
    abandonOnAnotherThread(mutex);

    EXPECT_TRUE(GetParam()(mutex));
    EXPECT_THAT(log.messages(), ElementsAre(abandonedWarning(name)));
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();  // releases the only hold, because the holds of the exited thread do not count
    EXPECT_TRUE(isFreeForOthers(mutex));
}

TEST_P(AbandonedAutoMutex, CanBeLockedThroughAnotherObject) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    auto* const abandoned = new AutoMutex(name.c_str(), false, false);
    AutoMutex mutex(name.c_str(), false, false);
    abandonOnAnotherThread(*abandoned);

    EXPECT_TRUE(GetParam()(mutex));
    EXPECT_THAT(log.messages(), ElementsAre(abandonedWarning(name)));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));

    // The system reports the abandonment once. The object that the exited thread used still records the exited thread
    // as the owner. So on this thread, `lock` of that object throws, and its destructor throws, too. Other objects are
    // not blocked.
    EXPECT_THROW(abandoned->lock(0, true), Exception);
    EXPECT_TRUE(isFreeForOthers(mutex));
    EXPECT_THROW(delete abandoned, Exception);
    EXPECT_TRUE(isFreeForOthers(mutex));
}

// ---- Destructor -----------------------------------------------------------------------------------------------------

TEST(AutoMutex, DestructorReleasesEveryHold) {
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex other(name.c_str(), false, false);
    {
        AutoMutex mutex(name.c_str(), true, false);
        EXPECT_TRUE(mutex.lock(0, true));
        EXPECT_TRUE(mutex.lock(0, true));
    }
    EXPECT_TRUE(isFreeForOthers(other));
}

TEST(AutoMutex, DestructorWaitsForTheOwner) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    std::thread releasing;
    {
        AutoMutex mutex(name.c_str(), false, false);
        const test::NamedEvent held(uniqueName(L"held"));
        releasing = std::thread([&mutex, &held] {
            mutex.lock(1000, true);
            held.set();
            vorel::Sleep(50);  // so that the destructor usually starts first; the test also passes if it starts later
            mutex.unlock();
        });
        ASSERT_TRUE(held.wait());
    }
    releasing.join();
    EXPECT_FALSE(test::mutexExists(L"Global\\" + name));
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(AutoMutex, DestructorClosesAnAbandonedMutexWithAWarning) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    {
        AutoMutex mutex(name.c_str(), false, false);
        onAnotherThread([&] { return mutex.lock(1000, true) && mutex.lock(1000, true); });
    }
    EXPECT_FALSE(test::mutexExists(L"Global\\" + name));
    EXPECT_THAT(log.messages(), ElementsAre(abandonedWarning(name)));
}

}  // namespace
