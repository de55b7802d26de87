'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const test = require('node:test');

const { Status } = require('..');
const constants = require('../lib/constants');

// test/run sets VOREL_INCLUDE, because it runs a copy of the package outside of the source tree.
const INCLUDE = process.env.VOREL_INCLUDE || path.join(__dirname, '..', '..', '..', 'include');

// The package does not use this constant of the headers, because it passes the length of every text.
const UNUSED = ['VOREL_ZERO_TERMINATED'];

/** The macros and enumerators of the flat interface with their values; NaN for a value that is not a number. */
function headerConstants() {
    const umbrella = fs.readFileSync(path.join(INCLUDE, 'vorel', 'vorelCoreC.h'), 'utf8');
    const headers = Array.from(umbrella.matchAll(/^#include "([^"]+)"/gm), (include) => include[1]);
    assert.ok(headers.length >= 5, 'the headers of the flat interface must be found');
    const found = {};
    for (const header of headers) {
        const text = fs.readFileSync(path.join(INCLUDE, ...header.split('/')), 'utf8');
        for (const [, macro, value] of text.matchAll(/^#define (VOREL_\w+) (\S+)$/gm)) {
            found[macro] = Number(value.replace(/u$/, ''));
        }
        for (const [, enumerator, value] of text.matchAll(/^\s+(VOREL_\w+)\s+=\s+(\w+)/gm)) {
            found[enumerator] = Number(value);
        }
    }
    return found;
}

test('the package has the constants of the C headers', () => {
    const expected = headerConstants();
    for (const name of UNUSED) {
        assert.ok(name in expected, name);
        delete expected[name];
    }
    const own = Object.entries(constants).map(([name, value]) => [`VOREL_${name}`, value]);
    assert.deepStrictEqual(Object.fromEntries(own), expected);
});

test('Status has the status codes of the C headers', () => {
    const expected = Object.entries(headerConstants()).filter(([name]) => /^VOREL_(OK$|ERROR_)/.test(name));
    const own = Object.entries(Status).map(([name, value]) => [`VOREL_${name === 'OK' ? '' : 'ERROR_'}${name}`, value]);
    assert.deepStrictEqual(Object.fromEntries(own), Object.fromEntries(expected));
});
