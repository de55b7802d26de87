'use strict';

const assert = require('assert');
const childProcess = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');
const test = require('node:test');

const { base64, codePage, daylight, hex, utf8 } = require('..');
const { startPeerWith } = require('./support');

const DLL = process.env.VOREL_CORE_DLL;

test('the real length of an array is used even if its length properties are redefined', () => {
    class Claims extends Uint8Array {
        get length() {
            return 1 << 20;
        }

        get byteLength() {
            return 1 << 20;
        }
    }
    const redefined = Uint8Array.of(0x61, 0x62);
    Object.defineProperty(redefined, 'length', { value: 1 << 20 });
    const encoders = [
        [utf8.decode, 'ab'],
        [base64.encode, 'YWI='],  // printf ab | base64
        [hex.encode, '6162'],
        [(data) => codePage.decode(1252, data), 'ab'],
    ];
    for (const data of [redefined, Claims.of(0x61, 0x62)]) {
        for (const [encode, expected] of encoders) {
            assert.strictEqual(encode(data), expected);
        }
        assert.strictEqual(daylight.encode(data), daylight.encode(Uint8Array.of(0x61, 0x62)));
    }
});

test('a value that is not a Uint8Array is rejected, even if it imitates one', () => {
    const disguised = [
        Object.setPrototypeOf({ length: 4 }, Uint8Array.prototype),
        Object.setPrototypeOf(new Float64Array(4), Uint8Array.prototype),
        { length: 4, [Symbol.toStringTag]: 'Uint8Array' },
        [1, 2],
        'ab',
        null,
        undefined,
    ];
    for (const data of disguised) {
        for (const encode of [utf8.decode, base64.encode, daylight.encode, hex.encode]) {
            assert.throws(() => encode(data), TypeError);
        }
        assert.throws(() => codePage.decode(1252, data), TypeError);
    }
});

/** Runs `action(folder)` with a folder of planted DLLs: copies of all DLLs in the library's folder. */
async function withPlantedDlls(action) {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'vorel_node_'));
    try {
        for (const file of fs.readdirSync(path.dirname(DLL)).filter((name) => name.endsWith('.dll'))) {
            fs.copyFileSync(path.join(path.dirname(DLL), file), path.join(folder, file));
        }
        await action(folder);
    } finally {
        fs.rmSync(folder, { recursive: true });
    }
}

test('no DLL is loaded from the current folder or the PATH', () => withPlantedDlls(async (folder) => {
    const own = fs.readdirSync(folder);
    const env = { ...process.env, PATH: `${folder};${process.env.PATH}` };
    for (const file of own) {
        const expected = path.join(path.dirname(DLL), file);
        // The exit code is 2 if the process has not loaded the DLL.
        const code = await startPeerWith({ cwd: folder, env }, 'loadedFrom', file, expected);
        assert.ok(code === 0 || (code === 2 && file !== 'vorelCore.dll'), `${file}: exit code ${code}`);
    }
}));

test('the DLL in VOREL_CORE_DLL is loaded only if its path is absolute', () =>
    withPlantedDlls(async (folder) => {
        const name = 'vorelCore.dll';
        const drive = folder.slice(0, 2);  // "C:"
        const relative = [undefined, '', name, `.\\${name}`, path.join(folder.slice(2), name), `${drive}${name}`];
        for (const given of relative) {
            const env = { ...process.env, PATH: `${folder};${process.env.PATH}`, VOREL_CORE_DLL: given };
            const code = await startPeerWith({ cwd: folder, env }, 'loadedFrom', name, path.join(folder, name));
            assert.strictEqual(code, 1, `VOREL_CORE_DLL=${given}`);
        }
        const env = { ...process.env, VOREL_CORE_DLL: `${folder.replace(/\\/g, '/')}/${name}` };
        const code = await startPeerWith({ env }, 'loadedFrom', name, path.join(folder, name));
        assert.strictEqual(code, 0, 'an absolute path may contain slashes');
    }));

/** The code and the message of the error when a process with these environment variables loads the package. */
function loadFailure(variables) {
    const script = `
        try {
            require(${JSON.stringify(path.join(__dirname, '..'))});
        } catch (error) {
            error.code + '|' + error.message;
        }`;
    const child = childProcess.spawnSync(process.execPath, ['--print', script],
        { encoding: 'utf8', env: { ...process.env, ...variables } });
    return child.stdout.trimEnd();
}

test('a DLL that cannot be loaded is reported with its path and VOREL_CORE_DLL', () => withPlantedDlls((folder) => {
    const file = path.join(folder, 'none', 'vorelCore.dll');
    assert.strictEqual(loadFailure({ VOREL_CORE_DLL: file }),
        `ERR_DLOPEN_FAILED|${file} does not exist. The variable VOREL_CORE_DLL holds this path.`);
    const besideNode = path.join(path.dirname(process.execPath), 'vorelCore.dll');
    assert.strictEqual(loadFailure({ VOREL_CORE_DLL: '' }), `ERR_DLOPEN_FAILED|${besideNode} does not exist. Install ` +
        'the package vorelcore-win32-x64, or set VOREL_CORE_DLL to the absolute path of the DLL.');
    const alone = path.join(folder, 'alone', 'vorelCore.dll');
    fs.mkdirSync(path.dirname(alone));
    fs.copyFileSync(DLL, alone);
    assert.strictEqual(loadFailure({ VOREL_CORE_DLL: alone }), `ERR_DLOPEN_FAILED|${alone} cannot be loaded (error ` +
        '126) because a DLL that it needs is not in its folder. The variable VOREL_CORE_DLL holds this path.');
}));
