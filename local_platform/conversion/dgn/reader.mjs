// SPDX-License-Identifier: MIT
// Reads DGN V7. The elements of a complex one become its members; what has no kind of its own is counted
// in `leftOut`.

import { FULL_TURN, length, samePoint, scale, unit } from '../geometry.mjs';
import { Refusal, Tally } from '../outcome.mjs';
import { isCurve, ofPieces, openKnots, openPeriodic } from '../spline.mjs';
import {
  ANGLE_UNIT, AT, COLOR_TABLE_LEVEL, COMPLEX, COMPLEX_HEAD, DEFAULT_COLORS, END_MARK, FILL_LINKAGE, HAS_ATTRIBUTES,
  HEADER, IS_3D, IS_CLOSED, IS_HOLE, IS_RATIONAL, LEFT_BOTTOM, MATRIX_UNIT, MAX_INT, NOTE, NOTES, NOTE_LINKAGE, SETTINGS_SIZE,
  SPLINE_HEAD, TEXT_UNIT, TYPE, VIEWS,
} from './format.mjs';
import { decodeName } from './names.mjs';
import { placeInstance } from './shared_cells.mjs';
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

/** Walks the elements; every step checks that the element lies within the file. */
function rawElements(buffer) {
  const result = [];
  for (let at = 0; ;) {
    if (at + 2 > buffer.length) throw new Refusal('the DGN file is cut short: it has no end mark', 'damaged');
    if (buffer.readUInt16LE(at) === END_MARK) return result;
    const end = at + 4 <= buffer.length ? at + 4 + 2 * buffer.readUInt16LE(at + 2) : Infinity;
    if (end > buffer.length) {
      throw new Refusal(`the DGN file is cut short: the element at byte ${at} is incomplete`, 'damaged');
    }
    const [low, high] = [buffer[at], buffer[at + 1]];
    result.push({ at, end, type: high & 0x7f, level: low & 0x3f, complex: (low & COMPLEX) !== 0,
      deleted: (high & 0x80) !== 0 });
    at = end;
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

/** The world axes of an element: its quaternion turns the world onto the element. */
function axesOfQuaternion([w, x, y, z]) {
  return [
    unit([w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y)]),
    unit([2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x)]),
  ];
}

class ElementReader {
  constructor(raw, settings, codec) {
    this.raw = raw;
    this.settings = settings;
    this.codec = codec;
    this.at = HEADER;
  }

  u8() { return this.raw.readUInt8(this.at++); }
  u16() { this.at += 2; return this.raw.readUInt16LE(this.at - 2); }
  i32() { this.at += 4; return readInt32(this.raw, this.at - 4); }
  f64() { this.at += 8; return readDouble(this.raw, this.at - 8); }
  size() { return this.f64() / this.settings.uorPerMaster; }
  angle() { return this.i32() / ANGLE_UNIT; }

  toMaster(x, y, z) {
    const { origin, uorPerMaster, is3d } = this.settings;
    return [(x - origin[0]) / uorPerMaster, (y - origin[1]) / uorPerMaster, is3d ? (z - origin[2]) / uorPerMaster : 0];
  }

  point() { return this.toMaster(this.i32(), this.i32(), this.settings.is3d ? this.i32() : 0); }
  precisePoint() { return this.toMaster(this.f64(), this.f64(), this.settings.is3d ? this.f64() : 0); }

  /** Lowest and highest corner, as the head of every element has them. */
  range() {
    const corner = (from) => this.toMaster(...[0, 4, 8].map((i) => readInt32(this.raw, from + i) ^ 0x80000000));
    return { low: corner(4), high: corner(16) };
  }

  axes() {
    if (this.settings.is3d) return axesOfQuaternion([this.i32(), this.i32(), this.i32(), this.i32()]);
    const turn = this.angle();
    return [[Math.cos(turn), Math.sin(turn), 0], [-Math.sin(turn), Math.cos(turn), 0]];
  }

  points(count = this.u16()) {
    const each = this.settings.is3d ? 12 : 8;
    if (this.at + count * each > this.raw.length) throw new RangeError('points');
    const result = new Array(count);
    for (let i = 0; i < count; i++) result[i] = this.point();
    return result;
  }

  get properties() { return this.raw.readUInt16LE(32); }

  /** Calls `visit(at, words)` for every linkage. */
  linkages(visit) {
    if ((this.properties & HAS_ATTRIBUTES) === 0) return;
    for (let at = 32 + 2 * this.raw.readUInt16LE(30); at + 4 <= this.raw.length;) {
      const head = this.raw.readUInt16LE(at);
      // A linkage without the "user" bit has a fixed four words; others carry their own length.
      const size = head & 0x1000 ? 2 * ((head & 0xff) + 1) : 8;
      visit(at, Math.min(size, this.raw.length - at));
      at += size;
    }
  }

