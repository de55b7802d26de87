// The library's failures as JavaScript errors.
'use strict';

const constants = require('./constants');

/** The status codes of the flat interface. Their values never change. */
const Status = Object.freeze({
    OK: constants.OK,
    INVALID_ARGUMENT: constants.ERROR_INVALID_ARGUMENT,
    BUFFER_TOO_SMALL: constants.ERROR_BUFFER_TOO_SMALL,
    OUT_OF_MEMORY: constants.ERROR_OUT_OF_MEMORY,
    INVALID_TEXT: constants.ERROR_INVALID_TEXT,
    UNKNOWN_NAME: constants.ERROR_UNKNOWN_NAME,
    UNSUPPORTED: constants.ERROR_UNSUPPORTED,
    TIMEOUT: constants.ERROR_TIMEOUT,
    NOT_OWNER: constants.ERROR_NOT_OWNER,
    SYSTEM: constants.ERROR_SYSTEM,
    INTERNAL: constants.ERROR_INTERNAL,
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
