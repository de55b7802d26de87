// Counts the units of a text of either width, which may begin at any position in a page.

#include <cstdint>
#include <string>

#include "algorithms/PageReads.h"
#include "algorithms/TextLength.h"
#include "support/Input.h"

namespace {

template <class T>
const T* placed(const std::basic_string<T>& text, const fuzz::Placement& around) {
    const T* const start = fuzz::inputPages().copyText(text, around);
    fuzz::withEachKernel([&] {
        fuzz::check(vorel::algorithms::countUnits(start) == text.size(),
                    "countUnits returns the number of units before the terminator");
    });
    return start;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const fuzz::Placement around = input.placement();
    if (input.flag()) {
        placed(fuzz::upToZero(input.restAsText<char16_t>()), around);
        return 0;
    }
    const std::string text = fuzz::upToZero(input.rest());
    const char* const start = placed(text, around);
    fuzz::check(vorel::algorithms::textLength(start) == text.size(),
                "textLength returns the number of units before the terminator");
    return 0;
}
