/// \file
/// Log lines for stress tests, which detect damaged lines by a checksum. A line contains the number of the writer, the
/// number of the thread, the number of the line, and the length of the line. It ends with a checksum of the preceding
/// bytes. The first three numbers determine the whole text.
///
///     2.1.404 61 4m1tItH_[Uov8語#pbfhYdS&B!:[q😀72. 88862bdca6c79c2a
///
/// Lengths range from 60 to 12,000 units; most lines are short. Every 25th line has the maximum length, or a length
/// that is near 8000 or equal to 4096 units, because buffers for messages often have these sizes.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace test {

struct StressLineId {
    unsigned int writer = 0;
    unsigned int thread = 0;
    unsigned int number = 0;

    bool operator==(const StressLineId&) const = default;
    bool operator<(const StressLineId& other) const {
        return std::tie(writer, thread, number) < std::tie(other.writer, other.thread, other.number);
    }
};

/// The 64-bit FNV-1a hash as 16 hexadecimal digits.
inline std::string checksum(std::string_view bytes) {
    std::uint64_t value = 0xCBF29CE484222325;
    for (const char byte : bytes) {
        value = (value ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    std::string digits(16, '0');
    for (std::size_t index = digits.size(); index-- > 0; value >>= 4) {
        digits[index] = "0123456789abcdef"[value & 15];
    }
    return digits;
}

/// Pseudorandom numbers (SplitMix64).
class StressNumbers {
public:
    explicit StressNumbers(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next() {
        std::uint64_t z = m_state += 0x9E3779B97F4A7C15;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return z ^ (z >> 31);
    }

private:
    std::uint64_t m_state;
};

/// The length of a line in units.
inline std::size_t stressLineUnits(const StressLineId& id, StressNumbers& numbers) {
    constexpr std::array<std::size_t, 5> kEdges{12000, 7999, 8000, 8001, 4096};
    constexpr std::size_t kMinUnits = 60;
    if (id.number % 25 == 0) {
        return kEdges[(id.number / 25 + id.thread) % kEdges.size()];
    }
    const double share = static_cast<double>(numbers.next() >> 11) / 9007199254740992.0;
    return kMinUnits + static_cast<std::size_t>(share * share * share * (12000 - kMinUnits));
}

/// A line: the text that the writer passes, and the text that the log must contain.
struct StressLine {
    std::wstring wide;
    std::string utf8;
};

inline StressLine stressLine(const StressLineId& id) {
    struct Glyph {
        std::wstring_view wide;
        std::string_view utf8;
    };
    static constexpr std::array<Glyph, 5> kBeyondAscii{{{L"\u00E9", "\xC3\xA9"},
                                                        {L"\u00DF", "\xC3\x9F"},
                                                        {L"\u20AC", "\xE2\x82\xAC"},
                                                        {L"\u8A9E", "\xE8\xAA\x9E"},
                                                        {L"\U0001F600", "\xF0\x9F\x98\x80"}}};
    constexpr std::size_t kChecksumUnits = 16;
    StressNumbers numbers(id.writer * 1000003ULL + id.thread * 10007ULL + id.number);
    const std::size_t units = stressLineUnits(id, numbers);

    StressLine line;
    const auto add = [&line](std::wstring_view wide, std::string_view utf8) {
        line.wide += wide;
        line.utf8 += utf8;
    };
    const auto addAscii = [&line](std::string_view text) {
        line.wide.append(text.begin(), text.end());
        line.utf8 += text;
    };
    addAscii(std::to_string(id.writer) + '.' + std::to_string(id.thread) + '.' + std::to_string(id.number) + ' ' +
             std::to_string(units) + ' ');
    while (line.wide.size() + 1 + kChecksumUnits < units) {
        const std::uint64_t choice = numbers.next();
        const Glyph& glyph = kBeyondAscii[choice / 64 % kBeyondAscii.size()];
        if (choice % 64 == 0 && line.wide.size() + glyph.wide.size() + 1 + kChecksumUnits <= units) {
            add(glyph.wide, glyph.utf8);
        } else {
            const char ascii = static_cast<char>('!' + choice / 64 % 94);
            addAscii({&ascii, 1});
        }
    }
    addAscii(" ");
    addAscii(checksum(line.utf8));
    return line;
}

/// The id of the line `utf8`; nullopt if the checksum is wrong or the line has no id.
inline std::optional<StressLineId> readStressLine(std::string_view utf8) {
    constexpr std::size_t kChecksumBytes = 16;
    if (utf8.size() <= kChecksumBytes) {
        return std::nullopt;
    }
    const std::size_t length = utf8.size() - kChecksumBytes;
    if (checksum(utf8.substr(0, length)) != utf8.substr(length)) {
        return std::nullopt;
    }
    StressLineId id;
    const char* at = utf8.data();
    const char* const last = utf8.data() + length;
    for (unsigned int* field : {&id.writer, &id.thread, &id.number}) {
        const auto [end, error] = std::from_chars(at, last, *field);
        if (error != std::errc()) {
            return std::nullopt;
        }
        at = std::min(end + 1, last);
    }
    return id;
}

}  // namespace test
