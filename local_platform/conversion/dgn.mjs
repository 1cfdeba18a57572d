// SPDX-License-Identifier: MIT
// Reads and writes DGN V7 drawings. Needs nothing but Node.
//
// A file is a run of elements, each led by level, type and length in words, and ends with ff ff. The
// first element (type 9) holds the settings of the whole drawing. Coordinates are integers, "UORs";
// here they come and go in master units. An element is one of
//   { kind: 'line' | 'lineString' | 'curve', points }
//   { kind: 'shape', points, filled }       the closing point is not repeated
//   { kind: 'ellipse' | 'arc', center, axis1, axis2, start, sweep }       see geometry.mjs
//   { kind: 'text', origin, xAxis, yAxis, height, width, text }       unit axes, width per character
//   { kind: 'chain', closed, members }
// and has level (1 to 63), color (0 to 255), weight (0 to 31), style (0 to 7) and group (0 to 65535).

import {
  FULL_TURN, add, arcExtremes, combine, cross, length, samePoint, scale, unit,
} from './geometry.mjs';
import { DEFAULT_CODE_PAGE, TextCodec } from './dgn_text.mjs';
import { Refusal, Tally } from './outcome.mjs';
import { readDouble, readInt32, writeDouble, writeInt32 } from './vax.mjs';

const TYPE = {
  cell: 2, line: 3, lineString: 4, group: 5, shape: 6, textNode: 7, digitizer: 8, settings: 9,
  levels: 10, curve: 11, chain: 12, closedChain: 14, ellipse: 15, arc: 16, text: 17,
};
const TYPE_NAME = new Map(Object.entries(TYPE).map(([name, type]) => [type, name]));

/** Graphic elements that are not read. Others that are not read show nothing by themselves. */
const LEFT_OUT = new Map([
  [13, 'CONICAL'], [18, 'SURFACE'], [19, 'SOLID'], [23, 'CONE'], [24, 'B-SPLINE SURFACE'],
  [27, 'B-SPLINE CURVE'], [33, 'DIMENSION'], [35, 'SHARED CELL'], [36, 'MULTILINE'], [87, 'RASTER'],
]);

/** What a chain can be made of; anything else found in one becomes an element of its own. */
const LINKS = new Set(['line', 'lineString', 'curve', 'arc']);

const HEADER = 36;
const SETTINGS_SIZE = 1536;
const AT = { subUnits: 1112, uorPerSub: 1116, unitName: 1120, dimension: 1214, origin: 1240 };
const VIEWS = { at: 46, size: 118, count: 8, levels: 2, origin: 10, delta: 22, rotation: 34, scale: 106 };
const IS_3D = 0x40;
const COMPLEX = 0x80;
const HAS_ATTRIBUTES = 0x0800;
const COLOR_TABLE_LEVEL = 1;
const FILL_LINKAGE = [0x1007, 0x0041, 0x0802, 0x0001, 0, 0, 0, 0];
const END_MARK = 0xffff;
const ANGLE_UNIT = 360000 * (180 / Math.PI);
const TEXT_UNIT = 6 / 1000;
const MAX_VERTICES = 101;
const MAX_TEXT_BYTES = 255;
const MAX_CHAIN_WORDS = 60000;
const MAX_INT = 2 ** 31 - 1;

/** The colours of a drawing without a table of its own: eight hues that fade from one row of sixteen
    to the next, but for a few. */
const HUES = [
  [255, 255, 255], [0, 0, 255], [0, 255, 0], [255, 0, 0], [255, 255, 0], [255, 0, 255], [255, 127, 0],
  [0, 255, 255],
];
const FIRST_ROW = [
  [64, 64, 64], [192, 192, 192], [254, 0, 96], [160, 224, 0], [0, 254, 160], [128, 0, 160], [176, 176, 176],
];
const LAST = [[192, 192, 192], [28, 0, 100]];

function defaultColor(index) {
  if (index >= 8 && index < 15) return FIRST_ROW[index - 8];
  if (index >= 254) return LAST[index - 254];
  const row = Math.floor(index / 16) + (index % 16 === 15 ? 1 : 0);
  const fade = { 0: 0, 127: 5 * row, 255: 15 * row };
  return HUES[index % 8].map((c) => c - fade[c]);
}
export const DEFAULT_COLORS = Array.from({ length: 256 }, (_, index) => defaultColor(index));

