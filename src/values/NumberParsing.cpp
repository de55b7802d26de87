#include "vorel/values/NumberParsing.h"

#include "algorithms/NumberReading.h"

namespace vorel::util {

int stringToInteger(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return algorithms::readInteger<int>(text, end, skipTrailingSpace);
}

int stringToInteger(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return algorithms::readInteger<int>(text, end, skipTrailingSpace);
}

long long stringToInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return algorithms::readInteger<long long>(text, end, skipTrailingSpace);
}

long long stringToInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return algorithms::readInteger<long long>(text, end, skipTrailingSpace);
}

unsigned long long stringToUnsignedInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return algorithms::readInteger<unsigned long long>(text, end, skipTrailingSpace);
}

unsigned long long stringToUnsignedInteger64(const wchar_t* text, const wchar_t** end,
                                             bool skipTrailingSpace) noexcept {
    return algorithms::readInteger<unsigned long long>(text, end, skipTrailingSpace);
}

int stringToInt(const char* text, char** end) noexcept {
    return algorithms::readInteger<int>(text, end, true);
}

int stringToInt(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readInteger<int>(text, end, true);
}

unsigned int stringToUInt(const char* text, char** end) noexcept {
    return algorithms::readInteger<unsigned int>(text, end, true);
}

unsigned int stringToUInt(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readInteger<unsigned int>(text, end, true);
}

long long stringToInt64(const char* text, char** end) noexcept {
    return algorithms::readInteger<long long>(text, end, true);
}

long long stringToInt64(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readInteger<long long>(text, end, true);
}

unsigned long long stringToUInt64(const char* text, char** end) noexcept {
    return algorithms::readInteger<unsigned long long>(text, end, true);
}

unsigned long long stringToUInt64(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readInteger<unsigned long long>(text, end, true);
}

int hexToInteger(const char* text, char** end) noexcept {
    return algorithms::readHex(text, end);
}

int hexToInteger(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readHex(text, end);
}

int hexToInt(const char* text, char** end) noexcept {
    return algorithms::readHex(text, end);
}

int hexToInt(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readHex(text, end);
}

double stringToDouble(const char* text, char** end) noexcept {
    return algorithms::readDecimal(text, end);
}

double stringToDouble(const wchar_t* text, wchar_t** end) noexcept {
    return algorithms::readDecimal(text, end);
}

bool tryStringToInteger(const char* text, int& value) noexcept {
    return algorithms::tryReadInteger(text, value);
}

bool tryStringToInteger(const wchar_t* text, int& value) noexcept {
    return algorithms::tryReadInteger(text, value);
}

bool tryStringToDouble(const char* text, double& value) noexcept {
    return algorithms::tryReadDouble(text, value);
}

bool tryStringToDouble(const wchar_t* text, double& value) noexcept {
    return algorithms::tryReadDouble(text, value);
}

bool canCoerceToInteger(const char* text, bool allowLeadingZeros) noexcept {
    return algorithms::coercesToInteger(text, allowLeadingZeros);
}

bool canCoerceToInteger(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return algorithms::coercesToInteger(text, allowLeadingZeros);
}

bool canCoerceToDouble(const char* text, bool allowLeadingZeros) noexcept {
    return algorithms::coercesToDouble(text, allowLeadingZeros);
}

bool canCoerceToDouble(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return algorithms::coercesToDouble(text, allowLeadingZeros);
}

}  // namespace vorel::util
