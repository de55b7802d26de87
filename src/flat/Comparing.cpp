#include "vorel/flat/Comparing.h"

#include "flat/Call.h"
#include "flat/Input.h"
#include "vorel/values/Comparing.h"

using vorel::flat::checkFlags;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::sameValue;
using vorel::flat::WideText;

namespace {

namespace util = vorel::util;

constexpr uint32_t kFlags =
    VOREL_COMPARE_IGNORE_CASE | VOREL_COMPARE_NUMERIC | VOREL_COMPARE_SLASHES_EQUAL | VOREL_COMPARE_REVERSE;

static_assert(sameValue(VOREL_COMPARE_IGNORE_CASE, util::SCMP_IgnoreCase));
static_assert(sameValue(VOREL_COMPARE_NUMERIC, util::SCMP_Numeric));
static_assert(sameValue(VOREL_COMPARE_SLASHES_EQUAL, util::SCMP_SlashesEqual));
static_assert(sameValue(VOREL_COMPARE_REVERSE, util::SCMP_Reverse));

}  // namespace

vorel_status vorel_compare(const vorel_char16* a, size_t aLength, const vorel_char16* b, size_t bLength, uint32_t flags,
                           int32_t* order) {
    return guardedCall(L"vorel_compare", [&] {
        int32_t& result = notNull(order);
        const WideText first(a, aLength);
        const WideText second(b, bLength);
        checkFlags(flags, kFlags);
        const int sign = util::strcmpAdvanced(first.c_str(), second.c_str(), static_cast<util::strcmpAdvFlag>(flags));
        result = int32_t{sign > 0} - int32_t{sign < 0};
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_version_at_least(const vorel_char16* version, size_t versionLength, const vorel_char16* required,
                                    size_t requiredLength, int32_t* isAtLeast) {
    return guardedCall(L"vorel_version_at_least", [&] {
        int32_t& result = notNull(isAtLeast);
        const WideText present(version, versionLength);
        const WideText asked(required, requiredLength);
        result = util::stringVersionAtLeast(present.c_str(), asked.c_str());
        return vorel_status{VOREL_OK};
    });
}
