// Shared by the tests.
'use strict';

const assert = require('assert');
const childProcess = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { VorelError, log } = require('..');

/** A time limit that is long enough for a busy machine. */
const GENEROUS_MS = 30000;

let names = 0;

/** A unique name for a kernel object. */
function uniqueName(stem) {
    names += 1;
    return `vorel_node_${stem}_${process.pid}_${names}`;
}

/** Expects `action` to throw a `VorelError` with the code `VOREL_ERROR_${code}`, and with `message` if it is given. */
function expectFailure(action, code, message) {
    assert.throws(action, (error) => {
        assert.ok(error instanceof VorelError, `${error}`);
        assert.strictEqual(error.name, 'VorelError');
        assert.strictEqual(error.code, `VOREL_ERROR_${code}`);
        if (message !== undefined) {
            assert.strictEqual(error.message, message);
        }
        return true;
    });
}

/** Expects `action` to throw an error of the class `Kind` with this code and this message (a text or an expression). */
function expectCode(action, Kind, code, message) {
    assert.throws(action, (error) => {
        assert.ok(error instanceof Kind, `${error}`);
        assert.strictEqual(error.code, code, `${error}`);
        assert.ok(message instanceof RegExp ? message.test(error.message) : error.message === message, error.message);
        return true;
    });
}

/** Runs `action(path)` with its own error log and returns the lines without time, computer, process and thread. */
function withLog(action) {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'vorel_node_'));
    const file = path.join(folder, 'errors.txt');
    const before = log.path;
    log.path = file;
    try {
        action(file);
        return linesOf(file);
    } finally {
        log.path = before;
        fs.rmSync(folder, { recursive: true });
    }
}

/** "[Mon Nov 16 01:43:08 2026] host7.4312.9876: message", with or without milliseconds (".045") after the "]". */
const LINE = /^\[[^\]]{24}\](?:\.\d{3})? \S+\.\d+\.\d+: (.*)$/;

function linesOf(file) {
    if (!fs.existsSync(file)) {
        return [];
    }
    const lines = fs.readFileSync(file, 'utf8').split('\r\n');
    assert.strictEqual(lines.pop(), '', 'the last line must end with CR LF');
    return lines.map((line) => {
        assert.match(line, LINE);
        return LINE.exec(line)[1];
    });
}

/**
 * For each action, the average time of a call in the action's fastest round, in microseconds. The rounds of the actions
 * alternate, so all actions run under the same load of the machine.
 */
function shortestTimes(rounds, calls, ...actions) {
    const times = actions.map(() => Infinity);
    for (let round = 0; round !== rounds; ++round) {
        actions.forEach((action, index) => {
            const start = process.hrtime.bigint();
            for (let call = 0; call !== calls; ++call) {
                action();
            }
            times[index] = Math.min(times[index], Number(process.hrtime.bigint() - start) / calls / 1000);
        });
    }
    return times;
}

/** Calls `startPeerWith` without options. */
function startPeer(...roleAndArguments) {
    return startPeerWith({}, ...roleAndArguments);
}

/**
 * Starts test/peer.js with options of `child_process.spawn`. Resolves to the exit code of the peer, or to null if the
 * peer ran too long and was killed.
 */
function startPeerWith(options, ...roleAndArguments) {
    const peer = childProcess.spawn(process.execPath, [path.join(__dirname, 'peer.js'), ...roleAndArguments],
        { stdio: 'ignore', timeout: 2 * GENEROUS_MS, killSignal: 'SIGKILL', ...options });
    return new Promise((resolve, reject) => {
        peer.on('error', reject);
        peer.on('exit', (code) => resolve(code));
    });
}

module.exports = {
    GENEROUS_MS, uniqueName, expectCode, expectFailure, withLog, linesOf, shortestTimes, startPeer, startPeerWith,
};
