// UTF-8, code pages, encodings of bytes as printable text, and URLs.
'use strict';

const constants = require('./constants');
const native = require('./native');
const { BYTES, BYTES_OUT, TEXT, TEXT_OUT, bytes, string } = native;

const utf8ToUtf16 = native.declare('vorel_utf8_to_utf16', BYTES, TEXT_OUT);
const utf16ToUtf8 = native.declare('vorel_utf16_to_utf8', TEXT, BYTES_OUT);
const codePageByName = native.declare('vorel_code_page_by_name', TEXT, '_Out_ int32_t *');
const codePageToUtf16 = native.declare('vorel_code_page_to_utf16', 'int32_t', BYTES, TEXT_OUT);
const utf16ToCodePage = native.declare('vorel_utf16_to_code_page', 'int32_t', TEXT, BYTES_OUT, '_Out_ int32_t *');
const hexEncode = native.declare('vorel_hex_encode', BYTES, 'int32_t', TEXT_OUT);
const urlEncode = native.declare('vorel_url_encode', TEXT, 'uint32_t', TEXT_OUT);
const urlEncodeComponent = native.declare('vorel_url_encode_component', TEXT, 'int32_t', TEXT_OUT);
const urlDecode = native.declare('vorel_url_decode', TEXT, 'uint32_t', TEXT_OUT);

function encoder(name) {
    const encode = native.declare(name, BYTES, TEXT_OUT);
    return (data) => native.textOutput((...out) => encode(...bytes(data, 'bytes'), ...out));
}

function decoder(name) {
    const decode = native.declare(name, TEXT, BYTES_OUT);
    return (text) => native.bytesOutput((...out) => decode(string(text, 'text'), text.length, ...out));
}

const utf8 = Object.freeze({
    encode: (text) => native.bytesOutput((...out) => utf16ToUtf8(string(text, 'text'), text.length, ...out)),
    decode: (data) => native.textOutput((...out) => utf8ToUtf16(...bytes(data, 'bytes'), ...out)),
});

const base64 = Object.freeze({
    encode: encoder('vorel_base64_encode'),
    decode: decoder('vorel_base64_decode'),
});

const daylight = Object.freeze({
    encode: encoder('vorel_daylight_encode'),
    decode: decoder('vorel_daylight_decode'),
});

const hex = Object.freeze({
    encode: (data, { upperCase = false } = {}) =>
        native.textOutput((...out) => hexEncode(...bytes(data, 'bytes'), upperCase ? 1 : 0, ...out)),
    decode: decoder('vorel_hex_decode'),
});

/** The number of a code page, given its number or name. */
function pageNumber(page) {
    if (typeof page === 'number') {
        return native.integer(page, 1, 65534, 'page');
    }
    return native.valueOutput((value) => codePageByName(string(page, 'page'), page.length, value));
}

function tryEncode(page, text) {
    const number = pageNumber(page);
    const replaced = [0];
    const data = native.bytesOutput(
        (...out) => utf16ToCodePage(number, string(text, 'text'), text.length, ...out, replaced));
    return { bytes: data, replaced: replaced[0] < 0 ? null : replaced[0] !== 0 };
}

const codePage = Object.freeze({
    find: (name) => pageNumber(string(name, 'name')),
    decode: (page, data) => {
        const number = pageNumber(page);
        return native.textOutput((...out) => codePageToUtf16(number, ...bytes(data, 'bytes'), ...out));
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
    encode: (text, { reserved = false, spaceAsPlus = false } = {}) => {
        const flags = (reserved ? constants.URL_ESCAPE_RESERVED : 0) |
            (spaceAsPlus ? constants.URL_SPACE_AS_PLUS : 0);
        return native.textOutput((...out) => urlEncode(string(text, 'text'), text.length, flags, ...out));
    },
    encodeComponent: (text, component) => {
        if (!Object.hasOwn(COMPONENTS, component)) {
            throw new TypeError(`component is not one of ${Object.keys(COMPONENTS).join(', ')}`);
        }
        return native.textOutput(
            (...out) => urlEncodeComponent(string(text, 'text'), text.length, COMPONENTS[component], ...out));
    },
    decode: (text, { plusAsSpace = false } = {}) => {
        const flags = plusAsSpace ? constants.URL_PLUS_AS_SPACE : 0;
        return native.textOutput((...out) => urlDecode(string(text, 'text'), text.length, flags, ...out));
    },
});

module.exports = { utf8, base64, daylight, hex, codePage, url };
