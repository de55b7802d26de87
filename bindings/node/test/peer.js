// The other process of a test: node peer.js <role> <argument>...; its exit code is 0 when all went as it should.
'use strict';

const fs = require('fs');

const { Condition, Mutex, log } = require('..');

const GENEROUS_MS = 30000;

function need(signalled) {
    if (!signalled) {
        throw new Error('nobody has signalled');
    }
}

const roles = {
    /** Takes a mutex, says so, and gives it back when it is told to. */
    hold(mutexName, heldName, releaseName) {
        const mutex = new Mutex(mutexName);
        const held = new Condition(heldName);
        const release = new Condition(releaseName);
        mutex.run(() => {
            held.signal();
            need(release.wait(GENEROUS_MS));
        }, GENEROUS_MS);
    },

    /** Takes a mutex, says so, and ends without giving it back. */
    abandon(mutexName, heldName) {
        new Mutex(mutexName).lock(GENEROUS_MS);
        new Condition(heldName).signal();
        process.kill(process.pid);
    },

    /** Adds 1 to a number in a file, again and again. */
    count(mutexName, file, rounds) {
        const mutex = new Mutex(mutexName);
        for (let round = 0; round !== Number(rounds); ++round) {
            mutex.run(() => fs.writeFileSync(file, String(Number(fs.readFileSync(file, 'utf8')) + 1)), GENEROUS_MS);
        }
    },

    /** Answers every signal with another. */
    echo(askedName, answeredName, rounds) {
        const asked = new Condition(askedName);
        const answered = new Condition(answeredName);
        for (let round = 0; round !== Number(rounds); ++round) {
            need(asked.wait(GENEROUS_MS));
            answered.signal();
        }
    },

    /**
     * Writes lines to a log that others write, too. The exit code is the number of lines that may have been given up:
     * that takes the log more than a second, and is not reported.
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
roles[role](...rest);
