// The library's failures as JavaScript errors.
'use strict';

/** The status codes of the flat interface. Their values never change. */
const Status = Object.freeze({
    OK: 0,
    INVALID_ARGUMENT: 1,
    BUFFER_TOO_SMALL: 2,
    OUT_OF_MEMORY: 3,
    INVALID_TEXT: 4,
    UNKNOWN_NAME: 5,
    UNSUPPORTED: 6,
    TIMEOUT: 7,
    NOT_OWNER: 8,
    SYSTEM: 9,
    INTERNAL: 10,
});

class VorelError extends Error {
    constructor(status, code, message) {
        super(message || code);
        this.name = 'VorelError';
        this.status = status;
        this.code = code;
    }
}

module.exports = { Status, VorelError };
