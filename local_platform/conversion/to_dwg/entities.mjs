// SPDX-License-Identifier: MIT
// Elements of DGN as entities of DWG, without their symbology.

import {
  FULL_TURN, arcEnds, cross, dot, isCircular, length, ocs, samePoint, scale, strokeArc, toOcs, unit,
} from '../geometry.mjs';
import { placeOfJustification } from '../dgn/format.mjs';
import { sizeOf, strokeSpline } from '../spline.mjs';

/** A closed outline keeps its last vertex even where it repeats the first: none is made up or lost. */
function polyline(points, isClosed, bulges = []) {
  const elevation = points[0][2];
  if (points.some((p) => p[2] !== elevation)) return { kind: 'POLYLINE_3D', points, isClosed };
  return { kind: 'LWPOLYLINE', points, bulges, isClosed, elevation };
}

const line = ([start, end]) => (samePoint(start, end) ? { kind: 'POINT', point: start } : { kind: 'LINE', start, end });

const isLevel = (points) => points.every((p) => p[2] === points[0][2]);

function shape({ points, filled }) {
  if (!filled || !isLevel(points) || points.length < 3) return polyline(points, true);
  return { kind: 'HATCH', elevation: points[0][2], paths: [{ points }] };
}

/** DWG counts the parameters of a round entity counterclockwise, and its first axis is the longer. */
function normalized(arc) {
  const swap = length(arc.axis2) > length(arc.axis1) && !isCircular(arc);
  const { axis1, axis2, start } = swap
    ? { axis1: arc.axis2, axis2: scale(arc.axis1, -1), start: arc.start - Math.PI / 2 } : arc;
  const from = arc.sweep < 0 ? start + arc.sweep : start;
  return { center: arc.center, axis1, axis2, start: from, sweep: Math.min(Math.abs(arc.sweep), FULL_TURN) };
}

const positive = (angle) => ((angle % FULL_TURN) + FULL_TURN) % FULL_TURN;

function round(arc, isFull) {
  const { center, axis1, axis2, start, sweep } = normalized(arc);
  if (!(length(axis1) > 0 && length(axis2) > 0)) return null;
  const normal = unit(cross(axis1, axis2));
  if (!isCircular({ axis1, axis2 })) {
    return { kind: 'ELLIPSE', center, axis: axis1, normal, ratio: length(axis2) / length(axis1),
      start: isFull ? 0 : start, end: isFull ? FULL_TURN : start + sweep };
  }
  const system = ocs(normal);
  const circle = { kind: isFull ? 'CIRCLE' : 'ARC', center: toOcs(system, center), radius: length(axis1), normal: system.z };
  if (isFull) return circle;
  const from = positive(Math.atan2(dot(axis1, system.y), dot(axis1, system.x)) + start);
  return { ...circle, start: from, end: (from + sweep) % FULL_TURN };
}

/** How far the text reaches, from the range that its element states; null where that says nothing. */
function widthOf({ xAxis, yAxis, height, range, text }) {
  if (!range) return null;
  const [spanX, spanY] = [0, 1].map((i) => range.high[i] - range.low[i]);
  const [c, s] = [Math.abs(xAxis[0]), Math.abs(xAxis[1])];
  const [up, across] = [Math.abs(yAxis[1]), Math.abs(yAxis[0])];
  const width = c > s ? (spanX - height * across) / c : (spanY - height * up) / s;
  return width > 0 && width < 4 * height * Math.max(1, text.length) ? width : null;
}

/** Characters that begin a notation of DWG, so that they are taken as they are. */
const literally = (value) => value.replace(/\^/g, '^ ').replace(/%%(?=[dpcuok%\d])/gi, '%%%%%%');

function text(element) {
  const { origin, xAxis, yAxis, height, width, text: value, justification = 2 } = element;
  if (!value || !(height > 0)) return null;
  const normal = cross(xAxis, yAxis);
  const system = ocs(normal);
  const insert = toOcs(system, origin);
  const { across, up } = placeOfJustification(justification);
  const result = { kind: 'TEXT', value: literally(value), insert, align: null, normal: system.z, height, across, up: up === 0 ? 0 : up + 1,
    rotation: Math.atan2(dot(xAxis, system.y), dot(xAxis, system.x)), widthFactor: width > 0 ? width / height : 1 };
  if (across || up) {
    const reach = (widthOf(element) ?? width * value.length) * (across / 2);
    const [c, s] = [Math.cos(result.rotation), Math.sin(result.rotation)];
    const rise = (height * up) / 2;
    result.align = [insert[0] + c * reach - s * rise, insert[1] + s * reach + c * rise, insert[2]];
  }
  return result;
}

