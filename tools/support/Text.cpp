#include "support/Text.h"

#include <algorithm>
#include <utility>

#include "vorel/text/Unicode.h"

namespace tools {

namespace {

/// Calls `convert` for each piece between zero units, with its start and its length, and `zero` between the pieces: a
/// zero ends every conversion of the library.
template <class T, class Convert, class Zero>
bool forEachPiece(const std::basic_string<T>& text, std::size_t length, Convert&& convert, Zero&& zero) {
    for (std::size_t start = 0;;) {
        const std::size_t end = std::min(text.find(T(), start), length);
        if (end > start && !convert(text.data() + start, static_cast<int>(end - start))) {
            return false;
        }
        if (end == length) {
            return true;
        }
        zero();
        start = end + 1;
    }
}

}  // namespace

std::string toUtf8(std::wstring_view text) {
    const std::wstring terminated(text);  // a conversion may look at the unit behind the last one
    std::string result;
    vorel::BaseString<char> piece;
    forEachPiece(
        terminated, text.size(),
        [&](const wchar_t* start, int length) {
            vorel::util::ConvertStringtoUTF8(start, piece, length);
            result += piece.view();
            return true;
        },
        [&] { result += '\0'; });
    return result;
}

std::optional<std::wstring> fromUtf8(std::string_view text) {
    constexpr std::size_t kLongestTail = 5;  // a lead byte at the end makes the decoder read that far
    std::string padded(text);
    padded.append(kLongestTail, '\0');
    std::wstring result;
    vorel::BaseString<wchar_t> piece;
    const bool valid = forEachPiece(
        padded, text.size(),
        [&](const char* start, int length) {
            if (!vorel::util::ConvertUTF8toString(piece, start, length, false)) {
                return false;
            }
            result += piece.view();
            return true;
        },
        [&] { result += L'\0'; });
    return valid ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace tools
