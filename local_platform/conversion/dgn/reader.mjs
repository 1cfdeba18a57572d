// SPDX-License-Identifier: MIT
// Reads DGN V7. The elements of a complex one become its members; what has no kind of its own is counted
// in `leftOut`.

import { Growing } from '../growing.mjs';
import { Refusal, Tally } from '../outcome.mjs';
import { pictureOf } from './dimensions.mjs';
import { ElementReader, KIND_OF, READ, splineOf } from './elements.mjs';
import {
  AT, COLOR_TABLE_LEVEL, COMPLEX, COMPLEX_HEAD, DEFAULT_COLORS, END_MARK, HAS_ATTRIBUTES, HEADER, IS_3D, IS_CLOSED,
  IS_RATIONAL, LEFT_BOTTOM, MAX_INT, NOTES, SETTINGS_SIZE, SPLINE_HEAD, TYPE, VIEWS,
} from './format.mjs';
import { placeInstance } from './shared_cells.mjs';
import { TAG_SET_LEVEL, keyOfTag, readTagSets, tagValue } from './tags.mjs';
import { TextCodec, guessCodePage } from './text.mjs';
import { readDouble, readInt32 } from './vax.mjs';

/** Elements that are drawn but not read. Others that are not read show nothing by themselves. */
const LEFT_OUT = new Map([[13, 'CONICAL'], [23, 'CONE'], [36, 'MULTILINE'], [87, 'RASTER']]);

/** What stands for what: the elements inside are drawn, the surface between them is not. */
const SURFACES = new Map([[TYPE.surface, 'SURFACE'], [TYPE.solid, 'SOLID'], [TYPE.splineSurface, 'B-SPLINE SURFACE']]);

/** What a chain can be made of; anything else found in one becomes an element of its own. */
const LINKS = new Set(['line', 'lineString', 'arc', 'spline', 'chain']);

const MAX_DEPTH = 16;
const REFERENCE_LEVEL = 9;

/** Where the elements lie: every step of the walk checks that the element lies within the file. */
class RawElements {
  #buffer;

  constructor(buffer) {
    this.#buffer = buffer;
    const starts = new Growing(Uint32Array);
    for (let at = 0; ;) {
      if (at + 2 > buffer.length) throw new Refusal('the DGN file is cut short: it has no end mark', 'damaged');
      starts.push(at);
      if (buffer.readUInt16LE(at) === END_MARK) break;
      const end = at + 4 <= buffer.length ? at + 4 + 2 * buffer.readUInt16LE(at + 2) : Infinity;
      if (end > buffer.length) {
        throw new Refusal(`the DGN file is cut short: the element at byte ${at} is incomplete`, 'damaged');
      }
      at = end;
    }
    this.starts = starts.values;
    this.length = this.starts.length - 1;
  }