// ---------------------------------------------------------------------------------------- reading

/** Walks the elements; every step checks that the element lies within the file. */
function* rawElements(buffer) {
  let at = 0;
  for (;;) {
    if (at + 2 > buffer.length) throw new Refusal('the DGN file is cut short: it has no end mark');
    if (buffer.readUInt16LE(at) === END_MARK) return;
    const end = at + 4 <= buffer.length ? at + 4 + 2 * buffer.readUInt16LE(at + 2) : Infinity;
    if (end > buffer.length) throw new Refusal(`the DGN file is cut short: the element at byte ${at} is incomplete`);
    const raw = buffer.subarray(at, end);
    yield { at, raw, type: raw[1] & 0x7f, level: raw[0] & 0x3f, complex: (raw[0] & COMPLEX) !== 0,
      deleted: (raw[1] & 0x80) !== 0 };
    at = end;
  }
}

function readSettings(buffer) {
  if (buffer.length === 0) throw new Refusal('the file is empty');
  if (buffer.length > 8 && buffer.readUInt32BE(0) === 0xd0cf11e0) {
    throw new Refusal('this is a DGN V8 file; only DGN V7 can be read');
  }
  if (buffer[0] === 8 && buffer[1] === 5) throw new Refusal('this is a DGN cell library, not a drawing');
  if ((buffer[0] !== 8 && buffer[0] !== 0xc8) || buffer[1] !== TYPE.settings) {
    throw new Refusal('this is not a DGN file');
  }
  const { raw } = rawElements(buffer).next().value;
  if (raw.length < SETTINGS_SIZE) throw new Refusal('the DGN file is damaged: its settings are too short');
  const uorPerMaster = readInt32(raw, AT.subUnits) * readInt32(raw, AT.uorPerSub);
  if (!(uorPerMaster > 0)) throw new Refusal('the DGN file is damaged: its working units are not positive');
  const levels = Array(8).fill(0);
  for (let view = 0; view < VIEWS.count; view++) {
    for (let i = 0; i < 8; i++) levels[i] |= raw[VIEWS.at + view * VIEWS.size + VIEWS.levels + i];
  }
  const isHidden = (level) => (levels[(level - 1) >> 3] & (1 << ((level - 1) & 7))) === 0;
  return {
    is3d: (raw[AT.dimension] & IS_3D) !== 0,
    uorPerMaster,
    unitName: raw.toString('latin1', AT.unitName, AT.unitName + 2).replace(/[^a-z]/gi, ''),
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
    Object.assign(this, { raw, settings, codec, at: HEADER });
  }

  u8() { return this.raw.readUInt8(this.at++); }
  u16() { this.at += 2; return this.raw.readUInt16LE(this.at - 2); }
  i32() { this.at += 4; return readInt32(this.raw, this.at - 4); }
  f64() { this.at += 8; return readDouble(this.raw, this.at - 8); }
  size() { return this.f64() / this.settings.uorPerMaster; }
  angle() { return this.i32() / ANGLE_UNIT; }

  #position(next) {
    const { origin, uorPerMaster, is3d } = this.settings;
    const [x, y, z] = [next(), next(), is3d ? next() : origin[2]];
    return [(x - origin[0]) / uorPerMaster, (y - origin[1]) / uorPerMaster, (z - origin[2]) / uorPerMaster];
  }
  point() { return this.#position(() => this.i32()); }
  precisePoint() { return this.#position(() => this.f64()); }

  axes() {
    if (this.settings.is3d) return axesOfQuaternion([this.i32(), this.i32(), this.i32(), this.i32()]);
    const turn = this.angle();
    return [[Math.cos(turn), Math.sin(turn), 0], [-Math.sin(turn), Math.cos(turn), 0]];
  }

  points(count = this.u16()) {
    return Array.from({ length: count }, () => this.point());
  }

  isFilled() {
    if ((this.raw.readUInt16LE(32) & HAS_ATTRIBUTES) === 0) return false;
    for (let at = 32 + 2 * this.raw.readUInt16LE(30); at + 4 <= this.raw.length;) {
      const head = this.raw.readUInt16LE(at);
      if (head === FILL_LINKAGE[0] && this.raw.readUInt16LE(at + 2) === FILL_LINKAGE[1]) return true;
      // A linkage without the "user" bit has a fixed four words; others carry their own length.
      at += head & 0x1000 ? 2 * ((head & 0xff) + 1) : 8;
    }
    return false;
  }

  shape() {
    const points = this.points();
    if (points.length > 1 && samePoint(points[0], points[points.length - 1])) points.pop();
    return { points, filled: this.isFilled() };
  }

  round(start, sweep) {
    const [primary, secondary] = [this.size(), this.size()];
    const [xAxis, yAxis] = this.axes();
    const center = this.precisePoint();
    return { center, axis1: scale(xAxis, primary), axis2: scale(yAxis, secondary), start, sweep };
  }

  arc() {
    const start = this.angle();
    const sweep = this.i32();
    // The sweep has a sign bit of its own; 0 means all the way round.
    const size = (sweep & MAX_INT) / ANGLE_UNIT || FULL_TURN;
    return this.round(start, sweep < 0 ? -size : size);
  }

  text() {
    this.at += 2;
    const unitSize = TEXT_UNIT / this.settings.uorPerMaster;
    const [width, height] = [this.i32() * unitSize, this.i32() * unitSize];
    const [xAxis, yAxis] = this.axes();
    const origin = this.point();
    const count = this.u8();
    this.at++;
    if (this.at + count > this.raw.length) throw new RangeError('text');
    const text = this.codec.decode(this.raw.subarray(this.at, this.at + count));
    return { origin, xAxis, yAxis, width, height, text };
  }
}

const READ = {
  line: (r) => ({ points: r.points(2) }),
  lineString: (r) => ({ points: r.points() }),
  shape: (r) => r.shape(),
  curve: (r) => ({ points: r.points() }),
  ellipse: (r) => r.round(0, FULL_TURN),
  arc: (r) => r.arc(),
  text: (r) => r.text(),
  chain: () => ({ closed: false, members: [] }),
  closedChain: () => ({ kind: 'chain', closed: true, members: [] }),
};

function readElement({ at, raw, type, level }, settings, codec) {
  const kind = TYPE_NAME.get(type);
  try {
    const common = { kind, level, color: raw.readUInt8(35), weight: raw.readUInt8(34) >> 3,
      style: raw.readUInt8(34) & 7, group: raw.readUInt16LE(28) };
    return { ...common, ...READ[kind](new ElementReader(raw, settings, codec)) };
  } catch (error) {
    if (!(error instanceof RangeError)) throw error;
    throw new Refusal(`the DGN file is damaged: the element at byte ${at} is too short`);
  }
}

/** Throws Refusal. Members of cells and text nodes come as elements of their own. */
export function readDgn(buffer, codePage = DEFAULT_CODE_PAGE) {
  const settings = readSettings(buffer);
  const codec = new TextCodec(codePage);
  const drawing = { ...settings, colors: DEFAULT_COLORS, elements: [], leftOut: new Tally() };
  let chain = null;
  let expected = 0;
  for (const found of rawElements(buffer)) {
    const { raw, type, level } = found;
    if (found.deleted) continue;
    if (type === TYPE.group && level === COLOR_TABLE_LEVEL && raw.length >= 806) drawing.colors = readColorTable(raw);
    if (LEFT_OUT.has(type)) drawing.leftOut.add(LEFT_OUT.get(type));
    if (!(TYPE_NAME.get(type) in READ)) continue;
    const element = readElement(found, settings, codec);
    if (element.kind === 'chain') {
      if (raw.length < 40) throw new Refusal(`the DGN file is damaged: the element at byte ${found.at} is too short`);
      drawing.elements.push(element);
      chain = element;
      expected = raw.readUInt16LE(38);
      continue;
    }
    const isMember = expected > 0 && found.complex;
    expected = isMember ? expected - 1 : 0;
    (isMember && LINKS.has(element.kind) ? chain.members : drawing.elements).push(element);
  }
  return drawing;
}

// ---------------------------------------------------------------------------------------- writing

/** Points that span all of an element, but for the control hull of curves, which is their points. */
function outline(element) {
  switch (element.kind) {
    case 'ellipse':
    case 'arc':
      return arcExtremes(element);
    case 'text': {
      const across = scale(element.xAxis, element.width * Math.max(1, element.text.length));
      const up = scale(element.yAxis, element.height);
      return [element.origin, add(element.origin, across), add(element.origin, up), add(add(element.origin, across), up)];
    }
    case 'chain':
      return element.members.flatMap(outline);
    default:
      return element.points;
  }
}

export function extentOf(elements) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (const element of elements) {
    for (const point of outline(element)) {
      for (let i = 0; i < 3; i++) {
        if (point[i] < low[i]) low[i] = point[i];
        if (point[i] > high[i]) high[i] = point[i];
      }
    }
  }
  return { low, high };
}

