// Parses numbers, Boolean values and lists. Converts numbers, times and system errors to text. Splits, joins and
// compares texts.
'use strict';

const { integer, invalidType, invalidValue, number, options, outOfRange, string } = require('./arguments');
const constants = require('./constants');
const native = require('./native');
const { BUFFER_OUT, OUT, TEXT } = native;

const INT32_MIN = -0x80000000;
const INT32_MAX = 0x7fffffff;

const isTrue = (value) => value !== 0;

function parser(name, type, convert = (value) => value) {
    const parse = native.declare(`vorel_parse_${name}`, TEXT, OUT);
    const value = native.cell(type);
    return (text) => {
        native.check(parse(string(text, 'text'), text.length, value));
        return convert(value[0]);
    };
}

function scanner(name, type, convert = (value) => value) {
    const scan = native.declare(`vorel_scan_${name}`, TEXT, OUT, OUT);
    const value = native.cell(type);
    const used = native.cell('uint64_t');
    return (text) => {
        native.check(scan(string(text, 'text'), text.length, value, used));
        return { value: convert(value[0]), used: Number(used[0]) };
    };
}

function listParser(name, ArrayType, perValue = 1) {
    const parse = native.declare(name, TEXT, BUFFER_OUT);
    return (text) =>
        native.listOutput(ArrayType, perValue, (...out) => parse(string(text, 'text'), text.length, ...out));
}

const parseRanges = listParser('vorel_parse_ranges', Int32Array, 2);
const parseBooleans = listParser('vorel_parse_boolean_list', Int32Array);
const nullIfOpen = (bound) => (bound === -1 ? null : bound);

/** Parses ranges. The library returns two numbers for each range, and -1 for the open side of a range. */
function ranges(text) {
    const bounds = parseRanges(text);
    return Array.from({ length: bounds.length / 2 },
        (_, index) => ({ start: nullIfOpen(bounds[2 * index]), end: nullIfOpen(bounds[2 * index + 1]) }));
}

const parse = Object.freeze({
    int32: parser('int32', 'int32_t'),
    uint32: parser('uint32', 'uint32_t'),
    int64: parser('int64', 'int64_t'),
    uint64: parser('uint64', 'uint64_t'),
    hex: parser('hex32', 'uint32_t'),
    double: parser('double', 'double'),
    boolean: parser('boolean', 'int32_t', isTrue),
    int32List: listParser('vorel_parse_int32_list', Int32Array),
    uint32List: listParser('vorel_parse_uint32_list', Uint32Array),
    doubleList: listParser('vorel_parse_double_list', Float64Array),
    booleanList: (text) => parseBooleans(text).map(isTrue),
    ranges,
});

const scan = Object.freeze({
    int32: scanner('int32', 'int32_t'),
    uint32: scanner('uint32', 'uint32_t'),
    int64: scanner('int64', 'int64_t'),
    uint64: scanner('uint64', 'uint64_t'),
    hex: scanner('hex32', 'uint32_t'),
    double: scanner('double', 'double'),
    boolean: scanner('boolean', 'int32_t', isTrue),
});

// ---- Values as text -------------------------------------------------------------------------------------------------

const formatInt64 = native.declare('vorel_format_int64', 'int64_t', BUFFER_OUT);
const formatUint64 = native.declare('vorel_format_uint64', 'uint64_t', BUFFER_OUT);
const formatDouble = native.declare('vorel_format_double', 'double', 'int32_t', BUFFER_OUT);
const formatLocalTime = native.declare('vorel_format_local_time', 'int64_t', BUFFER_OUT);
const formatUtcTime = native.declare('vorel_format_utc_time', 'int64_t', BUFFER_OUT);
const systemErrorText = native.declare('vorel_system_error_text', 'int32_t', BUFFER_OUT);
const currentTimeOf = native.declare('vorel_current_time', OUT);

/**
 * Checks that a number is whole and fits into 64 bits, and returns it as a BigInt. `asWide` is `BigInt.asIntN` or
 * `BigInt.asUintN`. In the error's text, `range` follows "a whole number", for example "of 64 bits".
 */
function wide(value, asWide, range) {
    if (typeof value !== 'number' && typeof value !== 'bigint') {
        throw invalidType('value', 'of type number or bigint', value);
    }
    if (typeof value === 'number' && !Number.isInteger(value) || asWide(64, BigInt(value)) !== BigInt(value)) {
        throw outOfRange('value', `a whole number ${range}`, value);
    }
    return BigInt(value);
}

