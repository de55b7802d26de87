// Several processes increment a number in a file: run `node examples/shared-counter.js <file>` in several windows.
'use strict';

const fs = require('fs');

const { Mutex, log } = require('..');

const [file = 'counter.txt'] = process.argv.slice(2);
const mutex = new Mutex('vorel-example-counter');

function add() {
    const before = fs.existsSync(file) ? Number(fs.readFileSync(file, 'utf8')) : 0;
    fs.writeFileSync(file, String(before + 1));
    return before + 1;
}

log.path = `${file}.log`;
for (let round = 0; round !== 100; ++round) {
    mutex.run(add, 60000);
}
log.write('counter', `process ${process.pid} has added 100`);
console.log(fs.readFileSync(file, 'utf8'));
mutex.close();