  typeOf(i) { return this.#buffer[this.starts[i] + 1] & 0x7f; }
  levelOf(i) { return this.#buffer[this.starts[i]] & 0x3f; }
  isPart(i) { return (this.#buffer[this.starts[i]] & COMPLEX) !== 0; }
  isDeleted(i) { return (this.#buffer[this.starts[i] + 1] & 0x80) !== 0; }

  at(i) {
    const [at, end] = [this.starts[i], this.starts[i + 1]];
    return { at, end, type: this.typeOf(i), level: this.levelOf(i), deleted: this.isDeleted(i), bytes: this.#buffer.subarray(at, end) };
  }

  /** Those of a type that are not deleted. */
  * ofType(type) {
    for (let i = 0; i < this.length; i++) if (this.typeOf(i) === type && !this.isDeleted(i)) yield this.at(i);
  }
}

function readSettings(buffer) {
  if (buffer.length === 0) throw new Refusal('the file is empty', 'empty');
  if (buffer.length > 8 && buffer.readUInt32BE(0) === 0xd0cf11e0) {
    throw new Refusal('this is a DGN V8 file; only DGN V7 can be read', 'tooNew');
  }
  if (buffer[0] === 8 && buffer[1] === 5) throw new Refusal('this is a DGN cell library, not a drawing', 'notADrawing');
  if ((buffer[0] !== 8 && buffer[0] !== 0xc8) || buffer[1] !== TYPE.settings) {
    throw new Refusal('this is not a DGN file', 'notADrawing');
  }
  const end = buffer.length < 4 ? Infinity : 4 + 2 * buffer.readUInt16LE(2);
  if (end > buffer.length) throw new Refusal('the DGN file is cut short: the element at byte 0 is incomplete', 'damaged');
  const raw = buffer.subarray(0, end);
  if (raw.length < SETTINGS_SIZE) throw new Refusal('the DGN file is damaged: its settings are too short', 'damaged');
  const uorPerMaster = readInt32(raw, AT.subUnits) * readInt32(raw, AT.uorPerSub);
  if (!(uorPerMaster > 0)) throw new Refusal('the DGN file is damaged: its working units are not positive', 'damaged');
  const levels = Array(8).fill(0);
  for (let view = 0; view < VIEWS.count; view++) {
    for (let i = 0; i < 8; i++) levels[i] |= raw[VIEWS.at + view * VIEWS.size + VIEWS.levels + i];
  }
  const isHidden = (level) => (levels[(level - 1) >> 3] & (1 << ((level - 1) & 7))) === 0;
  return {
    is3d: (raw[AT.dimension] & IS_3D) !== 0,
    uorPerMaster,
    unitName: raw.toString('latin1', AT.unitName, AT.unitName + 2).replace(/[^a-z'"]/gi, ''),
    origin: [0, 8, 16].map((offset) => readDouble(raw, AT.origin + offset)),
    hiddenLevels: levels.some(Boolean)
      ? new Set(Array.from({ length: 63 }, (_, i) => i + 1).filter(isHidden)) : new Set(),
  };
}

function readColorTable(raw) {
  const rgb = (i) => [...raw.subarray(38 + 3 * i, 41 + 3 * i)];
  // The background, colour 255, comes first.
  return Array.from({ length: 256 }, (_, i) => rgb((i + 1) % 256));
}

class DrawingReader {
  definitions = new Map();
  leftOut = new Tally();
  drawn = new Tally();
  colors = DEFAULT_COLORS;
  notes = null;
  references = [];

  constructor(buffer, codePage, elements) {
    this.elements = elements;
    this.settings = readSettings(buffer);
    this.raws = new RawElements(buffer);
    this.#readNotes();
    this.codePage = codePage ?? this.notes?.codePage ?? guessCodePage(this.#textBytes());
    this.codec = new TextCodec(this.codePage);
    this.#readColors();
    this.tagNames = readTagSets(this.#tagSets(), this.codec);
    elements.begin?.(this.drawing());
    for (let i = 0; i < this.raws.length;) i = this.#read(i, this.elements, 0);
  }

  * #textBytes() {
    for (const raw of this.raws.ofType(TYPE.text)) yield this.#guard(raw, () => new ElementReader(raw.bytes, this.settings).textBytes());
  }

  #readNotes() {
    const chunks = [];
    for (const { level, bytes } of this.raws.ofType(TYPE.application)) {
      if (level !== NOTES.level || bytes.length <= HEADER + 6 || bytes.readUInt16LE(HEADER) !== NOTES.mark) continue;
      chunks.push(bytes.subarray(HEADER + 6, HEADER + 6 + bytes.readUInt16LE(HEADER + 4)));
    }
    if (chunks.length === 0) return;
    try {
      this.notes = JSON.parse(Buffer.concat(chunks).toString('utf8'));
    } catch {
      this.leftOut.add('damaged notes of an earlier conversion');
    }
  }

  #readColors() {
    for (const { level, bytes } of this.raws.ofType(TYPE.group)) {
      if (level === COLOR_TABLE_LEVEL && bytes.length >= 806) this.colors = readColorTable(bytes);
    }
  }

  /** All texts that are not plain ASCII. */
  * #foreignTexts() {
    for (const bytes of this.#textBytes()) if (bytes.some((byte) => byte > 0x7e || byte === 0x5c)) yield this.codec.decode(bytes);
  }

  /** All but the elements, which come later. */
  drawing() {
    const { settings, definitions, colors, codePage, notes, references, leftOut, drawn } = this;
    return { ...settings, definitions, colors, codePage, notes, references, leftOut, drawn, foreignTexts: () => this.#foreignTexts() };
  }

  #guard(raw, read) {
    try {
      return read();
    } catch (error) {
      if (!(error instanceof RangeError)) throw error;
      throw new Refusal(`the DGN file is damaged: the element at byte ${raw.at} is too short`, 'damaged');
    }
  }

  /** Reads the element at `i` and its members into `into`; returns the index of the next. */
  #read(i, into, depth) {
    const raw = this.raws.at(i);
    const { type, bytes } = raw;
    const kind = KIND_OF.get(type);
    if (raw.deleted) return this.#end(i, raw, this.#wordsOf(raw, bytes), 0);
    if (LEFT_OUT.has(type)) this.leftOut.add(LEFT_OUT.get(type));
    if (type === TYPE.group && raw.level === REFERENCE_LEVEL) this.#reference('drawing', bytes);
    if (type === TYPE.raster) this.#reference('image', bytes);
    if (type === TYPE.definition) return this.#definition(i, raw, bytes, depth);
    if (type === TYPE.instance) return this.#instance(i, raw, bytes, into);
    if (type === TYPE.spline) return this.#spline(i, raw, bytes, into);
    if (SURFACES.has(type)) {
      this.drawn.add(`${SURFACES.get(type)} as its edges`);
      return i + 1;
    }
    if (type === TYPE.dimension) return this.#dimension(i, raw, into);
    if (type === TYPE.tag) return this.#tag(i, raw, bytes, into);
    if (!(kind in READ)) return i + 1;
    const element = this.#guard(raw, () => {
      const begun = this.#begun(kind, raw);
      READ[kind](new ElementReader(bytes, this.settings, this.codec), begun);
      return begun;
    });
    if (!element.members || depth >= MAX_DEPTH) {
      into.push(element);
      return i + 1;
    }
    const end = this.#end(i, raw, this.#wordsOf(raw, bytes), element.kind === 'chain' ? this.#guard(raw, () => bytes.readUInt16LE(38)) : 0);
    const strangers = [];
    for (let next = i + 1; next < end;) {
      const members = [];
      next = this.#read(next, members, depth + 1);
      for (const member of members) (element.kind === 'cell' || LINKS.has(member.kind) ? element.members : strangers).push(member);
    }
    into.push(element);
    for (const stranger of strangers) into.push(stranger);
    return end;
  }

  /** The path of a file that is shown with the drawing, where its element has one. */
  #reference(kind, bytes) {
    const path = /[\x20-\x7e]{2,}\.[a-z0-9]{2,4}(?![\x21-\x7e])/i.exec(bytes.toString('latin1', HEADER))?.[0].trim();
    const what = `${kind}: ${path ?? 'without a path'}`;
    if (!this.references.includes(what)) this.references.push(what);
  }

  /** What elements of all kinds have. */
  #begun(kind, { level, bytes }) {
    const [group, weightAndStyle, color] = [bytes.readUInt16LE(28), bytes.readUInt8(34), bytes.readUInt8(35)];
    return { kind, level, color, weight: weightAndStyle >> 3, style: weightAndStyle & 7, group };
  }

  /** The bytes that the members of a complex element fill, by its own account. */
  #wordsOf({ type, at }, bytes) {
    if (type === TYPE.spline && bytes.length >= SPLINE_HEAD) return at + SPLINE_HEAD + 2 * readInt32(bytes, HEADER);
    if ([TYPE.cell, TYPE.chain, TYPE.closedChain, TYPE.definition].includes(type) && bytes.length >= COMPLEX_HEAD) {
      return at + COMPLEX_HEAD + 2 * bytes.readUInt16LE(HEADER);
    }
    return 0;
  }

  /** The index after the last member: what the length covers and is marked as part of something. A chain
      that counts its members is believed where the length is not. */
  #end(i, raw, until, count) {
    let next = i + 1;
    while (next < this.raws.length && this.raws.isPart(next) && this.raws.starts[next] < until) next++;
    if (next > i + 1 || count === 0) return next;
    while (next < this.raws.length && this.raws.isPart(next) && next - i <= count) next++;
    return next;
  }

  #spline(i, raw, bytes, into) {
    const end = this.#end(i, raw, this.#wordsOf(raw, bytes), 0);
    this.#guard(raw, () => {
      const [flags, poleCount, knotCount] = [bytes.readUInt8(40), bytes.readUInt16LE(42), bytes.readUInt16LE(44)];
      const degree = (flags & 0xf) + 1;
      const parts = { poles: [], knots: [], weights: [] };
      for (let next = i + 1; next < end; next++) {
        const part = this.raws.at(next);
        const name = KIND_OF.get(part.type);
        if (!(name in parts)) continue;
        const reader = new ElementReader(part.bytes, this.settings, this.codec);
        if (name === 'poles') parts.poles.push(...reader.points());
        else parts[name].push(...this.#fractions(reader));
      }
      const curve = splineOf({ degree, isClosed: (flags & IS_CLOSED) !== 0, isWeighted: (flags & IS_RATIONAL) !== 0,
        poles: parts.poles.slice(0, poleCount), knots: parts.knots.slice(0, knotCount), weights: parts.weights });
      if (curve) into.push(new ElementReader(bytes, this.settings).extras({ ...this.#begun('spline', raw), ...curve }));
      else this.leftOut.add('B-SPLINE CURVE without sense');
    });
    return end;
  }

  /** Numbers from 0 to 1, up to where the linkages begin. */
  #fractions(reader) {
    const end = reader.properties & HAS_ATTRIBUTES ? Math.min(reader.raw.length, 32 + 2 * reader.raw.readUInt16LE(30)) : reader.raw.length;
    const result = [];
    while (reader.at + 4 <= end) result.push(reader.i32() / MAX_INT);
    return result;
  }

  * #tagSets() {
    for (const raw of this.raws.ofType(TYPE.application)) {
      if (raw.level === TAG_SET_LEVEL && raw.bytes.length > HEADER) yield new ElementReader(raw.bytes, this.settings);
    }
  }

