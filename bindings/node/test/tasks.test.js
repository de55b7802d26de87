'use strict';

const assert = require('assert');
const test = require('node:test');

const { Condition, Mutex } = require('..');
const { GENEROUS_MS, expectCode, expectFailure, startPeer, uniqueName } = require('./support');

const turn = () => new Promise(setImmediate);

/** Expects a promise to be rejected with a `VorelError`. */
async function expectRejection(promise, code, message) {
    const error = await promise.then(() => assert.fail('the promise was not rejected'), (reason) => reason);
    expectFailure(() => { throw error; }, code, message);
}

test('runAsync holds the mutex until the promise of its action is settled', async () => {
    const name = uniqueName('task');
    const release = new Condition(uniqueName('release'));
    const held = new Condition(uniqueName('held'));
    const mutex = new Mutex(name);
    const peer = startPeer('holdAsync', name, held.name, release.name);
    assert.strictEqual(await held.waitAsync(GENEROUS_MS), true);
    assert.strictEqual(mutex.tryLock(), false, 'the other process holds the mutex while its action waits');
    await expectRejection(mutex.runAsync(() => assert.fail('the action ran'), 1), 'TIMEOUT',
        `Failed to lock mutex ${name}: Timed out`);
    const next = mutex.runAsync(async () => 42, GENEROUS_MS);
    release.signal();
    assert.strictEqual(await next, 42);
    assert.strictEqual(await peer, 0);
    expectFailure(() => mutex.unlock(), 'NOT_OWNER', 'The thread does not hold the mutex');
    mutex.close();
    held.close();
    release.close();
});

test('runAsync releases the mutex when its action throws or rejects', async () => {
    const mutex = new Mutex(uniqueName('task'));
    const failure = new Error('of the action');
    for (const action of [() => { throw failure; }, async () => { throw failure; }]) {
        await assert.rejects(mutex.runAsync(action), failure);
        expectFailure(() => mutex.unlock(), 'NOT_OWNER', 'The thread does not hold the mutex');
    }
    assert.strictEqual(await mutex.runAsync(() => 1), 1, 'the action may be synchronous');
    mutex.close();
});

test('concurrent tasks of a thread hold the mutex one after the other, even through different handles', async () => {
    const name = uniqueName('task');
    const handles = [new Mutex(name), new Mutex(name)];
    const events = [];
    await Promise.all([0, 1, 2, 3].map((task) => handles[task % 2].runAsync(async () => {
        events.push(`begin ${task}`);
        await turn();
        events.push(`end ${task}`);
    }, GENEROUS_MS)));
    assert.deepStrictEqual(events, [0, 1, 2, 3].flatMap((task) => [`begin ${task}`, `end ${task}`]));
    handles.forEach((mutex) => mutex.close());
});

test('while a task holds a mutex, other tasks of the thread can neither lock nor unlock it', async () => {
    const name = uniqueName('task');
    const mutex = new Mutex(name);
    const other = new Mutex(name);
    let finish;
    const task = mutex.runAsync(() => new Promise((resolve) => { finish = resolve; }));
    await turn();
    for (const handle of [mutex, other]) {
        assert.strictEqual(handle.tryLock(), false);
        expectCode(() => handle.lock(), Error, 'ERR_INVALID_STATE', /use runAsync/);
        expectCode(() => handle.run(() => 1), Error, 'ERR_INVALID_STATE', /use runAsync/);
        expectFailure(() => handle.unlock(), 'NOT_OWNER', 'Another task of the thread holds the mutex');
        await expectRejection(handle.runAsync(() => 1, 1), 'TIMEOUT', `Failed to lock mutex ${name}: Timed out`);
    }
    expectCode(() => mutex.close(), Error, 'ERR_INVALID_STATE', /is used by runAsync/);
    finish();
    await task;
    assert.strictEqual(mutex.run(() => 1), 1);
    mutex.close();
    other.close();
});

test('the action of a task may lock its mutex again', async () => {
    const mutex = new Mutex(uniqueName('task'));
    const inner = new Mutex(uniqueName('inner'));
    assert.strictEqual(await mutex.runAsync(async () => {
        await turn();
        mutex.run(() => assert.strictEqual(mutex.tryLock(), true));
        mutex.unlock();
        return inner.runAsync(() => mutex.runAsync(async () => 42, 0), 0);
    }), 42);
    expectFailure(() => mutex.unlock(), 'NOT_OWNER', 'The thread does not hold the mutex');
    mutex.close();
    inner.close();
});

test('work that continues after its action has ended cannot lock the mutex of the next task', async () => {
    const mutex = new Mutex(uniqueName('task'));
    let late;
    await mutex.runAsync(() => { late = turn().then(() => mutex.tryLock()); });
    let finish;
    const next = mutex.runAsync(() => new Promise((resolve) => { finish = resolve; }));
    assert.strictEqual(await late, false);
    finish();
    await next;
    mutex.close();
});
