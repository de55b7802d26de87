/// \file
/// The object that fills the tables of Base64. It belongs to the library's state, because the objects of the state are
/// created in a fixed order.
#pragma once

#include "core/LibraryState.h"
#include "vorel/text/Base64.h"

namespace vorel::detail {

struct Base64Tables {
    bool initialized = util::Base64::initializeBase64Tables();
};

inline constinit StateObject<Base64Tables> base64Tables;

}  // namespace vorel::detail
