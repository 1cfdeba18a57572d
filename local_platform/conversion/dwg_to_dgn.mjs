// SPDX-License-Identifier: MIT

import './web_crypto.mjs';
import {
  BlockTypeFlags, Dimension, DwgReader, HatchBoundaryPathPolyline, LayerFlags, NotificationType, Polyline2D,
  Polyline3D,
} from '@node-projects/acad-ts';
import { writeDgn } from './dgn.mjs';
import { decodeEscapes } from './dgn_text.mjs';
import {
  FULL_TURN, IDENTITY, add, bulgeArc, combine, compose, cross, dot, length, mapArc, mapPoint, mapVector,
  ocs, scale, strokeCurve, strokeSpline, subtract, unit,
} from './geometry.mjs';
import { Refusal, Tally } from './outcome.mjs';
import {
  DWG_COLOR_TABLE, LEVELS, colorNumber, levelsOfLayers, styleOfLineType, unitName, weightOfLineWeight,
} from './symbology.mjs';

const MAX_ELEMENTS = 4_000_000;
const MAX_DEPTH = 32;
const HIDDEN_ATTRIBUTE = 1;
const SPLINE_FRAME_VERTEX = 16;

const vector = (p) => [p.x, p.y, p.z ?? 0];
const rotated = (angle) => ({ x: [Math.cos(angle), Math.sin(angle), 0], y: [-Math.sin(angle), Math.cos(angle), 0] });

// ------------------------------------------------------------------------------------ entity kinds
// Each gives elements without symbology, in the coordinates of the block that holds the entity.

function round(entity, isFull) {
  const system = ocs(vector(entity.normal));
  const start = isFull ? 0 : entity.startAngle;
  const sweep = isFull ? FULL_TURN : positiveTurn(entity.endAngle - entity.startAngle);
  return [{ kind: isFull ? 'ellipse' : 'arc', center: mapPoint(system, vector(entity.center)),
    axis1: scale(system.x, entity.radius), axis2: scale(system.y, entity.radius), start, sweep }];
}

/** From 0 exclusive to a full turn inclusive. */
function positiveTurn(angle) {
  const turned = ((angle % FULL_TURN) + FULL_TURN) % FULL_TURN;
  return turned < 1e-12 ? FULL_TURN : turned;
}

function ellipse(entity) {
  const axis1 = vector(entity.majorAxisEndPoint);
  const axis2 = scale(cross(unit(vector(entity.normal)), axis1), entity.radiusRatio);
  const sweep = positiveTurn(entity.endParameter - entity.startParameter);
  const isFull = sweep > FULL_TURN - 1e-9;
  return [{ kind: isFull ? 'ellipse' : 'arc', center: vector(entity.center), axis1, axis2,
    start: isFull ? 0 : entity.startParameter, sweep: isFull ? FULL_TURN : sweep }];
}

/** Straight runs become lines and line strings, bulges arcs; both together make a chain. */
function polyline(vertices, closed, system) {
  if (vertices.length < 2) return [];
  const place = (points) => points.map((p) => mapPoint(system, p));
  const segments = closed ? vertices.length : vertices.length - 1;
  if (!vertices.slice(0, segments).some((v) => v.bulge)) {
    return [{ kind: closed ? 'shape' : 'lineString', points: place(vertices.map((v) => v.point)) }];
  }
  const members = [];
  let run = null;
  for (let i = 0; i < segments; i++) {
    const [from, to] = [vertices[i].point, vertices[(i + 1) % vertices.length].point];
    if (vertices[i].bulge) {
      members.push({ kind: 'arc', ...mapArc(system, bulgeArc(from, to, vertices[i].bulge)) });
      run = null;
    } else if (run) {
      run.points.push(mapPoint(system, to));
    } else {
      run = { kind: 'lineString', points: place([from, to]) };
      members.push(run);
    }
  }
  return [members.length === 1 && !closed ? members[0] : { kind: 'chain', closed, members }];
}

function lightPolyline(entity) {
  const vertices = entity.vertices.map((v) =>
    ({ point: [v.location.x, v.location.y, entity.elevation], bulge: v.bulge }));
  return polyline(vertices, entity.isClosed, ocs(vector(entity.normal)));
}

function heavyPolyline(entity) {
  const is2d = entity instanceof Polyline2D;
  // Meshes go by the same name.
  if (!is2d && !(entity instanceof Polyline3D)) return null;
  const vertices = [...entity.vertices].filter((v) => (v.flags & SPLINE_FRAME_VERTEX) === 0);
  return polyline(vertices.map((v) => ({
    point: is2d ? [v.location.x, v.location.y, entity.elevation] : vector(v.location),
    bulge: is2d ? v.bulge : 0,
  })), entity.isClosed, is2d ? ocs(vector(entity.normal)) : IDENTITY);
}

