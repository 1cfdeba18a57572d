// SPDX-License-Identifier: MIT
// The drawing library takes its GUIDs from the global `crypto`, which Node 18 has only as a module.

import { webcrypto } from 'node:crypto';

globalThis.crypto ??= webcrypto;
