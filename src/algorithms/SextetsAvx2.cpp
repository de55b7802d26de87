// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.
//
// The methods follow Wojciech Muła and Daniel Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions".

#include "algorithms/Sextets.h"

#include <cstddef>

#include <immintrin.h>

#include "algorithms/Attributes.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

constexpr std::size_t kBytes = 24;  // per block
constexpr std::size_t kCharacters = 32;

/// Says which twelve of the sixteen bytes in half a register are encoded: the first twelve or the last twelve.
enum class Half { First, Last };

/// A shuffle that turns each group of three bytes a b c into the four bytes b a c b.
__m128i tripleOrder(Half half) noexcept {
    const __m128i first = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    return half == Half::First ? first : _mm_add_epi8(first, _mm_set1_epi8(4));
}

__m256i tripleOrders(Half lower, Half upper) noexcept {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(tripleOrder(lower)), tripleOrder(upper), 1);
}

/// Loads sixteen bytes into each half of a register.
__m256i loadHalves(const unsigned char* lower, const unsigned char* upper) noexcept {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lower));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(upper));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

/// Loads twelve bytes and reads nothing after them.
__m128i loadTwelve(const unsigned char* bytes) noexcept {
    const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
    return _mm_unpacklo_epi64(eight, _mm_loadu_si32(bytes + 8));
}

template <SextetOrder Order>
class Encoder {
public:
    /// The characters that encode the twelve bytes in each half. `order` contains the `tripleOrder` of each half.
    [[nodiscard]] __m256i charactersOf(__m256i bytes, __m256i order) const noexcept {
        const __m256i groups = _mm256_shuffle_epi8(bytes, order);
        // A multiplication shifts each lane of 16 bits by a separate distance. The first and third of four values
        // move right, the second and fourth move left.
        const __m256i down =
            _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
        const __m256i up =
            _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
        const __m256i values = _mm256_or_si256(down, up);
        return _mm256_add_epi8(values, _mm256_shuffle_epi8(m_offsets, rangesOf(values)));
    }

private:
    static constexpr SextetOffsets kOffsets =
        sextetOffsets({Order == SextetOrder::Base64 ? kBase64Alphabet.data() : kDaylightAlphabet.data(), Order});

    /// `sextetRange` of each value.
    static __m256i rangesOf(__m256i values) noexcept {
        if constexpr (Order == SextetOrder::Base64) {
            return _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                   _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)));
        } else {
            return _mm256_sub_epi8(_mm256_subs_epu8(_mm256_set1_epi8(12), values),
                                   _mm256_cmpgt_epi8(_mm256_set1_epi8(38), values));
        }
    }

    __m256i m_offsets = loadTwice(kOffsets.offsets);
};

/// Encodes 12 to 21 bytes, a multiple of three: the first twelve and the last twelve bytes, which may overlap.
template <SextetOrder Order, class T>
void encodeOneOrTwoHalves(const unsigned char* bytes, std::size_t count, T* out) noexcept {
    const __m256i both =
        _mm256_inserti128_si256(_mm256_castsi128_si256(loadTwelve(bytes)), loadTwelve(bytes + count - kBytes / 2), 1);
    const __m256i characters = Encoder<Order>().charactersOf(both, tripleOrders(Half::First, Half::First));
    storeCharacters(_mm256_castsi256_si128(characters), out);
    storeCharacters(_mm256_extracti128_si256(characters, 1), out + count / 3 * 4 - kCharacters / 2);
}

/// Encodes a block and reads only the bytes of the block. This function is separate from the loop for long input,
/// because that loop uses registers that a function must save and restore for its caller.
template <SextetOrder Order, class T>
VOREL_NOINLINE void encodeBlock(const unsigned char* bytes, T* out) noexcept {
    const __m256i halves = loadHalves(bytes, bytes + 8);
    storeCharacters(Encoder<Order>().charactersOf(halves, tripleOrders(Half::First, Half::Last)), out);
}

constexpr std::size_t kAround = 4;  // the number of bytes that `encodeFours` reads before and after its blocks

/// Encodes four blocks at once while at least `kAround` of the `count` bytes follow the four blocks. The `kAround`
/// bytes before `bytes` must be readable. Returns the number of bytes encoded.
template <SextetOrder Order, class T>
VOREL_NOINLINE std::size_t encodeFours(const unsigned char* bytes, std::size_t count, T* out) noexcept {
    const Encoder<Order> encoder;
    const __m256i order = tripleOrders(Half::Last, Half::First);
    std::size_t done = 0;
    for (; count - done >= 4 * kBytes + kAround; done += 4 * kBytes, out += 4 * kCharacters) {
        const auto encodeMiddle = [&](std::size_t block) {
            const unsigned char* const start = bytes + done + block * kBytes - kAround;
            const __m256i around = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(start));
            storeCharacters(encoder.charactersOf(around, order), out + block * kCharacters);
        };
        encodeMiddle(0);
        encodeMiddle(1);
        encodeMiddle(2);
        encodeMiddle(3);
    }
    return done;
}

template <SextetOrder Order, class T>
std::size_t encode(const unsigned char* bytes, std::size_t count, T* out) noexcept {
    const std::size_t whole = count - count % 3;
    if (whole < kMinSextetBytes) {
        return 0;
    }
    if (whole < kBytes) {
        encodeOneOrTwoHalves<Order>(bytes, whole, out);
        return whole;
    }
    encodeBlock<Order>(bytes, out);
    std::size_t done = kBytes;
    if (whole - done >= 4 * kBytes + kAround) {
        done += encodeFours<Order>(bytes + done, whole - done, out + done / 3 * 4);
    }
    for (; whole - done >= kBytes; done += kBytes) {
        encodeBlock<Order>(bytes + done, out + done / 3 * 4);
    }
    if (done != whole) {
        // The last block begins before `done`, so some bytes are encoded a second time.
        encodeBlock<Order>(bytes + whole - kBytes, out + whole / 3 * 4 - kCharacters);
    }
    return whole;
}

template <class T>
std::size_t encodeInOrder(const unsigned char* bytes, std::size_t count, SextetOrder order, T* out) noexcept {
    return order == SextetOrder::Base64 ? encode<SextetOrder::Base64>(bytes, count, out)
                                        : encode<SextetOrder::Daylight>(bytes, count, out);
}

}  // namespace

std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, SextetOrder order, char* out) noexcept {
    return encodeInOrder(bytes, count, order, out);
}

std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, SextetOrder order,
                              WideUnit* out) noexcept {
    return encodeInOrder(bytes, count, order, out);
}

}  // namespace vorel::algorithms
