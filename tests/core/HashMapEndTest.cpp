/// \file
/// `HashMap::clear` and the destructor of the map, if the destructors of values throw.

#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Explosive.h"
#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "vorel/core/HashMap.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using test::Explosion;
using test::explosionLine;
using test::explosionOf;
using test::Explosive;
using ::testing::ElementsAreArray;
using vorel::Exception;
using vorel::MemoryException;

using ExplosiveMap = vorel::HashMap<int, Explosive>;
using Texts = std::vector<std::string>;

constexpr unsigned int kValues = 9;
constexpr unsigned int kSpare = 3;
/// The exceptions that the destructors of the values throw, in the order of release. The last three values are in spare
/// nodes.
using Explosions = Explosion[kValues];

constexpr Explosion kQuiet = Explosion::None;
constexpr Explosion kLibrary = Explosion::Library;
constexpr Explosion kOther = Explosion::Other;

/// Fills a map with the values 1 to 9. The values 1 to 4 have separate buckets, 5 and 6 share a bucket, and 7 to 9 are
/// in spare nodes.
void fill(ExplosiveMap& map, const Explosions& explosions) {
    static constexpr int kHashes[kValues] = {0, 1, 2, 3, 4, 4, 6, 6, 6};
    for (int value = kValues; value > 0; --value) {
        const auto hash = static_cast<unsigned int>(kHashes[value - 1]);
        map.put(hash, value, Explosive(value)).value().explosion = explosions[value - 1];
    }
    for (int value = kValues; value > static_cast<int>(kValues - kSpare); --value) {
        ASSERT_TRUE(map.remove(value, 6));
    }
    ASSERT_EQ(map.size(), kValues - kSpare);
}

struct Case {
    const char* why;
    Explosions explosions;
    /// The messages of the exception that `clear` throws; empty if `clear` throws an `OtherException`.
    std::vector<std::wstring> messages;
    Texts lines;  ///< the lines that `clear` logs
};

const Case kCases[] = {
    {"the value in the first bucket",
     {kLibrary, kQuiet, kQuiet, kQuiet, kQuiet, kQuiet, kQuiet, kQuiet, kQuiet},
     {explosionOf(1)},
     {explosionLine(1)}},
    {"the head of a chain",
     {kQuiet, kQuiet, kQuiet, kQuiet, kLibrary, kQuiet, kQuiet, kQuiet, kQuiet},
     {explosionOf(5)},
     {explosionLine(5)}},
    {"the end of a chain",
     {kQuiet, kQuiet, kQuiet, kQuiet, kQuiet, kLibrary, kQuiet, kQuiet, kQuiet},
     {explosionOf(6)},
     {explosionLine(6)}},
    {"the first and the last spare node",
     {kQuiet, kQuiet, kQuiet, kQuiet, kQuiet, kQuiet, kLibrary, kQuiet, kLibrary},
     {explosionOf(7)},
     {explosionLine(7), explosionLine(9), "Vorel Error: HashMap::~HashMap: Vorel exception suppressed"}},
    {"several exceptions of both kinds",
     {kQuiet, kLibrary, kOther, kQuiet, kLibrary, kQuiet, kQuiet, kOther, kQuiet},
     {explosionOf(2)},
     {explosionLine(2), "Vorel Error: HashMap::~HashMap: Severe error suppressed", explosionLine(5),
      "Vorel Error: HashMap::~HashMap: Vorel exception suppressed",
      "Vorel Error: HashMap::~HashMap: Severe error suppressed"}},
    {"the first exception is not of the library",
     {kOther, kQuiet, kQuiet, kLibrary, kQuiet, kQuiet, kQuiet, kQuiet, kQuiet},
     {},
     {explosionLine(4), "Vorel Error: HashMap::~HashMap: Vorel exception suppressed"}},
};

TEST(HashMapEnd, Clear_ReleasesEveryNodeAndThenRethrowsTheFirstFailure) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        ExplosiveMap map(31);
        fill(map, c.explosions);
        const test::TemporaryLog log;
        if (c.messages.empty()) {
            EXPECT_THROW(map.clear(), test::OtherException);
        } else {
            expectThrows<MemoryException>([&] { map.clear(); }, c.messages);
        }
        EXPECT_THAT(log.messages(), ElementsAreArray(c.lines));
        EXPECT_EQ(Explosive::s_alive, 0);
        EXPECT_EQ(map.size(), 0u);
        EXPECT_EQ(map.bucketCount(), 31u);
        EXPECT_TRUE(map.begin() == map.end());
        map.clear();
        EXPECT_EQ(map.put(4, 10, Explosive(11)).value().number, 11);
        EXPECT_TRUE(map.find(5, 4) == map.end());
    }
}

TEST(HashMapEnd, Destructor_ReleasesEveryNodeAndThenRethrowsTheFirstFailure) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        const test::TemporaryLog log;
        const auto destroy = [&] {
            ExplosiveMap map(31);
            fill(map, c.explosions);
        };
        std::vector<std::wstring> messages = c.messages;
        Texts lines = c.lines;
        if (messages.empty()) {
            expectThrows<Exception>(destroy, {L"HashMap::~HashMap: Severe error thrown"});
            lines.emplace_back("Vorel Error: HashMap::~HashMap: Severe error thrown");
        } else {
            messages.emplace_back(L"HashMap::~HashMap: Vorel exception rethrown");
            expectThrows<MemoryException>(destroy, messages);
            lines.emplace_back("Vorel Error: HashMap::~HashMap: Vorel exception rethrown");
        }
        EXPECT_THAT(log.messages(), ElementsAreArray(lines));
        EXPECT_EQ(Explosive::s_alive, 0);
    }
}

TEST(HashMapEnd, Destructor_DuringUnwindingRecordsFailuresAndThrowsNothing) {
    const test::TemporaryLog log;
    const auto unwind = [] {
        ExplosiveMap map(31);
        fill(map, {kQuiet, kLibrary, kOther, kQuiet, kQuiet, kQuiet, kLibrary, kQuiet, kQuiet});
        throw std::runtime_error("the first failure");
    };
    EXPECT_THROW(unwind(), std::runtime_error);
    EXPECT_THAT(
        log.messages(),
        ElementsAreArray({explosionLine(2), std::string("Vorel Error: HashMap::~HashMap: Severe error suppressed"),
                          explosionLine(7), std::string("Vorel Error: HashMap::~HashMap: Vorel exception suppressed"),
                          std::string("Vorel Error: HashMap::~HashMap: Vorel exception suppressed")}));
    EXPECT_EQ(Explosive::s_alive, 0);
}

}  // namespace
