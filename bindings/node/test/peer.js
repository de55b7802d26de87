// The second process of a test: node peer.js <role> <argument>... Exits with 0 on success, unless the comment of
// the role says otherwise.
'use strict';

const fs = require('fs');
const { Worker, parentPort } = require('worker_threads');

const { Condition, Mutex, log } = require('..');

const GENEROUS_MS = 30000;

function need(condition) {
    if (!condition) {
        throw new Error('an expectation of this role failed');
    }
}

const roles = {
    /** Locks a mutex, signals `heldName`, waits for `releaseName`, and unlocks the mutex. */
    hold(mutexName, heldName, releaseName) {
        const mutex = new Mutex(mutexName);
        const held = new Condition(heldName);
        const release = new Condition(releaseName);
        mutex.run(() => {
            held.signal();
            need(release.wait(GENEROUS_MS));
        }, GENEROUS_MS);
    },

    /** Does the same as `hold`, but with `runAsync` and an asynchronous action. */
    async holdAsync(mutexName, heldName, releaseName) {
        await new Mutex(mutexName).runAsync(async () => {
            new Condition(heldName).signal();
            need(await new Condition(releaseName).waitAsync(GENEROUS_MS));
        }, GENEROUS_MS);
    },

    /** Locks a mutex, signals `heldName`, and kills its own process without unlocking the mutex. */
    abandon(mutexName, heldName) {
        new Mutex(mutexName).lock(GENEROUS_MS);
        new Condition(heldName).signal();
        process.kill(process.pid);
    },

    /** Increments a number in a file `rounds` times, each time under a mutex. */
    count(mutexName, file, rounds) {
        const mutex = new Mutex(mutexName);
        for (let round = 0; round !== Number(rounds); ++round) {
            mutex.run(() => fs.writeFileSync(file, String(Number(fs.readFileSync(file, 'utf8')) + 1)), GENEROUS_MS);
        }
    },

    /** Answers each signal of `askedName` with a signal of `answeredName`. */
    echo(askedName, answeredName, rounds) {
        const asked = new Condition(askedName);
        const answered = new Condition(answeredName);
        for (let round = 0; round !== Number(rounds); ++round) {
            need(asked.wait(GENEROUS_MS));
            answered.signal();
        }
    },

    /**
     * Ends a Worker with `terminate` or `exit` while the Worker waits for a condition. Afterwards, the condition must
     * still work.
     */
    async endWorker(conditionName, how) {
        const worker = new Worker(__filename, { argv: ['waitInWorker', conditionName, how] });
        const code = await new Promise((resolve, reject) => {
            worker.on('error', reject);
            worker.on('exit', resolve);
            worker.on('message', () => how === 'terminate' && worker.terminate());
        });
        const condition = new Condition(conditionName);
        condition.signal();
        need(code === (how === 'terminate' ? 1 : 7) && condition.wait(GENEROUS_MS));
    },

    /** The work of the Worker that `endWorker` starts. */
    waitInWorker(conditionName, how) {
        new Condition(conditionName).waitAsync(GENEROUS_MS);
        // The wait has started by the next turn of the event loop.
        setImmediate(() => (how === 'terminate' ? parentPort.postMessage('waiting') : process.exit(7)));
    },

    /** Exits with 7 during a wait without a limit. */
    exitWhileWaiting(conditionName) {
        new Condition(conditionName).waitAsync();
        setImmediate(() => process.exit(7));
    },

    /** Compares the path of a loaded DLL with the expected path; exits with 2 if the DLL is not loaded. */
    loadedFrom(moduleName, expected) {
        const kernel = require('koffi').load('kernel32.dll');
        const handleOf = kernel.func('void *GetModuleHandleW(const char16_t *)');
        const pathOf = kernel.func('uint32_t GetModuleFileNameW(void *, _Out_ uint16_t *, uint32_t)');
        const units = new Uint16Array(1024);
        const handle = handleOf(moduleName);
        if (!handle) {
            process.exit(2);
        }
        const length = pathOf(handle, units, units.length);
        const path = Buffer.from(units.buffer, 0, length * 2).toString('utf16le');
        need(path.toLowerCase() === expected.toLowerCase());
    },

    /**
     * Writes lines to a log that other processes write to. The exit code is the number of calls that took more than a
     * second. The lines of these calls may have been dropped. The log does not report dropped lines.
     */
    write(file, prefix, count) {
        log.path = file;
        let late = 0;
        for (let line = 0; line !== Number(count); ++line) {
            const start = process.hrtime.bigint();
            log.write(prefix, String(line));
            late += process.hrtime.bigint() - start > 1_000_000_000n ? 1 : 0;
        }
        process.exitCode = late;
    },
};

const [role, ...rest] = process.argv.slice(2);
Promise.resolve(roles[role](...rest)).catch((error) => {
    console.error(error);
    process.exit(1);
});
