'use strict';

const assert = require('assert');
const test = require('node:test');

const vorel = require('..');

test('an ES module can import every name of the package', async () => {
    for (const specifier of ['vorelcore', '../lib/index.js']) {
        const { default: whole, ...named } = await import(specifier);
        assert.strictEqual(whole, vorel);
        assert.deepStrictEqual(Object.keys(named).filter((name) => name !== 'module.exports').sort(),
            Object.keys(vorel).sort());
        for (const [name, value] of Object.entries(vorel)) {
            assert.strictEqual(named[name], value, name);
        }
    }
});

test('the package exports only its interface and its package.json', () => {
    assert.strictEqual(require('vorelcore'), vorel);
    assert.strictEqual(require('vorelcore/package.json').name, 'vorelcore');
    assert.throws(() => require('vorelcore/lib/native.js'), { code: 'ERR_PACKAGE_PATH_NOT_EXPORTED' });
});
