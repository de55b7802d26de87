'use strict';

const { base64, codePage, daylight, hex, url, utf8 } = require('./encodings');
const { Status, VorelError } = require('./errors');
const { Condition, Mutex } = require('./locks');
const { log } = require('./log');
const native = require('./native');
const { compare, currentTime, format, list, parse, scan, versionAtLeast } = require('./values');

const version = native.version();

// Node finds the names for `import { … }` in this literal. So the literal must contain only plain identifiers, and must
// not be an argument of a call.
module.exports = {
    version,
    Status,
    VorelError,
    utf8,
    base64,
    daylight,
    hex,
    codePage,
    url,
    parse,
    scan,
    format,
    currentTime,
    list,
    compare,
    versionAtLeast,
    log,
    Mutex,
    Condition,
};
Object.freeze(module.exports);
