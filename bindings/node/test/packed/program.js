// The same with `require`.
'use strict';

const { base64 } = require('vorelcore');

const { loadedDll } = require('./loaded.js');

console.log(base64.encode(Buffer.from('vorel')), loadedDll());
