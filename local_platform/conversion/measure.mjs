// SPDX-License-Identifier: MIT
// What a drawing amounts to: how many things of which kind on which layer in which colour, how long all
// lines are together, what is written, and how far it reaches. Two readings of one drawing must amount to
// the same, however its elements were cut or grouped.

import { outline } from './dgn/extent.mjs';
import { FULL_TURN, arcExtremes, arcPoint, dot, length, subtract } from './geometry.mjs';
import { strokeSpline } from './spline.mjs';

const CURVE_STEPS = 64;
/** As many as there are numbers of colours. */
const COLORS = 257;

function polygonLength(points, closed) {
  let sum = 0;
  const last = points.length - 1;
  for (let i = closed ? 0 : 1; i <= last; i++) {
    const [p, q] = [points[i === 0 ? last : i - 1], points[i]];
    const [x, y, z] = [q[0] - p[0], q[1] - p[1], q[2] - p[2]];
    sum += Math.sqrt(x * x + y * y + z * z);
  }
  return sum;
}

function arcLength(arc) {
  const [a, b] = [length(arc.axis1), length(arc.axis2)];
  if (Math.abs(a - b) <= 1e-9 * a && Math.abs(dot(arc.axis1, arc.axis2)) <= 1e-9 * a * b) return a * Math.abs(arc.sweep);
  const steps = Math.ceil((CURVE_STEPS * Math.abs(arc.sweep)) / FULL_TURN) * 8;
  const points = Array.from({ length: steps + 1 }, (_, i) => arcPoint(arc, arc.start + (arc.sweep * i) / steps));
  return polygonLength(points, false);
}

class Sum {
  kinds = new Map();
  /** The length in each colour, by layers. */
  groups = new Map();
  #lastLayer = null;
  #lengths = null;
  /** How often each text is there, or is still awaited. */
  texts = new Map();
  characters = 0;
  low = [Infinity, Infinity, Infinity];
  high = [-Infinity, -Infinity, -Infinity];
  length = 0;
  curved = 0;

  constructor(resolution) {
    this.resolution = resolution;
  }

  count(kind, layer, color, size) {
    this.kinds.set(kind, (this.kinds.get(kind) ?? 0) + 1);
    if (layer !== this.#lastLayer) {
      if (!this.groups.has(layer)) this.groups.set(layer, new Float64Array(COLORS));
      this.#lastLayer = layer;
      this.#lengths = this.groups.get(layer);
    }
    this.#lengths[color] += size;
    this.length += size;
  }

  reach(points) {
    for (const p of points) {
      for (let i = 0; i < 3; i++) {
        if (p[i] < this.low[i]) this.low[i] = p[i];
        if (p[i] > this.high[i]) this.high[i] = p[i];
      }
    }
  }

  /** Takes the texts off those that another awaits, instead of counting them anew. */
  against(expected) {
    this.texts = expected.texts;
    this.isAwaited = true;
    return this;
  }

  #text(text) {
    const count = this.texts.get(text);
    if (!this.isAwaited) this.texts.set(text, (count ?? 0) + 1);
    else if (count > 1) this.texts.set(text, count - 1);
    else this.texts.delete(text);
  }

  add(element, layer, color) {
    switch (element.kind) {
      case 'text':
        if (!element.text.trim()) return undefined; // nobody sees it
        this.reach([element.origin]);
        this.characters += element.text.trim().length;
        this.#text(element.text);
        return this.count('texts', layer, color, 0);
      case 'points':
        this.reach(element.points);
        return element.points.forEach(() => this.count('points', layer, color, 0));
      case 'arc':
      case 'ellipse':
        this.reach(arcExtremes(element));
        return this.count('arcs', layer, color, arcLength(element));
      case 'spline': {
        const points = strokeSpline(element);
        this.reach(points);
        const size = polygonLength(points, false);
        this.curved += size;
        return this.count('curves', layer, color, size);
      }
      default: {
        this.reach(element.points);
        const size = polygonLength(element.points, element.kind === 'shape');
        const isShort = element.points.length === 2 && size <= 2 * this.resolution;
        return this.count(size === 0 && isShort ? 'points' : isShort ? 'specks' : 'lines', layer, color, size);
      }
    }
  }
}

