/// <reference types="node" />
/// <reference lib="esnext.disposable" />

/**
 * vorelCore for Node on Windows: conversions, the shared error log, named mutexes and conditions.
 *
 * Every function throws a `VorelError` if the library reports a failure. For an invalid argument it throws a
 * `TypeError` or a `RangeError` with the `code` that Node uses: "ERR_INVALID_ARG_TYPE", "ERR_INVALID_ARG_VALUE" or
 * "ERR_OUT_OF_RANGE". An unknown option is an invalid argument. `runAsync` and `waitAsync` also throw for an invalid
 * argument, but reject their promise for a failure of the library.
 *
 * A text may contain U+0000 only where the documentation of a function allows it. An input of more than
 * 268,435,456 bytes or UTF-16 code units is rejected ("VOREL_ERROR_INVALID_ARGUMENT"). A string of Node has at most
 * 536,870,888 code units. If a result is longer, the function throws a `RangeError` or an `Error`.
 */

/** The version of the loaded library, for example "0.1.0". */
export const version: string;

/** The status codes of the library. */
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

/**
 * A failure with a status of the library. A message of the library has at most 500 UTF-16 code units. If a mutex cannot
 * be opened, the text of the system follows the message. A few messages are from this package.
 */
export class VorelError extends Error {
    constructor(status: number, code: string, message?: string);
    readonly name: 'VorelError';
    /** One of `Status`. */
    readonly status: number;
    /** The name of the status, for example "VOREL_ERROR_TIMEOUT". */
    readonly code: string;
}

// ---- Encodings ------------------------------------------------------------------------------------------------------

/**
 * Encodes bytes as text, and decodes the text. If an object or a subclass redefines the property `length` of a
 * Uint8Array, the functions use the actual length.
 */
export interface BinaryText {
    encode(bytes: Uint8Array): string;
    decode(text: string): Buffer;
}

/**
 * UTF-8 by the rules of the library. `decode` does not check the bytes after the first byte of a character, accepts old
 * sequences of six bytes, and rejects the characters U+40000 to U+7FFFF and U+C0000 to U+FFFFF. Texts may contain zero
 * characters.
 */
export const utf8: {
    /** An unpaired surrogate becomes "?". */
    encode(text: string): Buffer;
    decode(bytes: Uint8Array): string;
};

/** Standard Base64. The decoder skips white space and ignores text after the padding. */
export const base64: BinaryText;

/** The Daylight encoding: bytes as the characters . + 0-9 A-Z a-z. */
export const daylight: BinaryText;

/** Two hexadecimal digits for each byte. The decoder accepts both cases and a leading "0x". */
export const hex: {
    encode(bytes: Uint8Array, options?: { upperCase?: boolean }): string;
    decode(text: string): Buffer;
};

/** The code pages of Windows, by number (1 to 65534) or by name. A text may contain U+0000, but a name may not. */
export const codePage: {
    /**
     * The number of a code page. The case of its name is ignored. Does not check whether the system supports the code
     * page.
     */
    find(name: string): number;
    decode(page: number | string, bytes: Uint8Array): string;
    /**
     * Encodes a text. If the code page lacks a character, a similar character or the default character of the code page
     * replaces it.
     */
    encode(page: number | string, text: string): Buffer;
    /**
     * Encodes like `encode`. `replaced` is true if the default character was used, and null if the code page does not
     * report this.
     */
    tryEncode(page: number | string, text: string): { bytes: Buffer; replaced: boolean | null };
};

export type UrlComponent = 'path' | 'pathSegment' | 'query' | 'queryParameter';

/** Percent-encoding of the UTF-8 form of a text. */
export const url: {
    /**
     * Escapes a text. If `reserved` is true, $ & + , / : ; = ? @ are also escaped. If `spaceAsPlus` is true, a space
     * becomes "+".
     */
    encode(text: string, options?: { reserved?: boolean; spaceAsPlus?: boolean }): string;
    /** Escapes the characters that are not allowed in this component of a URL. */
    encodeComponent(text: string, component: UrlComponent): string;
    /** Decodes escapes. If `plusAsSpace` is true, "+" becomes a space. */
    decode(text: string, options?: { plusAsSpace?: boolean }): string;
};

// ---- Values ---------------------------------------------------------------------------------------------------------

/** From `start` to `end`, inclusive. Null means that the range has no limit on this side. */
export interface Range {
    start: number | null;
    end: number | null;
}

/**
 * Parses a whole text as a value or a list of values. White space may surround a number and may precede a Boolean
 * value. An integer may end in a point and zeros ("12.0"). Integers out of range wrap around, but `uint32` and `uint64`
 * reject "-".
 */