function isFlat(element) {
  if (element.kind === 'chain') return element.members.every(isFlat);
  if (element.kind === 'text') return element.origin[2] === 0 && cross(element.xAxis, element.yAxis)[2] > 1 - 1e-9;
  if (element.points) return element.points.every((p) => p[2] === 0);
  return element.center[2] === 0 && element.axis1[2] === 0 && element.axis2[2] === 0;
}

function tallestText(elements) {
  let tallest = 0;
  for (const element of elements) {
    if (element.kind === 'text') tallest = Math.max(tallest, element.height, element.width);
  }
  return tallest;
}

/** The finest decimal resolution that leaves half of the design plane free for what is drawn later. */
function planDesignPlane(elements) {
  const { low, high } = extentOf(elements);
  const is3d = !elements.every(isFlat);
  const center = low.map((v, i) => (i === 2 && !is3d ? 0 : Math.round(v / 2 + high[i] / 2)));
  const reach = Math.max(...center.map((c, i) => (i === 2 && !is3d ? 0 : Math.max(high[i] - c, c - low[i]))));
  const text = tallestText(elements) / TEXT_UNIT;
  const fits = (uor, share) => reach * uor <= MAX_INT * share && text * uor <= MAX_INT;
  let digits = 6;
  while (digits > 0 && !fits(10 ** digits, 0.5)) digits--;
  const uorPerMaster = 10 ** digits;
  if (!fits(uorPerMaster, 1)) throw new Refusal('the drawing is too large for the design plane of DGN V7');
  return { is3d, uorPerMaster, subUnits: 10 ** Math.min(digits, 3), low, high,
    origin: center.map((c) => 0 - c * uorPerMaster) };
}

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
  #bytes = Buffer.alloc(1 << 16);
  #at = 0;
  #start = 0;

  constructor(plane, codec) {
    Object.assign(this, { plane, codec });
  }

  bytes() { return this.#bytes.subarray(0, this.#at); }
  get at() { return this.#at; }

  #room(count) {
    const at = this.#at;
    this.#at += count;
    if (this.#at > this.#bytes.length) {
      this.#bytes = Buffer.concat([this.#bytes], Math.max(this.#at, 2 * this.#bytes.length));
    }
    return at;
  }

  u8(value) { const at = this.#room(1); this.#bytes.writeUInt8(value, at); }
  u16(value) { const at = this.#room(2); this.#bytes.writeUInt16LE(value, at); }
  i32(value) { const at = this.#room(4); writeInt32(this.#bytes, at, value); }
  f64(value) { const at = this.#room(8); writeDouble(this.#bytes, at, value); }
  raw(bytes) { const at = this.#room(bytes.length); this.#bytes.set(bytes, at); }
  zeros(count) { this.#room(count); }

  begin(type, level, complex = false) {
    this.#start = this.#at;
    this.u8(level | (complex ? COMPLEX : 0));
    this.u8(type);
    this.zeros(HEADER - 2);
  }

  /** What follows is not geometry but attributes attached to it. */
  endGeometry() {
    if ((this.#at - this.#start) % 2 !== 0) this.u8(0);
    this.#bytes.writeUInt16LE((this.#at - this.#start - 32) / 2, this.#start + 30);
  }

  end() {
    this.#bytes.writeUInt16LE((this.#at - this.#start - 4) / 2, this.#start + 2);
  }

  display({ color, weight, style, group = 0 }, points, properties) {
    const { is3d } = this.plane;
    const low = [MAX_INT, MAX_INT, MAX_INT];
    const high = [-MAX_INT - 1, -MAX_INT - 1, -MAX_INT - 1];
    for (const point of points) {
      for (let i = 0; i < 3; i++) {
        const value = Math.max(-MAX_INT - 1, Math.min(MAX_INT, this.uor(point[i], i)));
        low[i] = Math.min(low[i], value);
        high[i] = Math.max(high[i], value);
      }
    }
    if (!is3d) [low[2], high[2]] = [-MAX_INT - 1, MAX_INT];
    // Ranges are compared as unsigned numbers, so their sign bit is the other way round.
    [...low, ...high].forEach((v, i) => writeInt32(this.#bytes, this.#start + 4 + 4 * i, v ^ 0x80000000));
    this.#bytes.writeUInt16LE(group, this.#start + 28);
    this.#bytes.writeUInt16LE(properties, this.#start + 32);
    this.#bytes[this.#start + 34] = (style & 7) | (weight << 3);
    this.#bytes[this.#start + 35] = color;
  }

  uor(value, axis) { return Math.round(value * this.plane.uorPerMaster + this.plane.origin[axis]); }
  size(value) { this.f64(value * this.plane.uorPerMaster); }
  angle(radians) { this.i32(Math.round(radians * ANGLE_UNIT)); }
  textSize(value) { this.i32(Math.round((value * this.plane.uorPerMaster) / TEXT_UNIT)); }

  #position(point, put) {
    for (let i = 0; i < (this.plane.is3d ? 3 : 2); i++) put(point[i], i);
  }
  point(p) { this.#position(p, (v, i) => this.i32(this.uor(v, i))); }
  precisePoint(p) {
    this.#position(p, (v, i) => this.f64(v * this.plane.uorPerMaster + this.plane.origin[i]));
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

  text({ origin, xAxis, yAxis, width, height, text }) {
    const bytes = this.codec.encode(text).subarray(0, MAX_TEXT_BYTES);
    this.raw([0, 2]); // the first font, placed by its lower left corner
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
  shape: (w, e) => w.vertices([...e.points, e.points[0]]),
  curve: (w, e) => w.vertices(e.points),
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
  if (element.filled) {
    FILL_LINKAGE.forEach((word, i) => writer.u16(i === 4 ? element.color : word));
  }
  writer.display(element, outline(element), element.filled ? HAS_ATTRIBUTES : 0);
  writer.end();
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
const wordsOf = (element) => 50 + 6 * (element.points?.length ?? 0);

function writeChain(writer, chain) {
  const groups = [[]];
  let words = 0;
  for (const member of chain.members.flatMap(pieces)) {
    words += wordsOf(member);
    if (words > MAX_CHAIN_WORDS) {
      groups.push([]);
      words = wordsOf(member);
    }
    groups.at(-1).push(member);
  }
  // A boundary too long for one element is drawn by several open ones.
  const type = chain.closed && groups.length === 1 ? TYPE.closedChain : TYPE.chain;
  for (const members of groups) {
    const encoded = new ElementWriter(writer.plane, writer.codec);
    members.forEach((member) => writeSimple(encoded, { ...chain, ...member }, true));
    writer.begin(type, chain.level);
    writer.u16(5 + encoded.at / 2);
    writer.u16(members.length);
    writer.endGeometry();
    writer.zeros(8);
    writer.display(chain, members.flatMap(outline), 0);
    writer.end();
    writer.raw(encoded.bytes());
  }
}

function writeElement(writer, element) {
  const { kind, points, ...common } = element;
  if (kind === 'chain') return writeChain(writer, element);
  if (kind === 'lineString' && points.length > MAX_VERTICES) {
    return writeChain(writer, { ...common, kind: 'chain', closed: false, members: [{ kind, points }] });
  }
  if (kind === 'shape' && points.length >= MAX_VERTICES) {
    const members = [{ kind: 'lineString', points: [...points, points[0]] }];
    return writeChain(writer, { ...common, kind: 'chain', closed: true, filled: false, members });
  }
  if (kind === 'curve' && points.length > MAX_VERTICES) {
    throw new RangeError(`a DGN curve has at most ${MAX_VERTICES} points`);
  }
  return writeSimple(writer, element, false);
}

function levelMask(hiddenLevels) {
  const mask = Buffer.alloc(8, 0xff);
  for (const level of hiddenLevels) mask[(level - 1) >> 3] &= ~(1 << ((level - 1) & 7));
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

/** Throws Refusal. `elements` must not be empty; texts are cut to 255 bytes. */
export function writeDgn({ elements, colors = DEFAULT_COLORS, unitName = 'mu', hiddenLevels = [],
  codePage = DEFAULT_CODE_PAGE }) {
  const plane = planDesignPlane(elements);
  const writer = new ElementWriter(plane, new TextCodec(codePage));
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
  for (const element of elements) writeElement(writer, element);
  writer.u16(END_MARK);
  return writer.bytes();
}
