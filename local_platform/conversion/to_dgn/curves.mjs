// SPDX-License-Identifier: MIT
// Lines, arcs, polylines and splines of DWG as elements without symbology, in the coordinates of the
// block that holds the entity.

import {
  FULL_TURN, IDENTITY, bulgeArc, combine, cross, length, mapArc, mapPoint, ocs, scale, strokeArc, subtract, unit,
} from '../geometry.mjs';
import { interpolate, isCurve } from '../spline.mjs';

/** From 0 exclusive to a full turn inclusive. */
export function positiveTurn(angle) {
  const turned = ((angle % FULL_TURN) + FULL_TURN) % FULL_TURN;
  return turned < 1e-12 ? FULL_TURN : turned;
}

export function round(entity, isFull) {
  const system = ocs(entity.normal);
  const start = isFull ? 0 : entity.start;
  const sweep = isFull ? FULL_TURN : positiveTurn(entity.end - entity.start);
  return [{ kind: isFull ? 'ellipse' : 'arc', center: mapPoint(system, entity.center),
    axis1: scale(system.x, entity.radius), axis2: scale(system.y, entity.radius), start, sweep }];
}

export function ellipse({ center, axis, normal, ratio, start, end }) {
  const axis2 = scale(cross(unit(normal), axis), ratio);
  const sweep = positiveTurn(end - start);
  const isFull = sweep > FULL_TURN - 1e-9;
  return [{ kind: isFull ? 'ellipse' : 'arc', center, axis1: axis, axis2, start: isFull ? 0 : start,
    sweep: isFull ? FULL_TURN : sweep }];
}

export const straight = (points) => (points.length > 1 ? [{ kind: 'lineString', points }] : []);

/** Straight runs become lines and line strings, bulges arcs; both together make a chain. */
export function path(vertices, closed, system) {
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
    if (vertices[i].bulge && length(subtract(to, from)) > 0) {
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

/** The band that a polyline of some width covers, as one filled outline to each run of its segments. */
function band(vertices, closed, system) {
  const count = closed ? vertices.length : vertices.length - 1;
  const centre = [];
  for (let i = 0; i < count; i++) {
    const [from, to] = [vertices[i], vertices[(i + 1) % vertices.length]];
    const points = from.bulge && length(subtract(to.point, from.point)) > 0
      ? strokeArc(bulgeArc(from.point, to.point, from.bulge)) : [from.point, to.point];
    points.forEach((point, k) => {
      const width = from.widths[0] + ((from.widths[1] - from.widths[0]) * k) / (points.length - 1);
      if (centre.length === 0 || length(subtract(point, centre.at(-1).point)) > 0) centre.push({ point, width });
    });
  }
  if (centre.length < 2) return [];
  const sides = centre.map(({ point, width }, i) => {
    const last = centre.length - 1;
    const before = i > 0 ? unit(subtract(point, centre[i - 1].point)) : closed ? unit(subtract(point, centre[last - 1].point)) : null;
    const after = i < last ? unit(subtract(centre[i + 1].point, point)) : closed ? unit(subtract(centre[1].point, point)) : null;
    const along = unit(combine([0, 0, 0], before ?? after, 1, after ?? before, 1));
    const across = [-along[1], along[0], 0];
    const turn = before && after ? Math.abs(across[0] * -after[1] + across[1] * after[0]) : 1;
    // A sharp corner is cut off rather than drawn out to a spike.
    const half = width / 2 / Math.max(turn, 0.25);
    return [combine(point, across, half, across, 0), combine(point, across, -half, across, 0)];
  });
  const outline = [...sides.map(([left]) => left), ...sides.map(([, right]) => right).reverse()];
  return [{ kind: 'shape', points: outline.map((p) => mapPoint(system, p)), filled: true }];
}

const isWide = (vertices, closed) => vertices.slice(0, closed ? undefined : -1).some((v) => v.widths && (v.widths[0] > 0 || v.widths[1] > 0));

/** `note` is told what is drawn from what. */
export function polyline(vertices, closed, system, note) {
  if (!isWide(vertices, closed)) return path(vertices, closed, system);
  note('polylines with width as filled shapes');
  return band(vertices.map((v) => ({ ...v, widths: v.widths ?? [0, 0] })), closed, system);
}

export function lightPolyline(entity, note) {
  const { points, bulges, widths, width, elevation, isClosed, normal } = entity;
  const vertices = points.map((p, i) => ({ point: [p[0], p[1], elevation], bulge: bulges[i] ?? 0,
    widths: widths[i] ?? [width, width] }));
  return polyline(vertices, isClosed, ocs(normal), note);
}

const SPLINE_FRAME = 16;

export function heavyPolyline(entity, parts, note) {
  const is2d = entity.kind === 'POLYLINE_2D';
  const vertices = parts.filter((v) => v.point && (v.flags & SPLINE_FRAME) === 0).map((v) => ({
    point: is2d ? [v.point[0], v.point[1], entity.elevation] : v.point,
    bulge: is2d ? v.bulge : 0,
    widths: is2d ? v.widths : null,
  }));
  return polyline(vertices, entity.isClosed, is2d ? ocs(entity.normal) : IDENTITY, note);
}

export function spline(entity) {
  const { degree, knots, points, weights, fitPoints } = entity;
  const curve = { degree, knots, points, weights };
  if (points.length > 0 && isCurve(curve)) return [{ kind: 'spline', ...curve }];
  const through = fitPoints.length > 1 ? interpolate(fitPoints, entity.startTangent, entity.endTangent) : null;
  if (!through) return [];
  return through.points.length === 4 && fitPoints.length === 2 && !length(entity.startTangent) && !length(entity.endTangent)
    ? straight(fitPoints) : [{ kind: 'spline', ...through }];
}