  /** Whether it is filled and in which colour, whether it is a hole, and what is noted of it. */
  extras() {
    const result = {};
    if ((this.properties & (IS_HOLE | HAS_ATTRIBUTES)) === 0) return result;
    if (this.properties & IS_HOLE) result.isHole = true;
    this.linkages((at, size) => {
      if (size < 4) return;
      const id = this.raw.readUInt16LE(at + 2);
      if (this.raw.readUInt16LE(at) === FILL_LINKAGE[0] && id === FILL_LINKAGE[1] && size >= 10) {
        Object.assign(result, { filled: true, fillColor: this.raw[at + 8] });
      }
      if (id === NOTE_LINKAGE && size >= 8) {
        const [kind, value] = [this.raw.readUInt16LE(at + 4), this.raw.readUInt16LE(at + 6)];
        if (kind === NOTE.layer) result.layerNote = value;
        if (kind === NOTE.block) result.blockNote = value;
        if (kind === NOTE.axes && size >= 80) result.axesNote = this.#noted(at + 8);
      }
    });
    return result;
  }

  /** Three vectors. */
  #noted(at) {
    const row = (from) => [0, 8, 16].map((i) => this.raw.readDoubleLE(from + i));
    return [row(at), row(at + 24), row(at + 48)];
  }

  shape() {
    const points = this.points();
    if (points.length > 1 && samePoint(points[0], points[points.length - 1])) points.pop();
    return { points, filled: false, ...this.extras() };
  }

  round(start, sweep) {
    const [primary, secondary] = [this.size(), this.size()];
    const [xAxis, yAxis] = this.axes();
    const center = this.precisePoint();
    return { center, axis1: scale(xAxis, primary), axis2: scale(yAxis, secondary), start, sweep };
  }

  ellipse() { return { ...this.round(0, FULL_TURN), ...this.extras() }; }

  arc() {
    const start = this.angle();
    const sweep = this.i32();
    // The sweep has a sign bit of its own; 0 means all the way round.
    const size = (sweep & MAX_INT) / ANGLE_UNIT || FULL_TURN;
    return this.round(start, sweep < 0 ? -size : size);
  }

  textBytes() {
    const start = HEADER + 10 + (this.settings.is3d ? 28 : 12);
    if (start + 2 > this.raw.length) throw new RangeError('text');
    const count = this.raw[start];
    if (start + 2 + count > this.raw.length) throw new RangeError('text');
    return this.raw.subarray(start + 2, start + 2 + count);
  }

  text() {
    this.at++;
    const justification = this.u8() & 0xf;
    const unitSize = TEXT_UNIT / this.settings.uorPerMaster;
    const [width, height] = [this.i32() * unitSize, this.i32() * unitSize];
    let [xAxis, yAxis] = this.axes();
    const origin = this.point();
    // Sizes below zero are those of a text that runs backwards or stands on its head.
    if (width < 0) xAxis = scale(xAxis, -1);
    if (height < 0) yAxis = scale(yAxis, -1);
    return { origin, xAxis, yAxis, width: Math.abs(width), height: Math.abs(height),
      text: this.codec.decode(this.textBytes()), justification: Math.min(justification, 14), range: this.range() };
  }

  cell() {
    const { is3d, uorPerMaster } = this.settings;
    this.at += 2;
    const name = decodeName([this.u16(), this.u16()]);
    this.at += 2 + 8 + (is3d ? 24 : 16);
    const m = Array.from({ length: is3d ? 9 : 4 }, () => this.i32() / MATRIX_UNIT);
    const axes = is3d ? [[m[0], m[3], m[6]], [m[1], m[4], m[7]], [m[2], m[5], m[8]]]
      : [[m[0], m[2], 0], [m[1], m[3], 0], [0, 0, 1]];
    const { axesNote, ...extras } = this.extras();
    // The exact axes count as long as nobody has turned the cell since.
    const isSame = axesNote?.every((axis, i) => (i === 2 && !is3d) || axis.every((v, k) => Math.abs(v - axes[i][k]) <= 2 / MATRIX_UNIT));
    return { name, axes: isSame ? axesNote : axes, origin: this.point(), members: [], ...extras, resolution: 1 / uorPerMaster };
  }
}

