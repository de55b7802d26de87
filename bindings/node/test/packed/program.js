// Does the same as program.mjs, but uses `require`.
'use strict';

const { base64 } = require('vorelcore');

const { loadedDll } = require('./loaded.js');

console.log(base64.encode(Buffer.from('vorel')), loadedDll());
