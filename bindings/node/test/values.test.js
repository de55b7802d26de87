'use strict';

const assert = require('assert');
const test = require('node:test');

const { Status, VorelError, compare, currentTime, format, list, parse, scan, version, versionAtLeast } = require('..');
const { expectFailure, withLog } = require('./support');

test('the package has the version of the library', () => {
    const own = require('../package.json');
    assert.strictEqual(version, own.version);
    assert.strictEqual(version, own.optionalDependencies['vorelcore-win32-x64']);
    assert.strictEqual(version, require('../win32-x64/package.json').version);
});

test('a failure is an Error with the status, its name and the message of the library', () => {
    try {
        parse.int32('x');
        assert.fail('nothing was thrown');
    } catch (error) {
        assert.ok(error instanceof VorelError && error instanceof Error);
        assert.strictEqual(error.status, Status.INVALID_TEXT);
        assert.strictEqual(error.code, 'VOREL_ERROR_INVALID_TEXT');
        assert.strictEqual(String(error), 'VorelError: The text is not an integer');
        assert.match(error.stack, /values\.test\.js/);
    }
    const long = 'é😀'.repeat(1000);
    withLog(() => expectFailure(() => parse.ranges(long), 'INVALID_TEXT',
        `Found nonnumeric text in numeric item: "${long}`.slice(0, 500)));
});

test('parse reads whole texts as values', () => {
    assert.strictEqual(parse.int32(' -42.0 '), -42);
    assert.strictEqual(parse.uint32('4294967295'), 4294967295);
    assert.strictEqual(parse.int64('7'), 7n);
    assert.strictEqual(parse.int64('-9223372036854775808'), -9223372036854775808n);
    assert.strictEqual(parse.uint64('18446744073709551615'), 18446744073709551615n);
    assert.strictEqual(parse.hex('DEADBEEF'), 0xdeadbeef);
    assert.strictEqual(parse.double('1.5e3'), 1500);
    assert.strictEqual(parse.double('1e999'), Infinity);
    assert.strictEqual(parse.boolean('Yes'), true);
    assert.strictEqual(parse.boolean('f'), false);
    for (const text of ['', 'x', '1x', '1\0']) {
        for (const read of [parse.int32, parse.uint32, parse.int64, parse.uint64, parse.hex, parse.double,
            parse.boolean]) {
            expectFailure(() => read(text), 'INVALID_TEXT');
        }
    }
});

test('scan reads the value at the beginning of a text', () => {
    assert.deepStrictEqual(scan.int32('42 apples'), { value: 42, used: 3 });
    assert.deepStrictEqual(scan.uint32('x'), { value: 0, used: 0 });
    assert.deepStrictEqual(scan.int64('-7;'), { value: -7n, used: 2 });
    assert.deepStrictEqual(scan.uint64('7é'), { value: 7n, used: 1 });
    assert.deepStrictEqual(scan.hex('fg'), { value: 15, used: 1 });
    assert.deepStrictEqual(scan.double('1.5e3x'), { value: 1500, used: 5 });
    assert.deepStrictEqual(scan.boolean('on'), { value: true, used: 2 });
});

test('parse reads lists of values', () => {
    assert.deepStrictEqual(parse.int32List('1,2.9,-3'), [1, 2, -3]);
    assert.deepStrictEqual(parse.int32List(''), []);
    assert.deepStrictEqual(parse.uint32List('4294967295'), [4294967295]);
    assert.deepStrictEqual(parse.doubleList('1.5 2e3 abc 4'), [1.5, 2000, 4]);
    assert.deepStrictEqual(parse.booleanList('T f 1 0 yes'), [true, false, true, false]);
    assert.deepStrictEqual(parse.ranges('1-5,7,12-'),
        [{ start: 1, end: 5 }, { start: 7, end: 7 }, { start: 12, end: null }]);
    const many = Array.from({ length: 5000 }, (_, index) => index);
    assert.deepStrictEqual(parse.int32List(many.join()), many);
    assert.strictEqual(parse.ranges(many.join()).length, 5000);
    expectFailure(() => parse.int32List('1;2'), 'INVALID_TEXT');
});

