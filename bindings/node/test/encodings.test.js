'use strict';

const assert = require('assert');
const test = require('node:test');

const { base64, codePage, daylight, hex, url, utf8 } = require('..');
const { expectFailure } = require('./support');

test('utf8 encodes texts and decodes bytes', () => {
    for (const text of ['', 'A', 'é', '€', '😀', 'a\0b', '\0', 'x'.repeat(1023), 'é'.repeat(1024), '😀'.repeat(100000)]) {
        const bytes = Buffer.from(text, 'utf8');
        assert.deepStrictEqual(utf8.encode(text), bytes);
        assert.strictEqual(utf8.decode(bytes), text);
    }
    assert.deepStrictEqual(utf8.encode('\ud800x'), Buffer.from('?x'));
    assert.strictEqual(utf8.decode(new Uint8Array([0, 65, 66]).subarray(1)), 'AB', 'a view into a buffer');
    expectFailure(() => utf8.decode(Buffer.from([0x80])), 'INVALID_TEXT', 'Invalid UTF-8');
});

test('base64, daylight and hex encode and decode bytes', () => {
    const rows = [
        [base64.encode, base64.decode, 'ABCD', 'QUJDRA=='],
        [daylight.encode, daylight.decode, 'AB', 'EI6.2'],
        [hex.encode, hex.decode, 'J\x0f', '4a0f'],
        [(bytes) => hex.encode(bytes, { upperCase: true }), hex.decode, 'J\x0f', '4A0F'],
    ];
    for (const [encode, decode, bytes, text] of rows) {
        assert.strictEqual(encode(Buffer.from(bytes, 'latin1')), text);
        assert.strictEqual(decode(text).toString('latin1'), bytes);
    }
    const all = Buffer.from(Array.from({ length: 5000 }, (_, index) => index % 251));
    for (const [encode, decode] of rows) {
        assert.deepStrictEqual(decode(encode(all)), all);
    }
    assert.strictEqual(base64.encode(all), all.toString('base64'));
    assert.strictEqual(hex.encode(all), all.toString('hex'));
    assert.deepStrictEqual(base64.decode(''), Buffer.alloc(0));
    expectFailure(() => base64.decode('QQ'), 'INVALID_TEXT', 'The text is not Base64');
    expectFailure(() => daylight.decode('x'), 'INVALID_TEXT',
        'Daylight64::Decode: Invalid ASCII string (unexepected charater at end)');
    expectFailure(() => hex.decode('4G'), 'INVALID_TEXT');
});

test('base64 and hex agree with Buffer on data that is converted in several pieces', () => {
    class Claims extends Uint8Array {
        get length() {
            return 1;
        }
    }
    const piece = 3 * 2730;  // PIECE_BYTES in lib/encodings.js
    for (const size of [piece - 1, piece, piece + 1, piece + 2, 2 * piece, 3 * piece + 1]) {
        const bytes = Buffer.from(Array.from({ length: size + 7 }, (_, index) => index * 7 % 251)).subarray(7);
        for (const data of [bytes, new Claims(bytes)]) {
            assert.strictEqual(base64.encode(data), bytes.toString('base64'));
            assert.strictEqual(hex.encode(data, { upperCase: true }), bytes.toString('hex').toUpperCase());
        }
        assert.deepStrictEqual(base64.decode(bytes.toString('base64')), bytes);
        assert.deepStrictEqual(hex.decode(bytes.toString('hex')), bytes);
        assert.deepStrictEqual(base64.decode(`${' '.repeat(3 * size)}${bytes.toString('base64')}`), bytes);
    }
});

test('a call does not change the result of an earlier call', () => {
    const first = base64.decode('QUJD');
    base64.decode('WFla');
    assert.strictEqual(first.toString(), 'ABC');
});

test('codePage finds code pages, encodes texts and decodes bytes', () => {
    assert.strictEqual(codePage.find('LATIN1'), 28591);
    assert.deepStrictEqual(codePage.encode('latin1', 'café'), Buffer.from('café', 'latin1'));
    assert.strictEqual(codePage.decode(28591, Buffer.from('a\0é', 'latin1')), 'a\0é');
    assert.deepStrictEqual(codePage.tryEncode(1252, '€'), { bytes: Buffer.from([0x80]), replaced: false });
    assert.strictEqual(codePage.tryEncode(1252, '一').replaced, true);
    expectFailure(() => codePage.find('no such'), 'UNKNOWN_NAME', 'No code page has this name');
    expectFailure(() => codePage.encode('no such', ''), 'UNKNOWN_NAME');
    expectFailure(() => codePage.decode(4711, Buffer.from('a')), 'UNSUPPORTED');
    expectFailure(() => codePage.decode('utf-8', Buffer.from([0xc3])), 'INVALID_TEXT');
    assert.throws(() => codePage.decode(0, Buffer.from('a')), RangeError);
});

test('url encodes and decodes texts', () => {
    assert.strictEqual(url.encode('a/b c~é'), 'a/b%20c%7E%C3%A9');
    assert.strictEqual(url.encode('a/b c', { reserved: true, spaceAsPlus: true }), 'a%2Fb+c');
    assert.strictEqual(url.encodeComponent('a=b c', 'queryParameter'), 'a%3Db+c');
    assert.strictEqual(url.encodeComponent('a/b?', 'path'), 'a/b%3F');
    assert.strictEqual(url.decode('%F0%9F%98%80+%00'), '😀+\0');
    assert.strictEqual(url.decode('a+b', { plusAsSpace: true }), 'a b');
    expectFailure(() => url.decode('%FF'), 'INVALID_TEXT', 'The escaped bytes are not valid UTF-8');
    expectFailure(() => url.encode('a\0b'), 'INVALID_TEXT', 'The text contains a zero character');
    assert.throws(() => url.encodeComponent('a', 'toString'), TypeError);
});

test('arguments of the wrong type cause a TypeError', () => {
    for (const wrong of [null, undefined, 1, {}, ['a']]) {
        assert.throws(() => base64.decode(wrong), TypeError);
        assert.throws(() => base64.encode(wrong), TypeError);
        assert.throws(() => utf8.encode(wrong), TypeError);
        assert.throws(() => utf8.decode(wrong), TypeError);
        assert.throws(() => url.decode(wrong), TypeError);
    }
    assert.throws(() => base64.encode('text'), TypeError);
});
