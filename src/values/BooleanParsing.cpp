#include "vorel/values/BooleanParsing.h"

#include "algorithms/BooleanReading.h"

namespace vorel::util {

const wchar_t* const TAL_True = L"true";
const wchar_t* const TAL_False = L"false";

bool stringToBoolean(const char* text, char** end) noexcept {
    return algorithms::readBoolean(text, end);
}

bool stringToBoolean(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readBoolean(text, end);
}

bool canCoerceToBoolean(const char* text) noexcept {
    return algorithms::coercesToBoolean(text);
}

bool canCoerceToBoolean(const wchar_t* text) noexcept {
    return algorithms::coercesToBoolean(text);
}

}  // namespace vorel::util
