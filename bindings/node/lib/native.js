// Loads the DLL and declares its functions. Only this file depends on koffi.
'use strict';

const path = require('path');

const koffi = require('koffi');

const { ABI_VERSION } = require('./constants');
const { Status, VorelError } = require('./errors');

const ABI_MAJOR = ABI_VERSION >>> 16;
const ABI_MINOR = ABI_VERSION & 0xffff;

const library = koffi.load(loadedDll());

/**
 * Loads the DLL and its dependencies from its own folder and the system folder only, because the default search order
 * of Windows includes the current folder. Returns the path of the DLL; koffi finds the loaded DLL by this path.
 */
function loadedDll() {
    const LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR = 0x100;
    const LOAD_LIBRARY_SEARCH_SYSTEM32 = 0x800;

    const given = process.env.VOREL_CORE_DLL;
    if (given && !/^(?:[A-Za-z]:|\\\\[^\\/]+)[\\/]/.test(given)) {
        throw new Error(`VOREL_CORE_DLL is not an absolute path: ${given}`);
    }
    const file = path.win32.normalize(given || path.win32.join(path.win32.dirname(process.execPath), 'vorelCore.dll'));
    const kernel = koffi.load('kernel32.dll');  // loaded in every process, so Windows does not search for it
    const load = kernel.func('void *LoadLibraryExW(const char16_t *, void *, uint32_t)');
    const lastErrorCode = kernel.func('uint32_t GetLastError(void)');
    if (!load(file, null, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32)) {
        throw new Error(`${file} cannot be loaded (error ${lastErrorCode()})`);
    }
    return file;
}

koffi.opaque('vorel_mutex');
koffi.opaque('vorel_condition');

// Parameter lists of inputs and outputs in the prototypes below.
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
    throw new Error(`vorelCore.dll ${version()} has interface version ${abi >>> 16}.${abi & 0xffff}, ` +
        `but this package needs ${ABI_MAJOR}.${ABI_MINOR}`);
}

/** Declares a function of the library that returns a status. */
function declare(name, ...parameters) {
    return library.func(`int32_t ${name}(${parameters.join(', ')})`);
}

/** The first `length` units of a buffer as a string. */
function textOf(units, length) {
    return Buffer.from(units.buffer, units.byteOffset, length * 2).toString('utf16le');
}

/** The last failure of the calling thread, with the library's message. */
function lastError(status) {
    const units = new Uint16Array(501);
    const length = [0];
    const hasText = lastErrorMessage(units, units.length, length) === Status.OK;
    return new VorelError(status, statusName(status), hasText ? textOf(units, Number(length[0])) : '');
}

/** A failure of another thread, whose message is not available to this thread. */
function errorOf(status) {
    return new VorelError(status, statusName(status));
}

function check(status) {
    if (status !== Status.OK) {
        throw lastError(status);
    }
}

// The capacity of the first call. Most results fit; a longer one needs a second call with its length.
const FIRST_UNITS = 1024;

/** Runs `call(buffer, capacity, length)` and returns the buffer and the length of the result. */
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

/** The values of a list; each has `perValue` elements of the array. */
function listOutput(ArrayType, perValue, call) {
    const { buffer, length } = output((count) => new ArrayType(count * perValue), call);
    return Array.from(buffer.subarray(0, length * perValue));
}

/** A value that is returned through a pointer. */
function valueOutput(call) {
    const value = [0];
    check(call(value));
    return value[0];
}

/** Checks that an argument is a string, because koffi passes null as a null pointer. */
function string(value, name) {
    if (typeof value !== 'string') {
        throw new TypeError(`${name} is not a string`);
    }
    return value;
}

// The original getters of a typed array: objects and subclasses may redefine these properties.
const typedArray = Object.getPrototypeOf(Uint8Array.prototype);
const typeOf = Object.getOwnPropertyDescriptor(typedArray, Symbol.toStringTag).get;
const lengthOf = Object.getOwnPropertyDescriptor(typedArray, 'length').get;

/** Checks that an argument is a Uint8Array and returns the arguments for BYTES: the array and its length. */
function bytes(value, name) {
    if (Reflect.apply(typeOf, value, []) !== 'Uint8Array') {
        throw new TypeError(`${name} is not a Uint8Array`);
    }
    return [value, Reflect.apply(lengthOf, value, [])];
}

/** Checks that an argument is a whole number from `low` to `high`. */
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
