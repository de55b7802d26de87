// Prints a result of the installed package, and the path of the DLL that it has loaded.
import { base64 } from 'vorelcore';

import { loadedDll } from './loaded.js';

console.log(base64.encode(Buffer.from('vorel')), loadedDll());
