// SPDX-License-Identifier: MIT
// What single elements of DGN V7 consist of.

import { FULL_TURN, length, samePoint, scale, unit } from '../geometry.mjs';
import { isCurve, ofPieces, openKnots, openPeriodic } from '../spline.mjs';
import {
  ANGLE_UNIT, FILL_LINKAGE, HAS_ATTRIBUTES, HEADER, IS_HOLE, MATRIX_UNIT, MAX_INT, NOTE, NOTE_LINKAGE, TEXT_UNIT, TYPE,
} from './format.mjs';
import { decodeName } from './names.mjs';
import { readDouble, readInt32 } from './vax.mjs';

/** The world axes of an element: its quaternion turns the world onto the element. */
function axesOfQuaternion([w, x, y, z]) {
  return [
    unit([w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y)]),
    unit([2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x)]),
  ];
}

export class ElementReader {
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

  /** Adds to an element whether it is filled and in which colour, whether it is a hole, and what is noted of it. */
  extras(element) {
    const { properties, raw } = this;
    if ((properties & (IS_HOLE | HAS_ATTRIBUTES)) === 0) return element;
    if (properties & IS_HOLE) element.isHole = true;
    this.linkages((at, size) => {
      if (size < 4) return;
      const id = raw.readUInt16LE(at + 2);
      if (raw.readUInt16LE(at) === FILL_LINKAGE[0] && id === FILL_LINKAGE[1] && size >= 10) {
        element.filled = true;
        element.fillColor = raw[at + 8];
      }
      if (id === NOTE_LINKAGE && size >= 8) {
        const [kind, value] = [raw.readUInt16LE(at + 4), raw.readUInt16LE(at + 6)];
        if (kind === NOTE.layer) element.layerNote = value;
        if (kind === NOTE.block) element.blockNote = value;
        if (kind === NOTE.attribute) element.attributeNote = value;
        if (kind === NOTE.axes && size >= 80) element.axesNote = this.#noted(at + 8);
      }
    });
    return element;
  }

  /** Three vectors. */
  #noted(at) {
    const row = (from) => [0, 8, 16].map((i) => this.raw.readDoubleLE(from + i));
    return [row(at), row(at + 24), row(at + 48)];
  }

  shape(element) {
    const points = this.points();
    if (points.length > 1 && samePoint(points[0], points[points.length - 1])) points.pop();
    element.points = points;
    element.filled = false;
    this.extras(element);
  }

  round(element, start, sweep) {
    const [primary, secondary] = [this.size(), this.size()];
    const [xAxis, yAxis] = this.axes();
    element.center = this.precisePoint();
    element.axis1 = scale(xAxis, primary);
    element.axis2 = scale(yAxis, secondary);
    element.start = start;
    element.sweep = sweep;
    this.extras(element);
  }

  ellipse(element) { this.round(element, 0, FULL_TURN); }

  arc(element) {
    const start = this.angle();
    const sweep = this.i32();
    // The sweep has a sign bit of its own; 0 means all the way round.
    const size = (sweep & MAX_INT) / ANGLE_UNIT || FULL_TURN;
    this.round(element, start, sweep < 0 ? -size : size);
  }

  textBytes() {
    const start = HEADER + 10 + (this.settings.is3d ? 28 : 12);
    if (start + 2 > this.raw.length) throw new RangeError('text');
    const count = this.raw[start];
    if (start + 2 + count > this.raw.length) throw new RangeError('text');
    return this.raw.subarray(start + 2, start + 2 + count);
  }

  text(element) {
    this.at++;
    const justification = this.u8() & 0xf;
    const unitSize = TEXT_UNIT / this.settings.uorPerMaster;
    const [width, height] = [this.i32() * unitSize, this.i32() * unitSize];
    let [xAxis, yAxis] = this.axes();
    const origin = this.point();
    // Sizes below zero are those of a text that runs backwards or stands on its head.
    if (width < 0) xAxis = scale(xAxis, -1);
    if (height < 0) yAxis = scale(yAxis, -1);
    Object.assign(element, { origin, xAxis, yAxis, width: Math.abs(width), height: Math.abs(height),
      text: this.codec.decode(this.textBytes()), justification: Math.min(justification, 14), range: this.range() });
    this.extras(element);
  }

  cell(element) {
    const { is3d, uorPerMaster } = this.settings;
    this.at += 2;
    const name = decodeName([this.u16(), this.u16()]);
    this.at += 2 + 8 + (is3d ? 24 : 16);
    const m = Array.from({ length: is3d ? 9 : 4 }, () => this.i32() / MATRIX_UNIT);
    const axes = is3d ? [[m[0], m[3], m[6]], [m[1], m[4], m[7]], [m[2], m[5], m[8]]]
      : [[m[0], m[2], 0], [m[1], m[3], 0], [0, 0, 1]];
    const { axesNote, ...extras } = this.extras({});
    // The exact axes count as long as nobody has turned the cell since.
    const isSame = axesNote?.every((axis, i) => (i === 2 && !is3d) || axis.every((v, k) => Math.abs(v - axes[i][k]) <= 2 / MATRIX_UNIT));
    Object.assign(element, { name, axes: isSame ? axesNote : axes, origin: this.point(), members: [], ...extras,
      resolution: 1 / uorPerMaster });
  }
}

const path = (r, element, points) => {
  element.points = points;
  r.extras(element);
};
const chain = (r, element, closed) => {
  Object.assign(element, { kind: 'chain', closed, members: [] });
  r.extras(element);
};

/** By kinds, what adds to a begun element all that its kind has. */
export const READ = {
  line: (r, e) => path(r, e, r.points(2)),
  lineString: (r, e) => path(r, e, r.points()),
  shape: (r, e) => r.shape(e),
  points: (r, e) => { e.points = r.points(); },
  ellipse: (r, e) => r.ellipse(e),
  arc: (r, e) => r.arc(e),
  text: (r, e) => r.text(e),
  curve: (r, e) => { Object.assign(e, curve(r.points())); },
  cell: (r, e) => r.cell(e),
  chain: (r, e) => chain(r, e, false),
  closedChain: (r, e) => chain(r, e, true),
};
export const KIND_OF = new Map(Object.entries(TYPE).map(([name, type]) => [type, name]));

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

/** The curve that poles, knots and weights make up; null if they make none. */
export function splineOf({ degree, isClosed, isWeighted, poles, knots, weights }) {
  const own = isWeighted && weights.length === poles.length ? weights : [];
  if (poles.length <= degree || own.some((w) => !(w > 0))) return null;
  const ascending = knots.every((u, i) => i === 0 || u >= knots[i - 1]);
  const inner = ascending ? knots : [];
  if (isClosed) return openPeriodic({ degree, points: poles, weights: own, innerKnots: inner });
  const isWhole = inner.length === poles.length + degree + 1;
  const curve = { degree, points: poles, weights: own, knots: isWhole ? inner : openKnots(degree, poles.length, inner) };
  return isCurve(curve) ? curve : null;
}