/** What elements amount to that are pushed into it. `layerOf` and `colorOf` say of an element what they are called in both
    readings; `contentOf` gives the elements of an instance of a definition; `resolution` is the step between coordinates. */
export class Measure extends Sum {
  constructor(names) {
    super(names.resolution);
    this.names = names;
  }

  /** What a DGN notes of itself, before any element comes. */
  begin({ notes }) { this.notes = notes; }

  push(element) { this.#visit(element); }

  of(elements) {
    elements.forEach((element) => this.push(element));
    return this;
  }

  #visit(element, outer) {
    if (element.kind === 'cell') return element.members.forEach((member) => this.#visit(member));
    if (element.kind === 'instance') return this.names.contentOf(element).forEach((member) => this.#visit(member));
    const [layer, color] = outer ?? [this.names.layerOf(element), this.names.colorOf(element)];
    if (element.filled || element.isHole) {
      this.reach(outline(element));
      if (element.filled) this.count('fills', layer, this.names.colorOf(element, true), 0);
      if (!element.filled || element.fillColor === undefined || element.fillColor === element.color) return undefined;
      return this.#visit({ ...element, filled: false }, [layer, color]);
    }
    if (element.kind === 'chain') return element.members.forEach((member) => this.#visit(member, [layer, color]));
    return this.add(element, layer, color);
  }
}

/** Lengths agree to this share of the whole; curves that were drawn as strokes only to their tolerance. */
const SAME_LENGTH = 1e-6;
const SAME_CURVE = 1e-3;
const MAX_DIFFERENCES = 20;

/** What two readings differ in, in words; the actual one was made against() the other. `resolution` is the step between
    coordinates. */
export function differences(expected, actual, resolution) {
  const found = [];
  const say = (what, a, b) => found.push(`${what}: ${b} instead of ${a}`);
  const size = length(subtract(expected.high, expected.low));
  const near = Math.max(2 * resolution, 1e-6 * size);
  for (let i = 0; i < 3; i++) {
    for (const [name, a, b] of [['lowest', expected.low[i], actual.low[i]], ['highest', expected.high[i], actual.high[i]]]) {
      if (!(Math.abs(a - b) <= near)) say(`${name} ${'xyz'[i]}`, a, b);
    }
  }
  const lengthTolerance = (whole, share) => SAME_LENGTH * whole + share + 4 * near;
  const slack = lengthTolerance(expected.length, SAME_CURVE * (expected.curved + actual.curved));
  for (const layer of new Set([...expected.groups.keys(), ...actual.groups.keys()])) {
    for (let color = 0; color < COLORS; color++) {
      const [a, b] = [expected, actual].map((sum) => sum.groups.get(layer)?.[color] ?? 0);
      if (!(Math.abs(a - b) <= slack)) say(`length on layer "${layer}" in colour ${color}`, a, b);
    }
  }
  const count = (sum, kind) => sum.kinds.get(kind) ?? 0;
  if (count(expected, 'fills') !== count(actual, 'fills')) say('fills', count(expected, 'fills'), count(actual, 'fills'));
  // What is shorter than a step may become a point.
  const points = [count(expected, 'points'), count(actual, 'points')];
  if (points[1] < points[0] || points[1] > points[0] + count(expected, 'specks')) say('points', ...points);
  const missing = [...actual.texts.keys()].filter((text) => text.length < 60);
  if (missing.length > 0) found.push(`${missing.length} texts missing, as "${missing[0]}"`);
  if (expected.characters !== actual.characters) say('characters', expected.characters, actual.characters);
  return found.slice(0, MAX_DIFFERENCES);
}
