// The error log of the process.
'use strict';

const { boolean, integer, string } = require('./arguments');
const native = require('./native');
const { BUFFER_OUT, OUT, TEXT } = native;

const setPath = native.declare('vorel_log_set_path', TEXT);
const getPath = native.declare('vorel_log_path', BUFFER_OUT);
const setLimit = native.declare('vorel_log_set_limit', 'int64_t');
const getLimit = native.declare('vorel_log_limit', OUT);
const writeLine = native.declare('vorel_log_write', TEXT, TEXT);
const writeDebug = native.declare('vorel_log_debug', TEXT, TEXT);
const setTarget = native.declare('vorel_log_set_debug_target', TEXT, 'int32_t');
const setThreadEnabled = native.declare('vorel_log_set_thread_enabled', 'int32_t');

const limitCell = native.cell('int64_t');

function write(prefix, message) {
    native.check(writeLine(string(prefix, 'prefix'), prefix.length, string(message, 'message'), message.length));
}

const log = Object.freeze({
    get path() {
        return native.textOutput((...out) => getPath(...out));
    },
    set path(path) {
        native.check(setPath(string(path, 'path'), path.length));
    },
    get limit() {
        native.check(getLimit(limitCell));
        return Number(limitCell[0]);
    },
    set limit(bytes) {
        native.check(setLimit(integer(bytes, -1, Number.MAX_SAFE_INTEGER, 'limit')));
    },
    write,
    warn: (message) => write('WARN', message),
    debug: (target, message) => native.check(
        writeDebug(string(target, 'target'), target.length, string(message, 'message'), message.length)),
    setDebugTarget: (target, active) =>
        native.check(setTarget(string(target, 'target'), target.length, boolean(active, 'active') ? 1 : 0)),
    setThreadEnabled: (enabled) => native.check(setThreadEnabled(boolean(enabled, 'enabled') ? 1 : 0)),
});

module.exports = { log };
