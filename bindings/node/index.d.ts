/// <reference types="node" />

/**
 * vorelCore for Node on Windows: conversions, the shared error log, named mutexes and conditions.
 *
 * Everything throws a `VorelError` when the library reports a failure, a `TypeError` or a `RangeError` for an argument
 * of the wrong kind. Texts may have zeros in them only where that is said.
 */

/** The version of the loaded library, "0.1.0" for instance. */
export const version: string;

/** The numbers of the library's failures. */
export const Status: {
    readonly OK: 0;
    readonly INVALID_ARGUMENT: 1;
    readonly BUFFER_TOO_SMALL: 2;
    readonly OUT_OF_MEMORY: 3;
    readonly INVALID_TEXT: 4;
    readonly UNKNOWN_NAME: 5;
    readonly UNSUPPORTED: 6;
    readonly TIMEOUT: 7;
    readonly NOT_OWNER: 8;
    readonly SYSTEM: 9;
    readonly INTERNAL: 10;
};

/** A failure that the library has reported; the message is its own. */
export class VorelError extends Error {
    constructor(status: number, code: string, message?: string);
    readonly name: 'VorelError';
    /** One of `Status`. */
    readonly status: number;
    /** Its name, "VOREL_ERROR_TIMEOUT" for instance. */
    readonly code: string;
}

// ---- Encodings ------------------------------------------------------------------------------------------------------

/** Bytes as text and back. An array counts with its real length, whatever its property `length` says. */
export interface BinaryText {
    encode(bytes: Uint8Array): string;
    decode(text: string): Buffer;
}

/** The library's UTF-8, which takes sequences of one to six bytes and checks very little. Zeros are text. */
export const utf8: {
    /** A surrogate that is not part of a pair becomes "?". */
    encode(text: string): Buffer;
    decode(bytes: Uint8Array): string;
};

/** Standard Base64; the decoder passes over white space, and ignores what follows the padding. */
export const base64: BinaryText;

/** The Daylight encoding of bit strings. */
export const daylight: BinaryText;

/** Two digits for each byte; the decoder takes either case, and "0x" in front. */
export const hex: {
    encode(bytes: Uint8Array, options?: { upperCase?: boolean }): string;
    decode(text: string): Buffer;
};

/** The code pages of Windows, each by its number or by one of its names. Zeros are text. */
export const codePage: {
    /** The number of the code page of this name, in any case. */
    find(name: string): number;
    decode(page: number | string, bytes: Uint8Array): string;
    /** What the code page has no character for becomes a similar one, or its default character. */
    encode(page: number | string, text: string): Buffer;
    /** The same; `replaced` says whether the default character was used, null when the code page does not tell. */
    tryEncode(page: number | string, text: string): { bytes: Buffer; replaced: boolean | null };
};

export type UrlComponent = 'path' | 'pathSegment' | 'query' | 'queryParameter';

/** Percent-encoding through UTF-8. */
export const url: {
    encode(text: string, options?: { reserved?: boolean; spaceAsPlus?: boolean }): string;
    /** Escapes what may not stand in that part of a URL. */
    encodeComponent(text: string, component: UrlComponent): string;
    decode(text: string, options?: { plusAsSpace?: boolean }): string;
};

// ---- Values ---------------------------------------------------------------------------------------------------------

/** From `start` to `end`, both included; null stands for an end that is open. */
export interface Range {
    start: number | null;
    end: number | null;
}

/** A whole text as one value, or as a list of values. What does not fit into the bits wraps around. */
export const parse: {
    int32(text: string): number;
    uint32(text: string): number;
    int64(text: string): bigint;
    uint64(text: string): bigint;
    /** One to eight hexadecimal digits. */
    hex(text: string): number;
    double(text: string): number;
    boolean(text: string): boolean;
    /** Between commas. */
    int32List(text: string): number[];
    uint32List(text: string): number[];
    /** Between white space; what is no number is passed over. */
    doubleList(text: string): number[];
    booleanList(text: string): boolean[];
    /** "1-5,7,12-". */
    ranges(text: string): Range[];
};

/** A value, and how many units of the text it took. */
export interface Scanned<T> {
    value: T;
    used: number;
}

