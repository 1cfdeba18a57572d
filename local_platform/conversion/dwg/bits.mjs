// SPDX-License-Identifier: MIT
// The bit streams of DWG. Nothing is read beyond `end`, and no count is believed that what is left of
// the stream could not hold: so a damaged file ends in a Damage, never in a loop or a huge array.

import { Damage } from './damage.mjs';

const scratch = new Uint8Array(8);
const scratchDouble = new Float64Array(scratch.buffer);
const utf16 = new TextDecoder('utf-16le');

export class BitReader {
  /** Positions are in bits. */
  constructor(bytes, position = 0, end = 8 * bytes.length) {
    this.bytes = bytes;
    this.at = position;
    this.end = Math.min(end, 8 * bytes.length);
  }

  get left() { return this.end - this.at; }

  #step(count) {
    const from = this.at;
    this.at += count;
    if (this.at > this.end) throw new Damage('data end too early');
    return from;
  }

  bit() {
    const from = this.#step(1);
    return (this.bytes[from >> 3] >> (7 - (from & 7))) & 1;
  }

  /** Two bits. */
  bb() {
    const from = this.#step(2);
    const shift = from & 7;
    if (shift < 7) return (this.bytes[from >> 3] >> (6 - shift)) & 3;
    return ((this.bytes[from >> 3] & 1) << 1) | (this.bytes[(from >> 3) + 1] >> 7);
  }

  u8() { return this.#byte(this.#step(8)); }

  /** The eight bits from a place that has been found to be inside. */
  #byte(from) {
    const byte = from >> 3;
    const shift = from & 7;
    return shift === 0 ? this.bytes[byte] : ((this.bytes[byte] << shift) | (this.bytes[byte + 1] >> (8 - shift))) & 0xff;
  }

  u16() {
    const from = this.#step(16);
    return this.#byte(from) | (this.#byte(from + 8) << 8);
  }

  i32() {
    const from = this.#step(32);
    return this.#byte(from) | (this.#byte(from + 8) << 8) | (this.#byte(from + 16) << 16) | (this.#byte(from + 24) << 24);
  }

  u32() { return this.i32() >>> 0; }

  f64() {
    const from = this.#step(64);
    for (let i = 0; i < 8; i++) scratch[i] = this.#byte(from + 8 * i);
    return scratchDouble[0];
  }

  /** A short, signed. */
  bs() {
    switch (this.bb()) {
      case 0: return (this.u16() << 16) >> 16;
      case 1: return this.u8();
      case 2: return 0;
      default: return 256;
    }
  }

  bl() {
    switch (this.bb()) {
      case 0: return this.i32();
      case 1: return this.u8();
      case 2: return 0;
      default: throw new Damage('a number of no known form');
    }
  }

  /** Up to 64 bits; what they count is far below 2^53. */
  bll() {
    let value = 0;
    const size = (this.bit() << 2) | this.bb();
    for (let i = 0; i < size; i++) value += this.u8() * 2 ** (8 * i);
    return value;
  }

  bd() {
    switch (this.bb()) {
      case 0: return this.f64();
      case 1: return 1;
      case 2: return 0;
      default: throw new Damage('a number of no known form');
    }
  }

  /** A double given by what differs from another. */
  dd(usual) {
    const form = this.bb();
    if (form === 0) return usual;
    if (form === 3) return this.f64();
    const from = this.#step(form === 1 ? 32 : 48);
    scratchDouble[0] = usual;
    for (let i = 0; i < 4; i++) scratch[i] = this.#byte(from + 8 * i + (form === 1 ? 0 : 16));
    if (form === 2) {
      scratch[4] = this.#byte(from);
      scratch[5] = this.#byte(from + 8);
    }
    return scratchDouble[0];
  }

  bd2() { return [this.bd(), this.bd()]; }
  bd3() { return [this.bd(), this.bd(), this.bd()]; }
  rd2() { return [this.f64(), this.f64()]; }

  thickness() { return this.isNew && this.bit() ? 0 : this.bd(); }
  extrusion() { return this.isNew && this.bit() ? [0, 0, 1] : this.bd3(); }

  /** A count of things, each of which takes at least `bits`. */
  count(value, bits) {
    if (value < 0 || value * bits > this.left) throw new Damage(`a count of ${value} things that are not there`);
    return value;
  }

  counted(bits) { return this.count(this.bl(), bits); }

  list(bits, read) {
    const count = this.counted(bits);
    const result = new Array(count);
    for (let i = 0; i < count; i++) result[i] = read();
    return result;
  }

  skip(bits) { this.#step(bits); }

  raw(count) {
    this.count(count, 8);
    const result = new Uint8Array(count);
    for (let i = 0; i < count; i++) result[i] = this.u8();
    return result;
  }

  /** { code, value } of a handle as it stands. */
  rawHandle() {
    const head = this.u8();
    const size = head & 0xf;
    if (size > 8) throw new Damage('a handle of more than 8 bytes');
    let value = 0;
    for (let i = 0; i < size; i++) value = value * 256 + this.u8();
    return { code: head >> 4, value };
  }

  /** The handle meant, seen from the object `own`. */
  handle(own = 0) {
    const { code, value } = this.rawHandle();
    switch (code) {
      case 6: return own + 1;
      case 8: return own - 1;
      case 10: return own + value;
      case 12: return own - value;
      default: return value;
    }
  }

  bytesText(decode) {
    const length = this.bs() & 0xffff;
    const bytes = this.raw(length);
    let end = length;
    while (end > 0 && bytes[end - 1] === 0) end--;
    return decode(bytes.subarray(0, end));
  }

  wideText() {
    const length = this.bs() & 0xffff;
    this.count(length, 16);
    return utf16.decode(this.raw(2 * length)).replace(/\0+$/, '');
  }
}

/** Whole numbers in runs of 7 bits, least first, of which `lastBits` at the end. */
function modular(bytes, place, isSigned) {
  let value = 0;
  let factor = 1;
  for (;;) {
    if (place.at >= place.end) throw new Damage('data end too early');
    const byte = bytes[place.at++];
    if (byte & 0x80) {
      value += (byte & 0x7f) * factor;
      factor *= 128;
      if (factor > 2 ** 49) throw new Damage('a number without an end');
      continue;
    }
    if (!isSigned) return value + byte * factor;
    value += (byte & 0x3f) * factor;
    return byte & 0x40 ? -value : value;
  }
}
export const unsignedModular = (bytes, place) => modular(bytes, place, false);
export const signedModular = (bytes, place) => modular(bytes, place, true);

/** The length of an object: 15 bits at a time. */
export function modularShort(bytes, place) {
  let value = 0;
  for (let factor = 1; factor <= 2 ** 30; factor *= 2 ** 15) {
    if (place.at + 2 > place.end) throw new Damage('data end too early');
    const word = bytes[place.at] | (bytes[place.at + 1] << 8);
    place.at += 2;
    value += (word & 0x7fff) * factor;
    if (!(word & 0x8000)) return value;
  }
  throw new Damage('a number without an end');
}
