// Counts the arguments of a format of either width, and compares the number with a reference that searches for one
// percent sign after the other.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/FormatSlots.h"
#include "support/Input.h"

namespace {

unsigned int slotsOf(std::string_view format) {
    unsigned int slots = 0;
    for (std::size_t at = format.find('%'); at < format.size(); at = format.find('%', at)) {
        const std::size_t conversion = format.find_first_not_of("-+ #0123456789.*hlLwIjztT", at + 1);
        const std::string_view between = format.substr(at + 1, conversion - at - 1);
        const bool isPercent = between.empty() && conversion < format.size() && format[conversion] == '%';
        slots += static_cast<unsigned int>(std::count(between.begin(), between.end(), '*'));
        slots += conversion < format.size() && !isPercent ? 1u : 0u;
        at = std::min(conversion, format.size() - 1) + 1;
    }
    return slots;
}

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement around = input.placement();
    const std::basic_string<T> format = fuzz::upToZero(input.restAsText<T>());
    std::string narrow;
    for (const T unit : format) {
        narrow += unit > 0 && unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    fuzz::check(vorel::algorithms::countFormatSlots(fuzz::inputPages().copyText(format, around)) == slotsOf(narrow),
                "the number of arguments is as expected");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
