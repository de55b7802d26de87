#include "vorel/values/NumberParsing.h"

#include "kernels/NumberReading.h"

namespace vorel::util {

int stringToInteger(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return kernels::readInteger<int>(text, end, skipTrailingSpace);
}

int stringToInteger(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return kernels::readInteger<int>(text, end, skipTrailingSpace);
}

long long stringToInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return kernels::readInteger<long long>(text, end, skipTrailingSpace);
}

long long stringToInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return kernels::readInteger<long long>(text, end, skipTrailingSpace);
}

unsigned long long stringToUnsignedInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return kernels::readInteger<unsigned long long>(text, end, skipTrailingSpace);
}

unsigned long long stringToUnsignedInteger64(const wchar_t* text, const wchar_t** end,
                                             bool skipTrailingSpace) noexcept {
    return kernels::readInteger<unsigned long long>(text, end, skipTrailingSpace);
}

int stringToInt(const char* text, char** end) noexcept {
    return kernels::readInteger<int>(text, end, true);
}

int stringToInt(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readInteger<int>(text, end, true);
}

unsigned int stringToUInt(const char* text, char** end) noexcept {
    return kernels::readInteger<unsigned int>(text, end, true);
}

unsigned int stringToUInt(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readInteger<unsigned int>(text, end, true);
}

long long stringToInt64(const char* text, char** end) noexcept {
    return kernels::readInteger<long long>(text, end, true);
}

long long stringToInt64(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readInteger<long long>(text, end, true);
}

unsigned long long stringToUInt64(const char* text, char** end) noexcept {
    return kernels::readInteger<unsigned long long>(text, end, true);
}

unsigned long long stringToUInt64(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readInteger<unsigned long long>(text, end, true);
}

int hexToInteger(const char* text, char** end) noexcept {
    return kernels::readHex(text, end);
}

int hexToInteger(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readHex(text, end);
}

int hexToInt(const char* text, char** end) noexcept {
    return kernels::readHex(text, end);
}

int hexToInt(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readHex(text, end);
}

double stringToDouble(const char* text, char** end) noexcept {
    return kernels::readDecimal(text, end);
}

double stringToDouble(const wchar_t* text, wchar_t** end) noexcept {
    return kernels::readDecimal(text, end);
}

bool tryStringToInteger(const char* text, int& value) noexcept {
    return kernels::tryReadInteger(text, value);
}

bool tryStringToInteger(const wchar_t* text, int& value) noexcept {
    return kernels::tryReadInteger(text, value);
}

bool tryStringToDouble(const char* text, double& value) noexcept {
    return kernels::tryReadDouble(text, value);
}

bool tryStringToDouble(const wchar_t* text, double& value) noexcept {
    return kernels::tryReadDouble(text, value);
}

bool canCoerceToInteger(const char* text, bool allowLeadingZeros) noexcept {
    return kernels::coercesToInteger(text, allowLeadingZeros);
}

bool canCoerceToInteger(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return kernels::coercesToInteger(text, allowLeadingZeros);
}

bool canCoerceToDouble(const char* text, bool allowLeadingZeros) noexcept {
    return kernels::coercesToDouble(text, allowLeadingZeros);
}

bool canCoerceToDouble(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return kernels::coercesToDouble(text, allowLeadingZeros);
}

}  // namespace vorel::util
