// SPDX-License-Identifier: MIT
// The checksums of DWG: a 16-bit CRC on objects and on the sections of R13 to R2000, a CRC-32 on the
// file header of R2004 and later, and a sum of Adler's kind on its pages.

const table = (polynomial) => Uint32Array.from({ length: 256 }, (_, i) => {
  let value = i;
  for (let bit = 0; bit < 8; bit++) value = value & 1 ? (value >>> 1) ^ polynomial : value >>> 1;
  return value;
});
const TABLE_16 = table(0xa001);
const TABLE_32 = table(0xedb88320);

/** What objects and sections start from. */
const CRC_SEED = 0xc0c1;

export function crc16(bytes, from, to, seed = CRC_SEED) {
  let crc = seed;
  for (let i = from; i < to; i++) crc = (crc >> 8) ^ TABLE_16[(crc ^ bytes[i]) & 0xff];
  return crc;
}

export function crc32(bytes) {
  let crc = 0xffffffff;
  for (const byte of bytes) crc = (crc >>> 8) ^ TABLE_32[(crc ^ byte) & 0xff];
  return ~crc >>> 0;
}

export function pageSum(bytes, seed = 0) {
  let low = seed & 0xffff;
  let high = seed >>> 16;
  // As many at a time as cannot overflow 32 bits.
  for (let from = 0; from < bytes.length; from += 5552) {
    const to = Math.min(bytes.length, from + 5552);
    for (let i = from; i < to; i++) {
      low += bytes[i];
      high += low;
    }
    low %= 65521;
    high %= 65521;
  }
  return ((high << 16) | low) >>> 0;
}
