// Runs all tests in one process: `node test/all.js` in a folder with node_modules, with VOREL_CORE_DLL set. If the
// folder is a copy of the package, VOREL_INCLUDE must be set, too. `test/run tests` prepares all this.
'use strict';

const fs = require('fs');
const path = require('path');

for (const file of fs.readdirSync(__dirname).sort()) {
    if (file.endsWith('.test.js')) {
        require(path.join(__dirname, file));
    }
}