const READ = {
  line: (r) => ({ points: r.points(2), ...r.extras() }),
  lineString: (r) => ({ points: r.points(), ...r.extras() }),
  shape: (r) => r.shape(),
  points: (r) => ({ points: r.points() }),
  ellipse: (r) => r.ellipse(),
  arc: (r) => ({ ...r.arc(), ...r.extras() }),
  text: (r) => ({ ...r.text(), ...r.extras() }),
  curve: (r) => curve(r.points()),
  cell: (r) => r.cell(),
  chain: (r) => ({ closed: false, members: [], ...r.extras() }),
  closedChain: (r) => ({ kind: 'chain', closed: true, members: [], ...r.extras() }),
};
const KIND_OF = new Map(Object.entries(TYPE).map(([name, type]) => [type, name]));

/** A curve goes through its points but for two at either end, which only shape it, as Akima has it: the
    slope at a point comes from the chords around it, so that one outlier does not make all of it swing. */
function curve(points) {
  if (points.length < 6) return { kind: 'lineString', points };
  const chords = points.slice(1).map((p, i) => p.map((v, k) => v - points[i][k]));
  const sizes = chords.map((c) => length(c) || 1);
  const slope = (i) => scale(chords[i], 1 / sizes[i]);
  const change = (i) => length(slope(i).map((v, k) => v - slope(i - 1)[k]));
  const tangent = (i) => {
    const [before, after] = [change(i - 1), change(i + 1)];
    const weight = before + after > 0 ? after / (before + after) : 0.5;
    return slope(i - 1).map((v, k) => v * weight + slope(i)[k] * (1 - weight));
  };
  const pieces = [];
  for (let i = 2; i + 3 < points.length; i++) {
    const [t0, t1] = [scale(tangent(i), sizes[i] / 3), scale(tangent(i + 1), sizes[i] / 3)];
    pieces.push([points[i], points[i].map((v, k) => v + t0[k]), points[i + 1].map((v, k) => v - t1[k]), points[i + 1]]);
  }
  return pieces.length > 0 ? { kind: 'spline', ...ofPieces(pieces) } : { kind: 'lineString', points: points.slice(2, -2) };
}

class DrawingReader {
  definitions = new Map();
  leftOut = new Tally();
  drawn = new Tally();
  colors = DEFAULT_COLORS;
  notes = null;
  references = [];

  constructor(buffer, codePage, elements) {
    this.buffer = buffer;
    this.elements = elements;
    this.settings = readSettings(buffer);
    this.raws = rawElements(buffer);
    this.#readNotes();
    this.codePage = codePage ?? this.notes?.codePage ?? guessCodePage(this.#textBytes());
    this.codec = new TextCodec(this.codePage);
    this.#readColors();
    elements.begin?.(this.drawing());
    for (let i = 0; i < this.raws.length;) i = this.#read(i, this.elements, 0);
  }

  #bytes({ at, end }) { return this.buffer.subarray(at, end); }

  * #textBytes() {
    for (const raw of this.raws) {
      if (raw.type === TYPE.text && !raw.deleted) yield this.#guard(raw, () => new ElementReader(this.#bytes(raw), this.settings).textBytes());
    }
  }

  #readNotes() {
    const chunks = this.raws.filter((raw) => raw.type === TYPE.application && raw.level === NOTES.level && !raw.deleted
      && raw.end - raw.at > HEADER + 6 && this.buffer.readUInt16LE(raw.at + HEADER) === NOTES.mark)
      .map((raw) => this.#bytes(raw)).map((bytes) => bytes.subarray(HEADER + 6, HEADER + 6 + bytes.readUInt16LE(HEADER + 4)));
    if (chunks.length === 0) return;
    try {
      this.notes = JSON.parse(Buffer.concat(chunks).toString('utf8'));
    } catch {
      this.leftOut.add('damaged notes of an earlier conversion');
    }
  }