export const parse: {
    int32(text: string): number;
    uint32(text: string): number;
    int64(text: string): bigint;
    uint64(text: string): bigint;
    /** One to eight hexadecimal digits, without "0x". */
    hex(text: string): number;
    double(text: string): number;
    /** One of true, false, yes, no, 0, 1, t, f, y, n, in upper or lower case. */
    boolean(text: string): boolean;
    /**
     * Parses integers separated by commas or white space. Fractions are dropped. An empty item is 0, even the empty
     * item between a comma and a space: the result for "1, 2" is 1, 0, 2. No item follows a comma at the end.
     */
    int32List(text: string): number[];
    /** Parses a list like `int32List`, but as unsigned integers. A negative number wraps around. */
    uint32List(text: string): number[];
    /**
     * Parses numbers separated by white space. Words that are not numbers are skipped, but a word of 80 or more
     * characters is rejected.
     */
    doubleList(text: string): number[];
    /**
     * Parses values separated by white space: true, t, false and f in upper or lower case, and integers. Other words
     * are skipped, even "yes", but a word of 80 or more characters is rejected.
     */
    booleanList(text: string): boolean[];
    /**
     * Parses ranges separated by commas, for example "1-5,7,12-". A number is a range from the number to itself. Empty
     * items are skipped.
     */
    ranges(text: string): Range[];
};

/** A value and the number of UTF-16 code units that were read. */
export interface Scanned<T> {
    value: T;
    used: number;
}

/**
 * Skips white space and reads the value that follows. If no value follows, the result is 0 or false. If an integer
 * follows, `used` includes the white space before and after it.
 */
export const scan: {
    int32(text: string): Scanned<number>;
    uint32(text: string): Scanned<number>;
    int64(text: string): Scanned<bigint>;
    uint64(text: string): Scanned<bigint>;
    hex(text: string): Scanned<number>;
    double(text: string): Scanned<number>;
    /**
     * Unlike the other functions, accepts a value only if it is the whole rest of the text: the result for "true x" is
     * false. Also accepts on, off, and integers.
     */
    boolean(text: string): Scanned<boolean>;
};

/** Formats values as text. Only the text of `systemError` depends on the user's language. */
export const format: {
    /** Formats a whole number from -2^63 to 2^63 - 1. */
    int64(value: number | bigint): string;
    /** Formats a whole number from 0 to 2^64 - 1. */
    uint64(value: number | bigint): string;
    /** Formats a number with at most fifteen significant digits. If `json` is true, the text is a valid JSON value. */
    double(value: number, options?: { json?: boolean }): string;
    /** Formats a date or whole seconds since 1970 in local time, for example "Fri Feb 13 23:31:30 2009". */
    localTime(time: Date | number): string;
    /** Formats like `localTime`, but in UTC. */
    utcTime(time: Date | number): string;
    /** The system's text for a system error code; empty if the system has no text for the code. */
    systemError(code: number): string;
};

/** The current time in microseconds since 1970-01-01 UTC. */
export function currentTime(): bigint;

/** Splits and joins lists of texts. */
export const list: {
    /** Splits at each occurrence of the whole delimiter. A delimiter at the end adds no item. */
    cut(text: string, delimiter: string): string[];
    /**
     * Splits at each character of `delimiters` (default: a comma), except in items in double quotes. In such an item,
     * two double quotes are one. A delimiter at the end adds no item. If `trim` is true, white space at both ends of
     * each item is removed.
     */
    split(text: string, delimiters?: string, options?: { trim?: boolean }): string[];
    /**
     * Joins items with `delimiter` (default: a comma). If the delimiter is one character other than a double quote,
     * `split` with this delimiter returns the same items, with two exceptions. An empty last item is lost. If
     * there is only one item, and it begins and ends with a double quote, it is not quoted again, so `split` may return
     * another text.
     */
    join(items: Iterable<string>, delimiter?: string): string;
};

export interface CompareOptions {
    /** Ignores the case of A to Z, but not of other letters. */
    ignoreCase?: boolean;
    /** Natural order: compares runs of digits as numbers. */
    numeric?: boolean;
    /** Treats "/" and "\" as equal. */
    slashesEqual?: boolean;
    /** Reverses the order: compares `b` with `a`. */
    reverse?: boolean;
}

/** Returns a negative number, 0 or a positive number if `a` is before, equal to or after `b`. */
export function compare(a: string, b: string, options?: CompareOptions): number;

/**
 * Whether a version is at least the required version. The versions are compared number by number. If all numbers of
 * `version` are equal to the first numbers of `required`, and `required` has more numbers, the result is false, even if
 * these numbers are zero: "1.2" is not at least "1.2.0". The result is also false if either text is empty.
 */
export function versionAtLeast(version: string, required: string): boolean;

// ---- The error log --------------------------------------------------------------------------------------------------