/**
 * Converts a `Date` to seconds since 1970, rounded down. Returns a safe integer unchanged. Throws for every other value
 * and for an invalid `Date`.
 */
function seconds(time) {
    if (!(time instanceof Date) && typeof time !== 'number') {
        throw invalidType('time', 'of type number or an instance of Date', time);
    }
    return integer(time instanceof Date ? Math.floor(time.getTime() / 1000) : time, Number.MIN_SAFE_INTEGER,
        Number.MAX_SAFE_INTEGER, 'time');
}

const format = Object.freeze({
    int64: (value) => native.textOutput((...out) => formatInt64(wide(value, BigInt.asIntN, 'of 64 bits'), ...out)),
    uint64: (value) => native.textOutput((...out) => formatUint64(
        wide(value, BigInt.asUintN, 'of 64 bits, not negative'), ...out)),
    double: (value, given) => {
        const { json = false } = options(given, 'json');
        const flags = json ? constants.FORMAT_JSON : constants.FORMAT_DEFAULT;
        return native.textOutput((...out) => formatDouble(number(value, 'value'), flags, ...out));
    },
    localTime: (time) => native.textOutput((...out) => formatLocalTime(seconds(time), ...out)),
    utcTime: (time) => native.textOutput((...out) => formatUtcTime(seconds(time), ...out)),
    systemError: (code) =>
        native.textOutput((...out) => systemErrorText(integer(code, INT32_MIN, INT32_MAX, 'code'), ...out)),
});

const timeCell = native.cell('int64_t');

function currentTime() {
    native.check(currentTimeOf(timeCell));
    return timeCell[0];
}

// ---- Lists of texts -------------------------------------------------------------------------------------------------

const splitText = native.declare('vorel_split_text', TEXT, TEXT, BUFFER_OUT);
const splitList = native.declare('vorel_split_list', TEXT, TEXT, 'int32_t', BUFFER_OUT);
const joinList = native.declare('vorel_join_list', TEXT, TEXT, BUFFER_OUT);

/** Splits a text that the library returned, in which a zero follows each item. */
const itemsOf = (list) => list.split('\0').slice(0, -1);

function withZero(item, index) {
    const name = `items[${index}]`;
    if (string(item, name).includes('\0')) {
        throw invalidValue(name, 'must not contain a zero character', item);
    }
    return item + '\0';
}

const list = Object.freeze({
    cut: (text, delimiter) => itemsOf(native.textOutput((...out) => splitText(
        string(text, 'text'), text.length, string(delimiter, 'delimiter'), delimiter.length, ...out))),
    split: (text, delimiters = ',', given = undefined) => {
        const { trim = false } = options(given, 'trim');
        return itemsOf(native.textOutput((...out) => splitList(
            string(text, 'text'), text.length, string(delimiters, 'delimiters'), delimiters.length, trim ? 1 : 0,
            ...out)));
    },
    join: (items, delimiter = ',') => {
        if (typeof items?.[Symbol.iterator] !== 'function') {
            throw invalidType('items', 'an iterable of strings', items);
        }
        const text = Array.from(items, withZero).join('');
        return native.textOutput((...out) => joinList(
            text, text.length, string(delimiter, 'delimiter'), delimiter.length, ...out));
    },
});

// ---- Comparisons ----------------------------------------------------------------------------------------------------

const compareTexts = native.declare('vorel_compare', TEXT, TEXT, 'uint32_t', OUT);
const isVersionAtLeast = native.declare('vorel_version_at_least', TEXT, TEXT, OUT);

const resultCell = native.cell('int32_t');

function compare(a, b, given) {
    const { ignoreCase = false, numeric = false, slashesEqual = false, reverse = false } =
        options(given, 'ignoreCase', 'numeric', 'slashesEqual', 'reverse');
    const flags = (ignoreCase ? constants.COMPARE_IGNORE_CASE : 0) | (numeric ? constants.COMPARE_NUMERIC : 0) |
        (slashesEqual ? constants.COMPARE_SLASHES_EQUAL : 0) | (reverse ? constants.COMPARE_REVERSE : 0);
    native.check(compareTexts(string(a, 'a'), a.length, string(b, 'b'), b.length, flags, resultCell));
    return resultCell[0];
}

function versionAtLeast(version, required) {
    native.check(isVersionAtLeast(
        string(version, 'version'), version.length, string(required, 'required'), required.length, resultCell));
    return isTrue(resultCell[0]);
}

module.exports = { parse, scan, format, currentTime, list, compare, versionAtLeast };
