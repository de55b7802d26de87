// Prints the results of some conversions: node examples/convert.js
'use strict';

const { VorelError, base64, compare, format, list, parse, url } = require('..');

console.log(base64.encode(Buffer.from('vorel')));
console.log(url.encodeComponent('a=b c', 'queryParameter'));
console.log(list.split('one,"two, three",four'));
console.log(parse.ranges('1-5,7,12-'));
console.log(format.double(1 / 3), format.double(0.05, { json: true }));
console.log(['file10', 'file9', 'File1'].sort((a, b) => compare(a, b, { numeric: true, ignoreCase: true })));

try {
    parse.int32('twelve');
} catch (error) {
    if (!(error instanceof VorelError)) {
        throw error;
    }
    console.log(`${error.code}: ${error.message}`);
}
