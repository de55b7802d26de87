// Uses the functions and classes of index.d.ts. This program is compiled, but never run.
import * as vorel from '..';

const texts: string[] = [
    vorel.version,
    vorel.utf8.decode(new Uint8Array(1)),
    vorel.base64.encode(Buffer.from('a')),
    vorel.daylight.encode(Buffer.from('a')),
    vorel.hex.encode(Buffer.from('a'), { upperCase: true }),
    vorel.codePage.decode('latin1', Buffer.from('a')),
    vorel.url.encode('a', { reserved: true, spaceAsPlus: true }),
    vorel.url.encodeComponent('a', 'queryParameter'),
    vorel.url.decode('a', { plusAsSpace: true }),
    vorel.format.int64(1n),
    vorel.format.uint64(1),
    vorel.format.double(0.5, { json: true }),
    vorel.format.localTime(new Date()),
    vorel.format.utcTime(0),
    vorel.format.systemError(2),
    ...vorel.list.cut('a::b', '::'),
    ...vorel.list.split('a,b', ',', { trim: true }),
    vorel.list.join(new Set(['a'])),
    vorel.log.path,
];

const buffers: Buffer[] = [
    vorel.utf8.encode('a'),
    vorel.base64.decode('QQ=='),
    vorel.daylight.decode('3'),
    vorel.hex.decode('00'),
    vorel.codePage.encode(1252, 'a'),
    vorel.codePage.tryEncode(1252, 'a').bytes,
];

const replaced: boolean | null = vorel.codePage.tryEncode(1252, 'a').replaced;

const numbers: number[] = [
    vorel.codePage.find('latin1'),
    vorel.parse.int32('1'),
    vorel.parse.uint32('1'),
    vorel.parse.hex('f'),
    vorel.parse.double('1'),
    ...vorel.parse.int32List('1'),
    ...vorel.parse.uint32List('1'),
    ...vorel.parse.doubleList('1'),
    vorel.scan.int32('1').value,
    vorel.scan.hex('1').used,
    vorel.compare('a', 'b', { ignoreCase: true, numeric: true, slashesEqual: true, reverse: true }),
    vorel.log.limit,
    vorel.Status.TIMEOUT,
];

const wide: bigint[] = [vorel.parse.int64('1'), vorel.parse.uint64('1'), vorel.scan.int64('1').value,
    vorel.scan.uint64('1').value, vorel.currentTime()];

const truths: boolean[] = [vorel.parse.boolean('t'), ...vorel.parse.booleanList('t'), vorel.scan.boolean('t').value,
    vorel.versionAtLeast('1.2', '1.1')];

const ends: (number | null)[] = vorel.parse.ranges('1-').map((range) => range.end);

vorel.log.path = 'errors.txt';
vorel.log.limit = -1;
vorel.log.write('Import', 'done');
vorel.log.warn('low on paper');
vorel.log.debug('paper', 'low');
vorel.log.setDebugTarget('paper', true);
vorel.log.setThreadEnabled(false);

const mutex = new vorel.Mutex('a');
const result: number = mutex.run(() => 1, 1000);
const later: Promise<number> = mutex.runAsync(async () => 1, 1000);
const alsoLater: Promise<string> = mutex.runAsync(() => 'a');
const taken: boolean = mutex.tryLock();
mutex.lock();
mutex.unlock();
mutex.close();
const disposable: Disposable = mutex;

const condition = new vorel.Condition('a');
const signalled: Promise<boolean> = condition.waitAsync(1);
const now: boolean = condition.wait(0);
condition.signal();
condition.close();

try {
    vorel.parse.int32('x');
} catch (error) {
    if (error instanceof vorel.VorelError) {
        const details: [string, string, number] = [error.code, error.message, error.status];
        texts.push(details[0]);
    }
}

// @ts-expect-error: a number is not a string
vorel.parse.int32(1);
// @ts-expect-error: unknown component
vorel.url.encodeComponent('a', 'fragment');
// @ts-expect-error: `run` does not accept an asynchronous function, because `run` unlocks before the function ends
mutex.run(async () => 1);
// @ts-expect-error: unknown option
vorel.hex.encode(Buffer.from('a'), { uppercase: true });
// @ts-expect-error: a string is not a Uint8Array
vorel.base64.encode('a');

export { texts, buffers, replaced, numbers, wide, truths, ends, result, later, alsoLater, taken, signalled, now, mutex };
