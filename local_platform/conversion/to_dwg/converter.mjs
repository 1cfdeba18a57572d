// SPDX-License-Identifier: MIT
// The elements of a DGN drawing as entities of a DWG one: each with its symbology, cells as blocks and inserts.

import { FULL_TURN, cross, dot, isCircular, length, mapVector, ocs, scale, unit } from '../geometry.mjs';
import { mapElement } from '../mapping.mjs';
import { Tally } from '../outcome.mjs';
import { indexedColors, lineWeightNumber } from '../symbology.mjs';
import { boundary, entitiesOf } from './entities.mjs';

const SQUARE = 1e-6;
const MAX_ALIKE = 8;
const layerNameOfLevel = (level) => `Level ${level}`;

/** The map that undoes another; null if there is none. */
function inverse({ x, y, z, origin }) {
  const size = dot(x, cross(y, z));
  if (!(Math.abs(size) > 0)) return null;
  const rows = [cross(y, z), cross(z, x), cross(x, y)].map((row) => scale(row, 1 / size));
  const columns = [0, 1, 2].map((i) => rows.map((row) => row[i]));
  const map = { x: columns[0], y: columns[1], z: columns[2], origin: [0, 0, 0] };
  return { ...map, origin: scale(mapVector(map, origin), -1) };
}

/** Where an insert must stand for its block to have these axes; null if no insert can. */
function insertOf(axes, origin) {
  const sizes = axes.map(length);
  if (sizes.some((size) => !(size > 0))) return null;
  const [x, y, z] = axes.map(unit);
  if (Math.abs(dot(x, y)) > SQUARE || Math.abs(dot(x, z)) > SQUARE || Math.abs(dot(y, z)) > SQUARE) return null;
  const system = ocs(z);
  const rotation = Math.atan2(dot(x, system.y), dot(x, system.x));
  const isMirrored = dot(cross(z, x), y) < 0;
  const at = [dot(origin, system.x), dot(origin, system.y), dot(origin, system.z)];
  return { kind: 'INSERT', insert: at, rotation, normal: system.z, scale: [sizes[0], isMirrored ? -sizes[1] : sizes[1], sizes[2]] };
}

/** Level circles and arcs as they would be if nothing had turned or mirrored them. */
function plainRound(element) {
  const { axis1, axis2 } = element;
  if (!axis1 || axis1[2] !== 0 || axis2[2] !== 0 || !isCircular({ axis1, axis2 })) return element;
  const radius = length(axis1);
  const axes = { axis1: [radius, 0, 0], axis2: [0, radius, 0] };
  if (element.kind === 'ellipse') return { ...element, ...axes };
  const isLeft = cross(axis1, axis2)[2] > 0;
  const start = Math.atan2(axis1[1], axis1[0]) + (isLeft ? element.start : -element.start);
  return { ...element, ...axes, start: positive(start), sweep: isLeft ? element.sweep : -element.sweep };
}

const positive = (angle) => ((angle % FULL_TURN) + FULL_TURN) % FULL_TURN;

/** Whether two lists of elements show the same, give or take `tolerance`. */
function alike(a, b, tolerance) {
  if (typeof a === 'number') return Math.abs(a - b) <= tolerance;
  if (a === null || typeof a !== 'object') return a === b;
  const keys = Object.keys(a).filter((key) => key !== 'range' && key !== 'group');
  return b !== null && typeof b === 'object' && keys.length === Object.keys(b).filter((key) => key !== 'range' && key !== 'group').length
    && keys.every((key) => key in b && alike(a[key], b[key], tolerance));
}

export class Converter {
  layers = new Map();
  source = new Tally();
  leftOut;
  drawn;
  #target;
  #definitions = new Map();
  #taken = new Set();
  #anonymous = 0;

  /** `drawing` is all of a DGN but its elements, which are pushed. Entities go to `target`, by its push(), after the blocks that
      they are inserts of, by its addBlock(). */
  constructor(drawing, target) {
    this.drawing = drawing;
    this.#target = target;
    this.leftOut = drawing.leftOut;
    this.drawn = drawing.drawn;
    this.colors = indexedColors(drawing.colors);
    this.resolution = 1 / drawing.uorPerMaster;
    this.note = (what) => this.drawn.add(what);
  }

  push(element) {
    this.source.add(element.kind.toUpperCase());
    this.#element(element, this.#target);
  }

  /** The layer that the drawing had before it became a DGN, or one named by its level. */
  layerOf({ level, layerNote }) {
    const { notes, hiddenLevels } = this.drawing;
    const name = notes?.sharing?.[layerNote] ?? notes?.layers?.[level] ?? layerNameOfLevel(level);
    if (!this.layers.has(name)) this.layers.set(name, { name, isOn: !hiddenLevels.has(level) });
    return name;
  }

  /** The elements of a shared cell where an instance has them. */
  contentOf({ name, axes: [x, y, z], origin }) {
    return this.drawing.definitions.get(name).members.map((member) => mapElement({ x, y, z, origin }, member));
  }

