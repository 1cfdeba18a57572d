// SPDX-License-Identifier: MIT

import './web_crypto.mjs';
import {
  ACadVersion, Arc, CadDocument, Circle, Color, DwgWriter, Ellipse, Hatch, HatchBoundaryPath,
  HatchBoundaryPathPolyline, HatchPattern, Layer, Line, LineType, LineTypeSegment, LwPolyline,
  LwPolylineVertex, Point, Polyline3D, Seqend, TextEntity, Vertex3D, XY, XYZ,
} from '@node-projects/acad-ts';
import { extentOf, readDgn } from './dgn.mjs';
import { encodeEscapes } from './dgn_text.mjs';
import {
  FULL_TURN, arcEnds, cross, dot, isCircular, length, ocs, samePoint, scale, strokeArc, strokeCurve,
  toOcs,
} from './geometry.mjs';
import { Refusal } from './outcome.mjs';
import {
  LINE_STYLES, indexedColors, layerNameOfLevel, lineWeightOfWeight, unitsOfName,
} from './symbology.mjs';

const xyz = (p) => new XYZ(p[0], p[1], p[2]);

/** A closed outline keeps its last vertex even where it repeats the first: none is made up or lost. */
function polyline(points, closed, bulges = []) {
  const level = points[0][2];
  if (points.some((p) => p[2] !== level)) {
    const solid = new Polyline3D();
    for (const p of points) solid.vertices.push(new Vertex3D(xyz(p)));
    solid.isClosed = closed;
    return solid;
  }
  const flat = new LwPolyline(points.map((p, i) => {
    const vertex = new LwPolylineVertex(new XY(p[0], p[1]));
    vertex.bulge = bulges[i] ?? 0;
    return vertex;
  }));
  flat.elevation = level;
  flat.isClosed = closed;
  return flat;
}

function line([from, to]) {
  if (samePoint(from, to)) {
    const point = new Point();
    point.location = xyz(from);
    return point;
  }
  const result = new Line();
  result.startPoint = xyz(from);
  result.endPoint = xyz(to);
  return result;
}

function shape({ points, filled }) {
  const flat = points.every((p) => p[2] === points[0][2]);
  if (!filled || !flat || points.length < 3) return polyline(points, true);
  const edge = new HatchBoundaryPathPolyline();
  edge.vertices = points.map((p) => new XYZ(p[0], p[1], 0));
  edge.isClosed = true;
  const hatch = new Hatch();
  hatch.isSolid = true;
  hatch.pattern = HatchPattern.solid;
  hatch.elevation = points[0][2];
  hatch.paths.push(new HatchBoundaryPath([edge]));
  return hatch;
}

/** DWG counts the parameters of a round entity counterclockwise, and its first axis is the longer. */
function normalized(arc) {
  const swap = length(arc.axis2) > length(arc.axis1) && !isCircular(arc);
  const { axis1, axis2, start } = swap
    ? { axis1: arc.axis2, axis2: scale(arc.axis1, -1), start: arc.start - Math.PI / 2 } : arc;
  const from = arc.sweep < 0 ? start + arc.sweep : start;
  return { center: arc.center, axis1, axis2, start: from, sweep: Math.min(Math.abs(arc.sweep), FULL_TURN) };
}

function round(arc, isFull) {
  const { center, axis1, axis2, start, sweep } = normalized(arc);
  if (!(length(axis1) > 0 && length(axis2) > 0)) return null;
  const normal = cross(axis1, axis2);
  if (!isCircular({ axis1, axis2 })) {
    const ellipse = new Ellipse();
    ellipse.center = xyz(center);
    ellipse.normal = xyz(scale(normal, 1 / length(normal)));
    ellipse.majorAxisEndPoint = xyz(axis1);
    ellipse.radiusRatio = length(axis2) / length(axis1);
    ellipse.startParameter = isFull ? 0 : start;
    ellipse.endParameter = isFull ? FULL_TURN : start + sweep;
    return ellipse;
  }
  const system = ocs(normal);
  const result = isFull ? new Circle() : new Arc();
  result.center = xyz(toOcs(system, center));
  result.radius = length(axis1);
  result.normal = xyz(system.z);
  if (isFull) return result;
  const turn = Math.atan2(dot(axis1, system.y), dot(axis1, system.x)) + start;
  result.startAngle = ((turn % FULL_TURN) + FULL_TURN) % FULL_TURN;
  result.endAngle = (result.startAngle + sweep) % FULL_TURN;
  return result;
}

function text({ origin, xAxis, yAxis, height, width, text: value }) {
  if (!value || !(height > 0)) return null;
  const system = ocs(cross(xAxis, yAxis));
  const result = new TextEntity(encodeEscapes(value));
  result.insertPoint = xyz(toOcs(system, origin));
  result.normal = xyz(system.z);
  result.rotation = Math.atan2(dot(xAxis, system.y), dot(xAxis, system.x));
  result.height = height;
  result.widthFactor = width > 0 ? width / height : 1;
  return result;
}

/** Only level circular arcs can be bulges of a polyline. */
function bulgeOf(member) {
  if (member.kind !== 'arc' || !isCircular(member)) return null;
  if (member.axis1[2] !== 0 || member.axis2[2] !== 0 || Math.abs(member.sweep) >= FULL_TURN) return null;
  return Math.tan(member.sweep / 4) * Math.sign(cross(member.axis1, member.axis2)[2]);
}

function memberPath(member) {
  switch (member.kind) {
    case 'arc': {
      const bulge = bulgeOf(member);
      return bulge === null ? { points: strokeArc(member), bulges: [] } : { points: arcEnds(member), bulges: [bulge] };
    }
    case 'curve':
      return { points: curvePoints(member), bulges: [] };
    default:
      return { points: member.points, bulges: [] };
  }
}

