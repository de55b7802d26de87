/// \file
/// Helpers for tests of the flat interface. A read past the end of an input faults. Each output is requested with many
/// capacities.
///
///     const test::FlatText text(L"QQ==");
///     EXPECT_EQ(test::flatBytes([&](auto... out) {
///                   return vorel_base64_decode(text.data(), text.size(), out...);
///               }),
///               "A");
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include <vorel/vorelCoreC.h>

#include "support/PageEdge.h"

namespace test {

/// An input that ends at an inaccessible page.
template <class Unit>
class FlatInput {
public:
    template <class Source>
    explicit FlatInput(std::basic_string_view<Source> units)
        : m_edge(units.size() + 1), m_units(m_edge.lastElements(units.size())), m_size(units.size()) {
        std::copy(units.begin(), units.end(), m_units);
    }

    [[nodiscard]] const Unit* data() const { return m_units; }
    [[nodiscard]] std::size_t size() const { return m_size; }

private:
    PageEdge<Unit> m_edge;
    Unit* m_units;
    std::size_t m_size;
};

struct FlatText : FlatInput<vorel_char16> {
    // NOLINTNEXTLINE(google-explicit-constructor): a test may pass a text where a FlatText is expected
    FlatText(std::wstring_view text) : FlatInput(text) {}
};

struct FlatBytes : FlatInput<unsigned char> {
    // NOLINTNEXTLINE(google-explicit-constructor): like FlatText
    FlatBytes(std::string_view bytes) : FlatInput(bytes) {}
};

/// Whether the library writes a zero after an output whose units have the type `Unit`, if the buffer has space.
template <class Unit>
constexpr bool kEndsInZero = std::is_same_v<Unit, vorel_char16> || std::is_same_v<Unit, char>;

/// The value of each unit of an output buffer before a call.
constexpr int kFill = 0x5A;

/// Calls `call` with one buffer, which ends at an inaccessible page. Checks the status, the length and the written
/// units. `whole` is the expected complete output.
template <class Unit, class Call>
void expectOutputIn(Unit* buffer, std::size_t capacity, const std::vector<Unit>& whole, Call&& call) {
    SCOPED_TRACE("capacity " + std::to_string(capacity));
    const bool fits = whole.size() <= capacity;
    std::fill_n(buffer, capacity, Unit{kFill});
    std::size_t length = ~whole.size();
    EXPECT_EQ(call(buffer, capacity, &length), fits ? VOREL_OK : VOREL_ERROR_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, whole.size());

    const Unit* rest = buffer;
    if (fits) {
        EXPECT_TRUE(std::equal(whole.begin(), whole.end(), buffer));
        rest += whole.size();
        if (kEndsInZero<Unit> && rest != buffer + capacity) {
            EXPECT_EQ(*rest, 0);
            ++rest;
        }
    }
    EXPECT_TRUE(std::all_of(rest, const_cast<const Unit*>(buffer) + capacity, [](Unit unit) { return unit == kFill; }));
}

/// The output of `call(buffer, capacity, length)`. Checks the call with null pointers and with capacities from zero to
/// more than enough. For long outputs, only capacities around the required capacity are checked.
template <class Unit, class Call>
std::vector<Unit> flatOutput(Call&& call) {
    std::size_t needed = 0;
    const vorel_status asked = call(static_cast<Unit*>(nullptr), std::size_t{0}, &needed);
    EXPECT_EQ(asked, needed == 0 ? VOREL_OK : VOREL_ERROR_BUFFER_TOO_SMALL);
    std::vector<Unit> whole(needed);
    std::size_t length = 0;
    EXPECT_EQ(call(whole.data(), needed, &length), VOREL_OK);

    constexpr std::size_t kSweep = 40;
    PageEdge<Unit> edge(needed + 3);
    for (std::size_t capacity = needed < kSweep ? 0 : needed - 2; capacity != needed + 3; ++capacity) {
        expectOutputIn(edge.lastElements(capacity), capacity, whole, call);
    }
    EXPECT_EQ(call(whole.data(), needed, static_cast<std::size_t*>(nullptr)), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(call(static_cast<Unit*>(nullptr), std::size_t{1}, &length), VOREL_ERROR_INVALID_ARGUMENT);
    return whole;
}

/// Like flatOutput, but returns a text.
template <class Call>
std::wstring flatText(Call&& call) {
    const std::vector<vorel_char16> units = flatOutput<vorel_char16>(call);
    return {units.begin(), units.end()};
}

/// Like flatOutput, but returns bytes.
template <class Call>
std::string flatBytes(Call&& call) {
    const std::vector<unsigned char> bytes = flatOutput<unsigned char>(call);
    return {bytes.begin(), bytes.end()};
}

/// The status of a call that must fail. The call must not change the buffer or the length.
template <class Unit, class Call>
vorel_status flatFailure(Call&& call) {
    std::vector<Unit> buffer(64, Unit{kFill});
    std::size_t length = 4711;
    const vorel_status status = call(buffer.data(), buffer.size(), &length);
    EXPECT_NE(status, VOREL_OK);
    EXPECT_EQ(length, 4711u);
    EXPECT_EQ(buffer, std::vector<Unit>(64, Unit{kFill}));
    return status;
}

/// The message of the calling thread's last failure.
inline std::wstring lastMessage() {
    vorel_char16 message[501];
    std::size_t length = 0;
    EXPECT_EQ(vorel_last_error_message(message, 501, &length), VOREL_OK);
    return {message, message + length};
}

}  // namespace test
