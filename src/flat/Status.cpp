#include "vorel/flat/Status.h"

#include <iterator>

#include "vorel/Version.h"

namespace {

/// Indexed by status.
constexpr const char* kNames[] = {
    "VOREL_OK",
    "VOREL_ERROR_INVALID_ARGUMENT",
    "VOREL_ERROR_BUFFER_TOO_SMALL",
    "VOREL_ERROR_OUT_OF_MEMORY",
    "VOREL_ERROR_INVALID_TEXT",
    "VOREL_ERROR_UNKNOWN_NAME",
    "VOREL_ERROR_UNSUPPORTED",
    "VOREL_ERROR_TIMEOUT",
    "VOREL_ERROR_NOT_OWNER",
    "VOREL_ERROR_SYSTEM",
    "VOREL_ERROR_INTERNAL",
};
static_assert(std::size(kNames) == VOREL_ERROR_INTERNAL + 1);

}  // namespace

uint32_t vorel_abi_version(void) {
    return VOREL_ABI_VERSION;
}

const char* vorel_version(void) {
    return vorel::version();
}

const char* vorel_status_name(vorel_status status) {
    return status >= 0 && status < static_cast<vorel_status>(std::size(kNames)) ? kNames[status]
                                                                                : "VOREL_ERROR_UNKNOWN";
}