/** Members join where one ends and the next begins, give or take what rounding leaves between them.
    The vertex of a line is kept rather than that of an arc, which is only as good as its angles. */
function chain({ members, closed }, resolution) {
  const points = [];
  const bulges = [];
  const size = (member) => (member.kind === 'arc' ? Math.max(length(member.axis1), length(member.axis2)) : 0);
  const tolerance = 2 * resolution + 1e-6 * Math.max(0, ...members.map(size));
  const meets = (a, b) => a.every((v, i) => Math.abs(v - b[i]) <= tolerance);
  for (const member of members) {
    const path = memberPath(member);
    if (path.points.length === 0) continue;
    let from = 0;
    if (points.length > 0 && meets(points[points.length - 1], path.points[0])) {
      if (member.kind === 'arc') from = 1;
      else points.pop();
    }
    path.bulges.forEach((bulge, i) => { bulges[points.length - from + i] = bulge; });
    for (const point of path.points.slice(from)) points.push(point);
  }
  if (points.length < 2) return null;
  if (closed && points.length > 2 && meets(points[0], points[points.length - 1])) points.pop();
  return polyline(points, closed, bulges);
}

/** The two points at either end of a curve only shape its ends. */
function curvePoints({ points }) {
  return points.length < 6 ? points : strokeCurve(points, 2, points.length - 3);
}

const lines = (points) => (points.length < 2 ? null : polyline(points, false));

function entityOf(element, resolution) {
  switch (element.kind) {
    case 'line': return line(element.points);
    case 'lineString': return lines(element.points);
    case 'curve': return lines(curvePoints(element));
    case 'shape': return element.points.length < 2 ? null : shape(element);
    case 'ellipse': return round(element, true);
    case 'arc': return round(element, Math.abs(element.sweep) >= FULL_TURN);
    case 'text': return text(element);
    default: return chain(element, resolution);
  }
}

function lineTypes(document) {
  return LINE_STYLES.map(({ name, dashes }) => {
    const known = document.lineTypes.tryGetValue(name);
    if (known) return known;
    const type = new LineType(name);
    for (const size of dashes) {
      const segment = new LineTypeSegment();
      segment.length = size;
      type.addSegment(segment);
    }
    document.lineTypes.add(type);
    return type;
  });
}

function layerOf(document, level, hidden) {
  const layer = new Layer(layerNameOfLevel(level));
  layer.isOn = !hidden;
  document.layers.add(layer);
  return layer;
}

/** Line types are sized for a sheet of about 400 mm, and the first view shows all of the drawing. */
function fitView(document, elements) {
  const { low, high } = extentOf(elements);
  const size = Math.max(high[0] - low[0], high[1] - low[1], 1e-6);
  document.header.lineTypeScale = size / 400;
  document.header.modelSpaceExtMin = xyz(low);
  document.header.modelSpaceExtMax = xyz(high);
  const view = document.vPorts.tryGetValue('*Active');
  if (!view) return;
  view.center = new XY((low[0] + high[0]) / 2, (low[1] + high[1]) / 2);
  view.viewHeight = size * 1.05;
}

/** The library gives handles to entities alone; without handles of their own, vertices are not found
    again. */
function addVertices(document, entity) {
  const end = new Seqend();
  for (const part of [...entity.vertices, end]) {
    part.owner = entity;
    document.registerCollection(part);
  }
  entity.vertices.seqend = end;
}

/** The library's writer asks of every entity whether the list of all entities includes it, which takes
    minutes for a large drawing. Meanwhile, large arrays look first where they once had the value. */
function writeDwg(document) {
  const plain = Array.prototype.includes;
  const places = new WeakMap();
  Array.prototype.includes = function includes(value, from) {
    if (this.length < 1000 || from) return plain.call(this, value, from);
    if (!places.has(this)) places.set(this, new Map(this.map((entry, i) => [entry, i])));
    const place = places.get(this).get(value);
    return (place !== undefined && this[place] === value) || plain.call(this, value);
  };
  try {
    return DwgWriter.writeToBuffer(document);
  } finally {
    Array.prototype.includes = plain;
  }
}

/** Throws Refusal. Returns the DWG's bytes and what was left out. */
export function dgnToDwg(bytes, { codePage } = {}) {
  const drawing = readDgn(bytes, codePage);
  const document = new CadDocument(ACadVersion.AC1015);
  document.header.insUnits = unitsOfName(drawing.unitName);
  const types = lineTypes(document);
  const colors = indexedColors(drawing.colors).map((index) => new Color(index));
  const layers = new Map();
  let count = 0;
  for (const element of drawing.elements) {
    const entity = entityOf(element, 1 / drawing.uorPerMaster);
    if (!entity) {
      drawing.leftOut.add(`${element.kind.toUpperCase()} without extent`);
      continue;
    }
    const { level } = element;
    if (!layers.has(level)) layers.set(level, layerOf(document, level, drawing.hiddenLevels.has(level)));
    entity.layer = layers.get(level);
    entity.color = colors[element.color];
    entity.lineWeight = lineWeightOfWeight(element.weight);
    entity.lineType = types[element.style];
    document.modelSpace.entities.add(entity);
    if (entity instanceof Polyline3D) addVertices(document, entity);
    count++;
  }
  if (count === 0) throw new Refusal('the DGN file holds nothing that can be converted');
  fitView(document, drawing.elements);
  return { bytes: writeDwg(document), leftOut: drawing.leftOut };
}