/** The error log of the process. A line that cannot be written is silently dropped. */
export const log: {
    /**
     * The path of the log file. Set it to the empty text for the default path. The code page of the process must have
     * all characters of the path, and the path has at most 1023 bytes in this code page.
     */
    path: string;
    /**
     * The size in bytes above which the file is moved to its backup, at most `Number.MAX_SAFE_INTEGER`; initially
     * 1,000,000. 0 disables the log, and -1 removes the limit.
     */
    limit: number;
    /** Writes the line "prefix: message", or only the message if the prefix is empty. */
    write(prefix: string, message: string): void;
    /** Writes the line "WARN: message". */
    warn(message: string): void;
    /** Writes the line "DEBUG: target: message" if the target is switched on. */
    debug(target: string, message: string): void;
    /** Switches a debug target on or off. The name is case-sensitive. */
    setDebugTarget(target: string, active: boolean): void;
    /** Switches logging off or on for this thread, including the lines that the library writes for failures. */
    setThreadEnabled(enabled: boolean): void;
};

// ---- Locks ----------------------------------------------------------------------------------------------------------

/** The type of a result that `Mutex.run` accepts: any type except a promise. */
export type Synchronous<T> = T extends PromiseLike<unknown> ? never : T;

/**
 * A recursive lock that all processes of the machine share. In Windows, a mutex belongs to the thread that locked it.
 * The synchronous functions block the event loop. With `runAsync`, the mutex belongs to the calling task, so other
 * tasks of the same thread cannot lock it either.
 *
 *     mutex.run(() => fs.appendFileSync(path, line), 5000);
 *     await mutex.runAsync(() => fs.promises.appendFile(path, line), 5000);
 *
 * Time limits are whole numbers from 0 to 4,294,967,294 milliseconds (49 days); undefined means no limit.
 */
export class Mutex {
    /**
     * Opens or creates the mutex of this name: 1 to 252 UTF-16 code units, without a backslash. If the mutex cannot be
     * opened within a second, throws "VOREL_ERROR_SYSTEM" with the text of the system.
     */
    constructor(name: string);
    readonly name: string;
    readonly closed: boolean;
    /**
     * Locks the mutex. Throws "VOREL_ERROR_TIMEOUT" after `timeoutMs` milliseconds, and "ERR_INVALID_STATE" at once
     * while another task of this thread holds the mutex with `runAsync`.
     */
    lock(timeoutMs?: number): void;
    /**
     * Locks the mutex unless another process, another thread or a `runAsync` of another task holds it. Returns whether
     * this call locked the mutex.
     */
    tryLock(): boolean;
    /**
     * Undoes one `lock` or one successful `tryLock`. Throws "VOREL_ERROR_NOT_OWNER" if the calling thread does not hold
     * the mutex through this object, or another task of the thread holds the mutex with `runAsync`.
     */
    unlock(): void;
    /**
     * Runs a synchronous action under the lock and returns its result. An asynchronous function is rejected before it
     * runs ("ERR_INVALID_ARG_VALUE"). If the result is a promise, the call fails after the action
     * ("ERR_INVALID_RETURN_VALUE").
     */
    run<T>(action: () => Synchronous<T>, timeoutMs?: number): T;
    /**
     * Runs an action under the lock and resolves to its result. The lock is released when the promise of the action is
     * settled. Does not block the event loop: while another process or thread holds the mutex, the call tries again
     * every 10 ms. Tasks of this thread get the mutex one after the other, not always in the order of their calls. The
     * action may lock the mutex again, with any of these functions. Rejects with "VOREL_ERROR_TIMEOUT" after
     * `timeoutMs` milliseconds.
     */
    runAsync<T>(action: () => T | PromiseLike<T>, timeoutMs?: number): Promise<T>;
    /**
     * Releases every lock of this object and closes it. Later calls of `close` do nothing, and all other functions then
     * throw "ERR_INVALID_STATE". Throws while a `runAsync` is in progress. In versions of Node that support `using`,
     * `using` also calls `close`.
     */
    close(): void;
    [Symbol.dispose](): void;
}

/**
 * A condition that processes can signal and wait for. A signal releases one waiter. If nobody is waiting, one signal is
 * kept for the next waiter. If the name begins with "Global\", all sessions of the machine share the condition. The
 * time limits have the same range as for `Mutex`.
 */
export class Condition {
    /** Opens or creates the condition of this name: 1 to 259 UTF-16 code units. */
    constructor(name: string);
    readonly name: string;
    readonly closed: boolean;
    signal(): void;
    /** Waits up to `timeoutMs` milliseconds and returns whether there was a signal. Blocks the event loop. */
    wait(timeoutMs?: number): boolean;
    /**
     * Waits like `wait`, without blocking the event loop. The number of such waits is not limited. At most two waits at
     * a time use a thread of Node's pool, and return as soon as there is a signal. All other waits, and all waits in a
     * Worker, check for a signal every 10 ms.
     */
    waitAsync(timeoutMs?: number): Promise<boolean>;
    /**
     * Closes the condition. Later calls of `close` do nothing, and all other functions then throw "ERR_INVALID_STATE".
     * Throws while a `waitAsync` is in progress.
     */
    close(): void;
    [Symbol.dispose](): void;
}
