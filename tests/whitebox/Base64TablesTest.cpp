/// \file
/// The Base64 tables, which the library fills at load.

#include <iterator>
#include <string_view>

#include <gtest/gtest.h>

#include "support/BitTextReference.h"
#include "support/PrivateMember.h"
#include "text/Base64State.h"
#include "vorel/text/Base64.h"

namespace test {

struct EncodeTable {
    using Type = char (*)[64];
    friend Type reveal(EncodeTable);
};
struct DecodeTable {
    using Type = int (*)[256];
    friend Type reveal(DecodeTable);
};
struct Pad {
    using Type = const char*;
    friend Type reveal(Pad);
};
struct Initialized {
    using Type = const bool*;
    friend Type reveal(Initialized);
};
struct Initialize {
    using Type = bool (*)() noexcept;
    friend Type reveal(Initialize);
};
template struct Reveal<EncodeTable, &vorel::util::Base64::base64encode>;
template struct Reveal<DecodeTable, &vorel::util::Base64::base64decode>;
template struct Reveal<Pad, &vorel::util::Base64::base64pad>;
template struct Reveal<Initialized, &vorel::util::Base64::initialized>;
template struct Reveal<Initialize, &vorel::util::Base64::initializeBase64Tables>;

}  // namespace test

namespace {

void expectTables() {
    const auto& encode = *reveal(test::EncodeTable());
    EXPECT_EQ(std::string_view(encode, std::size(encode)), test::kBase64Characters);
    const auto& decode = *reveal(test::DecodeTable());
    for (unsigned int byte = 0; byte < std::size(decode); ++byte) {
        const std::size_t value = test::valueIn(test::kBase64Characters, byte);
        const int other = byte == '=' ? 0 : -128;
        EXPECT_EQ(decode[byte], value == std::string_view::npos ? other : static_cast<int>(value)) << byte;
    }
}

TEST(Base64Tables, AreFilledAtLoad) {
    EXPECT_TRUE(*reveal(test::Initialized()));
    EXPECT_TRUE(vorel::detail::base64Tables.get()->initialized);
    EXPECT_EQ(*reveal(test::Pad()), '=');
    expectTables();
}

TEST(Base64Tables, FillingTheTablesAgainChangesNothing) {
    EXPECT_TRUE(reveal(test::Initialize())());
    expectTables();
}

}  // namespace
