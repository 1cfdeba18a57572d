// SPDX-License-Identifier: MIT
// What all objects of a DWG file begin with. An object is a run of bits followed by the handles it refers
// to, and since R2007 by its texts.

import { BitReader, modularShort, unsignedModular } from './bits.mjs';
import { crc16 } from './checksums.mjs';
import { Damage } from './damage.mjs';

/** Colours are numbers: 0 by block, 1 to 255 of the index, 256 by layer, or TRUE_COLOR + 0xrrggbb. */
export const BY_BLOCK = 0;
export const BY_LAYER = 256;
const TRUE_COLOR = 1 << 24;

/** Line weights in hundredths of a millimetre by their numbers; -1 is by layer, -2 by block, -3 the usual. */
const LINE_WEIGHTS = [0, 5, 9, 13, 15, 18, 20, 25, 30, 35, 40, 50, 53, 60, 70, 80, 90, 100, 106, 120, 140, 158,
  200, 211];
const lineWeightOf = (number) => LINE_WEIGHTS[number] ?? (number === 29 ? -1 : number === 30 ? -2 : -3);

const ENTITY_CLASS = 0x1f2;

/** The types of objects that a file brings itself: { name, isEntity } by number. */
export function readClasses(reader, year, sectionEnd) {
  const classes = new Map();
  if (year >= 2007) {
    reader.bl();
    reader.bit();
  } else if (year === 2004) {
    reader.bs();
    reader.skip(16);
    reader.bit();
  }
  while (reader.at + 16 < sectionEnd) {
    const number = reader.bs();
    reader.bs();
    reader.text();
    reader.text();
    const name = reader.text();
    reader.bit();
    const isEntity = reader.bs() === ENTITY_CLASS;
    if (year >= 2004) for (let i = 0; i < 5; i++) reader.bl();
    classes.set(number, { name, isEntity });
  }
  return classes;
}

export class ObjectReader extends BitReader {
  /** `decode` turns the bytes of a text before R2007 into a string. */
  constructor(bytes, year, decode) {
    super(bytes);
    this.year = year;
    this.decode = decode;
    this.isNew = year >= 2000;
    this.handles = new BitReader(bytes);
    this.strings = year >= 2007 ? new BitReader(bytes) : null;
  }

  /** Goes to the object at a byte, proves its checksum unless that was done, and returns the number of its type. */
  open(offset, isProved = false) {
    const { bytes, year } = this;
    if (!(offset >= 0 && offset < bytes.length)) throw new Damage('an object lies outside of the file');
    const place = { at: offset, end: bytes.length };
    const size = modularShort(bytes, place);
    const handleBits = year >= 2010 ? unsignedModular(bytes, place) : 0;
    const end = place.at + size;
    if (end + 2 > bytes.length) throw new Damage('an object is cut short');
    if (!isProved && crc16(bytes, offset, end) !== (bytes[end] | (bytes[end + 1] << 8))) {
      throw new Damage('the checksum of an object is wrong');
    }
    this.begin = 8 * place.at;
    this.at = this.begin;
    this.end = 8 * end;
    this.handles.end = 8 * end;
    const type = year >= 2010 ? this.#shortType() : this.bs();
    if (year >= 2010) this.parts(8 * end - handleBits);
    else if (year >= 2000) this.parts(this.begin + this.u32());
    return type;
  }

  /** Splits what follows at where its handles begin. */
  parts(handlesAt) {
    if (handlesAt < this.at || handlesAt > this.end) throw new Damage('an object has its handles elsewhere');
    this.handles.at = handlesAt;
    this.handles.end = this.end;
    this.end = handlesAt;
    if (!this.strings) return;
    const place = new BitReader(this.bytes, handlesAt - 1, handlesAt);
    this.strings.end = this.strings.at = handlesAt - 1;
    if (!place.bit()) return;
    place.at = handlesAt - 17;
    let size = place.u16();
    let end = handlesAt - 17;
    if (size & 0x8000) {
      end -= 16;
      place.at = end;
      size = (size & 0x7fff) | (place.u16() << 15);
    }
    if (end - size < this.at) throw new Damage('an object has its texts elsewhere');
    this.end = this.strings.at = end - size;
    this.strings.end = end;
  }

