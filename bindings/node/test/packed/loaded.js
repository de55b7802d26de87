'use strict';

/** The path of the loaded vorelCore.dll, or of the program if the DLL is not loaded. */
function loadedDll() {
    const kernel = require('koffi').load('kernel32.dll');
    const handleOf = kernel.func('void *GetModuleHandleW(const char16_t *)');
    const pathOf = kernel.func('uint32_t GetModuleFileNameW(void *, _Out_ uint16_t *, uint32_t)');
    const units = new Uint16Array(1024);
    const length = pathOf(handleOf('vorelCore.dll'), units, units.length);
    return Buffer.from(units.buffer, 0, length * 2).toString('utf16le');
}

module.exports = { loadedDll };
