// SPDX-License-Identifier: MIT
// Writes DGN V7.

import { FULL_TURN, cross, length, scale, unit } from '../geometry.mjs';
import { openPieces, unitKnots } from '../spline.mjs';
import { extentOf, outline } from './extent.mjs';
import {
  ANGLE_UNIT, AT, COLOR_TABLE_LEVEL, COMPLEX, COMPLEX_HEAD, DEFAULT_COLORS, END_MARK, FILL_LINKAGE, HAS_ATTRIBUTES,
  HEADER, IS_3D, IS_HOLE, IS_RATIONAL, LEFT_BOTTOM, MATRIX_UNIT, MAX_INT, MAX_POLES, MAX_VERTICES, NOTE, NOTES,
  NOTE_LINKAGE, SETTINGS_SIZE, SPLINE_HEAD, TEXT_UNIT, TYPE, VIEWS, VIEW_ON,
} from './format.mjs';
import { encodeName } from './names.mjs';
import { planDesignPlane } from './plane.mjs';
import { Survey } from './survey.mjs';
import { TextCodec, fittingCodePage } from './text.mjs';
import { writeDouble, writeInt32 } from './vax.mjs';

const MAX_COMPLEX_WORDS = 60000;
const VIEW_FLAGS = 0xb87c;

function quaternionOfAxes(x, y) {
  const m = [x, y, cross(x, y)];
  const trace = m[0][0] + m[1][1] + m[2][2];
  const w = Math.sqrt(Math.max(0, 1 + trace)) / 2;
  if (w > 0.1) {
    return [w, (m[2][1] - m[1][2]) / (4 * w), (m[0][2] - m[2][0]) / (4 * w), (m[1][0] - m[0][1]) / (4 * w)];
  }
  // Close to half a turn, the largest component is the one to divide by.
  const i = m[0][0] >= m[1][1] && m[0][0] >= m[2][2] ? 0 : m[1][1] >= m[2][2] ? 1 : 2;
  const [j, k] = [(i + 1) % 3, (i + 2) % 3];
  const largest = Math.sqrt(Math.max(0, 1 + m[i][i] - m[j][j] - m[k][k])) / 2;
  const result = [(m[k][j] - m[j][k]) / (4 * largest), 0, 0, 0];
  result[1 + i] = largest;
  result[1 + j] = (m[j][i] + m[i][j]) / (4 * largest);
  result[1 + k] = (m[k][i] + m[i][k]) / (4 * largest);
  return result;
}

class ElementWriter {
  #bytes;
  #at = 0;
  #start = 0;

  /** What is not used of the room costs no memory. */
  constructor(plane, codec, room = 0) {
    Object.assign(this, { plane, codec });
    this.#bytes = Buffer.alloc(Math.max(room, 1 << 16));
  }

