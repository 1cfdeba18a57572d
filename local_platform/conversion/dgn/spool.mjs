// SPDX-License-Identifier: MIT
// Elements that wait to be written. Each lies in a row of numbers, beside a list of what is none, in a fifth
// of the memory that it takes as an object.

import { Survey } from './survey.mjs';

/** What each kind has, in order: V vector, A three vectors, P points, L numbers, N number or none, B truth, T text, M members. */
const FILL = { filled: 'B', fillColor: 'N', isHole: 'B' };
const ROUND = { center: 'V', axis1: 'V', axis2: 'V', start: 'N', sweep: 'N', ...FILL };
const FIELDS = {
  line: { points: 'P' },
  lineString: { points: 'P' },
  points: { points: 'P' },
  shape: { points: 'P', ...FILL },
  ellipse: ROUND,
  arc: ROUND,
  spline: { degree: 'N', knots: 'L', points: 'P', weights: 'L' },
  text: { origin: 'V', xAxis: 'V', yAxis: 'V', height: 'N', width: 'N', text: 'T', justification: 'N', attributeNote: 'N' },
  chain: { closed: 'B', members: 'M', ...FILL },
  cell: { name: 'T', origin: 'V', axes: 'A', members: 'M', blockNote: 'N', looseGroup: 'N' },
};
const KINDS = Object.entries(FIELDS).map(([kind, fields]) => ({ kind, fields: Object.entries(fields) }));
const NUMBER_OF = new Map(KINDS.map(({ kind }, i) => [kind, i]));
const CHUNK = 1 << 16;

/** Kind and symbology in one number; below zero where there is no symbology, as in the members of a chain. */
const pack = (kind, { layer, color, weight, style, group }) =>
  (layer ? kind + 16 * (color + 256 * (weight + 32 * (style + 8 * group))) : -1 - kind);

class Row {
  chunks = [];
  #chunk = new Float64Array(0);
  #at = 0;

  put(value) {
    if (this.#at === this.#chunk.length) {
      this.chunks.push((this.#chunk = new Float64Array(CHUNK)));
      this.#at = 0;
    }
    this.#chunk[this.#at++] = value;
  }
}

class Cursor {
  #chunks;
  #next = 0;
  #chunk = [];
  #at = 0;

  constructor(chunks) {
    this.#chunks = chunks;
  }

  take() {
    if (this.#at === this.#chunk.length) {
      this.#chunk = this.#chunks[this.#next++];
      this.#at = 0;
    }
    return this.#chunk[this.#at++];
  }

  optional() {
    const value = this.take();
    return Number.isNaN(value) ? undefined : value;
  }

  vector() { return [this.take(), this.take(), this.take()]; }

  list(read, count = this.take()) {
    const result = new Array(count);
    for (let i = 0; i < count; i++) result[i] = read();
    return result;
  }

  points() {
    const count = this.take();
    return count < 0 ? this.list(() => [this.take(), this.take(), 0], -1 - count) : this.list(() => this.vector(), count);
  }
}

export class Spool {
  length = 0;
  survey = new Survey();
  #row = new Row();
  #texts = [];
  #layers = [];
  #numberOfLayer = new Map();

  push(element) {
    this.length++;
    this.survey.push(element);
    this.#put(element);
  }

  /** About as many as the elements will take in a file, or more. */
  get bytes() { return 8 * CHUNK * this.#row.chunks.length; }

  /** Calls `visit` with elements that are like those that were pushed. */
  forEach(visit) {
    const cursor = new Cursor(this.#row.chunks);
    for (let i = 0; i < this.length; i++) visit(this.#take(cursor), i);
  }

  #put(element) {
    const number = NUMBER_OF.get(element.kind);
    this.#row.put(pack(number, element));
    if (element.layer) this.#row.put(this.#layer(element.layer));
    for (const [name, type] of KINDS[number].fields) this.#field(type, element[name]);
  }

  #layer(layer) {
    if (!this.#numberOfLayer.has(layer)) this.#numberOfLayer.set(layer, this.#layers.push(layer) - 1);
    return this.#numberOfLayer.get(layer);
  }

  #field(type, value) {
    const row = this.#row;
    switch (type) {
      case 'N': return row.put(value ?? NaN);
      case 'B': return row.put(value ? 1 : 0);
      case 'T': return row.put(this.#texts.push(value) - 1);
      case 'V': return this.#vector(value);
      case 'A': return value.forEach((axis) => this.#vector(axis));
      default:
    }
    if (type === 'P') return this.#points(value);
    row.put(value.length);
    if (type === 'L') for (const one of value) row.put(one);
    else for (const member of value) this.#put(member);
    return undefined;
  }

  /** Heights that are all zero are left away, which a count below zero says. */
  #points(points) {
    const isFlat = points.every((p) => p[2] === 0);
    this.#row.put(isFlat ? -1 - points.length : points.length);
    for (const p of points) {
      this.#row.put(p[0]);
      this.#row.put(p[1]);
      if (!isFlat) this.#row.put(p[2]);
    }
  }

  #vector(v) {
    this.#row.put(v[0]);
    this.#row.put(v[1]);
    this.#row.put(v[2]);
  }

  #take(cursor) {
    const packed = cursor.take();
    const { kind, fields } = KINDS[packed < 0 ? -1 - packed : packed % 16];
    const element = packed < 0 ? { kind } : this.#styled(kind, Math.floor(packed / 16), this.#layers[cursor.take()]);
    for (const [name, type] of fields) element[name] = this.#value(type, cursor);
    return element;
  }

  #styled(kind, packed, layer) {
    const color = packed % 256;
    const weightAndStyle = Math.floor(packed / 256) % 256;
    return { kind, layer, color, weight: weightAndStyle % 32, style: weightAndStyle >> 5, group: Math.floor(packed / 65536), level: 0,
      layerNote: undefined };
  }

  #value(type, cursor) {
    switch (type) {
      case 'N': return cursor.optional();
      case 'B': return cursor.take() === 1;
      case 'T': return this.#texts[cursor.take()];
      case 'V': return cursor.vector();
      case 'A': return [cursor.vector(), cursor.vector(), cursor.vector()];
      case 'P': return cursor.points();
      case 'L': return cursor.list(() => cursor.take());
      default: return cursor.list(() => this.#take(cursor));
    }
  }
}
