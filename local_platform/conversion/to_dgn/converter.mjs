// SPDX-License-Identifier: MIT
// The entities of a DWG drawing as elements of a DGN one: each with its symbology, inserts as cells.

import { BY_BLOCK, BY_LAYER } from '../dwg/objects.mjs';
import { IDENTITY, combine, compose, length, mapPoint, mapVector, ocs, scale, subtract, unit } from '../geometry.mjs';
import { mapElement } from '../mapping.mjs';
import { Refusal, Tally } from '../outcome.mjs';
import { layOut } from '../paragraphs.mjs';
import { colorNumber, styleOfLineType, weightOfLineWeight } from '../symbology.mjs';
import { ellipse, heavyPolyline, lightPolyline, round, spline, straight } from './curves.mjs';
import { dimension } from './dimensions.mjs';
import { cutToExtent } from './endless.mjs';
import { hatch } from './hatches.mjs';
import { leader, multiLeader } from './leaders.mjs';
import { faceOf, multiline, polyface, polymesh } from './meshes.mjs';
import { thickened } from './solids.mjs';
import { text } from './texts.mjs';

const MAX_ELEMENTS = 4_000_000;
const MAX_DEPTH = 32;
const HIDDEN_ATTRIBUTE = 1;
const CONSTANT_ATTRIBUTE = 2;
const PLAIN_AXES = [[1, 0, 0], [0, 1, 0], [0, 0, 1]];
const STANDARD_STYLE = { scale: 1, arrowSize: 0.18, extensionOffset: 0.06, extension: 0.18, textHeight: 0.18, factor: 1 };
const LAYER_ZERO = { name: '0', isOn: true, isFrozen: false, color: 7, lineWeight: -3, lineType: null };
const WIDE_LINE = 1e-9;

function corners(entity, order, filled) {
  const system = filled ? ocs(entity.normal) : IDENTITY;
  const points = order.map((i) => mapPoint(system, entity.corners[i]))
    .filter((p, i, all) => i === 0 || length(subtract(p, all[i - 1])) > 0);
  return points.length < 3 ? straight(points) : [{ kind: 'shape', points, filled }];
}

const paragraphs = (e) => layOut(e);

function tolerance({ insert, direction, normal, value }, style) {
  const height = style.textHeight * style.scale;
  const plain = value.replace(/%%v/gi, ' | ').replace(/\\F[^;]*;/gi, '');
  return layOut({ value: plain, insert, direction, normal, height, width: 0, attachment: 4 });
}

/** The corners of an image. */
function frame({ insert, u, v, size }) {
  const at = (x, y) => combine(insert, u, x * size[0], v, y * size[1]);
  return [{ kind: 'shape', points: [at(0, 0), at(1, 0), at(1, 1), at(0, 1)], filled: false }];
}

const CONVERT = {
  LINE: (e) => [{ kind: 'line', points: [e.start, e.end] }],
  POINT: (e) => [{ kind: 'line', points: [e.point, e.point] }],
  CIRCLE: (e) => round(e, true),
  ARC: (e) => round(e, false),
  ELLIPSE: ellipse,
  LWPOLYLINE: (e, c) => lightPolyline(e, c.note),
  POLYLINE_2D: (e, c) => heavyPolyline(e, c.document.parts(e), c.note),
  POLYLINE_3D: (e, c) => heavyPolyline(e, c.document.parts(e), c.note),
  POLYFACE: (e, c) => polyface(c.document.parts(e)),
  MESH: (e) => e.faces.flatMap(faceOf),
  POLYMESH: (e, c) => polymesh(e, c.document.parts(e)),
  SPLINE: spline,
  HELIX: spline,
  TEXT: text,
  ATTRIB: (e) => (e.paragraphs ? paragraphs(e.paragraphs) : text(e)),
  MTEXT: paragraphs,
  LEADER: (e, c) => leader(e, c.dimensionStyle(e.style)),
  MULTILEADER: multiLeader,
  MLINE: (e, c) => multiline(e, c.document.multiLineStyles.get(e.style)),
  // The corners of a solid go across, not around.
  SOLID: (e) => corners(e, [0, 1, 3, 2], true),
  TRACE: (e) => corners(e, [0, 1, 3, 2], true),
  '3DFACE': (e) => corners(e, [0, 1, 2, 3], false),
  HATCH: (e, c) => hatch(e, c.note),
  TOLERANCE: (e, c) => tolerance(e, c.dimensionStyle(e.style)),
  IMAGE: (e, c) => {
    c.note('images by their frames');
    return frame(e);
  },
};

