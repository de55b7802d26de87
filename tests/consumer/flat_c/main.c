/* A user's program in C, for any compiler. It is compiled as C99, C11, C17, C23 and C++20. It uses neither a C runtime
 * nor the system, so it needs only the import library of vorelCore. Its entry point is `start`.
 *
 * The exit code is the number of the check that failed, or 0. */

#include <vorel/vorelCoreC.h>

/* Compilers for Microsoft's ABI refer to this name in programs that use floating-point numbers. Usually, the C runtime
 * defines it. */
#ifdef __cplusplus
extern "C" {
#endif
extern int _fltused;
int _fltused = 0;
int start(void);
#ifdef __cplusplus
}
#endif

#if defined(__cplusplus)
#define TEXT(literal) vorel_utf16(u##literal)
#elif __STDC_VERSION__ >= 201112L
#define TEXT(literal) u##literal
#else
#define TEXT(literal) (const vorel_char16*)L##literal /* wchar_t is a UTF-16 unit on Windows */
#endif

static int sameBytes(const char* bytes, const char* expected, size_t size) {
    size_t index;
    for (index = 0; index < size; ++index) {
        if (bytes[index] != expected[index]) {
            return 0;
        }
    }
    return 1;
}

static int decodes(void) {
    char bytes[4] = {'.', '.', '.', '.'};
    size_t size = 0;
    return vorel_base64_decode(TEXT("QUJD"), 4, NULL, 0, &size) == VOREL_ERROR_BUFFER_TOO_SMALL && size == 3 &&
           vorel_base64_decode(TEXT("QUJD"), 4, bytes, size, &size) == VOREL_OK && sameBytes(bytes, "ABC.", 4);
}

static int reportsAFailure(void) {
    int32_t value = 77;
    char message[64];
    size_t length = 0;
    return vorel_parse_int32(TEXT("seven"), VOREL_ZERO_TERMINATED, &value) == VOREL_ERROR_INVALID_TEXT && value == 77 &&
           vorel_last_error_message_utf8(message, sizeof message, &length) == VOREL_OK && length == 26 &&
           sameBytes(message, "The text is not an integer", 27);
}

static int formats(void) {
    vorel_char16 text[8];
    char bytes[8];
    size_t length = 0;
    return vorel_format_double(123.456, VOREL_FORMAT_JSON, text, 8, &length) == VOREL_OK && length == 7 &&
           vorel_utf16_to_utf8(text, length, bytes, 8, &length) == VOREL_OK && length == 7 &&
           sameBytes(bytes, "123.456", 8);
}

static int locks(void) {
    vorel_mutex* mutex = NULL;
    return vorel_mutex_open(TEXT("vorel consumer"), VOREL_ZERO_TERMINATED, &mutex) == VOREL_OK &&
           vorel_mutex_lock(mutex, VOREL_WAIT_FOREVER) == VOREL_OK && vorel_mutex_unlock(mutex) == VOREL_OK &&
           vorel_mutex_close(mutex) == VOREL_OK;
}

int start(void) {
    if (vorel_abi_version() >> 16 != VOREL_ABI_VERSION >> 16) {
        return 1;
    }
    return !decodes() ? 2 : !reportsAFailure() ? 3 : !formats() ? 4 : !locks() ? 5 : 0;
}
