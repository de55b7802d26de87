// Compares the percent-encoding and percent-decoding for URLs with the reference.

#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/UrlText.h"
#include "support/Input.h"
#include "support/UrlReference.h"

namespace {

using vorel::algorithms::decodeUrl;
using vorel::algorithms::encodeUrl;
using vorel::algorithms::kUrlDecodingOverhang;
using vorel::algorithms::kUrlOverhang;
using vorel::algorithms::kUrlUses;
using vorel::algorithms::urlLength;
using vorel::algorithms::UrlProgress;
using vorel::algorithms::UrlTable;
using vorel::algorithms::urlTable;
using vorel::algorithms::UrlUse;

test::UrlRule ruleOf(UrlUse use) {
    switch (use) {
    case UrlUse::Plain: return {"~", false};
    case UrlUse::PlainWithPlus: return {"~", true};
    case UrlUse::Reserved: return {"~" + std::string(test::kUrlReserved), false};
    case UrlUse::ReservedWithPlus: return {"~" + std::string(test::kUrlReserved), true};
    case UrlUse::Path: return {"?", false};
    case UrlUse::PathSegment: return {"/?", false};
    case UrlUse::Query: return {"+", true};
    case UrlUse::QueryParameter: return {"+&=", true};
    case UrlUse::OtherComponent: break;
    }
    return {"", false};
}

void encode(const std::string& text, UrlUse use, const fuzz::Placement& source, const fuzz::Placement& target) {
    const std::string expected = test::urlEncoded(text, ruleOf(use));
    const UrlTable& table = urlTable(use);
    const std::string_view all = text;
    const std::string_view from(fuzz::inputPages().copy(all, source), text.size());
    fuzz::withEachKernel([&] {
        fuzz::check(urlLength(from, table) == expected.size(), "the computed length is the length of the encoded text");
        char* const out = fuzz::outputPages().allocate<char>(expected.size() + kUrlOverhang, target);
        const UrlProgress done = encodeUrl(from, table, out, expected.size() + kUrlOverhang);
        fuzz::check(done.read == from.size(), "the whole text is encoded");
        fuzz::check(std::string_view(out, done.written) == expected, "the encoded text is as expected");
    });
}

void decode(const std::string& text, bool plusIsSpace, const fuzz::Placement& source, const fuzz::Placement& target) {
    const std::string expected = test::urlDecoded(text, plusIsSpace);
    const std::string_view all = text;
    const std::string_view from(fuzz::inputPages().copy(all, source), text.size());
    char* const out = fuzz::outputPages().allocate<char>(text.size() + kUrlDecodingOverhang, target);
    const char* const end = decodeUrl(from, plusIsSpace, out);
    fuzz::check(std::string_view(out, static_cast<std::size_t>(end - out)) == expected,
                "the decoded text is as expected");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const fuzz::Placement source = input.placement();
    const fuzz::Placement target = input.placement();
    const bool plus = input.flag();
    if (input.flag()) {
        const auto use = static_cast<UrlUse>(input.upTo(kUrlUses - 1));
        encode(input.rest(), use, source, target);
    } else {
        decode(input.rest(), plus, source, target);
    }
    return 0;
}
