#include "vorel/values/NumberParsing.h"

#include "algorithms/NumberReading.h"

namespace vorel::util {

using algorithms::coercesToDouble;
using algorithms::coercesToInteger;
using algorithms::readDecimal;
using algorithms::readHex;
using algorithms::readInteger;
using algorithms::tryReadDouble;
using algorithms::tryReadInteger;
using Int64 = long long;
using UInt64 = unsigned long long;

// A table of the exported functions, in the order of the header.
// clang-format off

int stringToInteger(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return readInteger<int>(text, end, skipTrailingSpace);
}
int stringToInteger(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return readInteger<int>(text, end, skipTrailingSpace);
}
Int64 stringToInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return readInteger<Int64>(text, end, skipTrailingSpace);
}
Int64 stringToInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return readInteger<Int64>(text, end, skipTrailingSpace);
}
UInt64 stringToUnsignedInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return readInteger<UInt64>(text, end, skipTrailingSpace);
}
UInt64 stringToUnsignedInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return readInteger<UInt64>(text, end, skipTrailingSpace);
}

int stringToInt(const char* text, char** end) noexcept { return readInteger<int>(text, end, true); }
int stringToInt(const wchar_t* text, wchar_t** end) noexcept { return readInteger<int>(text, end, true); }
unsigned int stringToUInt(const char* text, char** end) noexcept { return readInteger<unsigned int>(text, end, true); }
unsigned int stringToUInt(const wchar_t* text, wchar_t** end) noexcept {
    return readInteger<unsigned int>(text, end, true);
}
Int64 stringToInt64(const char* text, char** end) noexcept { return readInteger<Int64>(text, end, true); }
Int64 stringToInt64(const wchar_t* text, wchar_t** end) noexcept { return readInteger<Int64>(text, end, true); }
UInt64 stringToUInt64(const char* text, char** end) noexcept { return readInteger<UInt64>(text, end, true); }
UInt64 stringToUInt64(const wchar_t* text, wchar_t** end) noexcept { return readInteger<UInt64>(text, end, true); }

int hexToInteger(const char* text, char** end) noexcept { return readHex(text, end); }
int hexToInteger(const wchar_t* text, wchar_t** end) noexcept { return readHex(text, end); }
int hexToInt(const char* text, char** end) noexcept { return readHex(text, end); }
int hexToInt(const wchar_t* text, wchar_t** end) noexcept { return readHex(text, end); }
double stringToDouble(const char* text, char** end) noexcept { return readDecimal(text, end); }
double stringToDouble(const wchar_t* text, wchar_t** end) noexcept { return readDecimal(text, end); }

bool tryStringToInteger(const char* text, int& value) noexcept { return tryReadInteger(text, value); }
bool tryStringToInteger(const wchar_t* text, int& value) noexcept { return tryReadInteger(text, value); }
bool tryStringToDouble(const char* text, double& value) noexcept { return tryReadDouble(text, value); }
bool tryStringToDouble(const wchar_t* text, double& value) noexcept { return tryReadDouble(text, value); }

bool canCoerceToInteger(const char* text, bool allowLeadingZeros) noexcept {
    return coercesToInteger(text, allowLeadingZeros);
}
bool canCoerceToInteger(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return coercesToInteger(text, allowLeadingZeros);
}
bool canCoerceToDouble(const char* text, bool allowLeadingZeros) noexcept {
    return coercesToDouble(text, allowLeadingZeros);
}
bool canCoerceToDouble(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return coercesToDouble(text, allowLeadingZeros);
}

// clang-format on

}  // namespace vorel::util
