'use strict';

const assert = require('assert');
const childProcess = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');
const test = require('node:test');

const { linesOf } = require('./support');

/** The output of an example. */
function run(name, ...rest) {
    const example = path.join(__dirname, '..', 'examples', name);
    return childProcess.execFileSync(process.execPath, [example, ...rest], { encoding: 'utf8' });
}

test('convert.js prints the documented results', () => {
    assert.strictEqual(run('convert.js'), `dm9yZWw=
a%3Db+c
[ 'one', 'two, three', 'four' ]
[
  { start: 1, end: 5 },
  { start: 7, end: 7 },
  { start: 12, end: null }
]
0.333333333333333 5.0e-002
[ 'File1', 'file9', 'file10' ]
VOREL_ERROR_INVALID_TEXT: The text is not an integer
`);
});

test('shared-counter.js counts across runs and logs each run', () => {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'vorel_node_'));
    const file = path.join(folder, 'counter.txt');
    try {
        assert.strictEqual(run('shared-counter.js', file), '100\n');
        assert.strictEqual(run('shared-counter.js', file), '200\n');
        const lines = linesOf(`${file}.log`);
        assert.strictEqual(lines.length, 2);
        assert.match(lines[0], /^counter: process \d+ has added 100$/);
    } finally {
        fs.rmSync(folder, { recursive: true });
    }
});
