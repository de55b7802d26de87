#include <memory>
#include <vector>

#include "BinaryTextAvx2.h"
#include "BinaryTextLoops.h"
#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::Array;
using vorel::BaseString;
using Bytes = Array<unsigned char>;
namespace util = vorel::util;

constexpr char kAvx2Loop[] = "AVX2 loop";
constexpr char kTableLoop[] = "table loop";

std::string nameOf(std::size_t bytes) {
    if (bytes % kLarge == 0) {
        return std::to_string(bytes / kLarge) + " MiB";
    }
    return bytes % 1024 == 0 ? std::to_string(bytes / 1024) + " KiB" : std::to_string(bytes) + " bytes";
}

/// The inputs of one size for all operations.
template <class T>
struct Case {
    std::string data;
    Array<unsigned char> bytes;
    BaseString<T> base64;
    BaseString<T> hex;
};

/// A peer. Writes its result to `out`, and returns the number of units that it wrote.
template <class T>
using Loop = std::size_t (*)(const Case<T>& input, T* out);
template <class T>
using ByteLoop = std::size_t (*)(const Case<T>& input, unsigned char* out);

/// Compares `run(output)` with the table loop and, if the processor has AVX2, with the AVX2 loop: first with outputs
/// that are reused, then with new outputs. The loops write at most `units` units.
template <class Output, class Plain, class T, class Run, class LoopOf>
void compareOutputs(Family& family, const std::string& what, const Case<T>& input, std::size_t units, const Run& run,
                    LoopOf tableLoop, LoopOf avx2Loop) {
    Output reused;
    // Each peer has a separate output, because an output that two peers use would be in the caches more often.
    const auto reusedPeer = [&](LoopOf loop) {
        return Pass([&input, plain = std::make_shared<Plain>(units, typename Plain::value_type{}), loop] {
            return std::uint64_t{loop(input, plain->data())};
        });
    };
    const auto freshPeer = [&](LoopOf loop) {
        return Pass([&input, units, loop] {
            Plain fresh(units, {});
            fresh.resize(loop(input, fresh.data()));
            return std::uint64_t{fresh.size()};
        });
    };
    std::vector<Peer> peersOfReused = {{kTableLoop, reusedPeer(tableLoop)}};
    std::vector<Peer> peersOfFresh = {{kTableLoop, freshPeer(tableLoop)}};
    if (hasAvx2()) {
        peersOfReused.insert(peersOfReused.begin(), {kAvx2Loop, reusedPeer(avx2Loop)});
        peersOfFresh.insert(peersOfFresh.begin(), {kAvx2Loop, freshPeer(avx2Loop)});
    }
    family.compare(
        what + ", reused", 1, [&] { return std::uint64_t{run(reused)}; }, peersOfReused);
    family.compare(
        what + ", fresh", 1,
        [&] {
            Output fresh;
            return std::uint64_t{run(fresh)};
        },
        peersOfFresh);
}

template <class T>
void compare(Family& family, std::size_t size, const std::string& width) {
    Case<T> input = {randomBytes(size), {}, {}, {}};
    input.bytes.append(reinterpret_cast<const unsigned char*>(input.data.data()), static_cast<unsigned int>(size));
    util::Base64::Encode(input.bytes, input.base64);
    util::byteArrayToHexString(input.bytes, input.hex, true);
    using Text = BaseString<T>;
    using PlainText = std::basic_string<T>;
    using PlainBytes = std::vector<unsigned char>;
    const std::string what = nameOf(size) + ", " + width;
    compareOutputs<Text, PlainText>(
        family, "Base64 encode, " + what, input, (size + 2) / 3 * 4,
        [&](Text& text) {
            util::Base64::Encode(input.bytes, text);
            return text.length();
        },
        Loop<T>([](const Case<T>& in, T* out) { return encodeBase64(in.bytes.data(), in.bytes.size(), out); }),
        Loop<T>([](const Case<T>& in, T* out) { return encodeBase64Avx2(in.bytes.data(), in.bytes.size(), out); }));
    compareOutputs<Bytes, PlainBytes>(
        family, "Base64 decode, " + what, input, (size + 2) / 3 * 3,
        [&](Bytes& bytes) {
            util::Base64::Decode(input.base64.c_str(), bytes);
            return bytes.size();
        },
        ByteLoop<T>([](const Case<T>& in, unsigned char* out) {
            return decodeBase64(in.base64.c_str(), in.base64.length(), out);
        }),
        ByteLoop<T>([](const Case<T>& in, unsigned char* out) {
            return decodeBase64Avx2(in.base64.c_str(), in.base64.length(), out);
        }));
    compareOutputs<Text, PlainText>(
        family, "hex encode, " + what, input, 2 * size,
        [&](Text& text) {
            util::byteArrayToHexString(input.bytes, text, true);
            return text.length();
        },
        Loop<T>([](const Case<T>& in, T* out) { return encodeHex(in.bytes.data(), in.bytes.size(), out); }),
        Loop<T>([](const Case<T>& in, T* out) { return encodeHexAvx2(in.bytes.data(), in.bytes.size(), out); }));
    compareOutputs<Bytes, PlainBytes>(
        family, "hex decode, " + what, input, size,
        [&](Bytes& bytes) {
            util::hexStringToByteArray(input.hex.c_str(), input.hex.length(), bytes);
            return bytes.size();
        },
        ByteLoop<T>(
            [](const Case<T>& in, unsigned char* out) { return decodeHex(in.hex.c_str(), in.hex.length(), out); }),
        ByteLoop<T>(
            [](const Case<T>& in, unsigned char* out) { return decodeHexAvx2(in.hex.c_str(), in.hex.length(), out); }));
}

}  // namespace

void binaryToText(Family& family) {
    for (const std::size_t size : {16 * kLarge, kLarge, std::size_t{4096}, std::size_t{256}, kSmall}) {
        compare<char>(family, size, "narrow");
        compare<wchar_t>(family, size, "wide");
    }
}

}  // namespace bench
