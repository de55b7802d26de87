// Named mutexes and conditions.
'use strict';

const { performance } = require('perf_hooks');
const { isMainThread } = require('worker_threads');

const { WAIT_FOREVER } = require('./constants');
const { Status } = require('./errors');
const native = require('./native');
const { TEXT, string } = native;

/** The time limit of a wait in milliseconds; undefined means no limit. */
function timeout(timeoutMs) {
    return timeoutMs === undefined ? WAIT_FOREVER : native.integer(timeoutMs, 0, WAIT_FOREVER - 1, 'timeoutMs');
}

/** Owns a handle of the library. */
class Handle {
    #name;
    #handle;
    #close;

    constructor(kind, name) {
        this.#name = string(name, 'name');
        this.#handle = native.valueOutput((handle) => kind.open(name, name.length, handle));
        this.#close = kind.close;
    }

    get name() {
        return this.#name;
    }

    get closed() {
        return this.#handle === null;
    }

    /** The open handle. Throws when it is closed. */
    get open() {
        if (this.closed) {
            throw new Error(`${this.constructor.name} "${this.#name}" is closed`);
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

// From Node 20 on: `using mutex = new Mutex(…)`.
if (Symbol.dispose) {
    Handle.prototype[Symbol.dispose] = function dispose() {
        this.close();
    };
}

const mutexKind = {
    open: native.declare('vorel_mutex_open', TEXT, '_Out_ vorel_mutex **'),
    close: native.declare('vorel_mutex_close', 'vorel_mutex *'),
};
const lockMutex = native.declare('vorel_mutex_lock', 'vorel_mutex *', 'uint32_t');
const unlockMutex = native.declare('vorel_mutex_unlock', 'vorel_mutex *');

class Mutex extends Handle {
    constructor(name) {
        super(mutexKind, name);
    }

    lock(timeoutMs) {
        native.check(lockMutex(this.open, timeout(timeoutMs)));
    }

    tryLock() {
        const status = lockMutex(this.open, 0);
        if (status === Status.TIMEOUT) {
            return false;
        }
        native.check(status);
        return true;
    }

    unlock() {
        native.check(unlockMutex(this.open));
    }

    run(action, timeoutMs) {
        this.lock(timeoutMs);
        try {
            return action();
        } finally {
            this.unlock();
        }
    }
}

const conditionKind = {
    open: native.declare('vorel_condition_open', TEXT, '_Out_ vorel_condition **'),
    close: native.declare('vorel_condition_close', 'vorel_condition *'),
};
const signalCondition = native.declare('vorel_condition_signal', 'vorel_condition *');
const waitForCondition = native.declare('vorel_condition_wait', 'vorel_condition *', 'uint32_t');

// The maximum duration of one native call of an asynchronous wait. The process cannot end before the call returns.
const CALL_MS = 100;
// libuv's pool has four threads; the rest of the program needs the others.
const MAX_CALLS = 2;
// The interval at which a wait without a thread checks for a signal.
const CHECK_MS = 10;

let calls = 0;

/**
 * Waits at most CALL_MS on a thread of libuv's pool and resolves to the status. Do not use it in a Worker: koffi aborts
 * the process when a Worker ends during the call.
 */
function waitOnThread(handle, limitMs) {
    ++calls;
    return new Promise((resolve, reject) => {
        waitForCondition.async(handle, Math.ceil(Math.min(limitMs, CALL_MS)),
            (error, status) => (error ? reject(error) : resolve(status)));
    }).finally(() => --calls);
}

/** Waits at most CHECK_MS on the event loop and resolves to the status. */
async function waitOnLoop(handle, limitMs) {
    const status = waitForCondition(handle, 0);
    if (status === Status.TIMEOUT) {
        await new Promise((resolve) => { setTimeout(resolve, Math.min(limitMs, CHECK_MS)); });
    }
    return status;
}

/** Waits at most `timeoutMs` in short steps and resolves to the status. */
async function waitForStatus(handle, timeoutMs) {
    const end = timeoutMs === WAIT_FOREVER ? Infinity : performance.now() + timeoutMs;
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
            throw new Error(`Condition "${this.name}" is being waited for`);
        }
        super.close();
    }
}

module.exports = { Mutex, Condition };
