/// \file
/// The tables of Base64 as a part of the library's state: they are filled at their place in its order.
#pragma once

#include "core/LibraryState.h"
#include "vorel/text/Base64.h"

namespace vorel::detail {

struct Base64Tables {
    bool initialized = util::Base64::initializeBase64Tables();
};

inline constinit StateObject<Base64Tables> base64Tables;

}  // namespace vorel::detail
