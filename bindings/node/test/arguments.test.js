'use strict';

const assert = require('assert');
const test = require('node:test');

const { Condition, Mutex, base64, codePage, compare, daylight, format, hex, list, log, parse, scan, url, utf8,
    versionAtLeast } = require('..');
const { expectCode } = require('./support');

const TYPE = 'ERR_INVALID_ARG_TYPE';
const VALUE = 'ERR_INVALID_ARG_VALUE';

test('a TypeError names the argument, the expected type and the received value', () => {
    class Point {}
    const received = [
        [null, 'null'],
        [undefined, 'undefined'],
        [1, 'type number (1)'],
        [10n, 'type bigint (10n)'],
        [Symbol('s'), 'type symbol (Symbol(s))'],
        [{}, 'an instance of Object'],
        [['a'], 'an instance of Array'],
        [new Point(), 'an instance of Point'],
        [Object.create(null), '[Object: null prototype] {}'],
        [function named() {}, 'function named'],
    ];
    for (const [value, kind] of received) {
        expectCode(() => parse.int32(value), TypeError, TYPE,
            `The "text" argument must be of type string. Received ${kind}`);
        expectCode(() => base64.encode(value), TypeError, TYPE,
            `The "bytes" argument must be an instance of Uint8Array. Received ${kind}`);
    }
    expectCode(() => hex.encode('x'.repeat(40)), TypeError, TYPE, 'The "bytes" argument must be an instance of ' +
        `Uint8Array. Received type string ('${'x'.repeat(24)}...)`);
});

test('an argument of the wrong type causes a TypeError with a code', () => {
    const bytes = Buffer.from('a');
    const calls = {
        text: [utf8.encode, base64.decode, daylight.decode, hex.decode, url.encode, url.decode, parse.double,
            parse.int32List, parse.ranges, scan.int32, (wrong) => codePage.encode(1252, wrong),
            (wrong) => url.encodeComponent(wrong, 'path'), (wrong) => list.cut(wrong, ','), list.split],
        bytes: [utf8.decode, base64.encode, daylight.encode, hex.encode, (wrong) => codePage.decode(1252, wrong)],
        page: [(wrong) => codePage.decode(wrong, bytes), (wrong) => codePage.encode(wrong, 'a')],
        name: [codePage.find, (wrong) => new Mutex(wrong), (wrong) => new Condition(wrong)],
        component: [(wrong) => url.encodeComponent('a', wrong)],
        value: [format.int64, format.uint64, format.double],
        time: [format.localTime, format.utcTime],
        code: [format.systemError],
        delimiter: [(wrong) => list.cut('a', wrong)],
        items: [list.join],
        'items[1]': [(wrong) => list.join(['a', wrong])],
        a: [(wrong) => compare(wrong, 'b')],
        b: [(wrong) => compare('a', wrong)],
        version: [(wrong) => versionAtLeast(wrong, '1')],
        required: [(wrong) => versionAtLeast('1', wrong)],
        prefix: [(wrong) => log.write(wrong, 'a')],
        message: [(wrong) => log.write('a', wrong), log.warn, (wrong) => log.debug('a', wrong)],
        target: [(wrong) => log.debug(wrong, 'a'), (wrong) => log.setDebugTarget(wrong, true)],
        active: [(wrong) => log.setDebugTarget('a', wrong)],
        enabled: [log.setThreadEnabled],
        path: [(wrong) => { log.path = wrong; }],
        limit: [(wrong) => { log.limit = wrong; }],
        options: [(wrong) => hex.encode(bytes, wrong), (wrong) => compare('a', 'b', wrong)],
        'options.json': [(wrong) => format.double(1, { json: wrong })],
    };
    for (const [name, actions] of Object.entries(calls)) {
        for (const action of actions) {
            for (const wrong of [null, {}]) {
                if (name !== 'options' || wrong === null) {
                    expectCode(() => action(wrong), TypeError, TYPE,
                        new RegExp(`^The "${name.replace(/[[\].]/g, '\\$&')}" argument must be .* Received `));
                }
            }
        }
    }
});

test('a value that is not allowed causes an error with a code', () => {
    expectCode(() => url.encodeComponent('a', 'fragment'), TypeError, VALUE,
        'The "component" argument must be one of path, pathSegment, query, queryParameter. Received \'fragment\'');
    expectCode(() => list.join(['a', 'b\0']), TypeError, VALUE,
        'The "items[1]" argument must not contain a zero character. Received \'b\\x00\'');
    for (const wrong of [1.5, NaN, 2 ** 64, -(2n ** 63n) - 1n]) {
        expectCode(() => format.int64(wrong), RangeError, 'ERR_OUT_OF_RANGE', /^The value of "value" is out of range/);
    }
    expectCode(() => format.utcTime(new Date(NaN)), RangeError, 'ERR_OUT_OF_RANGE',
        /^The value of "time" is out of range/);
});

test('unknown options and options of the wrong type are rejected', () => {
    const calls = [
        [(options) => hex.encode(Buffer.from('a'), options), 'upperCase'],
        [(options) => url.encode('a', options), 'reserved, spaceAsPlus'],
        [(options) => url.decode('a', options), 'plusAsSpace'],
        [(options) => format.double(1, options), 'json'],
        [(options) => list.split('a', ',', options), 'trim'],
        [(options) => compare('a', 'b', options), 'ignoreCase, numeric, slashesEqual, reverse'],
    ];
    for (const [call, known] of calls) {
        expectCode(() => call({ uppercase: true }), TypeError, VALUE, 'The "options" argument has no option ' +
            `"uppercase"; it has ${known}. Received { uppercase: true }`);
        for (const name of known.split(', ')) {
            call({ [name]: true });
            call({ [name]: undefined });
            expectCode(() => call({ [name]: 1 }), TypeError, TYPE,
                `The "options.${name}" argument must be of type boolean. Received type number (1)`);
        }
    }
    assert.deepStrictEqual(list.split(' a', undefined, { trim: true }), ['a']);
});