/** The value at the beginning of a text; a text without one gives 0, or false. */
export const scan: {
    int32(text: string): Scanned<number>;
    uint32(text: string): Scanned<number>;
    int64(text: string): Scanned<bigint>;
    uint64(text: string): Scanned<bigint>;
    hex(text: string): Scanned<number>;
    double(text: string): Scanned<number>;
    boolean(text: string): Scanned<boolean>;
};

/** Values as text, in the same form on every machine. */
export const format: {
    int64(value: number | bigint): string;
    uint64(value: number | bigint): string;
    double(value: number, options?: { json?: boolean }): string;
    /** A date, or whole seconds since 1970, as "Fri Feb 13 23:31:30 2009". */
    localTime(time: Date | number): string;
    utcTime(time: Date | number): string;
    /** The system's text for one of its error codes. */
    systemError(code: number): string;
};

/** Microseconds since 1970-01-01 UTC. */
export function currentTime(): bigint;

/** Lists of texts in one text. */
export const list: {
    /** The pieces between the occurrences of the whole delimiter. */
    cut(text: string, delimiter: string): string[];
    /** The pieces between the characters of `delimiters` (a comma), which items in double quotes may hold. */
    split(text: string, delimiters?: string, options?: { trim?: boolean }): string[];
    /** What `split` takes apart again. */
    join(items: Iterable<string>, delimiter?: string): string;
};

export interface CompareOptions {
    /** A to Z, and no other letters, equal a to z. */
    ignoreCase?: boolean;
    /** Runs of digits are compared as numbers: the natural order. */
    numeric?: boolean;
    slashesEqual?: boolean;
    reverse?: boolean;
}

/** For `Array.prototype.sort`: below 0, 0 or above 0, as `a` comes before, is equal to, or comes behind `b`. */
export function compare(a: string, b: string, options?: CompareOptions): number;

/** Whether a version is at least the required one, number by number. */
export function versionAtLeast(version: string, required: string): boolean;

// ---- The error log --------------------------------------------------------------------------------------------------

/** The error log of the process. A line that cannot be written is dropped without a word. */
export const log: {
    /** The file; the empty text stands for the default one. */
    path: string;
    /** The size in bytes beyond which the file is moved to its backup; 0: no log, -1: no limit. */
    limit: number;
    /** "prefix: message". */
    write(prefix: string, message: string): void;
    /** "WARN: message". */
    warn(message: string): void;
    /** "DEBUG: target: message", while the target is switched on. */
    debug(target: string, message: string): void;
    /** Belongs to the start of a program. */
    setDebugTarget(target: string, active: boolean): void;
    /** Keeps the lines of this thread out of the log (false), or lets them in again. */
    setThreadEnabled(enabled: boolean): void;
};

// ---- Locks ----------------------------------------------------------------------------------------------------------

/**
 * A recursive lock that all processes of the machine share. It belongs to the thread that took it, so that there is no
 * asynchronous form: while it waits, the event loop stands still.
 *
 *     mutex.run(() => fs.appendFileSync(path, line), 5000);
 */
export class Mutex {
    /** Opens the mutex of this name, or creates it. */
    constructor(name: string);
    readonly name: string;
    readonly closed: boolean;
    /** Waits without a limit, or for so many milliseconds; then it throws, with the code "VOREL_ERROR_TIMEOUT". */
    lock(timeoutMs?: number): void;
    /** Takes the mutex if that needs no waiting, and says whether it did. */
    tryLock(): boolean;
    /** Gives back what one `lock` took. */
    unlock(): void;
    /** Runs a synchronous action under the lock, and returns its result. */
    run<T>(action: () => T, timeoutMs?: number): T;
    /** Gives back every hold and closes the mutex; may be called again. From Node 20 on, `using` calls it. */
    close(): void;
}

/**
 * A condition that any process of the machine can signal and wait for. A signal releases one waiter, or the next one to
 * come. "Global\" in front of the name makes it machine-wide.
 */
export class Condition {
    constructor(name: string);
    readonly name: string;
    readonly closed: boolean;
    signal(): void;
    /** Waits without a limit, or for so many milliseconds, and says whether there was a signal. The event loop waits. */
    wait(timeoutMs?: number): boolean;
    /**
     * The same while the event loop goes on. There may be any number of such waits; from the third one on, and in a
     * Worker, a wait checks for a signal every 10 ms.
     */
    waitAsync(timeoutMs?: number): Promise<boolean>;
    /** Throws while a `waitAsync` is under way; may be called again. */
    close(): void;
}
