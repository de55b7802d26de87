'use strict';

const assert = require('assert');
const fs = require('fs');
const os = require('os');
const path = require('path');
const test = require('node:test');

const { Condition, Mutex, format } = require('..');
const { GENEROUS_MS, expectCode, expectFailure, startPeer, uniqueName, withLog } = require('./support');

test('a mutex is recursive', () => {
    const mutex = new Mutex(uniqueName('é'));
    mutex.lock();
    assert.strictEqual(mutex.tryLock(), true);
    mutex.unlock();
    mutex.unlock();
    expectFailure(() => mutex.unlock(), 'NOT_OWNER', 'The thread does not hold the mutex');
    mutex.close();
});

test('run releases the mutex when its action throws', () => {
    const mutex = new Mutex(uniqueName('mutex'));
    assert.strictEqual(mutex.run(() => 42), 42);
    assert.throws(() => mutex.run(() => { throw new Error('of the action'); }), /of the action/);
    expectFailure(() => mutex.unlock(), 'NOT_OWNER');
    mutex.close();
});

test('a closed handle can be closed again but not used', () => {
    for (const Kind of [Mutex, Condition]) {
        const name = uniqueName('closed');
        const handle = new Kind(name);
        assert.strictEqual(handle.name, name);
        assert.strictEqual(handle.closed, false);
        handle.close();
        handle.close();
        assert.strictEqual(handle.closed, true);
        const use = Kind === Mutex ? () => handle.lock() : () => handle.signal();
        assert.throws(use, new RegExp(`${name}" is closed`));
        assert.throws(() => new Kind(null), TypeError);
        expectFailure(() => new Kind(''), 'INVALID_ARGUMENT', 'The name is empty');
    }
});

test('a time limit must be a whole number in range', () => {
    const mutex = new Mutex(uniqueName('mutex'));
    for (const wrong of [-1, 1.5, NaN, 2 ** 32 - 1]) {
        expectCode(() => mutex.lock(wrong), RangeError, 'ERR_OUT_OF_RANGE',
            'The value of "timeoutMs" is out of range. It must be a whole number from 0 to 4294967294. ' +
                `Received ${wrong}`);
    }
    expectCode(() => mutex.lock('1'), TypeError, 'ERR_INVALID_ARG_TYPE',
        'The "timeoutMs" argument must be of type number. Received type string (\'1\')');
    expectCode(() => mutex.runAsync(() => 1, null), TypeError, 'ERR_INVALID_ARG_TYPE',
        'The "timeoutMs" argument must be of type number. Received null');
    mutex.close();
});

test('a mutex or condition that cannot be opened is reported with the text of the system', () => {
    // The system reads "a\b" as the object b in the folder a of kernel objects. This folder does not exist.
    const ERROR_PATH_NOT_FOUND = 3;
    const text = format.systemError(ERROR_PATH_NOT_FOUND);
    assert.ok(text.length > 3);
    withLog(() => expectFailure(() => new Mutex('a\\b'), 'SYSTEM', `AutoMutex: Failed to create mutex a\\b: ${text}`));
    withLog(() => expectFailure(() => new Condition('a\\b'), 'SYSTEM',
        `Failed to create condition 'a\\b': OpenEvent failed: ${text}`));
});

test('run rejects an asynchronous action and does not hold the mutex afterwards', async () => {
    const mutex = new Mutex(uniqueName('mutex'));
    let started = false;
    expectCode(() => mutex.run(async () => { started = true; }), TypeError, 'ERR_INVALID_ARG_VALUE', /runAsync/);
    assert.strictEqual(started, false, 'the action must not start');
    expectCode(() => mutex.run(() => Promise.resolve(1)), TypeError, 'ERR_INVALID_RETURN_VALUE', /runAsync/);
    expectCode(() => mutex.run(() => ({ then() {} })), TypeError, 'ERR_INVALID_RETURN_VALUE', /runAsync/);
    expectFailure(() => mutex.unlock(), 'NOT_OWNER', 'The thread does not hold the mutex');
    for (const run of [mutex.run, mutex.runAsync]) {
        expectCode(() => run.call(mutex, 'action'), TypeError, 'ERR_INVALID_ARG_TYPE',
            'The "action" argument must be of type function. Received type string (\'action\')');
    }
    mutex.close();
});

