// SPDX-License-Identifier: MIT
// DGN V7 says nowhere which code page its texts are in. Unless it is asked for, it is guessed from all
// texts of the file. A character that a page lacks is written as \U+XXXX, the way DWG writes it, and read
// back as that character.

import { decodeEscapes, encodeEscapes } from '../text_codes.mjs';

/** The pages that a text may be written in, in this order. */
const WRITTEN_PAGES = ['gbk', 'windows-1252', 'windows-1250', 'windows-1251', 'shift_jis', 'euc-kr', 'big5'];
const DEFAULT_CODE_PAGE = WRITTEN_PAGES[0];
const WESTERN_PAGE = 'windows-1252';

/** Lead bytes of a text that holds its codes as 16-bit words. */
const WIDE_MARK = [0xff, 0xfd];

const MAX_BYTES = 255;

/** What stands for characters that a page may lack. */
const SUBSTITUTES = new Map([['Ø', 'φ'], ['φ', 'Ø'], ['\u00a0', ' '], ['⌀', 'φ'], ['–', '-'], ['’', "'"]]);

/** Takes 16-bit codes apart into the bytes of the code page. */
function narrow(bytes) {
  const result = [];
  for (let i = WIDE_MARK.length; i + 1 < bytes.length; i += 2) {
    if (bytes[i + 1] !== 0) result.push(bytes[i + 1]);
    result.push(bytes[i]);
  }
  return Uint8Array.from(result);
}

const isWide = (bytes) => bytes[0] === WIDE_MARK[0] && bytes[1] === WIDE_MARK[1];
const isLower = (byte) => byte >= 0x61 && byte <= 0x7a;
const isLetter = (byte) => isLower(byte | 0x20);

/** Evidence for Chinese in a run of bytes over 0x7f, less that for Western letters. Common characters
    have lead bytes from B0 to D7 and both bytes over A0; a Western letter stands among other letters. */
function evidence(bytes, from, to) {
  const [before, after] = [bytes[from - 1], bytes[to]];
  if ((to - from) % 2 === 1) return isLetter(before) || isLetter(after) ? -2 : -1;
  if (isLower(before) && isLower(after)) return -2;
  let sum = 0;
  for (let i = from; i < to; i += 2) {
    const lead = bytes[i];
    if (bytes[i + 1] < 0xa1 || lead < 0xa1) sum -= 0.5;
    else sum += lead >= 0xb0 && lead <= 0xd7 ? 2 : lead <= 0xa9 ? 1 : 0.3;
  }
  return sum;
}

/** The code page that fits all texts of a file best. */
export function guessCodePage(texts) {
  let sum = 0;
  for (const bytes of texts) {
    if (isWide(bytes)) {
      sum += 4;
      continue;
    }
    for (let i = 0; i < bytes.length; i++) {
      if (bytes[i] < 0x80) continue;
      let end = i;
      while (end < bytes.length && bytes[end] >= 0x80) end++;
      sum += evidence(bytes, i, end);
      i = end;
    }
  }
  return sum < 0 ? WESTERN_PAGE : DEFAULT_CODE_PAGE;
}

/** The bytes of each character of a page. Node decodes every code page but encodes none. */
const tables = new Map();
function tableOf(page) {
  if (tables.has(page)) return tables.get(page);
  const bytesOf = new Map();
  const lenient = new TextDecoder(page);
  // A line for each code, so that one call decodes many.
  const learn = (codes) => {
    lenient.decode(Uint8Array.from(codes.flatMap((bytes) => [...bytes, 0x0a]))).split('\n').forEach((unit, i) => {
      if (unit.length === 1 && unit !== '\ufffd' && !bytesOf.has(unit)) bytesOf.set(unit, codes[i]);
    });
  };
  const codes = (from, to, make) => Array.from({ length: to - from }, (_, i) => make(from + i));
  learn(codes(0x80, 0x100, (lead) => [lead]));
  for (let lead = 0x81; lead < 0xff; lead++) learn(codes(0x40, 0xff, (trail) => [lead, trail]));
  tables.set(page, bytesOf);
  return bytesOf;
}

/** The first page that has every character of the texts, or the one that lacks fewest. */
export function fittingCodePage(texts, pages = WRITTEN_PAGES) {
  const units = new Set();
  for (const text of texts) for (const unit of text) if (unit > '\x7f') units.add(unit);
  if (units.size === 0) return pages[0];
  let [best] = pages;
  let fewest = Infinity;
  for (const page of pages) {
    const table = tableOf(page);
    const missing = [...units].filter((unit) => !table.has(unit) && !table.has(SUBSTITUTES.get(unit))).length;
    if (missing < fewest) [best, fewest] = [page, missing];
    if (missing === 0) break;
  }
  return best;
}

export class TextCodec {
  #strict;
  #fallback = new TextDecoder(WESTERN_PAGE);
  #page;

  /** Throws RangeError for a code page that is not known. */
  constructor(page = DEFAULT_CODE_PAGE) {
    this.#page = page;
    this.#strict = new TextDecoder(page, { fatal: true });
  }

  decode(bytes) {
    const narrowed = isWide(bytes) ? narrow(bytes) : bytes;
    return decodeEscapes(this.#decodePage(narrowed).replace(/\0+$/, ''));
  }

  #encodeUnit(unit) {
    const code = unit.charCodeAt(0);
    if (code < 0x80) return [code];
    const table = tableOf(this.#page);
    const substitute = SUBSTITUTES.get(unit);
    return table.get(unit) ?? table.get(substitute) ?? (substitute < '\x80' ? [substitute.charCodeAt(0)]
      : [...Buffer.from(encodeEscapes(unit), 'latin1')]);
  }

  encode(text) {
    if (/^[\x20-\x7e]*$/.test(text)) return Buffer.from(text, 'latin1');
    return Uint8Array.from(text.replace(/[\0-\x1f\x7f]/g, ' ').split('').flatMap((unit) => this.#encodeUnit(unit)));
  }

  /** Pieces [text, bytes] of at most 255 bytes, whole characters each. */
  pieces(text) {
    const result = [['', []]];
    for (const char of text.replace(/[\0-\x1f\x7f]/g, ' ')) {
      const bytes = char.split('').flatMap((unit) => this.#encodeUnit(unit));
      if (result.at(-1)[1].length + bytes.length > MAX_BYTES) result.push(['', []]);
      result.at(-1)[0] += char;
      result.at(-1)[1].push(...bytes);
    }
    return result.map(([piece, bytes]) => [piece, Uint8Array.from(bytes)]);
  }

  #decodePage(bytes) {
    try {
      return this.#strict.decode(bytes);
    } catch {
      return this.#fallback.decode(bytes);
    }
  }
}