const isDimension = (kind) => kind.startsWith('DIM_');

/** What a kind is called outside. */
const nameOf = (kind) => (isDimension(kind) ? 'DIMENSION' : kind === 'MINSERT' ? 'INSERT' : kind.startsWith('POLYLINE_') ? 'POLYLINE' : kind);

const finite = (points) => points.every((p) => Number.isFinite(p[0]) && Number.isFinite(p[1]) && Number.isFinite(p[2]));

function isFinite(element) {
  if (element.members) return element.members.every(isFinite);
  if (element.points) return finite(element.points);
  if (element.kind === 'text') return finite([element.origin, element.xAxis, element.yAxis]) && Number.isFinite(element.width + element.height);
  return finite([element.center, element.axis1, element.axis2]) && Number.isFinite(element.start + element.sweep);
}

/** The place of a name in a list, in which it stands but once. */
function noteOf(name, places, names) {
  if (!places.has(name)) places.set(name, names.push(name) - 1);
  return places.get(name);
}

export class Converter {
  /** What came, what was left out, and what was drawn from something else, each counted by kind. */
  source = new Tally();
  leftOut = new Tally();
  drawn = new Tally();
  references = [];
  layers = new Map();
  blockNames = [];
  attributeNames = [];
  #count = 0;
  #lastLayer = null;
  #group = 0;
  #contents = new Map();
  #blockNotes = new Map();
  #attributeNotes = new Map();
  #endless = [];
  note = (what) => this.drawn.add(what);

  /** Elements of the model go into `elements`, by its push(); its `survey` tells how far they reach. */
  constructor(document, elements) {
    this.document = document;
    this.elements = elements;
  }

  dimensionStyle(handle) {
    return this.document.dimensionStyles.get(handle) ?? STANDARD_STYLE;
  }

  model() {
    const outer = { map: IDENTITY, depth: 0, into: this.elements, group: 0 };
    this.document.eachPart(this.document.model, (entity) => {
      this.source.add(nameOf(entity.kind));
      this.#entity(entity, outer);
    });
    if (this.#endless.length > 0) this.#constructionLines();
    for (const { path } of this.document.underlays.values()) this.#reference('underlay', path);
  }

  /** They end where the rest of the drawing does, which is known when all else is there. */
  #constructionLines() {
    const { low, high } = this.elements.survey;
    const box = [low, high].map((p) => p.map((v) => (Number.isFinite(v) ? v : 0)));
    for (const { entity, map, symbology } of this.#endless) {
      const placed = { point: mapPoint(map, entity.point), direction: mapVector(map, entity.direction) };
      const points = cutToExtent(placed, entity.kind === 'RAY', ...box);
      if (!points) this.leftOut.add(`${entity.kind} beside the drawing`);
      else this.#put([{ kind: 'line', points }], { map: IDENTITY, into: this.elements, group: 0 }, symbology, entity.kind);
    }
    this.note('construction lines as far as the drawing reaches');
  }

  /** Paper space has no place in a DGN; what lies there is counted by sheets. */
  paper() {
    const { blocks, layouts } = this.document;
    for (const block of blocks.values()) {
      if (!block.isPaper) continue;
      let count = 0;
      this.document.eachPart(block, ({ kind }) => { if (kind !== 'VIEWPORT') count++; });
      this.leftOut.add(`entities on the sheet "${layouts.get(block.layout)?.name ?? block.name}"`, count);
    }
  }

  /** A block's entities are read once, however often it is inserted. */
  #entitiesOf(block) {
    if (!this.#contents.has(block)) this.#contents.set(block, this.document.parts(block));
    return this.#contents.get(block);
  }

