// The length of a narrow text at any position in its pages.

#include <cstdint>
#include <string>

#include "algorithms/PageReads.h"
#include "support/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const fuzz::Placement around = input.placement();
    const std::string text = fuzz::upToZero(input.rest());
    const char* const placed = fuzz::inputPages().copyText(text, around);
    fuzz::check(vorel::algorithms::textLength(placed) == text.size(), "the length ends at the terminator");
    return 0;
}
