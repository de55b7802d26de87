#include "flat/Utf8Units.h"

#include <algorithm>

#include "algorithms/Utf8Streams.h"

namespace vorel::flat {

namespace {

/// Calls `convert` for each piece between zeros, and `putZero` for each zero. Stops and returns false if `convert`
/// returns false.
template <class Unit, class Convert, class PutZero>
bool eachPiece(std::basic_string_view<Unit> text, Convert&& convert, PutZero&& putZero) {
    for (;;) {
        const std::size_t end = std::min(text.find(Unit()), text.size());
        if (!convert(text.substr(0, end))) {
            return false;
        }
        if (end == text.size()) {
            return true;
        }
        putZero();
        text.remove_prefix(end + 1);
    }
}

}  // namespace

std::size_t toUtf8(std::wstring_view text, char* bytes) noexcept {
    static_assert(utf8Capacity(1) >= algorithms::kMaxUtf8BytesPerUnit + algorithms::kLongestUtf8Sequence + 1);
    auto* out = reinterpret_cast<unsigned char*>(bytes);
    const unsigned char* const start = out;
    eachPiece(
        text,
        [&out](std::wstring_view piece) {
            const std::size_t capacity = utf8Capacity(piece.size());
            algorithms::Utf8Writer<algorithms::Surrogates::Paired, wchar_t> writer(piece.data(),
                                                                                   static_cast<int>(piece.size()));
            out += writer.write(out, capacity, capacity);
            return true;
        },
        [&out] { *out++ = 0; });
    return static_cast<std::size_t>(out - start);
}

Array<char> toUtf8(std::wstring_view text) {
    Array<char> bytes;
    bytes.setCount(static_cast<unsigned int>(utf8Capacity(text.size())));
    bytes.setCount(static_cast<unsigned int>(toUtf8(text, bytes.data())));
    return bytes;
}

std::optional<Array<wchar_t>> toUtf16(std::string_view bytes) {
    Array<wchar_t> units;
    // Each unit comes from at least one byte. But a truncated sequence at the end of a piece can give a surrogate pair,
    // which exceeds the capacity by one unit.
    units.setCount(static_cast<unsigned int>(bytes.size()) + 1);
    wchar_t* out = units.data();
    const bool isUtf8 = eachPiece(
        bytes,
        [&out](std::string_view piece) {
            using Reader = algorithms::Utf8Reader;
            Reader reader(reinterpret_cast<const unsigned char*>(piece.data()), static_cast<int>(piece.size()));
            out += reader.read<Reader::LastPair::Written>(out, piece.size());
            // If the last sequence is truncated, the reader is past the end of the piece.
            return !reader.failed() && reinterpret_cast<const char*>(reader.position()) == piece.data() + piece.size();
        },
        [&out] { *out++ = 0; });
    if (!isUtf8) {
        return std::nullopt;
    }
    units.setCount(static_cast<unsigned int>(out - units.data()));
    return units;
}

}  // namespace vorel::flat
