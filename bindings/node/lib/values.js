// Conversions of numbers, Boolean values, lists and times to and from text, and comparisons of texts.
'use strict';

const constants = require('./constants');
const native = require('./native');
const { LIST_OUT, TEXT, TEXT_OUT, integer, string } = native;

const INT32_MIN = -0x80000000;
const INT32_MAX = 0x7fffffff;

const isTrue = (value) => value !== 0;

function parser(name, type, convert = Number) {
    const parse = native.declare(`vorel_parse_${name}`, TEXT, `_Out_ ${type} *`);
    return (text) => convert(native.valueOutput((value) => parse(string(text, 'text'), text.length, value)));
}

function scanner(name, type, convert = Number) {
    const scan = native.declare(`vorel_scan_${name}`, TEXT, `_Out_ ${type} *`, '_Out_ size_t *');
    return (text) => {
        const used = [0];
        const value = native.valueOutput((out) => scan(string(text, 'text'), text.length, out, used));
        return { value: convert(value), used: Number(used[0]) };
    };
}

function listParser(name, type, ArrayType, perValue = 1) {
    const parse = native.declare(name, TEXT, LIST_OUT(type));
    return (text) =>
        native.listOutput(ArrayType, perValue, (...out) => parse(string(text, 'text'), text.length, ...out));
}

const parseRanges = listParser('vorel_parse_ranges', 'int32_t', Int32Array, 2);
const parseBooleans = listParser('vorel_parse_boolean_list', 'int32_t', Int32Array);
const nullIfOpen = (bound) => (bound === -1 ? null : bound);

/** Pairs of numbers as ranges; the library returns -1 for an open end. */
function ranges(text) {
    const bounds = parseRanges(text);
    return Array.from({ length: bounds.length / 2 },
        (_, index) => ({ start: nullIfOpen(bounds[2 * index]), end: nullIfOpen(bounds[2 * index + 1]) }));
}

const parse = Object.freeze({
    int32: parser('int32', 'int32_t'),
    uint32: parser('uint32', 'uint32_t'),
    int64: parser('int64', 'int64_t', BigInt),
    uint64: parser('uint64', 'uint64_t', BigInt),
    hex: parser('hex32', 'uint32_t'),
    double: parser('double', 'double'),
    boolean: parser('boolean', 'int32_t', isTrue),
    int32List: listParser('vorel_parse_int32_list', 'int32_t', Int32Array),
    uint32List: listParser('vorel_parse_uint32_list', 'uint32_t', Uint32Array),
    doubleList: listParser('vorel_parse_double_list', 'double', Float64Array),
    booleanList: (text) => parseBooleans(text).map(isTrue),
    ranges,
});

const scan = Object.freeze({
    int32: scanner('int32', 'int32_t'),
    uint32: scanner('uint32', 'uint32_t'),
    int64: scanner('int64', 'int64_t', BigInt),
    uint64: scanner('uint64', 'uint64_t', BigInt),
    hex: scanner('hex32', 'uint32_t'),
    double: scanner('double', 'double'),
    boolean: scanner('boolean', 'int32_t', isTrue),
});

// ---- Values as text -------------------------------------------------------------------------------------------------

const formatInt64 = native.declare('vorel_format_int64', 'int64_t', TEXT_OUT);
const formatUint64 = native.declare('vorel_format_uint64', 'uint64_t', TEXT_OUT);
const formatDouble = native.declare('vorel_format_double', 'double', 'int32_t', TEXT_OUT);
const formatLocalTime = native.declare('vorel_format_local_time', 'int64_t', TEXT_OUT);
const formatUtcTime = native.declare('vorel_format_utc_time', 'int64_t', TEXT_OUT);
const systemErrorText = native.declare('vorel_system_error_text', 'int32_t', TEXT_OUT);
const currentTimeOf = native.declare('vorel_current_time', '_Out_ int64_t *');

