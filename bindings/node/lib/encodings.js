// UTF-8, code pages, encodings of bytes as printable text, and URLs.
'use strict';

const { byteLength, integer, invalidValue, options, string, viewOf } = require('./arguments');
const constants = require('./constants');
const native = require('./native');
const { BUFFER_OUT, BYTES, OUT, TEXT } = native;

const utf8ToUtf16 = native.declare('vorel_utf8_to_utf16', BYTES, BUFFER_OUT);
const utf16ToUtf8 = native.declare('vorel_utf16_to_utf8', TEXT, BUFFER_OUT);
const codePageByName = native.declare('vorel_code_page_by_name', TEXT, OUT);
const codePageToUtf16 = native.declare('vorel_code_page_to_utf16', 'int32_t', BYTES, BUFFER_OUT);
const utf16ToCodePage = native.declare('vorel_utf16_to_code_page', 'int32_t', TEXT, BUFFER_OUT, OUT);
const base64Encode = native.declare('vorel_base64_encode', BYTES, BUFFER_OUT);
const daylightEncode = native.declare('vorel_daylight_encode', BYTES, BUFFER_OUT);
const hexEncode = native.declare('vorel_hex_encode', BYTES, 'int32_t', BUFFER_OUT);
const urlEncode = native.declare('vorel_url_encode', TEXT, 'uint32_t', BUFFER_OUT);
const urlEncodeComponent = native.declare('vorel_url_encode_component', TEXT, 'int32_t', BUFFER_OUT);
const urlDecode = native.declare('vorel_url_decode', TEXT, 'uint32_t', BUFFER_OUT);

// `encodePieces` encodes at most this number of bytes with one call of the library. The only exception is an input
// that the library rejects because it is too long. The text of PIECE_BYTES bytes has at most two units for each byte,
// so the text of a piece fits into the buffer of FIRST_UNITS units that all calls share (see native.js). This text is
// still in the processor's cache when it is converted to a string. Base64 encodes three bytes at a time. PIECE_BYTES is
// a multiple of three, so the texts of all pieces except the last have no padding and can be concatenated.
const PIECE_BYTES = 3 * Math.floor(native.FIRST_UNITS / 6);

/** Encodes bytes piece by piece and concatenates the texts of the pieces. `encode` must be Base64 or hexadecimal. */
function encodePieces(encode, bytes) {
    const size = byteLength(bytes, 'bytes');
    if (size <= PIECE_BYTES || size > constants.MOST_UNITS) {
        return native.textOutput((...out) => encode(bytes, size, ...out));
    }
    let text = '';
    for (let start = 0; start < size; start += PIECE_BYTES) {
        const piece = viewOf(bytes, start, Math.min(PIECE_BYTES, size - start));
        text += native.textOutput((...out) => encode(piece, piece.length, ...out));
    }
    return text;
}

function decoder(name, bytesPerUnit) {
    const decode = native.declare(name, TEXT, BUFFER_OUT);
    return (text) => {
        const { length } = string(text, 'text');
        return native.bytesOutput((...out) => decode(text, length, ...out), Math.ceil(length * bytesPerUnit));
    };
}

const utf8 = Object.freeze({
    encode: (text) => native.bytesOutput((...out) => utf16ToUtf8(string(text, 'text'), text.length, ...out)),
    decode: (bytes) => {
        const size = byteLength(bytes, 'bytes');
        return native.textOutput((...out) => utf8ToUtf16(bytes, size, ...out));
    },
});

const base64 = Object.freeze({
    encode: (bytes) => encodePieces(base64Encode, bytes),
    decode: decoder('vorel_base64_decode', 3 / 4),
});

const daylight = Object.freeze({
    encode: (bytes) => {
        const size = byteLength(bytes, 'bytes');
        return native.textOutput((...out) => daylightEncode(bytes, size, ...out));
    },
    decode: decoder('vorel_daylight_decode', 3 / 4),
});

const hex = Object.freeze({
    encode: (bytes, given) => {
        const { upperCase = false } = options(given, 'upperCase');
        const encode = (data, size, ...out) => hexEncode(data, size, upperCase ? 1 : 0, ...out);
        return encodePieces(encode, bytes);
    },
    decode: decoder('vorel_hex_decode', 1 / 2),
});

const pageCell = native.cell('int32_t');

/** Returns the number of a code page. `page` is its number or its name. */
function pageNumber(page) {
    if (typeof page === 'number') {
        return integer(page, 1, 65534, 'page');
    }
    native.check(codePageByName(string(page, 'page'), page.length, pageCell));
    return pageCell[0];
}

const replacedCell = native.cell('int32_t');

function tryEncode(page, text) {
    const number = pageNumber(page);
    const bytes = native.bytesOutput(
        (...out) => utf16ToCodePage(number, string(text, 'text'), text.length, ...out, replacedCell));
    return { bytes, replaced: replacedCell[0] < 0 ? null : replacedCell[0] !== 0 };
}

const codePage = Object.freeze({
    find: (name) => pageNumber(string(name, 'name')),
    decode: (page, bytes) => {
        const number = pageNumber(page);
        const size = byteLength(bytes, 'bytes');
        return native.textOutput((...out) => codePageToUtf16(number, bytes, size, ...out));
    },
    encode: (page, text) => tryEncode(page, text).bytes,
    tryEncode,
});

const COMPONENTS = {
    path: constants.URL_PATH,
    pathSegment: constants.URL_PATH_SEGMENT,
    query: constants.URL_QUERY,
    queryParameter: constants.URL_QUERY_PARAMETER,
};

const url = Object.freeze({
    encode: (text, given) => {
        const { reserved = false, spaceAsPlus = false } = options(given, 'reserved', 'spaceAsPlus');
        const flags = (reserved ? constants.URL_ESCAPE_RESERVED : 0) |
            (spaceAsPlus ? constants.URL_SPACE_AS_PLUS : 0);
        return native.textOutput((...out) => urlEncode(string(text, 'text'), text.length, flags, ...out));
    },
    encodeComponent: (text, component) => {
        if (!Object.hasOwn(COMPONENTS, string(component, 'component'))) {
            throw invalidValue('component', `must be one of ${Object.keys(COMPONENTS).join(', ')}`, component);
        }
        return native.textOutput(
            (...out) => urlEncodeComponent(string(text, 'text'), text.length, COMPONENTS[component], ...out));
    },
    decode: (text, given) => {
        const { plusAsSpace = false } = options(given, 'plusAsSpace');
        const flags = plusAsSpace ? constants.URL_PLUS_AS_SPACE : 0;
        return native.textOutput((...out) => urlDecode(string(text, 'text'), text.length, flags, ...out));
    },
});

module.exports = { utf8, base64, daylight, hex, codePage, url };