  #layerOf(entity, outer) {
    const own = this.document.layers.get(entity.layer) ?? LAYER_ZERO;
    const layer = outer.layer && own.name === '0' ? outer.layer : own;
    if (!this.layers.has(layer.name)) this.layers.set(layer.name, { layer, name: layer.name, use: 0, isHidden: !layer.isOn || layer.isFrozen });
    return layer;
  }

  #entity(entity, outer) {
    const { kind } = entity;
    if (entity.isHidden) return this.leftOut.add('invisible entities');
    if (kind === 'ATTDEF' && !(outer.depth > 0 && entity.flags & CONSTANT_ATTRIBUTE && !(entity.flags & HIDDEN_ATTRIBUTE))) {
      return outer.depth === 0 ? this.leftOut.add('ATTDEF') : undefined;
    }
    const symbology = this.#symbology(entity, outer);
    if (kind === 'INSERT' || kind === 'MINSERT' || kind === 'TABLE') return this.#insert(entity, outer, symbology);
    if (isDimension(kind)) return this.#dimension(entity, outer, symbology);
    if (kind === 'IMAGE') this.#reference('image', this.document.images.get(entity.definition)?.path);
    if (kind === 'XLINE' || kind === 'RAY') return this.#endless.push({ entity, map: outer.map, symbology: { ...symbology, group: 0 } });
    const parts = (kind === 'ATTDEF' ? text(entity) : CONVERT[kind]?.(entity, this)) ?? null;
    if (parts === null) return this.leftOut.add(nameOf(kind));
    this.#put(this.#thickened(entity, parts), outer, symbology, nameOf(kind));
    if (kind === 'MULTILEADER' && entity.block) this.#leaderBlock(entity, outer, symbology);
    return undefined;
  }

  #thickened({ thickness, normal }, parts) {
    if (!(Math.abs(thickness) > WIDE_LINE) || parts.every((part) => part.kind === 'text')) return parts;
    this.note('thickness as edges');
    return thickened(parts, scale(unit(normal), thickness));
  }

  #reference(kind, path) {
    const what = `${kind}: ${path || 'without a path'}`;
    if (!this.references.includes(what)) this.references.push(what);
  }

  #put(parts, outer, symbology, name) {
    // Several elements of one entity stay together as a graphic group.
    if (!outer.group && parts.length > 1 && outer.into === this.elements) symbology.group = this.#nextGroup();
    for (const part of parts) {
      const element = mapElement(outer.map, part);
      if (isFinite(element)) outer.into.push(this.#styled(element, symbology));
      else this.leftOut.add(`${name} without a place`);
    }
  }

  #nextGroup() { return (this.#group = (this.#group % 0xffff) + 1); }

  #styled(element, symbology) {
    if (++this.#count > MAX_ELEMENTS) {
      throw new Refusal(`the drawing has more than ${MAX_ELEMENTS} elements when its blocks are drawn out`, 'tooLarge');
    }
    const { layer, color, weight, style, group } = symbology;
    this.#use(layer);
    element.color = element.color === undefined || element.color === null ? color : this.#colorOf(element.color, symbology);
    element.layer = layer;
    element.weight = weight;
    element.style = style;
    element.group = group;
    element.level = 0;
    element.layerNote = undefined;
    if (element.kind === 'cell') element.members.forEach((m) => this.#styled(m, { ...symbology, color: element.color, group: 0 }));
    return element;
  }

  #use(layer) {
    // Most elements lie on the layer of the one before.
    if (this.#lastLayer?.layer !== layer) this.#lastLayer = this.layers.get(layer.name);
    this.#lastLayer.use++;
  }

  #colorOf(color, { byBlock, layer, color: inherited }) {
    if (color === BY_LAYER) return colorNumber(layer.color);
    return color === BY_BLOCK ? byBlock ?? inherited : colorNumber(color);
  }

  /** In a block, layer "0" and properties "by block" are those of the insert. */
  #symbology(entity, outer) {
    const layer = this.#layerOf(entity, outer);
    const layerType = this.document.lineTypes.get(layer.lineType)?.name ?? '';
    const pick = (own, byBlock, byLayer) => {
      const inherited = own === 'block' ? byBlock : own;
      return inherited === 'layer' || inherited === undefined ? byLayer : inherited;
    };
    const color = entity.color === BY_BLOCK ? 'block' : entity.color === BY_LAYER ? 'layer' : colorNumber(entity.color);
    const weight = entity.lineWeight === -2 ? 'block' : entity.lineWeight === -1 ? 'layer' : weightOfLineWeight(entity.lineWeight);
    const type = entity.lineTypeFlags === 3 ? this.document.lineTypes.get(entity.lineType)?.name?.toLowerCase() ?? 'bylayer'
      : ['bylayer', 'byblock', 'continuous'][entity.lineTypeFlags];
    const style = type === 'byblock' ? 'block' : type === 'bylayer' ? 'layer' : styleOfLineType(type);
    return {
      layer,
      byBlock: outer.color,
      color: pick(color, outer.color, colorNumber(layer.color)),
      weight: pick(weight, outer.weight, weightOfLineWeight(layer.lineWeight)),
      style: pick(style, outer.style, styleOfLineType(layerType)),
      group: outer.group,
    };
  }

  #inside(outer, symbology, map, into) {
    if (outer.depth >= MAX_DEPTH) throw new Refusal('the blocks of the drawing are nested too deeply', 'tooLarge');
    return { ...symbology, map, into, group: 0, depth: outer.depth + 1 };
  }

  /** A cell that holds what `fill` puts into it. */
  #cell(outer, symbology, name, origin, axes, fill) {
    const members = [];
    fill(members);
    if (members.length === 0) return;
    const { layer, color, weight, style } = symbology;
    this.#use(layer);
    const cell = { kind: 'cell', name, origin, axes, members, layer, color, weight, style, group: outer.group, level: 0,
      layerNote: undefined, looseGroup: outer.group || this.#nextGroup() };
    if (name) cell.blockNote = noteOf(name, this.#blockNotes, this.blockNames);
    if (finite([origin, ...axes])) outer.into.push(cell);
    else this.leftOut.add('INSERT without a place');
  }

  #insert(insert, outer, symbology) {
    const block = this.document.blocks.get(insert.block);
    if (!block) return this.leftOut.add('INSERT without a block');
    const entities = this.#entitiesOf(block);
    if (block.isExternal) this.#reference('drawing', block.path);
    if (block.isExternal && entities.length === 0) return this.leftOut.add('external reference');
    const system = ocs(insert.normal);
    const turn = insert.rotation;
    const [x, y] = [[Math.cos(turn), Math.sin(turn), 0], [-Math.sin(turn), Math.cos(turn), 0]];
    const place = { x: scale(x, insert.scale[0]), y: scale(y, insert.scale[1]), z: [0, 0, insert.scale[2]], origin: [0, 0, 0] };
    const [rows, columns] = [Math.max(1, insert.rows), Math.max(1, insert.columns)];
    if (entities.length > 0 && rows * columns > MAX_ELEMENTS) throw new Refusal('an array of blocks in the drawing is too large', 'tooLarge');
    const name = block.isAnonymous || block.name.startsWith('*') ? '' : block.name;
    const attributes = insert.parts || insert.chain ? this.document.parts(insert) : [];
    for (let i = 0; i < rows * columns; i++) {
      const [row, column] = [Math.floor(i / columns), i % columns];
      const at = combine(insert.insert, x, column * insert.columnSpacing, y, row * insert.rowSpacing);
      const local = compose(system, { ...place, origin: subtract(at, mapVector(place, block.base)) });
      const map = compose(outer.map, local);
      const axes = [map.x, map.y, map.z];
      this.#cell(outer, symbology, name, mapPoint(map, block.base), axes, (members) => {
        const inside = this.#inside(outer, symbology, map, members);
        for (const entity of entities) this.#entity(entity, inside);
        // Attributes lie where the insert lies, not inside of its block.
        if (i === 0) this.#attributes(attributes, this.#inside(outer, symbology, outer.map, members));
      });
    }
    return undefined;
  }

  #attributes(attributes, inside) {
    for (const attribute of attributes) {
      if (attribute.kind !== 'ATTRIB') continue;
      if (attribute.flags & HIDDEN_ATTRIBUTE) this.leftOut.add('invisible attributes');
      else this.#attribute(attribute, inside);
    }
  }

  /** A text that says which attribute it was. */
  #attribute(attribute, inside) {
    const from = inside.into.length;
    this.#entity(attribute, inside);
    const texts = inside.into.slice(from).filter((element) => element.kind === 'text');
    if (texts.length !== 1 || !attribute.tag) return;
    texts[0].attributeNote = noteOf(attribute.tag, this.#attributeNotes, this.attributeNames);
  }

  /** The picture of a dimension is a block at its place; its definition points are not part of it. */
  #dimension(entity, outer, symbology) {
    const block = this.document.blocks.get(entity.block);
    const drawn = block ? this.#entitiesOf(block).filter((e) => e.kind !== 'POINT') : [];
    this.note(drawn.length > 0 ? 'dimensions as their pictures' : 'dimensions from their definitions');
    this.#cell(outer, symbology, '', mapPoint(outer.map, entity.definition), PLAIN_AXES, (members) => {
      const inside = this.#inside(outer, symbology, outer.map, members);
      if (drawn.length > 0) for (const part of drawn) this.#entity(part, inside);
      else this.#put(dimension(entity, this.dimensionStyle(entity.style)), inside, symbology, 'DIMENSION');
      if (members.length === 0) this.leftOut.add('DIMENSION without a picture');
    });
  }

  #leaderBlock({ block: { block, normal, insert, scale: size, rotation }, ...entity }, outer, symbology) {
    this.#insert({ ...entity, kind: 'INSERT', block, normal, insert, scale: size, rotation, rows: 1, columns: 1, columnSpacing: 0,
      rowSpacing: 0, parts: null, chain: null }, outer, symbology);
  }
}