/** Checks that a number fits into 64 bits. BigInt() throws if it is not whole. */
function wide(value, asWide) {
    const big = BigInt(value);
    if (asWide(64, big) !== big) {
        throw new RangeError(`${value} does not fit into 64 bits`);
    }
    return big;
}

/** A date or a number of seconds as whole seconds since 1970. */
function seconds(time) {
    return integer(time instanceof Date ? Math.floor(time.getTime() / 1000) : time, Number.MIN_SAFE_INTEGER,
        Number.MAX_SAFE_INTEGER, 'time');
}

function number(value) {
    if (typeof value !== 'number') {
        throw new TypeError('value is not a number');
    }
    return value;
}

const format = Object.freeze({
    int64: (value) => native.textOutput((...out) => formatInt64(wide(value, BigInt.asIntN), ...out)),
    uint64: (value) => native.textOutput((...out) => formatUint64(wide(value, BigInt.asUintN), ...out)),
    double: (value, { json = false } = {}) => {
        const options = json ? constants.FORMAT_JSON : constants.FORMAT_DEFAULT;
        return native.textOutput((...out) => formatDouble(number(value), options, ...out));
    },
    localTime: (time) => native.textOutput((...out) => formatLocalTime(seconds(time), ...out)),
    utcTime: (time) => native.textOutput((...out) => formatUtcTime(seconds(time), ...out)),
    systemError: (code) =>
        native.textOutput((...out) => systemErrorText(integer(code, INT32_MIN, INT32_MAX, 'code'), ...out)),
});

const currentTime = () => BigInt(native.valueOutput((value) => currentTimeOf(value)));

// ---- Lists of texts -------------------------------------------------------------------------------------------------

const splitText = native.declare('vorel_split_text', TEXT, TEXT, TEXT_OUT);
const splitList = native.declare('vorel_split_list', TEXT, TEXT, 'int32_t', TEXT_OUT);
const joinList = native.declare('vorel_join_list', TEXT, TEXT, TEXT_OUT);

/** The items of a list. A zero follows each item. */
const itemsOf = (list) => list.split('\0').slice(0, -1);

function withZero(item) {
    if (string(item, 'item').includes('\0')) {
        throw new TypeError('An item contains a zero character');
    }
    return item + '\0';
}

const list = Object.freeze({
    cut: (text, delimiter) => itemsOf(native.textOutput((...out) => splitText(
        string(text, 'text'), text.length, string(delimiter, 'delimiter'), delimiter.length, ...out))),
    split: (text, delimiters = ',', { trim = false } = {}) => itemsOf(native.textOutput((...out) => splitList(
        string(text, 'text'), text.length, string(delimiters, 'delimiters'), delimiters.length, trim ? 1 : 0,
        ...out))),
    join: (items, delimiter = ',') => {
        const text = Array.from(items, withZero).join('');
        return native.textOutput((...out) => joinList(
            text, text.length, string(delimiter, 'delimiter'), delimiter.length, ...out));
    },
});

// ---- Comparisons ----------------------------------------------------------------------------------------------------

const compareTexts = native.declare('vorel_compare', TEXT, TEXT, 'uint32_t', '_Out_ int32_t *');
const isVersionAtLeast = native.declare('vorel_version_at_least', TEXT, TEXT, '_Out_ int32_t *');

function compare(a, b, { ignoreCase = false, numeric = false, slashesEqual = false, reverse = false } = {}) {
    const flags = (ignoreCase ? constants.COMPARE_IGNORE_CASE : 0) | (numeric ? constants.COMPARE_NUMERIC : 0) |
        (slashesEqual ? constants.COMPARE_SLASHES_EQUAL : 0) | (reverse ? constants.COMPARE_REVERSE : 0);
    return native.valueOutput(
        (order) => compareTexts(string(a, 'a'), a.length, string(b, 'b'), b.length, flags, order));
}

function versionAtLeast(version, required) {
    return isTrue(native.valueOutput((result) => isVersionAtLeast(
        string(version, 'version'), version.length, string(required, 'required'), required.length, result)));
}

module.exports = { parse, scan, format, currentTime, list, compare, versionAtLeast };
