// SPDX-License-Identifier: MIT
// DGN V7 says nowhere which code page its texts are in. They are read in the page asked for, and in
// windows-1252 where their bytes make no sense in it. A character that the page lacks is written as
// \U+XXXX, the way DWG writes it, and read back as that character.

export const DEFAULT_CODE_PAGE = 'gbk';
const FALLBACK_PAGE = 'windows-1252';

/** Lead bytes of a text that holds its codes as 16-bit words. */
const WIDE_MARK = [0xff, 0xfd];

export const decodeEscapes = (text) =>
  text.replace(/\\U\+([0-9a-f]{4})/gi, (_, code) => String.fromCharCode(parseInt(code, 16)));

const escapeUnit = (unit) => `\\U+${unit.charCodeAt(0).toString(16).toUpperCase().padStart(4, '0')}`;

export const encodeEscapes = (text) => text.replace(/[^\x20-\x7e]/g, escapeUnit);

/** Takes 16-bit codes apart into the bytes of the code page. */
function narrow(bytes) {
  const result = [];
  for (let i = WIDE_MARK.length; i + 1 < bytes.length; i += 2) {
    if (bytes[i + 1] !== 0) result.push(bytes[i + 1]);
    result.push(bytes[i]);
  }
  return Uint8Array.from(result);
}

export class TextCodec {
  #strict;
  #fallback = new TextDecoder(FALLBACK_PAGE);
  #page;
  #bytesOf = null;

  /** Throws RangeError for a code page that is not known. */
  constructor(page = DEFAULT_CODE_PAGE) {
    this.#page = page;
    this.#strict = new TextDecoder(page, { fatal: true });
  }

  decode(bytes) {
    const wide = bytes[0] === WIDE_MARK[0] && bytes[1] === WIDE_MARK[1];
    const narrowed = wide ? narrow(bytes) : bytes;
    return decodeEscapes(this.#decodePage(narrowed).replace(/\0+$/, ''));
  }

  encode(text) {
    const parts = [];
    for (const unit of text.replace(/[\0-\x1f\x7f]/g, ' ').split('')) {
      const code = unit.charCodeAt(0);
      const known = code < 0x80 ? [code] : this.#table().get(unit);
      parts.push(...(known ?? Buffer.from(escapeUnit(unit), 'latin1')));
    }
    return Uint8Array.from(parts);
  }

  #decodePage(bytes) {
    try {
      return this.#strict.decode(bytes);
    } catch {
      return this.#fallback.decode(bytes);
    }
  }

  /** Node decodes every code page but encodes none, so the table is made by decoding all codes. */
  #table() {
    if (this.#bytesOf) return this.#bytesOf;
    this.#bytesOf = new Map();
    const lenient = new TextDecoder(this.#page);
    const learn = (bytes) => {
      const unit = lenient.decode(Uint8Array.from(bytes));
      if (unit.length === 1 && unit !== '\ufffd' && !this.#bytesOf.has(unit)) this.#bytesOf.set(unit, bytes);
    };
    for (let lead = 0x80; lead < 0x100; lead++) learn([lead]);
    for (let lead = 0x81; lead < 0xff; lead++) {
      for (let trail = 0x40; trail < 0xff; trail++) learn([lead, trail]);
    }
    return this.#bytesOf;
  }
}