function spline(entity) {
  const controlPoints = entity.controlPoints.map(vector);
  const { degree, knots, weights } = entity;
  const isWhole = degree >= 1 && degree <= 25 && knots.length > controlPoints.length + degree;
  if (controlPoints.length > degree && isWhole) {
    return straight(strokeSpline({ degree, knots, weights, controlPoints }));
  }
  return entity.fitPoints.length > 1 ? straight(strokeCurve(entity.fitPoints.map(vector))) : [];
}

const straight = (points) => (points.length > 1 ? [{ kind: 'lineString', points }] : []);

const CONTROL_CODES = { d: '°', p: '±', c: 'φ', '%': '%' };

/** DWG's own notations for special characters. */
const plain = (value) =>
  decodeEscapes(value.replace(/%%([dpc%])/gi, (_, code) => CONTROL_CODES[code.toLowerCase()])
    .replace(/%%[uok]/gi, ''));

function textElement(origin, xAxis, yAxis, height, widthFactor, value) {
  return { kind: 'text', origin, xAxis, yAxis, height, width: height * (widthFactor || 1), text: value };
}

const isWide = (char) => char >= '\u2e80';

/** Width in heights; the fonts are not at hand. */
const estimatedWidth = (value) => [...value].reduce((sum, char) => sum + (isWide(char) ? 1.2 : 0.85), 0);

/** Programs keep the lower left corner of every text up to date; where one did not, it is worked out
    from the alignment point. */
function text(entity) {
  const value = plain(entity.value ?? '');
  if (!value || !(entity.height > 0)) return [];
  const system = ocs(vector(entity.normal));
  const { x, y } = rotated(entity.rotation);
  const { horizontalAlignment: across, verticalAlignment: up } = entity;
  let origin = vector(entity.insertPoint);
  if ((across || up) && length(origin) === 0) {
    const width = estimatedWidth(value) * entity.height * entity.widthFactor;
    const left = across === 1 || across === 4 ? width / 2 : across === 2 ? width : 0;
    const below = across === 4 || up === 2 ? entity.height / 2 : up === 3 ? entity.height : 0;
    origin = combine(vector(entity.alignmentPoint), x, -left, y, -below);
  }
  return [textElement(mapPoint(system, origin), mapVector(system, x), mapVector(system, y), entity.height,
    entity.widthFactor, value)];
}

/** Breaks at blanks and between wide characters, as near as can be told without the font. */
function wrap(value, width) {
  const lines = [];
  let line = '';
  for (const word of value.match(/[\u2e80-\uffff]|[^\s\u2e80-\uffff]+\s*|\s+/g) ?? []) {
    if (line && estimatedWidth((line + word).trimEnd()) > width) {
      lines.push(line.trimEnd());
      line = '';
    }
    line += word;
  }
  return [...lines, line.trimEnd()];
}

function paragraphText(entity) {
  const { height } = entity;
  if (!(height > 0)) return [];
  const width = entity.rectangleWidth > 0 ? entity.rectangleWidth / height : Infinity;
  const lines = plain(entity.plainText).split(/\r\n|\r|\n/).flatMap((line) => wrap(line, width));
  const system = ocs(vector(entity.normal));
  const direction = unit(vector(entity.alignmentPoint));
  const x = length(direction) > 0 ? direction : system.x;
  const y = cross(system.z, x);
  const pitch = (height * 5) / 3 * (entity.lineSpacing || 1);
  const column = (entity.attachmentPoint - 1) % 3;
  const row = Math.floor((entity.attachmentPoint - 1) / 3);
  const whole = height + pitch * (lines.length - 1);
  const top = (whole * row) / 2 - height;
  return lines.flatMap((line, i) => {
    if (!line.trim()) return [];
    const left = (estimatedWidth(line) * height * column) / 2;
    const origin = combine(vector(entity.insertPoint), x, -left, y, top - pitch * i);
    return [textElement(origin, x, y, height, 1, line)];
  });
}

function corners(entity, order, system, filled) {
  const points = order.map((name) => mapPoint(system, vector(entity[`${name}Corner`])))
    .filter((p, i, all) => i === 0 || length(subtract(p, all[i - 1])) > 0);
  return points.length < 3 ? straight(points) : [{ kind: 'shape', points, filled }];
}

/** A solid fill within straight edges is a filled shape. Anything else is left out. */
function hatch(entity) {
  const edges = entity.paths.flatMap((path) => path.edges);
  const isSimple = (edge) => edge instanceof HatchBoundaryPathPolyline && !edge.hasBulge;
  if (!entity.isSolid || edges.length !== 1 || !edges.every(isSimple)) return null;
  const system = ocs(vector(entity.normal));
  const points = edges[0].vertices.map((v) => mapPoint(system, [v.x, v.y, entity.elevation]));
  return points.length < 3 ? [] : [{ kind: 'shape', points, filled: true }];
}

