// Declares the functions of the DLL and passes values to and from them. Only this file loads koffi; load.js uses koffi
// only through the object that this file passes to it.
'use strict';

// load.js is required before koffi, because it reports an unsupported system. On such a system, koffi would fail with
// another error.
const { loadDll } = require('./load');

const koffi = require('koffi');

const { ABI_VERSION, MOST_UNITS } = require('./constants');
const { Status, VorelError } = require('./errors');

const ABI_MAJOR = ABI_VERSION >>> 16;
const ABI_MINOR = ABI_VERSION & 0xffff;

const kernel = koffi.load('kernel32.dll');  // already loaded in every process, so Windows does not search for it
const library = koffi.load(loadDll(kernel));

koffi.opaque('vorel_mutex');
koffi.opaque('vorel_condition');

// Parts of prototypes: texts, bytes and outputs. koffi passes the address of a typed array.
const TEXT = 'const char16_t *, size_t';
const BYTES = 'const uint8_t *, size_t';
const OUT = 'void *';
const BUFFER_OUT = `${OUT}, size_t, ${OUT}`;

const version = library.func('const char *vorel_version(void)');
const abiVersion = library.func('uint32_t vorel_abi_version(void)');
const statusName = library.func('const char *vorel_status_name(int32_t)');
const lastErrorMessage = library.func(`int32_t vorel_last_error_message(${BUFFER_OUT})`);

const abi = abiVersion();
if (abi >>> 16 !== ABI_MAJOR || (abi & 0xffff) < ABI_MINOR) {
    throw new Error(`vorelCore.dll ${version()} has interface version ${abi >>> 16}.${abi & 0xffff}, ` +
        `but this package needs ${ABI_MAJOR}.${ABI_MINOR}`);
}

/** Declares a function of the library that returns a status. */
function declare(name, ...parameters) {
    return library.func(`int32_t ${name}(${parameters.join(', ')})`);
}

// ---- Failures -------------------------------------------------------------------------------------------------------

/**
 * Creates an error with `message` instead of the library's message. If `message` is missing or empty, the error has the
 * name of the status as its message.
 */
function errorOf(status, message) {
    return new VorelError(status, statusName(status), message);
}

/** Returns the last failure of the calling thread as an error with the library's message. */
function lastError(status) {
    const hasText = lastErrorMessage(firstBuffer, FIRST_UNITS, lengthCell) === Status.OK;
    return errorOf(status, hasText ? firstText() : '');
}

function check(status) {
    if (status !== Status.OK) {
        throw lastError(status);
    }
}

// ---- Results --------------------------------------------------------------------------------------------------------

const CELLS = {
    int32_t: Int32Array,
    uint32_t: Uint32Array,
    int64_t: BigInt64Array,
    uint64_t: BigUint64Array,
    double: Float64Array,
};

/** An array of one element. A library function writes its result into it; the caller reads it at once. */
function cell(type) {
    return new CELLS[type](1);
}

// The capacity of the buffer for the first call, in units. Most results fit into it. A longer result needs a second
// call with a larger buffer.
const FIRST_UNITS = 16384;

// All calls that use these buffers are synchronous and copy their result, so the calls can share the buffers.
const firstBuffer = Buffer.allocUnsafeSlow(2 * FIRST_UNITS);
const lengthCell = cell('uint64_t');

/** The result that the last call wrote to `firstBuffer`. */
function firstText() {
    return firstBuffer.toString('utf16le', 0, 2 * Number(lengthCell[0]));
}

/**
 * Runs `call(buffer, capacity, lengthCell)` and returns the buffer; `lengthCell` has the length. A unit has `unitBytes`
 * bytes. `maxLength` is the maximum length of the result in units, or 0 if the caller does not know it. If it is known
 * and at most 2 * MOST_UNITS, a second call is unnecessary.
 */
function output(call, maxLength, unitBytes) {
    let capacity = FIRST_UNITS;
    let buffer = firstBuffer;
    if (maxLength > FIRST_UNITS && maxLength <= 2 * MOST_UNITS) {
        capacity = maxLength;
        buffer = Buffer.allocUnsafeSlow(capacity * unitBytes);
    }
    let status = call(buffer, capacity, lengthCell);
    if (status === Status.BUFFER_TOO_SMALL) {
        capacity = Number(lengthCell[0]);
        buffer = Buffer.allocUnsafeSlow(capacity * unitBytes);
        status = call(buffer, capacity, lengthCell);
    }
    check(status);
    return buffer;
}

function textOutput(call) {
    const buffer = output(call, 0, 2);
    return buffer === firstBuffer ? firstText() : buffer.toString('utf16le', 0, 2 * Number(lengthCell[0]));
}

function bytesOutput(call, maxSize = 0) {
    const buffer = output(call, maxSize, 1);
    const result = buffer.subarray(0, Number(lengthCell[0]));
    // A view of a result that is much smaller than its buffer would keep the whole buffer in memory.
    return buffer === firstBuffer || result.length < buffer.length / 2 ? Buffer.from(result) : result;
}

/** Returns the values of a list as an array of numbers. Each value consists of `perValue` numbers. */
function listOutput(ArrayType, perValue, call) {
    const bytesPerValue = perValue * ArrayType.BYTES_PER_ELEMENT;
    const capacity = Math.floor(firstBuffer.length / bytesPerValue);
    let buffer = firstBuffer;
    let status = call(buffer, capacity, lengthCell);
    if (status === Status.BUFFER_TOO_SMALL) {
        const count = Number(lengthCell[0]);
        buffer = Buffer.allocUnsafeSlow(count * bytesPerValue);
        status = call(buffer, count, lengthCell);
    }
    check(status);
    return Array.from(new ArrayType(buffer.buffer, buffer.byteOffset, Number(lengthCell[0]) * perValue));
}

// ---- The system -----------------------------------------------------------------------------------------------------

const openMutex = kernel.func('void *OpenMutexW(uint32_t, int32_t, const char16_t *)');
const closeHandle = kernel.func('int32_t CloseHandle(void *)');
const lastErrorCode = kernel.func('uint32_t GetLastError(void)');

/**
 * Finds the system's error code after the library failed to open the mutex of this name. The library does not return
 * the code, so this function tries to open the mutex too. Returns the code, or 0 if the mutex can be opened now.
 */
function mutexErrorCode(name) {
    const SYNCHRONIZE = 0x100000;

    const handle = openMutex(SYNCHRONIZE, 0, `Global\\${name}`);
    if (!handle) {
        return lastErrorCode();
    }
    closeHandle(handle);
    return 0;
}

module.exports = {
    TEXT,
    BYTES,
    OUT,
    BUFFER_OUT,
    FIRST_UNITS,
    version,
    declare,
    errorOf,
    lastError,
    check,
    cell,
    textOutput,
    bytesOutput,
    listOutput,
    mutexErrorCode,
};
