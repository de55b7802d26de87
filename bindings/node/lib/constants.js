// The numeric constants of the flat interface that this package uses, named as in its headers, but without the prefix
// "VOREL_". test/constants.test.js compares the numbers with the headers.
'use strict';

module.exports = Object.freeze({
    // The version of the interface that this package needs: major number in the upper 16 bits, minor in the lower 16.
    ABI_VERSION: 0x00010000,

    // The maximum number of units of an input.
    MOST_UNITS: 0x10000000,

    OK: 0,
    ERROR_INVALID_ARGUMENT: 1,
    ERROR_BUFFER_TOO_SMALL: 2,
    ERROR_OUT_OF_MEMORY: 3,
    ERROR_INVALID_TEXT: 4,
    ERROR_UNKNOWN_NAME: 5,
    ERROR_UNSUPPORTED: 6,
    ERROR_TIMEOUT: 7,
    ERROR_NOT_OWNER: 8,
    ERROR_SYSTEM: 9,
    ERROR_INTERNAL: 10,

    WAIT_FOREVER: 0xffffffff,

    FORMAT_DEFAULT: 0,
    FORMAT_JSON: 1,

    COMPARE_IGNORE_CASE: 0x001,
    COMPARE_NUMERIC: 0x002,
    COMPARE_SLASHES_EQUAL: 0x004,
    COMPARE_REVERSE: 0x100,

    URL_ESCAPE_RESERVED: 1,
    URL_SPACE_AS_PLUS: 2,
    URL_PLUS_AS_SPACE: 4,

    URL_PATH: 0,
    URL_PATH_SEGMENT: 1,
    URL_QUERY: 2,
    URL_QUERY_PARAMETER: 3,
});
