/// \file
/// Uses the flat interface from C. The header vorelCoreC.h must compile as C11.

#include "flat/CProgram.h"

#include <string.h>

#include <vorel/vorelCoreC.h>

_Static_assert(sizeof(vorel_char16) == 2, "a UTF-16 code unit has two bytes");
_Static_assert(sizeof(vorel_status) == 4, "a status has 32 bits");
_Static_assert(sizeof(vorel_range) == 8, "a range is two numbers without padding");
_Static_assert(VOREL_OK == 0 && VOREL_ERROR_INTERNAL == 10, "the status numbers are fixed");

static const vorel_char16 kBase64[] = {'Q', 'U', 'J', 'D'};

/// Gets the size of the result from a first call, and passes this size to a second call as the capacity.
static const char* decodeInTwoSteps(void) {
    char bytes[8] = "........";
    size_t size = 0;
    if (vorel_base64_decode(kBase64, 4, NULL, 0, &size) != VOREL_ERROR_BUFFER_TOO_SMALL || size != 3) {
        return "the first call must return the size";
    }
    if (vorel_base64_decode(kBase64, 4, bytes, size, &size) != VOREL_OK || memcmp(bytes, "ABC.....", 8) != 0) {
        return "the second call must return the bytes";
    }
    return NULL;
}

static const char* reportAFailure(void) {
    int32_t value = 77;
    char message[64];
    size_t length = 0;
    if (vorel_parse_int32(kBase64, 4, &value) != VOREL_ERROR_INVALID_TEXT || value != 77) {
        return "an invalid integer must be rejected, and the value must not change";
    }
    if (vorel_last_error_message_utf8(message, sizeof message, &length) != VOREL_OK ||
        strcmp(message, "The text is not an integer") != 0 || length != strlen(message)) {
        return "the message must be the text of the last error, with a terminator";
    }
    return NULL;
}

static const char* holdAMutex(const vorel_char16* name) {
    vorel_mutex* mutex = NULL;
    if (vorel_mutex_open(name, VOREL_ZERO_TERMINATED, &mutex) != VOREL_OK) {
        return "the mutex must be opened";
    }
    if (vorel_mutex_lock(mutex, VOREL_WAIT_FOREVER) != VOREL_OK || vorel_mutex_unlock(mutex) != VOREL_OK) {
        return "the mutex must be locked and unlocked";
    }
    return vorel_mutex_close(mutex) == VOREL_OK ? NULL : "the mutex must be closed";
}

const char* firstFailureInC(const uint16_t* mutexName) {
    const char* failure = decodeInTwoSteps();
    if (failure == NULL) {
        failure = reportAFailure();
    }
    return failure != NULL ? failure : holdAMutex(mutexName);
}