  /** A tag stands where its range is, and is as high. */
  #tag(i, raw, bytes, into) {
    const reader = new ElementReader(bytes, this.settings, this.codec);
    const [{ low, high }, text, key] = this.#guard(raw, () => [reader.range(), tagValue(bytes, this.codec), keyOfTag(bytes)]);
    const [reach, height] = [high[0] - low[0], high[1] - low[1]];
    if (!text.trim() || !(reach > 0 && height > 0)) return i + 1;
    const tag = this.tagNames.get(key);
    this.drawn.add(tag ? 'tags as attributes' : 'tags as texts');
    into.push({ ...this.#begun('text', raw), ...(tag ? { tag } : {}), origin: low, xAxis: [1, 0, 0], yAxis: [0, 1, 0], height, width: reach / text.length,
      text, justification: LEFT_BOTTOM });
    return i + 1;
  }

  /** A cell without a name, of what shows it. */
  #dimension(i, raw, into) {
    const picture = this.#guard(raw, () => pictureOf(new ElementReader(raw.bytes, this.settings)));
    if (picture) {
      this.drawn.add('dimensions from their points, figures worked out anew');
      const begun = this.#begun('cell', raw);
      const members = picture.map((part) => ({ ...begun, ...part }));
      into.push({ ...begun, name: '', origin: members[0].points[0], axes: [[1, 0, 0], [0, 1, 0], [0, 0, 1]], members });
    } else {
      this.leftOut.add('DIMENSION');
    }
    return i + 1;
  }

  #definition(i, raw, bytes, depth) {
    const end = this.#end(i, raw, this.#wordsOf(raw, bytes), 0);
    const members = [];
    for (let next = i + 1; next < end;) next = this.#read(next, members, depth + 1);
    const name = nameIn(bytes);
    if (this.definitions.has(name)) this.leftOut.add('SHARED CELL DEFINITION of a name that is taken');
    else this.definitions.set(name, { name, members });
    return end;
  }

  #instance(i, raw, bytes, into) {
    const reader = new ElementReader(bytes, this.settings, this.codec);
    const name = nameIn(bytes);
    const placed = this.#guard(raw, () => placeInstance(reader, this.definitions.get(name)));
    if (placed) into.push({ ...this.#begun('instance', raw), name, ...placed });
    else this.leftOut.add('SHARED CELL');
    return this.#end(i, raw, 0, 0);
  }
}

const STRING_LINKAGE = 0x56d2;

/** The name of a shared cell stands in a linkage of text. */
function nameIn(bytes) {
  for (let at = HEADER; at + 12 <= bytes.length; at += 2) {
    if (bytes.readUInt16LE(at) !== STRING_LINKAGE) continue;
    const text = bytes.toString('latin1', at + 2).replace(/[^\x21-\x7e]+/g, ' ').trim().split(' ').find((part) => part.length > 0);
    if (text) return text;
  }
  return '';
}

/** Throws Refusal. { is3d, uorPerMaster, unitName, origin, hiddenLevels, colors, elements, definitions, codePage, notes,
    references, leftOut, drawn }. Elements go into `into`, by its push(), once all that is inside of them is read; its begin(), if it has one,
    gets the rest before. */
export function readDgn(buffer, codePage, into = []) {
  return { ...new DrawingReader(buffer, codePage, into).drawing(), elements: into };
}
