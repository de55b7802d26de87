#include "vorel/text/Daylight.h"

#include <string_view>

#include "algorithms/DaylightText.h"
#include "text/OutputSinks.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

Daylight& Daylight::operator=(const Daylight&) = default;

void Daylight::Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text) {
    wchar_t* const out = text::reserveUnits(algorithms::daylightLength(bytes.size()), text);
    text::setEnd(algorithms::encodeDaylight(bytes.data(), bytes.size(), out), text);
}

int Daylight::Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes) {
    const std::wstring_view whole = text.view();
    if (whole.size() % 4 != 1) {
        throw Exception(L"Daylight64::Decode: Invalid ASCII string (length wrong)");
    }
    const auto maxBytes = static_cast<unsigned int>(whole.size() / 4 * 3);
    bytes.setCount(maxBytes);
    algorithms::decodeDaylightGroups(whole.data(), whole.size() - 1, bytes.data());
    const unsigned int last = algorithms::bytesOfLastGroup(whole.back());
    if (last == 0 || maxBytes + last < 3) {
        // The spelling is kept because programs compare the text.
        throw Exception(L"Daylight64::Decode: Invalid ASCII string (unexepected charater at end)");
    }
    bytes.setCount(maxBytes + last - 3);
    return 0;
}

}  // namespace vorel::util
