// SPDX-License-Identifier: MIT
// The notations for characters that DWG has in every text: %% and two letters or digits, \U+ and a
// code, \M+ with a code page's number and a character's bytes.

const PERCENT = { d: '°', p: '±', c: 'φ', '%': '%' };

/** The code pages that \M+ names by a digit. */
const MULTIBYTE_PAGES = { 1: 'shift_jis', 2: 'big5', 3: 'euc-kr', 4: 'euc-kr', 5: 'gbk' };

function multibyte(page, code) {
  const bytes = Uint8Array.from([parseInt(code.slice(0, 2), 16), parseInt(code.slice(2), 16)]);
  return new TextDecoder(MULTIBYTE_PAGES[page]).decode(bytes[0] === 0 ? bytes.subarray(1) : bytes);
}

export const decodeEscapes = (text) => (text.includes('\\')
  ? text.replace(/\\U\+([0-9a-f]{4})/gi, (_, code) => String.fromCharCode(parseInt(code, 16)))
    .replace(/\\M\+([1-5])([0-9a-f]{4})/gi, (_, page, code) => multibyte(page, code)) : text);

const escapeUnit = (unit) => `\\U+${unit.charCodeAt(0).toString(16).toUpperCase().padStart(4, '0')}`;

/** `isPlain` says which characters need no notation. */
export const encodeEscapes = (text, isPlain = (unit) => unit >= ' ' && unit <= '~') =>
  text.replace(/[^]/g, (unit) => (isPlain(unit) ? unit : escapeUnit(unit)));

/** The text of a line and whether all of it is underlined or overlined. */
export function decodeLine(value) {
  const decoded = decodeEscapes(value);
  const isUnder = /^%%u/i.test(decoded.replace(/^%%o/i, ''));
  const isOver = /^%%o/i.test(decoded.replace(/^%%u/i, ''));
  const text = decoded
    .replace(/%%([dpc%]|[uok]|\d{3})/gi, (_, code) => {
      if (/^\d/.test(code)) return String.fromCharCode(Number(code));
      return PERCENT[code.toLowerCase()] ?? '';
    })
    // Control characters are written with a caret, and the caret with a blank after it.
    .replace(/\^(.)/g, (_, code) => (code === ' ' ? '^' : code === 'I' ? ' ' : ''))
    .replace(/[\0-\x1f\x7f]/g, ' ');
  return { text, isUnder, isOver };
}
