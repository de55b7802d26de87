#include "vorellog/Utf8.h"

#include <cstdint>
#include <cstring>

#include "support/Utf8.h"

namespace vorellog {

bool isUtf8(std::string_view text) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    while (!text.empty()) {
        std::uint64_t word = kHighBits;
        if (text.size() >= sizeof word) {
            std::memcpy(&word, text.data(), sizeof word);
        }
        if ((word & kHighBits) == 0) {
            text.remove_prefix(sizeof word);
            continue;
        }
        const std::size_t size = tools::utf8SequenceSize(text);
        if (size == 0) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

}  // namespace vorellog
