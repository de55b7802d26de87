'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const test = require('node:test');

const { log, parse } = require('..');
const { expectFailure, linesOf, startPeer, withLog } = require('./support');

test('write and warn append lines', () => {
    const long = 'z'.repeat(20000);
    assert.deepStrictEqual(withLog(() => {
        log.write('Import', '12 files');
        log.write('', 'no prefix');
        log.warn('é 😀 100%s');
        log.write('Long', long);
    }), ['Import: 12 files', 'no prefix', 'WARN: é 😀 100%s', `Long: ${long}`]);
    withLog(() => expectFailure(() => log.write('a', 'b\0c'), 'INVALID_TEXT'));
});

test('debug writes only while its target is active', () => {
    assert.deepStrictEqual(withLog(() => {
        log.debug('node.paper', 'too early');
        log.setDebugTarget('node.paper', true);
        log.debug('node.paper', 'low');
        log.setDebugTarget('node.paper', false);
        log.debug('node.paper', 'too late');
    }), ['DEBUG: node.paper: low']);
});

test('path and limit can be set and read', () => {
    const before = log.limit;
    withLog((file) => {
        assert.strictEqual(log.path, file);
        for (const limit of [0, -1, 1, Number.MAX_SAFE_INTEGER]) {
            log.limit = limit;
            assert.strictEqual(log.limit, limit);
        }
        log.limit = before;
        assert.throws(() => { log.limit = -2; }, RangeError);
        assert.throws(() => { log.limit = 1.5; }, RangeError);
        expectFailure(() => { log.path = 'x'.repeat(2000); }, 'INVALID_ARGUMENT', 'The path is too long');
        assert.strictEqual(log.limit, before);
        assert.strictEqual(log.path, file);
    });
});

test('the path may contain non-ASCII characters of the code page', (t) => {
    withLog((file) => {
        const accented = path.join(path.dirname(file), 'café.txt');
        try {
            log.path = accented;
        } catch (error) {
            assert.strictEqual(error.code, 'VOREL_ERROR_INVALID_TEXT');
            t.skip('the code page lacks é');
            return;
        }
        log.warn('there');
        assert.strictEqual(log.path, accented);
        assert.deepStrictEqual(linesOf(accented), ['WARN: there']);
    });
});

test('exceptions of the library are logged unless the thread disables its logging', () => {
    const lines = withLog(() => expectFailure(() => parse.ranges('x'), 'INVALID_TEXT'));
    assert.strictEqual(lines[0], 'Vorel Error: Found nonnumeric text in numeric item: "x"');
    assert.strictEqual(lines[lines.length - 1], 'Vorel Error: vorel_parse_ranges: Vorel exception caught');
    assert.deepStrictEqual(withLog(() => {
        log.setThreadEnabled(false);
        expectFailure(() => parse.ranges('x'), 'INVALID_TEXT');
        log.setThreadEnabled(true);
    }), []);
});

test('lines that two processes write to the same log are whole, unique and in order', async () => {
    const folder = fs.mkdtempSync(path.join(require('os').tmpdir(), 'vorel_node_'));
    const file = path.join(folder, 'errors.txt');
    const count = 50;
    try {
        // The exit code of a peer is the number of its calls that took longer than a second. Lines of such calls may be
        // missing.
        const [lateOnes, lateTwos] = await Promise.all(
            [startPeer('write', file, 'one', `${count}`), startPeer('write', file, 'two', `${count}`)]);
        const lines = linesOf(file);
        for (const [prefix, late] of [['one', lateOnes], ['two', lateTwos]]) {
            const numbers = lines.filter((line) => line.startsWith(`${prefix}: `)).map((line) => Number(line.slice(5)));
            assert.deepStrictEqual(numbers, [...new Set(numbers)].sort((a, b) => a - b),
                'lines must be in order and unique');
            assert.ok(numbers.length <= count && numbers.length >= count - late,
                `${numbers.length} of ${count} lines found, and ${late} calls took longer than a second`);
        }
        assert.ok(lines.every((line) => /^(one|two): \d+$/.test(line)));
    } finally {
        fs.rmSync(folder, { recursive: true });
    }
});