  #shortType() {
    switch (this.bb()) {
      case 0: return this.u8();
      case 1: return 0x1f0 + this.u8();
      default: return this.u16();
    }
  }

  text() { return this.strings ? (this.strings.left > 0 ? this.strings.wideText() : '') : this.bytesText(this.decode); }
  ref() { return this.handles.handle(this.own); }

  refs(count) {
    this.handles.count(count, 8);
    return Array.from({ length: count }, () => this.ref());
  }

  /** A colour as tables and some entities have it. */
  color() {
    const index = this.bs();
    if (this.year < 2004) return index;
    const rgb = this.u32Long();
    const names = this.u8();
    if (names & 1) this.text();
    if (names & 2) this.text();
    return colorOf(rgb, index);
  }

  u32Long() { return this.bl() >>> 0; }

  #entityColor() {
    const value = this.bs() & 0xffff;
    if (this.year < 2004) return value;
    let color = value & 0x1ff;
    this.hasNamedColor = (value & 0x4000) !== 0;
    if ((value & 0xc000) === 0x8000) color = colorOf(this.u32Long(), color);
    if (value & 0x2000) this.bl();
    return color;
  }

  #extendedData() {
    for (let size = this.bs(); size !== 0; size = this.bs()) {
      this.rawHandle();
      this.skip(8 * this.count(size & 0xffff, 8));
    }
  }

  #head() {
    this.own = this.rawHandle().value;
    this.#extendedData();
  }

  #reactorsAndDictionary(reactors) {
    const hasNoDictionary = this.year >= 2004 && this.bit();
    if (this.year >= 2013) this.bit();
    if (reactors > 0) this.refs(reactors);
    if (!hasNoDictionary) this.ref();
  }

  /** What every object that is not drawn begins with. */
  object() {
    this.#head();
    if (this.year < 2000) this.parts(this.begin + this.u32());
    const reactors = this.bl();
    const owner = this.ref();
    this.#reactorsAndDictionary(reactors);
    return { handle: this.own, owner };
  }

  /** What every entity begins with. `space` is 0 for what its owner says, 1 for paper, 2 for the model. */
  entity(kind) {
    this.#head();
    if (this.bit()) this.skip(8 * this.count(this.year >= 2010 ? this.bll() : this.u32(), 8));
    if (this.year < 2000) this.parts(this.begin + this.u32());
    return this.symbology(kind, this.own);
  }

  symbology(kind, handle) {
    const { year } = this;
    const space = this.bb();
    const reactors = this.bl();
    const owner = space === 0 ? this.ref() : 0;
    this.#reactorsAndDictionary(reactors);
    const old = year < 2000 ? { layer: this.ref(), lineType: this.bit() ? null : this.ref() } : null;
    let [previous, next] = [this.own - 1, this.own + 1];
    if (year <= 2000 && !this.bit()) [previous, next] = [this.ref(), this.ref()];
    const color = this.#entityColor();
    const lineTypeScale = this.bd();
    if (old) {
      return { kind, handle, space, owner, ...old, lineTypeFlags: old.lineType === null ? 0 : 3, next, color, lineTypeScale,
        isHidden: (this.bs() & 1) !== 0, lineWeight: -1 };
    }
    if (this.hasNamedColor) this.ref();
    this.hasNamedColor = false;
    const layer = this.ref();
    const lineTypeFlags = this.bb();
    const lineType = lineTypeFlags === 3 ? this.ref() : null;
    if (year >= 2007) {
      if (this.bb() === 3) this.ref();
      this.u8();
    }
    if (this.bb() === 3) this.ref();
    if (year >= 2010) for (let i = 0; i < 3; i++) if (this.bit()) this.ref();
    const isHidden = (this.bs() & 1) !== 0;
    return { kind, handle, space, owner, layer, lineType, lineTypeFlags, next, color, lineTypeScale, isHidden,
      lineWeight: lineWeightOf(this.u8()) };
  }

  /** The flags of a table's entry that belong to external references. */
  xrefFlags() {
    if (this.year >= 2007) return this.bs();
    this.bit();
    this.bs();
    return this.bit();
  }
}

function colorOf(rgb, index) {
  switch (rgb >>> 24) {
    case 0xc0: return BY_LAYER;
    case 0xc1: return BY_BLOCK;
    case 0xc2: return TRUE_COLOR + (rgb & 0xffffff);
    case 0xc3: return rgb & 0xff;
    default: return index || TRUE_COLOR + (rgb & 0xffffff);
  }
}
