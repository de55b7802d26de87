'use strict';

const { Status, VorelError } = require('./errors');
const native = require('./native');

module.exports = Object.freeze({
    version: native.version(),
    Status,
    VorelError,
    ...require('./encodings'),
    ...require('./values'),
    ...require('./log'),
    ...require('./locks'),
});
