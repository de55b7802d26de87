// Checks of arguments. The errors have the codes of Node's own errors, and messages of a similar form.
'use strict';

const { inspect } = require('util');

const MAX_SHOWN = 28;

/** Describes a value of the wrong type, for example "type number (1)" or "an instance of Array". */
function kindOf(value) {
    if (value === null || value === undefined) {
        return String(value);
    }
    if (typeof value === 'function') {
        return `function ${value.name}`;
    }
    if (typeof value === 'object') {
        const type = value.constructor;
        return typeof type === 'function' && type.name ? `an instance of ${type.name}` : inspect(value, { depth: -1 });
    }
    const shown = inspect(value);
    return `type ${typeof value} (${shown.length > MAX_SHOWN ? `${shown.slice(0, MAX_SHOWN - 3)}...` : shown})`;
}

function coded(error, code) {
    return Object.assign(error, { code });
}

function invalidType(name, expected, value) {
    return coded(new TypeError(`The "${name}" argument must be ${expected}. Received ${kindOf(value)}`),
        'ERR_INVALID_ARG_TYPE');
}

function invalidValue(name, rule, value) {
    return coded(new TypeError(`The "${name}" argument ${rule}. Received ${inspect(value)}`), 'ERR_INVALID_ARG_VALUE');
}

function outOfRange(name, range, value) {
    return coded(new RangeError(`The value of "${name}" is out of range. It must be ${range}. Received ${value}`),
        'ERR_OUT_OF_RANGE');
}

/** Checks that an argument is a string, because koffi would accept null and pass a null pointer. */
function string(value, name) {
    if (typeof value !== 'string') {
        throw invalidType(name, 'of type string', value);
    }
    return value;
}

function number(value, name) {
    if (typeof value !== 'number') {
        throw invalidType(name, 'of type number', value);
    }
    return value;
}

function boolean(value, name) {
    if (typeof value !== 'boolean') {
        throw invalidType(name, 'of type boolean', value);
    }
    return value;
}

function callable(value, name) {
    if (typeof value !== 'function') {
        throw invalidType(name, 'of type function', value);
    }
    return value;
}

/** Checks that an argument is a whole number from `low` to `high`. */
function integer(value, low, high, name) {
    if (!Number.isInteger(number(value, name)) || value < low || value > high) {
        throw outOfRange(name, `a whole number from ${low} to ${high}`, value);
    }
    return value;
}

// The original getters of a typed array, because objects and subclasses may redefine these properties.
const typedArray = Object.getPrototypeOf(Uint8Array.prototype);
const typeOf = Object.getOwnPropertyDescriptor(typedArray, Symbol.toStringTag).get;
const lengthOf = Object.getOwnPropertyDescriptor(typedArray, 'length').get;
const bufferOf = Object.getOwnPropertyDescriptor(typedArray, 'buffer').get;
const byteOffsetOf = Object.getOwnPropertyDescriptor(typedArray, 'byteOffset').get;

/** Checks that an argument is a Uint8Array and returns its real length. */
function byteLength(value, name) {
    if (Reflect.apply(typeOf, value, []) !== 'Uint8Array') {
        throw invalidType(name, 'an instance of Uint8Array', value);
    }
    return Reflect.apply(lengthOf, value, []);
}

/** Returns a view of `length` bytes of a Uint8Array, beginning at `start`. */
function viewOf(bytes, start, length) {
    return new Uint8Array(
        Reflect.apply(bufferOf, bytes, []), Reflect.apply(byteOffsetOf, bytes, []) + start, length);
}

const NO_OPTIONS = Object.freeze({});

/** Checks that an argument is undefined or an object with no options except the Boolean options `names`. */
function options(value, ...names) {
    if (value === undefined) {
        return NO_OPTIONS;
    }
    if (typeof value !== 'object' || value === null || Array.isArray(value)) {
        throw invalidType('options', 'of type object', value);
    }
    for (const name of Object.keys(value)) {
        if (!names.includes(name)) {
            throw invalidValue('options', `has no option "${name}"; it has ${names.join(', ')}`, value);
        }
        if (value[name] !== undefined) {
            boolean(value[name], `options.${name}`);
        }
    }
    return value;
}

module.exports = {
    coded, invalidType, invalidValue, outOfRange, string, number, boolean, callable, integer, byteLength, viewOf,
    options,
};
