// SPDX-License-Identifier: MIT
// Writes the bit streams of DWG; bits.mjs reads them.

const scratch = new Uint8Array(8);
const scratchDouble = new Float64Array(scratch.buffer);
const usual = new Uint8Array(8);
const usualDouble = new Float64Array(usual.buffer);

export class BitWriter {
  bytes = new Uint8Array(1 << 12);
  /** In bits. */
  at = 0;

  /** `encode` turns a text into bytes of the drawing's code page. */
  constructor(encode) {
    this.encode = encode;
  }

  clear() {
    this.bytes.fill(0, 0, (this.at + 7) >> 3);
    this.at = 0;
  }

  #room(bits) {
    if (this.at + bits > 8 * this.bytes.length - 64) {
      const larger = new Uint8Array(2 * this.bytes.length + (bits >> 3));
      larger.set(this.bytes);
      this.bytes = larger;
    }
  }

  bit(value) {
    this.#room(1);
    if (value) this.bytes[this.at >> 3] |= 0x80 >> (this.at & 7);
    this.at++;
  }

  /** Two bits. */
  bb(value) {
    this.#room(2);
    const shift = 14 - (this.at & 7);
    const byte = this.at >> 3;
    this.bytes[byte] |= (value << shift) >> 8;
    this.bytes[byte + 1] |= (value << shift) & 0xff;
    this.at += 2;
  }

  u8(value) {
    this.#room(8);
    this.#byte(value & 0xff);
  }

  /** What lies behind is still all zeros. */
  #byte(value) {
    const byte = this.at >> 3;
    const shift = this.at & 7;
    if (shift === 0) {
      this.bytes[byte] = value;
    } else {
      this.bytes[byte] |= value >> shift;
      this.bytes[byte + 1] = value << (8 - shift);
    }
    this.at += 8;
  }

  u16(value) {
    this.#room(16);
    this.#byte(value & 0xff);
    this.#byte((value >> 8) & 0xff);
  }

  u32(value) {
    this.#room(32);
    for (let i = 0; i < 32; i += 8) this.#byte((value >>> i) & 0xff);
  }

  f64(value) {
    this.#room(64);
    scratchDouble[0] = value;
    for (let i = 0; i < 8; i++) this.#byte(scratch[i]);
  }

  bs(value) {
    if (value === 0) return this.bb(2);
    if (value === 256) return this.bb(3);
    this.bb(value > 0 && value < 256 ? 1 : 0);
    return value > 0 && value < 256 ? this.u8(value) : this.u16(value);
  }

  bl(value) {
    if (value === 0) return this.bb(2);
    this.bb(value > 0 && value < 256 ? 1 : 0);
    return value > 0 && value < 256 ? this.u8(value) : this.u32(value);
  }

  bd(value) {
    if (value === 0) return this.bb(2);
    if (value === 1) return this.bb(1);
    this.bb(0);
    return this.f64(value);
  }

  /** Only what differs from another double. */
  dd(value, other) {
    if (value === other) return this.bb(0);
    scratchDouble[0] = value;
    usualDouble[0] = other;
    if (scratch[6] !== usual[6] || scratch[7] !== usual[7]) {
      this.bb(3);
      this.f64(value);
    } else if (scratch[4] === usual[4] && scratch[5] === usual[5]) {
      this.bb(1);
      for (let i = 0; i < 4; i++) this.u8(scratch[i]);
    } else {
      this.bb(2);
      this.u8(scratch[4]);
      this.u8(scratch[5]);
      for (let i = 0; i < 4; i++) this.u8(scratch[i]);
    }
    return undefined;
  }

  bd3(p) {
    this.bd(p[0]);
    this.bd(p[1]);
    this.bd(p[2]);
  }

  rd2(p) {
    this.f64(p[0]);
    this.f64(p[1]);
  }

  thickness() { this.bit(1); }

  extrusion(normal) {
    const isUp = normal[0] === 0 && normal[1] === 0 && normal[2] === 1;
    this.bit(isUp);
    if (!isUp) this.bd3(normal);
  }

  text(value) {
    const bytes = this.encode(value);
    this.bs(bytes.length);
    for (const byte of bytes) this.u8(byte);
  }

  handle(code, value) {
    let size = 0;
    for (let rest = value; rest > 0; rest = Math.floor(rest / 256)) size++;
    this.u8((code << 4) | size);
    for (let i = size - 1; i >= 0; i--) this.u8(Math.floor(value / 256 ** i) & 0xff);
  }

  /** Overwrites 32 bits that were written as zeros. */
  patch32(at, value) {
    const shift = at & 7;
    for (let i = 0; i < 4; i++) {
      const part = ((value >>> (8 * i)) & 0xff) << (8 - shift);
      this.bytes[(at >> 3) + i] |= part >> 8;
      this.bytes[(at >> 3) + i + 1] |= part & 0xff;
    }
  }
}