test('lock times out while another process holds the mutex', async () => {
    const name = uniqueName('mutex');
    const held = new Condition(uniqueName('held'));
    const release = new Condition(uniqueName('release'));
    const peer = startPeer('hold', name, held.name, release.name);
    assert.strictEqual(await held.waitAsync(GENEROUS_MS), true);

    const mutex = new Mutex(name);
    assert.strictEqual(mutex.tryLock(), false);
    const lines = withLog(() => expectFailure(() => mutex.lock(1), 'TIMEOUT',
        `Failed to lock mutex ${name}: Timed out`));
    assert.deepStrictEqual(lines, [`WARN: AutoMutex::lock: Failed to lock mutex ${name}: Timed out`]);

    release.signal();
    mutex.lock(GENEROUS_MS);
    assert.strictEqual(await peer, 0);
    mutex.close();
    held.close();
    release.close();
});

test('lock acquires an abandoned mutex and logs a warning', async () => {
    const mutex = new Mutex(uniqueName('mutex'));
    const held = new Condition(uniqueName('held'));
    const peer = startPeer('abandon', mutex.name, held.name);
    assert.strictEqual(await held.waitAsync(GENEROUS_MS), true);
    await peer;
    const lines = withLog(() => mutex.lock(GENEROUS_MS));
    assert.deepStrictEqual(lines, [`WARN: AutoMutex::lock: WAIT_ABANDONED: Mutex ${mutex.name} was not released by ` +
        'the owning thread before it exited']);
    mutex.close();
    held.close();
});

test('a mutex is held by one process at a time', async () => {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'vorel_node_'));
    const file = path.join(folder, 'count.txt');
    const name = uniqueName('mutex');
    fs.writeFileSync(file, '0');
    try {
        assert.deepStrictEqual(
            await Promise.all([startPeer('count', name, file, '100'), startPeer('count', name, file, '100')]), [0, 0]);
        assert.strictEqual(fs.readFileSync(file, 'utf8'), '200');
    } finally {
        fs.rmSync(folder, { recursive: true });
    }
});

test('a condition stores at most one signal', () => {
    const condition = new Condition(uniqueName('condition'));
    assert.strictEqual(condition.wait(0), false);
    condition.signal();
    condition.signal();
    assert.strictEqual(condition.wait(), true);
    assert.strictEqual(condition.wait(1), false);
    condition.close();
});

test('a signal of a condition reaches a waiter in another process', async () => {
    const rounds = 20;
    const asked = new Condition(uniqueName('asked'));
    const answered = new Condition(uniqueName('answered'));
    const peer = startPeer('echo', asked.name, answered.name, `${rounds}`);
    for (let round = 0; round !== rounds; ++round) {
        asked.signal();
        const isAnswered = round % 2 === 0 ? answered.wait(GENEROUS_MS) : await answered.waitAsync(GENEROUS_MS);
        assert.strictEqual(isAnswered, true);
    }
    assert.strictEqual(await peer, 0);
    asked.close();
    answered.close();
});

test('waitAsync does not block the event loop', async () => {
    const condition = new Condition(uniqueName('condition'));
    const wait = condition.waitAsync(GENEROUS_MS);
    assert.throws(() => condition.close(), /is being waited for/);
    setImmediate(() => condition.signal());
    assert.strictEqual(await wait, true);
    assert.strictEqual(await condition.waitAsync(1), false);
    condition.close();
});

test('a Worker may end while its waitAsync is pending', async () => {
    for (const how of ['terminate', 'exit']) {
        const condition = new Condition(uniqueName('worker'));
        assert.strictEqual(await startPeer('endWorker', condition.name, how), 0, how);
        condition.close();
    }
});

test('a process may end while its waitAsync is pending', async () => {
    const condition = new Condition(uniqueName('exit'));
    assert.strictEqual(await startPeer('exitWhileWaiting', condition.name), 7);
    condition.close();
});

test('close throws while any of several asynchronous waits is pending', async () => {
    const condition = new Condition(uniqueName('many'));
    const waits = Array.from({ length: 100 }, () => condition.waitAsync(1));
    assert.throws(() => condition.close(), /is being waited for/);
    assert.deepStrictEqual(new Set(await Promise.all(waits)), new Set([false]));
    condition.close();
});

test('waits without a limit do not use up the thread pool', async () => {
    const condition = new Condition(uniqueName('pool'));
    let left = 8;  // twice the default size of libuv's thread pool
    const waits = Array.from({ length: left }, () => condition.waitAsync().then(() => { --left; }));
    assert.ok((await fs.promises.readFile(__filename)).length > 0);
    while (left !== 0) {
        const before = left;
        condition.signal();
        while (left === before) {
            await new Promise(setImmediate);
        }
    }
    await Promise.all(waits);
    condition.close();
});
