#include "vorel/Version.h"

namespace vorel {

const char* version() noexcept {
    return VOREL_VERSION_STRING;
}

}  // namespace vorel
