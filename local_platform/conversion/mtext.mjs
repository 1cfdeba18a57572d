// SPDX-License-Identifier: MIT
// The paragraphs of DWG with their formats.
//
//   text   = { group | code | stack | character }
//   group  = "{" text "}"                       formats set inside end with it
//   code   = "\P" | "\X" | "\N"                 a new line (\N: a new column)
//          | "\~" | "\\" | "\{" | "\}"          a blank that does not break; the character itself
//          | "\L" "\l" "\O" "\o" "\K" "\k"      under-, over- and struck-through lines on and off
//          | "\H" number ["x"] ";"              height, or a factor to it
//          | "\W" number ["x"] ";"              width of characters
//          | "\T" number ["x"] ";"              distance of characters
//          | "\Q" number ";"                    slant in degrees
//          | "\C" number ";" | "\c" number ";"  colour by number, by value
//          | ("\f" | "\F") name { "|" option } ";"
//          | "\A" digit ";" | "\p" ... ";"      alignment of the line; indents, tabs and alignment
//          | "\U+" 4 hex | "\M+" digit 4 hex    characters, as in every text
//   stack  = "\S" upper ("^" | "/" | "#") lower ";"
//
// A code whose ";" is missing is taken as text, as programs do.

import { decodeEscapes } from './text_codes.mjs';

const PLAIN = { height: 1, width: 1, spacing: 1, slant: 0, color: null, font: null, isUnder: false, isOver: false,
  isStruck: false };

const LINES = { L: ['isUnder', true], l: ['isUnder', false], O: ['isOver', true], o: ['isOver', false],
  K: ['isStruck', true], k: ['isStruck', false] };

const NUMBERS = { H: 'height', W: 'width', T: 'spacing', Q: 'slant' };

const ALIGNMENTS = { l: 'left', c: 'center', r: 'right', j: 'left', d: 'left' };

class Parser {
  lines = [{ align: null, runs: [] }];
  #format = PLAIN;
  #text = '';
  #align = null;

  constructor(value, height) {
    this.value = value;
    this.height = height;
  }

  parse() {
    const { value } = this;
    const outer = [];
    for (let at = 0; at < value.length; at++) {
      const char = value[at];
      if (char === '{') {
        outer.push(this.#format);
      } else if (char === '}') {
        this.#to(outer.pop() ?? this.#format);
      } else if (char === '\\' && at + 1 < value.length) {
        at += this.#code(at + 1);
      } else if (char === '\n') {
        this.#newLine();
      } else if (char === '%' && value[at + 1] === '%') {
        at += this.#percent(at);
      } else if (char === '^' && at + 1 < value.length) {
        at++;
        if (value[at] === 'J') this.#newLine();
        else if (value[at] === 'I') this.#text += '    ';
        else if (value[at] === ' ') this.#text += '^';
        else if (value[at] !== 'M') this.#text += `^${value[at]}`;
      } else if (char !== '\r') {
        this.#text += char === '\t' ? '    ' : char;
      }
    }
    this.#flush();
    return this.lines;
  }

  #flush() {
    if (this.#text) this.lines.at(-1).runs.push({ ...this.#format, text: this.#text });
    this.#text = '';
  }

  #to(format) {
    this.#flush();
    this.#format = format;
  }

  #newLine() {
    this.#flush();
    this.lines.push({ align: this.#align, runs: [] });
  }

  #percent(at) {
    const code = /^%%([dpcuok%]|\d{3})/i.exec(this.value.slice(at, at + 5))?.[1];
    if (!code) {
      this.#text += '%';
      return 0;
    }
    const lower = code.toLowerCase();
    if (lower === 'u' || lower === 'o' || lower === 'k') {
      const name = { u: 'isUnder', o: 'isOver', k: 'isStruck' }[lower];
      this.#to({ ...this.#format, [name]: !this.#format[name] });
    } else {
      this.#text += { d: '°', p: '±', c: 'φ', '%': '%' }[lower] ?? String.fromCharCode(Number(code));
    }
    return code.length + 1;
  }

  /** Takes the code whose letter is at `at`; returns how many characters that was. */
  #code(at) {
    const letter = this.value[at];
    if (letter === 'P' || letter === 'X' || letter === 'N') {
      this.#newLine();
      return 1;
    }
    if (letter === '~') {
      this.#text += '\u00a0';
      return 1;
    }
    if (letter in LINES) {
      const [name, value] = LINES[letter];
      this.#to({ ...this.#format, [name]: value });
      return 1;
    }
    const special = /^[UM]\+(?:(?<=U\+)[0-9a-f]{4}|(?<=M\+)[1-5][0-9a-f]{4})/i.exec(this.value.slice(at, at + 7));
    if (special) {
      this.#text += decodeEscapes(`\\${special[0]}`);
      return special[0].length;
    }
    if (!'HWTQCcfFApS'.includes(letter)) {
      this.#text += letter;
      return 1;
    }
    const end = this.#endOfCode(at);
    if (end < 0) {
      this.#text += letter;
      return 1;
    }
    this.#valued(letter, this.value.slice(at + 1, end));
    return end + 1 - at;
  }

  #endOfCode(at) {
    for (let end = at + 1; end < this.value.length; end++) {
      if (this.value[end] === ';') return end;
      if (this.value[end] === '\\') end++;
    }
    return -1;
  }

  #valued(letter, value) {
    if (letter === 'S') return this.#stack(value);
    if (letter === 'p') {
      const align = /(?:^|,)x?q([lcrjd])/.exec(value);
      if (align) this.lines.at(-1).align = this.#align = ALIGNMENTS[align[1]];
      else if (/\*/.test(value)) this.lines.at(-1).align = this.#align = null;
      return undefined;
    }
    if (letter in NUMBERS) {
      const number = parseFloat(value);
      if (!Number.isFinite(number)) return undefined;
      const name = NUMBERS[letter];
      const isFactor = /x\s*$/i.test(value);
      // Heights are those of the paragraph's own height.
      const absolute = letter === 'H' ? number / this.height : number;
      return this.#to({ ...this.#format, [name]: isFactor ? this.#format[name] * number : absolute });
    }
    if (letter === 'C') {
      const color = parseInt(value, 10);
      return this.#to({ ...this.#format, color: color >= 0 && color <= 256 ? color : null });
    }
    if (letter === 'c') {
      const bgr = parseInt(value, 10);
      const rgb = ((bgr & 0xff) << 16) | (bgr & 0xff00) | ((bgr >> 16) & 0xff);
      return this.#to({ ...this.#format, color: Number.isFinite(bgr) ? 0x1000000 + rgb : null });
    }
    if (letter === 'f' || letter === 'F') return this.#to({ ...this.#format, font: value.split('|')[0] });
    return undefined;
  }

  #stack(value) {
    this.#flush();
    const parts = /^((?:\\.|[^\^/#\\])*)([\^/#])([^]*)$/.exec(value);
    const plain = (text) => decodeEscapes(text).replace(/\\(.)/g, '$1').trim();
    const stack = parts ? { upper: plain(parts[1]), lower: plain(parts[3]), kind: parts[2] }
      : { upper: plain(value), lower: '', kind: '^' };
    if (stack.upper || stack.lower) this.lines.at(-1).runs.push({ ...this.#format, text: '', stack });
  }
}

/** Lines of { align, runs }. A run has a text, or a stack { upper, lower, kind }, and its formats:
    height as a factor, width, spacing, slant in degrees, color, font, isUnder, isOver, isStruck. */
export function parseParagraphs(value, height) {
  return new Parser(value, height > 0 ? height : 1).parse();
}
