// SPDX-License-Identifier: MIT

/** What a file says of itself does not hold: a length, a count or a checksum. */
export class Damage extends Error {}
