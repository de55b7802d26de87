'use strict';

const assert = require('assert');
const test = require('node:test');

const { base64, parse } = require('..');
const { shortestTimes } = require('./support');

// In the measurements of test/ratios.js, base64.encode takes 2.4 times as long as Buffer, and parse.int32 takes 0.3 us.
// The limits of the tests are larger, because the machine may be busy.
test('base64.encode takes less than five times as long as Buffer', () => {
    const bytes = Buffer.alloc(1000000, 'vorel');
    const [ownUs, peerUs] = shortestTimes(40, 2, () => base64.encode(bytes), () => bytes.toString('base64'));
    assert.ok(ownUs < 5 * peerUs, `base64.encode: ${ownUs} us, Buffer: ${peerUs} us`);
});

test('parse.int32 takes less than 2 us', () => {
    const [ownUs] = shortestTimes(40, 500, () => parse.int32('12345'));
    assert.ok(ownUs < 2, `${ownUs} us`);
});