  bytes() { return this.#bytes.subarray(0, this.#at); }
  get at() { return this.#at; }
  cutBack(at) { this.#at = at; }
  patch16(at, value) { this.#bytes.writeUInt16LE(value, at); }
  patch32(at, value) { writeInt32(this.#bytes, at, value); }

  #room(count) {
    const at = this.#at;
    this.#at += count;
    if (this.#at > this.#bytes.length) {
      const larger = Buffer.alloc(Math.max(this.#at, Math.ceil(1.5 * this.#bytes.length)));
      larger.set(this.#bytes);
      this.#bytes = larger;
    }
    return at;
  }

  u8(value) { const at = this.#room(1); this.#bytes[at] = value; }
  u16(value) { const at = this.#room(2); this.#bytes.writeUInt16LE(value, at); }
  i32(value) { const at = this.#room(4); writeInt32(this.#bytes, at, value); }
  f64(value) { const at = this.#room(8); writeDouble(this.#bytes, at, value); }
  raw(bytes) { const at = this.#room(bytes.length); this.#bytes.set(bytes, at); }
  zeros(count) { const at = this.#room(count); this.#bytes.fill(0, at, at + count); }

  begin(type, level, complex = false) {
    this.#start = this.#at;
    this.u8(level | (complex ? COMPLEX : 0));
    this.u8(type);
    this.zeros(HEADER - 2);
    return this.#start;
  }

  /** What follows is not geometry but attributes attached to it. */
  endGeometry() {
    if ((this.#at - this.#start) % 2 !== 0) this.u8(0);
    this.patch16(this.#start + 30, (this.#at - this.#start - 32) / 2);
  }

  end() {
    this.patch16(this.#start + 2, (this.#at - this.#start - 4) / 2);
  }

  /** Fill and notes; returns what the properties must say of them. */
  attributes({ filled, fillColor, color, isHole, layerNote, blockNote, attributeNote, axes }) {
    if (!filled && !isHole && layerNote === undefined && blockNote === undefined && attributeNote === undefined) return 0;
    const notes = [[NOTE.layer, layerNote], [NOTE.block, blockNote], [NOTE.attribute, attributeNote]].filter(([, value]) => value !== undefined);
    if (filled) {
      FILL_LINKAGE.forEach((word) => this.u16(word));
      this.u16(fillColor ?? color);
      this.zeros(6);
    }
    for (const [kind, value] of notes) for (const word of [0x1003, NOTE_LINKAGE, kind, value]) this.u16(word);
    if (blockNote !== undefined) {
      // A cell's own matrix has but five digits.
      for (const word of [0x1027, NOTE_LINKAGE, NOTE.axes, 0]) this.u16(word);
      this.raw(new Uint8Array(Float64Array.from(axes.flat()).buffer));
    }
    return (filled || notes.length > 0 ? HAS_ATTRIBUTES : 0) | (isHole ? IS_HOLE : 0);
  }

  display({ color, weight, style, group = 0 }, points, properties) {
    const { is3d } = this.plane;
    const low = [MAX_INT, MAX_INT, MAX_INT];
    const high = [-MAX_INT - 1, -MAX_INT - 1, -MAX_INT - 1];
    for (const point of points) {
      for (let i = 0; i < 3; i++) {
        const value = Math.max(-MAX_INT - 1, Math.min(MAX_INT, this.uor(point[i], i)));
        if (value < low[i]) low[i] = value;
        if (value > high[i]) high[i] = value;
      }
    }
    if (!is3d) [low[2], high[2]] = [-MAX_INT - 1, MAX_INT];
    // Ranges are compared as unsigned numbers, so their sign bit is the other way round.
    for (let i = 0; i < 3; i++) {
      this.patch32(this.#start + 4 + 4 * i, low[i] ^ 0x80000000);
      this.patch32(this.#start + 16 + 4 * i, high[i] ^ 0x80000000);
    }
    this.patch16(this.#start + 28, group);
    this.patch16(this.#start + 32, properties);
    this.#bytes[this.#start + 34] = (style & 7) | (weight << 3);
    this.#bytes[this.#start + 35] = color;
  }

  uor(value, axis) { return Math.round(value * this.plane.uorPerMaster + this.plane.origin[axis]); }
  size(value) { this.f64(value * this.plane.uorPerMaster); }
  angle(radians) { this.i32(Math.round(radians * ANGLE_UNIT)); }
  textSize(value) { this.i32(Math.round((value * this.plane.uorPerMaster) / TEXT_UNIT)); }
  fraction(value) { this.i32(Math.round(value * MAX_INT)); }

  point(p) {
    this.i32(this.uor(p[0], 0));
    this.i32(this.uor(p[1], 1));
    if (this.plane.is3d) this.i32(this.uor(p[2], 2));
  }

  precisePoint(p) {
    for (let i = 0; i < (this.plane.is3d ? 3 : 2); i++) this.f64(p[i] * this.plane.uorPerMaster + this.plane.origin[i]);
  }

  axes(x, y) {
    if (!this.plane.is3d) return this.angle(Math.atan2(x[1], x[0]));
    quaternionOfAxes(x, y).forEach((q) => this.i32(Math.max(-MAX_INT, Math.min(MAX_INT, Math.round(q * 2 ** 31)))));
  }

  vertices(points) {
    this.u16(points.length);
    points.forEach((p) => this.point(p));
  }

  round({ axis1, axis2, center }) {
    this.size(length(axis1));
    this.size(length(axis2));
    const x = length(axis1) > 0 ? unit(axis1) : [1, 0, 0];
    this.axes(x, length(axis2) > 0 ? unit(axis2) : [-x[1], x[0], 0]);
    this.precisePoint(center);
  }

  arc(arc) {
    const start = ((arc.start % FULL_TURN) + FULL_TURN) % FULL_TURN;
    const sweep = Math.min(Math.round(Math.abs(arc.sweep) * ANGLE_UNIT), Math.round(FULL_TURN * ANGLE_UNIT));
    this.angle(start);
    this.i32(arc.sweep < 0 ? sweep | 0x80000000 : sweep);
    this.round(arc);
  }

  text({ origin, xAxis, yAxis, width, height, bytes, justification = LEFT_BOTTOM }) {
    this.raw([0, justification]); // the first font; the origin is the lower left corner whatever the justification
    this.textSize(width);
    this.textSize(height);
    this.axes(xAxis, yAxis);
    this.point(origin);
    this.raw([bytes.length, 0]);
    this.raw(bytes);
  }
}

const WRITE = {
  line: (w, e) => e.points.forEach((p) => w.point(p)),
  lineString: (w, e) => w.vertices(e.points),
  points: (w, e) => w.vertices(e.points),
  shape: (w, e) => w.vertices([...e.points, e.points[0]]),
  ellipse: (w, e) => w.round(e),
  arc: (w, e) => w.arc(e),
  text: (w, e) => w.text(e),
};

/** A flat drawing knows only counterclockwise axes. */
function counterclockwise(arc) {
  if (arc.axis1[0] * arc.axis2[1] >= arc.axis1[1] * arc.axis2[0]) return arc;
  return { ...arc, axis2: scale(arc.axis2, -1), start: -arc.start, sweep: -arc.sweep };
}

function writeSimple(writer, element, complex) {
  const flatRound = element.axis1 && !writer.plane.is3d;
  writer.begin(TYPE[element.kind], element.level, complex);
  WRITE[element.kind](writer, flatRound ? counterclockwise(element) : element);
  writer.endGeometry();
  writer.display(element, outline(element), writer.attributes(element));
  writer.end();
}

/** Long texts go on behind themselves, as far as the width of characters tells. */
function writeText(writer, element, complex) {
  let { origin } = element;
  if (element.text.length < 64) {
    const bytes = writer.codec.encode(element.text);
    if (bytes.length < 256) return writeSimple(writer, { ...element, bytes }, complex);
  }
  for (const [text, bytes] of writer.codec.pieces(element.text)) {
    writeSimple(writer, { ...element, origin, text, bytes }, complex);
    origin = origin.map((v, i) => v + element.xAxis[i] * element.width * text.length);
  }
  return undefined;
}

/** A header, its members, and the header's length in words, which must not exceed what it can say. */
function writeComplex(writer, head, type, complex, start, members) {
  const at = writer.begin(type, head.level, complex);
  start();
  writer.endGeometry();
  writer.display(head, head.span, writer.attributes(head));
  writer.end();
  members();
  const words = (writer.at - at - COMPLEX_HEAD) / 2;
  if (words <= 0xffff) writer.patch16(at + HEADER, words);
  return words <= 0xffff;
}

function writeSpline(writer, spline, complex) {
  for (const { degree, points, weights, knots } of openPieces(spline, MAX_POLES)) {
    const curve = { ...spline, points };
    const at = writer.begin(TYPE.spline, spline.level, complex);
    const inner = unitKnots({ knots }).slice(degree + 1, -degree - 1);
    writer.i32(0);
    writer.raw([(degree - 1) | 0x10 | (weights.length ? IS_RATIONAL : 0), 0]);
    writer.u16(points.length);
    writer.u16(inner.length);
    writer.endGeometry();
    writer.display(spline, points, writer.attributes(spline));
    writer.end();
    const part = (type, fill) => {
      writer.begin(type, spline.level, true);
      fill();
      writer.endGeometry();
      writer.display(spline, outline(curve), 0);
      writer.end();
    };
    if (inner.length > 0) part(TYPE.knots, () => inner.forEach((u) => writer.fraction(u)));
    part(TYPE.poles, () => writer.vertices(points));
    const heaviest = Math.max(...weights);
    if (weights.length > 0) part(TYPE.weights, () => weights.forEach((w) => writer.fraction(w / heaviest)));
    writer.patch32(at + HEADER, (writer.at - at - SPLINE_HEAD) / 2);
  }
}

/** Long line strings become several that share their ends. */
function pieces(element) {
  if (element.kind !== 'lineString' || element.points.length <= MAX_VERTICES) return [element];
  const result = [];
  for (let i = 0; i + 1 < element.points.length; i += MAX_VERTICES - 1) {
    result.push({ ...element, points: element.points.slice(i, i + MAX_VERTICES) });
  }
  return result;
}

/** Room for the element in words; no member of a chain needs more. */
const wordsOf = (element) => 120 + 12 * (element.points?.length ?? 0);

function writeChain(writer, chain, complex) {
  const groups = [[]];
  let words = 0;
  for (const member of chain.members.flatMap(pieces)) {
    words += wordsOf(member);
    if (words > MAX_COMPLEX_WORDS) {
      groups.push([]);
      words = wordsOf(member);
    }
    groups.at(-1).push(member);
  }
  // A boundary too long for one element is drawn by several open ones.
  const isClosed = chain.closed && groups.length === 1;
  const { filled, fillColor, isHole, layerNote, blockNote, ...plain } = chain;
  for (const members of groups) {
    const head = { ...(isClosed ? chain : plain), span: members.flatMap(outline) };
    writeComplex(writer, head, isClosed ? TYPE.closedChain : TYPE.chain, complex, () => {
      writer.u16(0);
      writer.u16(members.length);
      writer.zeros(8);
    }, () => members.forEach((member) => writeElement(writer, { ...plain, ...member }, true)));
  }
}

/** A cell too large for its header's length is drawn without one. */
function writeCell(writer, cell, complex, drawn) {
  const { is3d } = writer.plane;
  const { low, high } = extentOf([cell]);
  const before = writer.at;
  const levels = new Set(cell.members.map((member) => member.level));
  const fits = writeComplex(writer, { ...cell, span: outline(cell) }, TYPE.cell, complex, () => {
    writer.u16(0);
    encodeName(cell.name).forEach((word) => writer.u16(word));
    writer.u16(0);
    writer.raw(levelMask([], levels));
    writer.point(low);
    writer.point(high);
    const [x, y, z] = cell.axes;
    const matrix = is3d ? [0, 1, 2].flatMap((i) => [x[i], y[i], z[i]]) : [x[0], y[0], x[1], y[1]];
    matrix.forEach((v) => writer.i32(Math.max(-MAX_INT, Math.min(MAX_INT, Math.round(v * MATRIX_UNIT)))));
    writer.point(cell.origin);
  }, () => cell.members.forEach((member) => writeElement(writer, member, true, drawn)));
  if (fits) return;
  writer.cutBack(before);
  drawn.add('blocks too large for a cell, as a group');
  cell.members.forEach((member) => writeElement(writer, { ...member, group: cell.looseGroup ?? member.group }, complex, drawn));
}

function writeElement(writer, element, complex, drawn) {
  const { kind, points } = element;
  if (kind === 'chain') return writeChain(writer, element, complex);
  if (kind === 'cell') return writeCell(writer, element, complex, drawn);
  if (kind === 'spline') return writeSpline(writer, element, complex);
  if (kind === 'text') return writeText(writer, element, complex);
  if (kind === 'lineString' && points.length > MAX_VERTICES) {
    if (complex) return pieces(element).forEach((piece) => writeSimple(writer, piece, true));
    return writeChain(writer, { ...element, points: undefined, kind: 'chain', closed: false, members: [{ kind, points }] }, complex);
  }
  if (kind === 'shape' && points.length >= MAX_VERTICES) {
    const members = [{ kind: 'lineString', points: [...points, points[0]] }];
    return writeChain(writer, { ...element, points: undefined, kind: 'chain', closed: true, members }, complex);
  }
  return writeSimple(writer, element, complex);
}

function levelMask(hiddenLevels, shownLevels) {
  const mask = Buffer.alloc(8, shownLevels ? 0 : 0xff);
  for (const level of hiddenLevels) mask[(level - 1) >> 3] &= ~(1 << ((level - 1) & 7));
  for (const level of shownLevels ?? []) mask[(level - 1) >> 3] |= 1 << ((level - 1) & 7);
  return mask;
}

function settingsElement(plane, unitName, hiddenLevels) {
  const { is3d, uorPerMaster, subUnits, origin, low, high } = plane;
  const raw = Buffer.alloc(SETTINGS_SIZE);
  raw.set([is3d ? 0xc8 : 8, TYPE.settings]);
  raw.writeUInt16LE((SETTINGS_SIZE - 4) / 2, 2);
  writeInt32(raw, AT.subUnits, subUnits);
  writeInt32(raw, AT.uorPerSub, uorPerMaster / subUnits);
  raw.write(unitName.padEnd(2).slice(0, 2), AT.unitName, 'latin1');
  raw.write('su', AT.unitName + 2, 'latin1');
  raw[AT.dimension] = is3d ? IS_3D : 0;
  origin.forEach((value, i) => writeDouble(raw, AT.origin + 8 * i, value));
  const uor = (value, i) => (i < 2 || is3d ? Math.round(value[i] * uorPerMaster + origin[i]) : 0);
  for (let view = 0; view < VIEWS.count; view++) {
    const at = VIEWS.at + view * VIEWS.size;
    // The first view is open and shows everything.
    raw.writeUInt16LE(VIEW_FLAGS | (view === 0 ? VIEW_ON : 0), at);
    raw.set(levelMask(hiddenLevels), at + VIEWS.levels);
    for (let i = 0; i < 3; i++) {
      writeInt32(raw, at + VIEWS.origin + 4 * i, uor(low, i));
      writeInt32(raw, at + VIEWS.delta + 4 * i, Math.min(MAX_INT, Math.max(1, uor(high, i) - uor(low, i))));
      writeDouble(raw, at + VIEWS.rotation + 32 * i, 1);
    }
    writeDouble(raw, at + VIEWS.scale, 1);
  }
  return raw;
}

function writeNotes(writer, notes) {
  const bytes = Buffer.from(JSON.stringify(notes));
  for (let at = 0; at < bytes.length; at += NOTES.chunk) {
    const part = bytes.subarray(at, at + NOTES.chunk);
    writer.begin(TYPE.application, NOTES.level);
    writer.u16(NOTES.mark);
    writer.u16(at / NOTES.chunk);
    writer.u16(part.length);
    writer.raw(part);
    writer.endGeometry();
    writer.end();
  }
}

/** Throws Refusal. `elements` are an array or a Spool, not empty. `begin` is told { plane } before anything is written, and returns
    what is called with each element that is. Returns { bytes, outliers: how many were left out, codePage }; the page is the one
    asked for, or the one that has the characters of the texts. What is drawn otherwise than it was is counted in `drawn`. */
export function writeDgn({ elements, colors = DEFAULT_COLORS, unitName = 'mu', hiddenLevels = [], codePage, notes,
  drawn = { add() {} }, begin = () => () => {} }) {
  const survey = elements.survey ?? Survey.of(elements);
  const { plane, outliers } = planDesignPlane(elements, survey);
  const page = codePage ?? fittingCodePage(survey.characters);
  const writer = new ElementWriter(plane, new TextCodec(page), elements.bytes);
  const each = begin(plane);
  writer.raw(settingsElement(plane, unitName, hiddenLevels));
  for (const [type, size] of [[TYPE.digitizer, 356], [TYPE.levels, 156]]) {
    writer.begin(type, 0);
    writer.zeros(size - HEADER);
    writer.end();
  }
  writer.begin(TYPE.group, COLOR_TABLE_LEVEL);
  writer.u16(0);
  for (let i = 0; i < 256; i++) writer.raw(colors[(i + 255) % 256]);
  writer.endGeometry();
  writer.end();
  if (notes) writeNotes(writer, { ...notes, codePage: page });
  elements.forEach((element, i) => {
    if (outliers.has(i)) return;
    each(element);
    writeElement(writer, element, false, drawn);
  });
  writer.u16(END_MARK);
  return { bytes: writer.bytes(), outliers: outliers.size, codePage: page };
}