  #symbology(element) {
    const weight = lineWeightNumber(element.weight);
    if (element.weight !== weight) this.note('weights above 23 as 2.11 mm');
    return { layer: this.layerOf(element), color: this.colors[element.color], weight, lineType: element.style };
  }

  #filling({ fillColor, color }, symbology) {
    return { ...symbology, color: this.colors[fillColor ?? color] };
  }

  #element(element, into) {
    if (element.kind === 'cell') return this.#cell(element, into);
    if (element.kind === 'instance') return this.#instance(element, into);
    if (element.tag) return this.#tag(element, into);
    const symbology = this.#symbology(element);
    for (const entity of entitiesOf(element, this.resolution, this.note)) {
      if (!entity) {
        this.leftOut.add(`${element.kind.toUpperCase()} without extent`);
        continue;
      }
      // A fill has one colour, its outline another.
      const isOutlined = entity.kind === 'HATCH' && element.fillColor !== undefined && element.fillColor !== element.color;
      entity.symbology = entity.kind === 'HATCH' ? this.#filling(element, symbology) : symbology;
      into.push(entity);
      if (isOutlined) this.#element({ ...element, filled: false, fillColor: undefined }, into);
    }
    return undefined;
  }

  /** A cell without a name whose first member is filled and whose others are its holes. */
  #filledWithHoles({ name, members }) {
    const [outer, ...holes] = members;
    if (name || holes.length === 0 || !outer.filled || !holes.every((hole) => hole.isHole)) return null;
    const flat = members.every((m) => (m.points ?? m.members?.flatMap((n) => n.points ?? [n.center]) ?? [m.center]).every((p) => p[2] === 0));
    if (!flat) return null;
    return { kind: 'HATCH', elevation: 0, paths: members.map(boundary), symbology: this.#filling(outer, this.#symbology(outer)) };
  }

  #cell(cell, into) {
    const hatch = this.#filledWithHoles(cell);
    if (hatch) return into.push(hatch);
    const name = this.drawing.notes?.blocks?.[cell.blockNote] ?? cell.name;
    const [x, y, z] = cell.axes;
    const placed = insertOf(cell.axes, cell.origin);
    const back = placed && inverse({ x, y, z, origin: cell.origin });
    if (!back || cell.members.length === 0) return this.#loose(cell, into);
    const attributes = cell.members.flatMap((member) => this.#attribute(member) ?? []);
    const own = new Set(attributes.map((attribute) => attribute.element));
    const members = cell.members.filter((member) => !own.has(member)).map((member) => plainRound(mapElement(back, member)));
    const block = this.#blockOf(name, members, (4 * this.resolution) / Math.min(...cell.axes.map(length), 1));
    return into.push({ ...placed, block, attributes, symbology: this.#symbology(cell) });
  }

  /** A text that was an attribute before, in the coordinates of the drawing. */
  #attribute(element) {
    const tag = this.drawing.notes?.attributes?.[element.attributeNote];
    const [entity] = element.kind === 'text' && tag ? entitiesOf(element, this.resolution, this.note) : [];
    return entity ? { ...entity, kind: 'ATTRIB', tag, element, symbology: this.#symbology(element) } : null;
  }

  /** An attribute must belong to an insert: one of a block without content that is called like the set of the tag. */
  #tag(element, into) {
    const { tag: { set, name }, origin } = element;
    const [entity] = entitiesOf(element, this.resolution, this.note);
    const symbology = this.#symbology(element);
    const attribute = { ...entity, kind: 'ATTRIB', tag: name.replace(/\s+/g, '_'), symbology };
    const [block, placed] = [this.#blockOf(set || 'TAG', [], 0), insertOf([[1, 0, 0], [0, 1, 0], [0, 0, 1]], origin)];
    return into.push({ ...placed, block, attributes: [attribute], symbology });
  }

  #loose(cell, into) {
    if (cell.members.length > 0) this.note('cells that no insert can show, drawn out');
    for (const member of cell.members) this.#element(member, into);
  }

  /** The name of the block with this content: one that is there already, or a new one. */
  #blockOf(name, members, tolerance) {
    const known = name ? this.#definitions.get(name) ?? [] : [];
    const same = known.slice(0, MAX_ALIKE).find((one) => alike(one.members, members, tolerance));
    if (same) return same.blockName;
    const blockName = this.#freeName(name);
    if (name) this.#definitions.set(name, [...known, { members, blockName }]);
    this.#addBlock(blockName, name === '', members);
    return blockName;
  }

  #freeName(name) {
    if (!name) return `*U${++this.#anonymous}`;
    let free = name;
    for (let i = 2; this.#taken.has(free.toUpperCase()); i++) free = `${name}-${i}`;
    this.#taken.add(free.toUpperCase());
    return free;
  }

  #addBlock(name, isAnonymous, members) {
    const entities = [];
    for (const member of members) this.#element(member, entities);
    this.#target.addBlock({ name, isAnonymous, entities });
  }

  #instance(instance, into) {
    const { name, axes, origin } = instance;
    const placed = insertOf(axes, origin);
    if (!placed) return this.leftOut.add('SHARED CELL that no insert can show');
    const key = `shared ${name}`;
    if (!this.#definitions.has(key)) {
      const blockName = this.#freeName(name);
      this.#definitions.set(key, blockName);
      this.#addBlock(blockName, false, this.drawing.definitions.get(name).members);
    }
    return into.push({ ...placed, block: this.#definitions.get(key), symbology: this.#symbology(instance) });
  }
}