test('format writes values as text', () => {
    assert.strictEqual(format.int64(-9223372036854775808n), '-9223372036854775808');
    assert.strictEqual(format.int64(42), '42');
    assert.strictEqual(format.uint64(18446744073709551615n), '18446744073709551615');
    assert.strictEqual(format.double(0.05), '5.e-002');
    assert.strictEqual(format.double(0.05, { json: true }), '5.0e-002');
    assert.strictEqual(format.double(NaN), 'NaN');
    assert.strictEqual(format.double(-Infinity, { json: true }), '"-Infinity"');
    assert.strictEqual(format.utcTime(1234567890), 'Fri Feb 13 23:31:30 2009');
    assert.strictEqual(format.utcTime(new Date(1234567890999)), 'Fri Feb 13 23:31:30 2009');
    assert.match(format.localTime(new Date()), /^\w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4}$/);
    assert.strictEqual(format.systemError(0), 'No Error');
    assert.notStrictEqual(format.systemError(2), '');
    assert.throws(() => format.int64(1.5), RangeError);
    assert.throws(() => format.int64(2n ** 63n), RangeError);
    assert.throws(() => format.uint64(-1), RangeError);
    assert.throws(() => format.double('1'), TypeError);
    assert.throws(() => format.utcTime(NaN), RangeError);
    expectFailure(() => format.utcTime(Number.MAX_SAFE_INTEGER), 'INVALID_ARGUMENT');
});

test('currentTime is between two readings of the clock', () => {
    const before = BigInt(Date.now()) * 1000n;
    const now = currentTime();
    const after = BigInt(Date.now() + 1) * 1000n;
    // The two clocks may have different sources and differ by a tick.
    const tick = 20000n;
    assert.ok(before - tick <= now && now <= after + tick, `${before} ${now} ${after}`);
});

test('list cuts, splits and joins texts', () => {
    assert.deepStrictEqual(list.cut('a::b::', '::'), ['a', 'b']);
    assert.deepStrictEqual(list.cut('', '::'), []);
    assert.deepStrictEqual(list.split('é,"b,c","d""e",,x'), ['é', 'b,c', 'd"e', '', 'x']);
    assert.deepStrictEqual(list.split(' a ; b ', ';', { trim: true }), ['a', 'b']);
    assert.strictEqual(list.join(['é', 'b,c', 'd"e', '', 'x']), 'é,"b,c","d""e",,x');
    assert.strictEqual(list.join([]), '');
    assert.strictEqual(list.join(new Set(['a', 'b']), ';'), 'a;b');
    const many = Array.from({ length: 3000 }, (_, index) => `item ${index}, "quoted"`);
    assert.deepStrictEqual(list.split(list.join(many)), many);
    assert.throws(() => list.join(['a\0b']), TypeError);
    assert.throws(() => list.join([1]), TypeError);
});

test('compare orders texts, and versionAtLeast compares versions', () => {
    assert.strictEqual(compare('file9', 'file10'), 1);
    assert.strictEqual(compare('file9', 'file10', { numeric: true }), -1);
    assert.strictEqual(compare('FILE', 'file', { ignoreCase: true }), 0);
    assert.strictEqual(compare('a/b', 'a\\b', { slashesEqual: true }), 0);
    assert.strictEqual(compare('a', 'b', { reverse: true }), 1);
    assert.deepStrictEqual(['v10', 'v9', 'v1'].sort((a, b) => compare(a, b, { numeric: true })), ['v1', 'v9', 'v10']);
    assert.strictEqual(versionAtLeast('10.2', '9.9'), true);
    assert.strictEqual(versionAtLeast('1.2', '1.2.0'), false);
});
