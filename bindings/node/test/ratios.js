// Compares the speed of the package with the speed of Node's own functions: `test/run ratios <folder> <dll>`. V8 joins
// the pieces of a long text only when the text is read. So base64.encode is measured twice: with a read of its result,
// and without the read.
'use strict';

const { base64, hex, parse, scan } = require('..');
const { shortestTimes } = require('./support');

const ROUNDS = 40;

function measure(name, calls, own, peer) {
    const [ownUs, peerUs] = shortestTimes(ROUNDS, calls, own, peer);
    console.log(`${name.padEnd(22)} ${ownUs.toFixed(2).padStart(10)} us ${peerUs.toFixed(2).padStart(10)} us ` +
        `ratio ${(ownUs / peerUs).toFixed(2)}`);
}

const bytes = Buffer.from(Array.from({ length: 1000000 }, (_, index) => index * 7 % 251));
const base64Text = bytes.toString('base64');
const hexText = bytes.toString('hex');

measure('base64.encode 1 MB', 4,
    () => base64.encode(bytes).charCodeAt(7), () => bytes.toString('base64').charCodeAt(7));
measure('base64.encode, unread', 4, () => base64.encode(bytes), () => bytes.toString('base64'));
measure('base64.decode 1 MB', 4, () => base64.decode(base64Text), () => Buffer.from(base64Text, 'base64'));
measure('hex.encode 1 MB', 4, () => hex.encode(bytes).charCodeAt(7), () => bytes.toString('hex').charCodeAt(7));
measure('hex.decode 1 MB', 4, () => hex.decode(hexText), () => Buffer.from(hexText, 'hex'));
measure('parse.int32', 5000, () => parse.int32('12345'), () => Number.parseInt('12345', 10));
measure('scan.int32', 5000, () => scan.int32('12345'), () => Number.parseInt('12345', 10));