const CONVERT = {
  LINE: (e) => [{ kind: 'line', points: [vector(e.startPoint), vector(e.endPoint)] }],
  POINT: (e) => [{ kind: 'line', points: [vector(e.location), vector(e.location)] }],
  CIRCLE: (e) => round(e, true),
  ARC: (e) => round(e, false),
  ELLIPSE: ellipse,
  LWPOLYLINE: lightPolyline,
  POLYLINE: heavyPolyline,
  SPLINE: spline,
  TEXT: text,
  ATTRIB: text,
  MTEXT: paragraphText,
  LEADER: (e) => straight(e.vertices.map(vector)),
  // The corners of a solid go across, not around.
  SOLID: (e) => corners(e, ['first', 'second', 'fourth', 'third'], ocs(vector(e.normal)), true),
  '3DFACE': (e) => corners(e, ['first', 'second', 'third', 'fourth'], IDENTITY, false),
  HATCH: hatch,
};

// --------------------------------------------------------------------------------- blocks and such

function mapElement(map, element) {
  if (map === IDENTITY) return element;
  if (element.points) return { ...element, points: element.points.map((p) => mapPoint(map, p)) };
  if (element.members) return { ...element, members: element.members.map((m) => mapElement(map, m)) };
  if (element.kind !== 'text') return { ...element, ...mapArc(map, element) };
  const along = mapVector(map, scale(element.xAxis, element.width));
  const xAxis = unit(along);
  const up = mapVector(map, scale(element.yAxis, element.height));
  const upright = combine(up, xAxis, -dot(up, xAxis), xAxis, 0);
  return { ...element, origin: mapPoint(map, element.origin), xAxis, yAxis: unit(upright),
    width: length(along), height: length(upright) };
}

const isFinite = (element) => (element.members ? element.members.every(isFinite)
  : Object.values(element).flat(2).every((value) => typeof value !== 'number' || Number.isFinite(value)));

class Converter {
  elements = [];
  leftOut = new Tally();
  #group = 0;
  #levels;

  constructor(levels) {
    this.#levels = levels;
  }

  /** `outer` is what holds the block: its map, symbology and depth. */
  block(entities, outer) {
    for (const entity of entities) this.#entity(entity, outer);
  }

  #entity(entity, outer) {
    const name = entity.objectName;
    if (entity.isInvisible || name === 'ATTDEF') return;
    const symbology = this.#symbology(entity, outer);
    if (name === 'INSERT') return this.#insert(entity, outer, symbology);
    if (entity instanceof Dimension && entity.block) return this.#dimension(entity, outer, symbology);
    const parts = CONVERT[name]?.(entity) ?? null;
    if (parts === null) return this.leftOut.add(name);
    for (const part of parts) this.#put(mapElement(outer.map, part), symbology, name);
  }

  #put(element, { level, color, weight, style, group }, name) {
    if (!isFinite(element)) return this.leftOut.add(`${name} without a place`);
    if (this.elements.length >= MAX_ELEMENTS) {
      throw new Refusal(`the drawing has more than ${MAX_ELEMENTS} elements when its blocks are drawn out`);
    }
    this.elements.push({ ...element, level, color, weight, style, group });
  }

  /** In a block, layer "0" and properties "by block" are those of the insert. */
  #symbology(entity, outer) {
    const layer = outer.layer && entity.layer.name === '0' ? outer.layer : entity.layer;
    const pick = (own, byBlock, byLayer) => {
      const inherited = own === 'block' ? byBlock : own;
      return inherited === 'layer' || inherited === undefined ? byLayer : inherited;
    };
    const color = entity.color.isByBlock ? 'block' : entity.color.isByLayer ? 'layer' : colorNumber(entity.color);
    const weight = entity.lineWeight === -2 ? 'block' : entity.lineWeight === -1 ? 'layer' : weightOfLineWeight(entity.lineWeight);
    const type = entity.lineType?.name?.toLowerCase() ?? 'bylayer';
    const style = type === 'byblock' ? 'block' : type === 'bylayer' ? 'layer' : styleOfLineType(type);
    return {
      layer,
      level: this.#levels.get(layer.name) ?? LEVELS,
      color: pick(color, outer.color, colorNumber(layer.color)),
      weight: pick(weight, outer.weight, weightOfLineWeight(layer.lineWeight)),
      style: pick(style, outer.style, styleOfLineType(layer.lineType?.name ?? '')),
      group: outer.group,
    };
  }

  #inside(outer, symbology, map) {
    if (outer.depth >= MAX_DEPTH) throw new Refusal('the blocks of the drawing are nested too deeply');
    // What an insert draws stays together as a graphic group.
    const group = outer.group || (this.#group = (this.#group % 0xffff) + 1);
    return { ...symbology, group, map, depth: outer.depth + 1 };
  }

  #insert(insert, outer, symbology) {
    if (!insert.block) return this.leftOut.add('INSERT without a block');
    const system = ocs(vector(insert.normal));
    const turn = rotated(insert.rotation);
    const place = { x: scale(turn.x, insert.xScale), y: scale(turn.y, insert.yScale), z: [0, 0, insert.zScale] };
    const base = vector(insert.block.blockEntity?.basePoint ?? { x: 0, y: 0 });
    const entities = [...insert.block.entities];
    const isExternal = (insert.block.blockFlags & (BlockTypeFlags.XRef | BlockTypeFlags.XRefOverlay)) !== 0;
    if (isExternal && entities.length === 0) return this.leftOut.add('external reference');
    const rows = Math.max(1, insert.rowCount);
    const columns = Math.max(1, insert.columnCount);
    if (entities.length > 0 && rows * columns > MAX_ELEMENTS) throw new Refusal('an array of blocks in the drawing is too large');
    let inside = null;
    for (let i = 0; entities.length > 0 && i < rows * columns; i++) {
      const [row, column] = [Math.floor(i / columns), i % columns];
      const origin = combine(vector(insert.insertPoint), turn.x, column * insert.columnSpacing, turn.y, row * insert.rowSpacing);
      const local = compose(system, { ...place, origin: subtract(origin, mapVector(place, base)) });
      inside = this.#inside(inside ? { ...outer, group: inside.group } : outer, symbology, compose(outer.map, local));
      this.block(entities, inside);
    }
    const attributes = [...insert.attributes].filter((a) => (a.flags & HIDDEN_ATTRIBUTE) === 0);
    this.block(attributes, { ...this.#inside(outer, symbology, outer.map), group: inside?.group ?? 0 });
  }

  /** The picture of a dimension is a block at its place; its definition points are not part of it. */
  #dimension(dimension, outer, symbology) {
    const drawn = [...dimension.block.entities].filter((e) => e.objectName !== 'POINT');
    if (drawn.length === 0) return this.leftOut.add('DIMENSION without a picture');
    this.block(drawn, this.#inside(outer, symbology, outer.map));
  }
}

