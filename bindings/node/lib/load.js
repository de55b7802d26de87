// Finds and loads vorelCore.dll.
'use strict';

const fs = require('fs');
const path = require('path');

const { coded } = require('./arguments');

const FILE_NAME = 'vorelCore.dll';
const PLATFORM_PACKAGE = 'vorelcore-win32-x64';

const ERROR_MOD_NOT_FOUND = 126;

if (process.platform !== 'win32' || process.arch !== 'x64') {
    throw coded(new Error(`vorelcore needs Windows on x64; this is ${process.platform} on ${process.arch}`),
        'ERR_FEATURE_UNAVAILABLE_ON_PLATFORM');
}

/** Returns the path of the DLL in the package of this platform, or undefined if that package is not installed. */
function packagedDll() {
    try {
        return path.join(path.dirname(require.resolve(`${PLATFORM_PACKAGE}/package.json`)), FILE_NAME);
    } catch {
        return undefined;
    }
}

/** Returns the absolute path of the DLL to load. */
function dllPath() {
    const given = process.env.VOREL_CORE_DLL;
    if (given) {
        if (!/^(?:[A-Za-z]:|\\\\[^\\/]+)[\\/]/.test(given)) {
            throw new Error(`VOREL_CORE_DLL is not an absolute path: ${given}`);
        }
        return path.normalize(given);
    }
    const packaged = packagedDll();
    return packaged && fs.existsSync(packaged) ? packaged : path.join(path.dirname(process.execPath), FILE_NAME);
}

function loadFailure(file, reason) {
    const remedy = process.env.VOREL_CORE_DLL ? 'The variable VOREL_CORE_DLL holds this path.' :
        `Install the package ${PLATFORM_PACKAGE}, or set VOREL_CORE_DLL to the absolute path of the DLL.`;
    return coded(new Error(`${file} ${reason}. ${remedy}`), 'ERR_DLOPEN_FAILED');
}

/**
 * Loads the DLL and its dependencies from its own folder and the system folder only, because the default search order
 * of Windows includes the current folder. Returns the path of the DLL; koffi finds the loaded DLL by this path.
 */
function loadDll(kernel) {
    const LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR = 0x100;
    const LOAD_LIBRARY_SEARCH_SYSTEM32 = 0x800;

    const file = dllPath();
    if (!fs.existsSync(file)) {
        throw loadFailure(file, 'does not exist');
    }
    const load = kernel.func('void *LoadLibraryExW(const char16_t *, void *, uint32_t)');
    const lastErrorCode = kernel.func('uint32_t GetLastError(void)');
    if (!load(file, null, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32)) {
        const error = lastErrorCode();
        throw loadFailure(file, `cannot be loaded (error ${error})${
            error === ERROR_MOD_NOT_FOUND ? ' because a DLL that it needs is not in its folder' : ''}`);
    }
    return file;
}

module.exports = { loadDll };