/** Only level circular arcs can be bulges of a polyline. */
function bulgeOf(member) {
  if (member.kind !== 'arc' || !isCircular(member)) return null;
  if (member.axis1[2] !== 0 || member.axis2[2] !== 0 || Math.abs(member.sweep) >= FULL_TURN) return null;
  return Math.tan(member.sweep / 4) * Math.sign(cross(member.axis1, member.axis2)[2]);
}

function memberPath(member) {
  if (member.kind === 'arc') {
    const bulge = bulgeOf(member);
    return bulge === null ? { points: strokeArc(member), bulges: [] } : { points: arcEnds(member), bulges: [bulge] };
  }
  if (member.kind === 'spline') return { points: strokeSpline(member), bulges: [] };
  return { points: member.points, bulges: [] };
}

const flatten = (members) => members.flatMap((m) => (m.kind === 'chain' ? flatten(m.members) : [m]));

/** Members join where one ends and the next begins, give or take what rounding leaves between them.
    The vertex of a line is kept rather than that of an arc, which is only as good as its angles. */
function joined({ members, closed }, resolution, note) {
  const points = [];
  const bulges = [];
  const size = (member) => (member.kind === 'arc' ? Math.max(length(member.axis1), length(member.axis2))
    : member.kind === 'spline' ? sizeOf(member.points) * 1e-3 : 0);
  const all = flatten(members);
  const tolerance = 2 * resolution + 1e-6 * Math.max(0, ...all.map(size));
  const meets = (a, b) => a.every((v, i) => Math.abs(v - b[i]) <= tolerance);
  for (const member of all) {
    const path = memberPath(member);
    if (path.points.length === 0) continue;
    if (member.kind === 'spline') note('curves inside of chains as short straight pieces');
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
  return { points, bulges };
}

function chain(element, resolution, note) {
  const path = joined(element, resolution, note);
  if (!path) return null;
  if (element.filled && isLevel(path.points)) return { kind: 'HATCH', elevation: path.points[0][2], paths: [boundary(element)] };
  return polyline(path.points, element.closed, path.bulges);
}

/** The outline of a filled area in its plane: its corners, or its edges where some are round. */
export function boundary(element) {
  if (element.points) return { points: element.points };
  if (element.axis1) return { edges: [edgeOf({ ...element, start: 0, sweep: FULL_TURN })] };
  return { edges: flatten(element.members).flatMap((member) => {
    if (member.axis1) return [edgeOf(member)];
    if (member.kind === 'spline') return [{ ...member, kind: 'spline' }];
    return member.points.slice(1).map((end, i) => ({ kind: 'line', start: member.points[i], end }));
  }) };
}

function edgeOf(arc) {
  const { center, axis1, axis2, start, sweep } = normalized(arc);
  const ratio = length(axis2) / length(axis1);
  const isLeft = cross(axis1, axis2)[2] >= 0;
  if (isCircular({ axis1, axis2 })) {
    const turn = Math.atan2(axis1[1], axis1[0]);
    const from = isLeft ? turn + start : -(turn - start);
    return { kind: 'arc', center, radius: length(axis1), axis: axis1, ratio: 1, start: from, end: from + sweep, isLeft };
  }
  return { kind: 'arc', center, axis: axis1, ratio, start, end: start + sweep, isLeft };
}

function ellipse(element) {
  const outline = round(element, true);
  if (!outline || !element.filled || element.axis1[2] !== 0 || element.axis2[2] !== 0) return outline;
  return { kind: 'HATCH', elevation: element.center[2], paths: [boundary(element)] };
}

const open = (points) => (points.length < 2 ? null : polyline(points, false));

/** `note` is told what is drawn from what; null is an element without extent. */
export function entitiesOf(element, resolution, note) {
  switch (element.kind) {
    case 'line': return [line(element.points)];
    case 'lineString': return [open(element.points)];
    case 'points': return element.points.map((point) => ({ kind: 'POINT', point }));
    case 'spline': return [{ ...element, kind: 'SPLINE' }];
    case 'shape': return [element.points.length < 2 ? null : shape(element)];
    case 'ellipse': return [ellipse(element)];
    case 'arc': return [round(element, Math.abs(element.sweep) >= FULL_TURN)];
    case 'text': return [text(element)];
    default: return [chain(element, resolution, note)];
  }
}
