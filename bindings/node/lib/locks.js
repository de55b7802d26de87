// Named mutexes and conditions.
'use strict';

const { Status } = require('./errors');
const native = require('./native');
const { TEXT, string } = native;

const FOREVER = 0xffffffff;

/** The time limit of a wait in milliseconds; none is no limit. */
function timeout(timeoutMs) {
    return timeoutMs === undefined ? FOREVER : native.integer(timeoutMs, 0, FOREVER - 1, 'timeoutMs');
}

/** What a handle of the library and its owner in JavaScript have in common. */
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

    /** The handle, for a call of the library. */
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
        const limit = timeout(timeoutMs);
        ++this.#waiting;
        return new Promise((resolve, reject) => {
            // On a thread of koffi's, so that the event loop goes on.
            waitForCondition.async(handle, limit, (error, status) => {
                --this.#waiting;
                if (error) {
                    reject(error);
                } else if (status === Status.OK || status === Status.TIMEOUT) {
                    resolve(status === Status.OK);
                } else {
                    reject(native.errorOf(status));
                }
            });
        });
    }

    close() {
        if (this.#waiting !== 0) {
            throw new Error(`Condition "${this.name}" is being waited for`);
        }
        super.close();
    }
}

module.exports = { Mutex, Condition };