  #readColors() {
    for (const raw of this.raws) {
      const isTable = raw.type === TYPE.group && raw.level === COLOR_TABLE_LEVEL && !raw.deleted;
      if (isTable && raw.end - raw.at >= 806) this.colors = readColorTable(this.#bytes(raw));
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
    const raw = this.raws[i];
    const { type } = raw;
    const bytes = this.#bytes(raw);
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
    if (type === TYPE.dimension) {
      this.leftOut.add('DIMENSION');
      return i + 1;
    }
    if (type === TYPE.tag) return this.#tag(i, raw, bytes, into);
    if (!(kind in READ)) return i + 1;
    const element = this.#guard(raw, () => ({ kind, ...this.#symbology(raw, bytes),
      ...READ[kind](new ElementReader(bytes, this.settings, this.codec)) }));
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

  #symbology(raw, bytes) {
    return { level: raw.level, color: bytes.readUInt8(35), weight: bytes.readUInt8(34) >> 3, style: bytes.readUInt8(34) & 7,
      group: bytes.readUInt16LE(28) };
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
    while (next < this.raws.length && this.raws[next].complex && this.raws[next].at < until) next++;
    if (next > i + 1 || count === 0) return next;
    while (next < this.raws.length && this.raws[next].complex && next - i <= count) next++;
    return next;
  }

  #spline(i, raw, bytes, into) {
    const end = this.#end(i, raw, this.#wordsOf(raw, bytes), 0);
    this.#guard(raw, () => {
      const [flags, poleCount, knotCount] = [bytes.readUInt8(40), bytes.readUInt16LE(42), bytes.readUInt16LE(44)];
      const degree = (flags & 0xf) + 1;
      const parts = { poles: [], knots: [], weights: [] };
      for (const part of this.raws.slice(i + 1, end)) {
        const name = KIND_OF.get(part.type);
        if (!(name in parts)) continue;
        const reader = new ElementReader(this.#bytes(part), this.settings, this.codec);
        if (name === 'poles') parts.poles.push(...reader.points());
        else parts[name].push(...this.#fractions(reader));
      }
      const curve = splineOf({ degree, isClosed: (flags & IS_CLOSED) !== 0, isWeighted: (flags & IS_RATIONAL) !== 0,
        poles: parts.poles.slice(0, poleCount), knots: parts.knots.slice(0, knotCount), weights: parts.weights });
      if (curve) into.push({ kind: 'spline', ...this.#symbology(raw, bytes), ...curve, ...new ElementReader(bytes, this.settings).extras() });
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

  /** A tag stands where its range is, and is as high. */
  #tag(i, raw, bytes, into) {
    const reader = new ElementReader(bytes, this.settings, this.codec);
    const { low, high } = reader.range();
    const text = this.#guard(raw, () => tagValue(bytes, this.codec));
    const [reach, height] = [high[0] - low[0], high[1] - low[1]];
    if (!text.trim() || !(reach > 0 && height > 0)) return i + 1;
    this.drawn.add('tags as texts');
    into.push({ kind: 'text', ...this.#symbology(raw, bytes), origin: [low[0], low[1], low[2]], xAxis: [1, 0, 0], yAxis: [0, 1, 0],
      height, width: reach / text.length, text, justification: LEFT_BOTTOM });
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
    if (placed) into.push({ kind: 'instance', name, ...this.#symbology(raw, bytes), ...placed });
    else this.leftOut.add('SHARED CELL');
    return this.#end(i, raw, 0, 0);
  }
}

const TAG = { type: 74, size: 150, value: 154, text: 1, integer: 3, real: 4 };

function tagValue(bytes, codec) {
  switch (bytes.readUInt16LE(TAG.type)) {
    case TAG.text: {
      const value = bytes.subarray(TAG.value, TAG.value + bytes.readUInt16LE(TAG.size));
      const end = value.indexOf(0);
      return codec.decode(end < 0 ? value : value.subarray(0, end));
    }
    case TAG.integer: return `${bytes.readInt32LE(TAG.value)}`;
    case TAG.real: return `${Number(readDouble(bytes, TAG.value).toPrecision(10))}`;
    default: return '';
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

function splineOf({ degree, isClosed, isWeighted, poles, knots, weights }) {
  const own = isWeighted && weights.length === poles.length ? weights : [];
  if (poles.length <= degree || own.some((w) => !(w > 0))) return null;
  const ascending = knots.every((u, i) => i === 0 || u >= knots[i - 1]);
  const inner = ascending ? knots : [];
  if (isClosed) return openPeriodic({ degree, points: poles, weights: own, innerKnots: inner });
  const isWhole = inner.length === poles.length + degree + 1;
  const curve = { degree, points: poles, weights: own, knots: isWhole ? inner : openKnots(degree, poles.length, inner) };
  return isCurve(curve) ? curve : null;
}

/** Throws Refusal. { is3d, uorPerMaster, unitName, origin, hiddenLevels, colors, elements, definitions, codePage, notes,
    references, leftOut, drawn }. Elements go into `into`, by its push(), once all that is inside of them is read; its begin(), if it has one,
    gets the rest before. */
export function readDgn(buffer, codePage, into = []) {
  return { ...new DrawingReader(buffer, codePage, into).drawing(), elements: into };
}
