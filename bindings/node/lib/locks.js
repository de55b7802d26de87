// Named mutexes and conditions.
'use strict';

const { performance } = require('perf_hooks');
const { isAsyncFunction } = require('util').types;
const { isMainThread } = require('worker_threads');

const { callable, coded, integer, invalidValue, string } = require('./arguments');
const { WAIT_FOREVER } = require('./constants');
const { Status } = require('./errors');
const native = require('./native');
const { Holder, holderOf, isCurrent } = require('./tasks');
const { format } = require('./values');
const { TEXT } = native;

/** The time limit of a wait in milliseconds; undefined means no limit. */
function timeout(timeoutMs) {
    return timeoutMs === undefined ? WAIT_FOREVER : integer(timeoutMs, 0, WAIT_FOREVER - 1, 'timeoutMs');
}

function invalidState(message) {
    return coded(new Error(message), 'ERR_INVALID_STATE');
}

/** Owns a handle of the library. */
class Handle {
    #name;
    #handle;
    #close;

    constructor(kind, name) {
        this.#name = string(name, 'name');
        const handle = [null];
        const status = kind.open(name, name.length, handle);
        if (status !== Status.OK) {
            throw kind.openFailure(status, name);
        }
        this.#handle = handle[0];
        this.#close = kind.close;
    }

    get name() {
        return this.#name;
    }

    get closed() {
        return this.#handle === null;
    }

    /** The open handle. Throws if it is closed. */
    get open() {
        if (this.closed) {
            throw invalidState(`${this.constructor.name} "${this.#name}" is closed`);
        }
        return this.#handle;
    }

    close() {
        if (!this.closed) {
            const handle = this.#handle;
            this.#handle = null;
            native.check(this.#close(handle));
        }
    }
}

// In versions of Node that support it: `using mutex = new Mutex(…)`.
if (Symbol.dispose) {
    Handle.prototype[Symbol.dispose] = function dispose() {
        this.close();
    };
}

/**
 * Returns the error for a mutex that cannot be opened. If the system's error code can be found, the system's text
 * follows the library's message.
 */
function mutexFailure(status, name) {
    const failure = native.lastError(status);
    const error = status === Status.SYSTEM ? native.mutexErrorCode(name) : 0;
    return error === 0 ? failure : native.errorOf(status, failure.message + format.systemError(error));
}

const mutexKind = {
    open: native.declare('vorel_mutex_open', TEXT, '_Out_ vorel_mutex **'),
    close: native.declare('vorel_mutex_close', 'vorel_mutex *'),
    openFailure: mutexFailure,
};
const lockMutex = native.declare('vorel_mutex_lock', 'vorel_mutex *', 'uint32_t');
const unlockMutex = native.declare('vorel_mutex_unlock', 'vorel_mutex *');

// The interval between two checks of an asynchronous wait that does not use a thread of the pool.
const CHECK_MS = 10;

const pause = (limitMs) => new Promise((resolve) => { setTimeout(resolve, Math.min(limitMs, CHECK_MS)); });

/** The time at which a wait ends, in the unit and with the origin of `performance.now()`. */
const endOf = (timeoutMs) => (timeoutMs === WAIT_FOREVER ? Infinity : performance.now() + timeoutMs);

class Mutex extends Handle {
    #tasks = 0;

    constructor(name) {
        super(mutexKind, name);
    }

    /**
     * Whether another task of this thread holds the mutex with `runAsync`. The library treats all tasks of a thread as
     * one owner, so it would let the calling task lock the mutex, too.
     */
    get #isTaken() {
        const holder = holderOf(this.name);
        return holder !== undefined && !isCurrent(holder);
    }

    lock(timeoutMs) {
        const handle = this.open;
        const limitMs = timeout(timeoutMs);
        if (this.#isTaken) {
            throw invalidState(`Mutex "${this.name}" is held by a runAsync of this thread; use runAsync here too`);
        }
        native.check(lockMutex(handle, limitMs));
    }

    tryLock() {
        const handle = this.open;
        const status = this.#isTaken ? Status.TIMEOUT : lockMutex(handle, 0);
        if (status === Status.TIMEOUT) {
            return false;
        }
        native.check(status);
        return true;
    }

    unlock() {
        const handle = this.open;
        if (this.#isTaken) {
            throw native.errorOf(Status.NOT_OWNER, 'Another task of the thread holds the mutex');
        }
        native.check(unlockMutex(handle));
    }

    run(action, timeoutMs) {
        if (isAsyncFunction(callable(action, 'action'))) {
            throw invalidValue('action', 'must be synchronous; runAsync takes asynchronous actions', action);
        }
        this.lock(timeoutMs);
        try {
            const result = action();
            if (typeof result?.then === 'function') {
                throw coded(new TypeError('The action has returned a promise, and the mutex is released before it is ' +
                    'settled; use runAsync'), 'ERR_INVALID_RETURN_VALUE');
            }
            return result;
        } finally {
            this.unlock();
        }
    }

