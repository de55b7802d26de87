// Tracks which asynchronous task holds a mutex. For Windows, the owner of a mutex is a thread, and asynchronous tasks
// share one thread. So Windows would let a second task lock a mutex that the first task holds. Each Worker is a
// thread and loads this module again, so the tasks of each thread are tracked separately.
'use strict';

const { AsyncLocalStorage } = require('async_hooks');

// setTimeout treats longer delays as 1 ms.
const MAX_DELAY_MS = 0x7fffffff;

const holders = new Map();
const current = new AsyncLocalStorage();

/** A task that holds the mutex `name` until `release` is called. */
class Holder {
    #resolve;

    constructor(name) {
        this.name = name;
        this.isActive = true;
        // Skips finished tasks. Otherwise, if each task starts the next task, the last task would keep all earlier
        // tasks in memory.
        let outer = current.getStore();
        while (outer !== undefined && !outer.isActive) {
            outer = outer.outer;
        }
        this.outer = outer;
        this.released = new Promise((resolve) => { this.#resolve = resolve; });
        holders.set(name, this);
    }

    run(action) {
        return current.run(this, action);
    }

    release() {
        this.isActive = false;
        holders.delete(this.name);
        this.#resolve();
    }

    /**
     * Waits until the task has released the mutex, or until the time limit has passed. Waits at most MAX_DELAY_MS
     * (about 25 days), even if the time limit is longer.
     */
    async waitForRelease(limitMs) {
        let timer;
        const late = new Promise((resolve) => { timer = setTimeout(resolve, Math.min(limitMs, MAX_DELAY_MS)); });
        await Promise.race([this.released, late]);
        clearTimeout(timer);
    }
}

/** The task that holds the mutex of this name, or undefined. */
function holderOf(name) {
    return holders.get(name);
}

/** Whether the calling code is part of the task. */
function isCurrent(holder) {
    for (let own = current.getStore(); own !== undefined; own = own.outer) {
        if (own === holder) {
            return true;
        }
    }
    return false;
}

module.exports = { Holder, holderOf, isCurrent };