/** Up to R2000 a file begins with where its sections lie. The library reads on for ever where one lies
    beyond the end, so a file that was cut short must not get to it. */
function checkSections(bytes) {
  const count = bytes.length > 0x19 ? bytes.readInt32LE(0x15) : -1;
  for (let i = 0; i < count || count < 0; i++) {
    const at = 0x19 + 9 * i;
    const isWhole = count > 0 && at + 9 <= bytes.length
      && bytes.readInt32LE(at + 1) + bytes.readInt32LE(at + 5) <= bytes.length;
    if (!isWhole) throw new Refusal('the DWG file is cut short');
  }
}

function readDwg(bytes, leftOut) {
  if (bytes.length === 0) throw new Refusal('the file is empty');
  const version = bytes.toString('latin1', 0, 6);
  if (!/^AC[12]/.test(version)) throw new Refusal('this is not a DWG file');
  if (version <= 'AC1015') checkSections(bytes);
  let damaged = 0;
  const notice = (_, event) => {
    if (event.notificationType === NotificationType.Error) damaged++;
  };
  try {
    const own = bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length);
    const document = DwgReader.readFromStream(own, notice);
    leftOut.add('damaged objects', damaged);
    return document;
  } catch (error) {
    throw new Refusal(`the DWG file (${version}) cannot be read: ${error.message}`);
  }
}

function isHidden(layer) {
  return !layer.isOn || (layer.layerFlags & LayerFlags.Frozen) !== 0;
}

/** Throws Refusal. Returns the DGN's bytes and what was left out. */
export function dwgToDgn(bytes, { codePage } = {}) {
  const leftOut = new Tally();
  const document = readDwg(bytes, leftOut);
  const layers = [...document.layers];
  const levels = levelsOfLayers(layers.map((layer) => layer.name));
  const converter = new Converter(levels);
  converter.leftOut = leftOut;
  converter.block(document.modelSpace.entities, { map: IDENTITY, depth: 0, group: 0 });
  if (converter.elements.length === 0) throw new Refusal('the DWG file holds nothing in model space that can be converted');
  leftOut.add('layer names beyond the 63 levels', layers.length - new Set(levels.values()).size);
  return {
    bytes: writeDgn({
      elements: converter.elements, colors: DWG_COLOR_TABLE, unitName: unitName(document.header.insUnits),
      hiddenLevels: layers.filter(isHidden).map((layer) => levels.get(layer.name)), codePage,
    }),
    leftOut,
  };
}
