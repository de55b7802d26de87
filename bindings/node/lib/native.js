// The DLL, and its functions as koffi calls them. Nothing outside of this file knows koffi.
'use strict';

const koffi = require('koffi');

const { Status, VorelError } = require('./errors');

// The version of the flat interface that this package was written for (VOREL_ABI_VERSION).
const ABI_MAJOR = 1;
const ABI_MINOR = 0;

// Without a path Windows looks for the DLL: beside node.exe, in the system's folders, on the PATH.
const library = koffi.load(process.env.VOREL_CORE_DLL || 'vorelCore.dll');

koffi.opaque('vorel_mutex');
koffi.opaque('vorel_condition');

// What texts, outputs and the like are in the prototypes below.
const TEXT = 'const char16_t *, size_t';
const BYTES = 'const uint8_t *, size_t';
const TEXT_OUT = '_Out_ uint16_t *, size_t, _Out_ size_t *';
const BYTES_OUT = '_Out_ uint8_t *, size_t, _Out_ size_t *';
const LIST_OUT = (type) => `_Out_ ${type} *, size_t, _Out_ size_t *`;

const version = library.func('const char *vorel_version(void)');
const abiVersion = library.func('uint32_t vorel_abi_version(void)');
const statusName = library.func('const char *vorel_status_name(int32_t)');
const lastErrorMessage = library.func(`int32_t vorel_last_error_message(${TEXT_OUT})`);

const abi = abiVersion();
if (abi >>> 16 !== ABI_MAJOR || (abi & 0xffff) < ABI_MINOR) {
    throw new Error(`vorelCore.dll ${version()} has the interface ${abi >>> 16}.${abi & 0xffff}, ` +
        `and this package needs ${ABI_MAJOR}.${ABI_MINOR}`);
}

/** A function of the library that returns a status. */
function declare(name, ...parameters) {
    return library.func(`int32_t ${name}(${parameters.join(', ')})`);
}

/** The text of the first units of a buffer. */
function textOf(units, length) {
    return Buffer.from(units.buffer, units.byteOffset, length * 2).toString('utf16le');
}

/** A failure of the calling thread, with the library's own text. */
function lastError(status) {
    const units = new Uint16Array(501);
    const length = [0];
    const hasText = lastErrorMessage(units, units.length, length) === Status.OK;
    return new VorelError(status, statusName(status), hasText ? textOf(units, Number(length[0])) : '');
}

/** A failure of another thread, whose text is not to be had here. */
function errorOf(status) {
    return new VorelError(status, statusName(status));
}

function check(status) {
    if (status !== Status.OK) {
        throw lastError(status);
    }
}

// Most results fit; what does not is asked for once more with the room that it needs.
const FIRST_UNITS = 1024;

/** Runs `call(buffer, capacity, length)` and returns the buffer and the length of what it holds. */
function output(create, call) {
    const length = [0];
    let buffer = create(FIRST_UNITS);
    let status = call(buffer, FIRST_UNITS, length);
    if (status === Status.BUFFER_TOO_SMALL) {
        const needed = Number(length[0]);
        buffer = create(needed);
        status = call(buffer, needed, length);
    }
    check(status);
    return { buffer, length: Number(length[0]) };
}

function textOutput(call) {
    const { buffer, length } = output((units) => new Uint16Array(units), call);
    return textOf(buffer, length);
}

function bytesOutput(call) {
    const { buffer, length } = output((size) => Buffer.alloc(size), call);
    return Buffer.from(buffer.subarray(0, length));
}

/** The values of a list; `perValue` elements of the array make one. */
function listOutput(ArrayType, perValue, call) {
    const { buffer, length } = output((count) => new ArrayType(count * perValue), call);
    return Array.from(buffer.subarray(0, length * perValue));
}

/** A value that comes back through a pointer. */
function valueOutput(call) {
    const value = [0];
    check(call(value));
    return value[0];
}

/** Checks that an argument is a string: koffi would take null for a null pointer. */
function string(value, name) {
    if (typeof value !== 'string') {
        throw new TypeError(`${name} is not a string`);
    }
    return value;
}

/** Checks that an argument holds bytes. */
function bytes(value, name) {
    if (!(value instanceof Uint8Array)) {
        throw new TypeError(`${name} is not a Uint8Array`);
    }
    return value;
}

/** Checks that an argument is a whole number of a range. */
function integer(value, low, high, name) {
    if (!Number.isInteger(value) || value < low || value > high) {
        throw new RangeError(`${name} is not a whole number from ${low} to ${high}`);
    }
    return value;
}

module.exports = {
    TEXT,
    BYTES,
    TEXT_OUT,
    BYTES_OUT,
    LIST_OUT,
    version,
    declare,
    errorOf,
    check,
    textOutput,
    bytesOutput,
    listOutput,
    valueOutput,
    string,
    bytes,
    integer,
};
