#include "vorel/values/BooleanParsing.h"

#include "kernels/BooleanReading.h"

namespace vorel::util {

const wchar_t* const TAL_True = L"true";
const wchar_t* const TAL_False = L"false";

bool stringToBoolean(const char* text, char** end) noexcept {
    return kernels::readBoolean(text, end);
}

bool stringToBoolean(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readBoolean(text, end);
}

bool canCoerceToBoolean(const char* text) noexcept {
    return kernels::coercesToBoolean(text);
}

bool canCoerceToBoolean(const wchar_t* text) noexcept {
    return kernels::coercesToBoolean(text);
}

}  // namespace vorel::util