    runAsync(action, timeoutMs) {
        callable(action, 'action');
        const handle = this.open;
        return this.#runTask(handle, action, timeout(timeoutMs));
    }

    async #runTask(handle, action, limitMs) {
        ++this.#tasks;
        try {
            const holder = await this.#take(handle, limitMs);
            try {
                return await (holder === undefined ? action() : holder.run(action));
            } finally {
                holder?.release();
                native.check(unlockMutex(handle));
            }
        } finally {
            --this.#tasks;
        }
    }

    /** Locks the mutex for the calling task. Returns the new holder, or undefined if the task already holds it. */
    async #take(handle, limitMs) {
        const end = endOf(limitMs);
        for (;;) {
            const holder = holderOf(this.name);
            const isOwn = holder !== undefined && isCurrent(holder);
            const status = holder === undefined || isOwn ? lockMutex(handle, 0) : Status.TIMEOUT;
            if (status === Status.OK) {
                return isOwn ? undefined : new Holder(this.name);
            }
            if (status !== Status.TIMEOUT) {
                throw native.lastError(status);
            }
            const leftMs = end - performance.now();
            if (leftMs <= 0) {
                throw native.errorOf(status, `Failed to lock mutex ${this.name}: Timed out`);
            }
            await (holder === undefined ? pause(leftMs) : holder.waitForRelease(leftMs));
        }
    }

    close() {
        if (this.#tasks !== 0) {
            throw invalidState(`Mutex "${this.name}" is used by runAsync`);
        }
        super.close();
    }
}

const conditionKind = {
    open: native.declare('vorel_condition_open', TEXT, '_Out_ vorel_condition **'),
    close: native.declare('vorel_condition_close', 'vorel_condition *'),
    openFailure: native.lastError,
};
const signalCondition = native.declare('vorel_condition_signal', 'vorel_condition *');
const waitForCondition = native.declare('vorel_condition_wait', 'vorel_condition *', 'uint32_t');

// The maximum duration of one native call of an asynchronous wait. The process cannot end before the call returns.
const CALL_MS = 100;
// By default, libuv's pool has four threads. Two of them remain for the rest of the program.
const MAX_CALLS = 2;
let calls = 0;

/**
 * Waits on a thread of libuv's pool, at most `limitMs` and at most CALL_MS, and resolves to the status. Do not call
 * this function in a Worker, because koffi aborts the process when a Worker ends during the native call.
 */
function waitOnThread(handle, limitMs) {
    ++calls;
    return new Promise((resolve, reject) => {
        waitForCondition.async(handle, Math.ceil(Math.min(limitMs, CALL_MS)),
            (error, status) => (error ? reject(error) : resolve(status)));
    }).finally(() => --calls);
}

/**
 * Checks once for a signal. If there is none, then waits at most `limitMs` and at most CHECK_MS. Resolves to the status
 * of the check.
 */
async function waitOnLoop(handle, limitMs) {
    const status = waitForCondition(handle, 0);
    if (status === Status.TIMEOUT) {
        await pause(limitMs);
    }
    return status;
}

/** Waits at most `timeoutMs` in short steps and resolves to the status. */
async function waitForStatus(handle, timeoutMs) {
    const end = endOf(timeoutMs);
    for (;;) {
        const leftMs = Math.max(end - performance.now(), 0);
        const wait = isMainThread && calls < MAX_CALLS ? waitOnThread : waitOnLoop;
        const status = await wait(handle, leftMs);
        if (status !== Status.TIMEOUT || leftMs === 0) {
            return status;
        }
    }
}

class Condition extends Handle {
    #waiting = 0;

    constructor(name) {
        super(conditionKind, name);
    }

    signal() {
        native.check(signalCondition(this.open));
    }

    wait(timeoutMs) {
        const status = waitForCondition(this.open, timeout(timeoutMs));
        if (status === Status.TIMEOUT) {
            return false;
        }
        native.check(status);
        return true;
    }

    waitAsync(timeoutMs) {
        const handle = this.open;
        const limitMs = timeout(timeoutMs);
        return this.#waitFor(handle, limitMs);
    }

    async #waitFor(handle, limitMs) {
        ++this.#waiting;
        try {
            const status = await waitForStatus(handle, limitMs);
            if (status !== Status.OK && status !== Status.TIMEOUT) {
                throw native.errorOf(status);
            }
            return status === Status.OK;
        } finally {
            --this.#waiting;
        }
    }

    close() {
        if (this.#waiting !== 0) {
            throw invalidState(`Condition "${this.name}" is being waited for`);
        }
        super.close();
    }
}

module.exports = { Mutex, Condition };
