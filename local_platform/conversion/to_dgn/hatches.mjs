// SPDX-License-Identifier: MIT
// Hatches: a fill becomes filled outlines with their holes, a pattern the lines that it consists of, cut
// where the hatch ends.

import { FULL_TURN, length, mapPoint, ocs, strokeArc, subtract } from '../geometry.mjs';
import { isCurve, strokeSpline } from '../spline.mjs';
import { path, positiveTurn } from './curves.mjs';

/** A pattern of more pieces than this is given by its outline. */
const MAX_PIECES = 20000;
const MAX_CUTS = 5e7;

function arcOf({ center, axis, ratio, start, end, isLeft }, z) {
  const axis1 = [axis[0], axis[1], 0];
  const axis2 = [-axis[1] * ratio, axis[0] * ratio, 0];
  const sweep = end - start > 1e-12 ? Math.min(end - start, FULL_TURN) : positiveTurn(end - start);
  const arc = { center: [...center, z], axis1, axis2, start, sweep };
  // Clockwise arcs count their angles the other way round.
  return isLeft ? arc : { ...arc, start: -start, sweep: -arc.sweep };
}

/** A loop as members of a chain in the plane of the hatch; null if it has no extent. */
function loopMembers(loop, z) {
  if (loop.points) {
    const vertices = loop.points.map((p, i) => ({ point: [...p, z], bulge: loop.bulges[i] ?? 0 }));
    const [element] = path(vertices, true, { x: [1, 0, 0], y: [0, 1, 0], z: [0, 0, 1], origin: [0, 0, 0] });
    return element ? (element.members ?? [{ kind: 'lineString', points: [...element.points, element.points[0]] }]) : null;
  }
  const members = [];
  for (const edge of loop.edges) {
    if (edge.kind === 'line') {
      const points = [[...edge.start, z], [...edge.end, z]];
      const last = members.at(-1);
      if (last?.kind === 'lineString' && length(subtract(last.points.at(-1), points[0])) < 1e-9) last.points.push(points[1]);
      else members.push({ kind: 'lineString', points });
    } else if (edge.kind === 'arc') {
      members.push({ kind: 'arc', ...arcOf(edge, z) });
    } else {
      const curve = { ...edge, points: edge.points.map((p) => [...p, z]) };
      if (isCurve(curve)) members.push({ ...curve, kind: 'spline' });
    }
  }
  return members.length > 0 ? members : null;
}

function strokes(members) {
  const points = members.flatMap((m) => (m.kind === 'arc' ? strokeArc(m) : m.kind === 'spline' ? strokeSpline(m) : m.points));
  return points.filter((p, i) => i === 0 || length(subtract(p, points[i - 1])) > 0);
}

function area(points) {
  return Math.abs(points.reduce((sum, p, i) => {
    const next = points[(i + 1) % points.length];
    return sum + p[0] * next[1] - next[0] * p[1];
  }, 0)) / 2;
}

function isInside([x, y], points) {
  let inside = false;
  for (let i = 0, j = points.length - 1; i < points.length; j = i++) {
    const [a, b] = [points[i], points[j]];
    if ((a[1] > y) !== (b[1] > y) && x < ((b[0] - a[0]) * (y - a[1])) / (b[1] - a[1]) + a[0]) inside = !inside;
  }
  return inside;
}

const STRAIGHT = (members) => members.every((m) => m.kind === 'lineString');

function outlineElement({ members, points }, system, extra) {
  const place = (p) => mapPoint(system, p);
  if (STRAIGHT(members)) {
    const last = points.length - 1;
    const closed = length(subtract(points[0], points[last])) < 1e-9 ? points.slice(0, -1) : points;
    return closed.length < 3 ? null : { kind: 'shape', points: closed.map(place), ...extra };
  }
  return { kind: 'chain', closed: true, members: members.map((m) => mapMember(m, system)), ...extra };
}

function mapMember(member, system) {
  if (member.points) return { ...member, points: member.points.map((p) => mapPoint(system, p)) };
  const vector = (v) => subtract(mapPoint(system, v), system.origin);
  return { ...member, center: mapPoint(system, member.center), axis1: vector(member.axis1), axis2: vector(member.axis2) };
}

/** Outer loops with the holes right inside of them; loops inside of holes are outer ones again. */
function nest(loops) {
  const sorted = [...loops].sort((a, b) => b.area - a.area);
  const outers = [];
  sorted.forEach((loop, i) => {
    const around = sorted.slice(0, i).filter((other) => isInside(loop.points[0], other.points));
    loop.depth = around.length;
    if (loop.depth % 2 === 0) outers.push(Object.assign(loop, { holes: [] }));
    else around.filter((other) => other.depth === loop.depth - 1).at(-1)?.holes?.push(loop);
  });
  return outers;
}

function fill(loops, system) {
  return nest(loops).flatMap((outer) => {
    const outline = outlineElement(outer, system, { filled: true });
    if (!outline) return [];
    const holes = outer.holes.map((hole) => outlineElement(hole, system, { isHole: true, filled: false })).filter(Boolean);
    if (holes.length === 0) return [outline];
    const members = [outline, ...holes];
    return [{ kind: 'cell', name: '', origin: system.origin, axes: [[1, 0, 0], [0, 1, 0], [0, 0, 1]], members }];
  });
}

/** The parts of a line, from the point `base` along `along`, inside of the loops: even-odd, as distances. */
function inside(base, along, loops) {
  const cuts = [];
  const across = (p) => (p[0] - base[0]) * -along[1] + (p[1] - base[1]) * along[0];
  for (const { points } of loops) {
    for (let i = 0, j = points.length - 1; i < points.length; j = i++) {
      const [a, b] = [across(points[j]), across(points[i])];
      if ((a >= 0) === (b >= 0)) continue;
      const t = a / (a - b);
      const x = points[j][0] + (points[i][0] - points[j][0]) * t - base[0];
      const y = points[j][1] + (points[i][1] - points[j][1]) * t - base[1];
      cuts.push(x * along[0] + y * along[1]);
    }
  }
  return cuts.sort((a, b) => a - b);
}

/** Calls `put` with the dashes of a line between two distances from its own beginning; returns how many it looked at. */
function dashed(from, to, dashes, put) {
  const period = dashes.reduce((sum, d) => sum + Math.abs(d), 0);
  const count = Math.ceil((to - from) / period) + 1;
  if (!(count * dashes.length < MAX_PIECES)) {
    put(from, to);
    return 1;
  }
  // Counted, since what is very far away does not move by adding to it.
  const first = Math.floor(from / period);
  for (let i = 0; i < count && (first + i) * period < to; i++) {
    let at = (first + i) * period;
    for (const dash of dashes) {
      const end = at + Math.abs(dash);
      if (dash >= 0 && end >= from && at <= to) put(Math.max(at, from), Math.min(end, to));
      at = end;
    }
  }
  return count * dashes.length;
}

/** The lines of a pattern; null if there are too many. */
function patternLines(lines, loops) {
  const points = loops.flatMap((loop) => loop.points);
  const result = [];
  let work = 0;
  for (const { angle, base, offset, dashes } of lines) {
    const along = [Math.cos(angle), Math.sin(angle)];
    const rise = offset[0] * -along[1] + offset[1] * along[0];
    if (!(Math.abs(rise) > 0)) return null;
    const ranks = points.map((p) => ((p[0] - base[0]) * -along[1] + (p[1] - base[1]) * along[0]) / rise);
    const [low, high] = [Math.ceil(ranks.reduce((a, b) => Math.min(a, b))), Math.floor(ranks.reduce((a, b) => Math.max(a, b)))];
    if (!(high - low < MAX_PIECES)) return null;
    work += (high - low) * points.length;
    for (let i = 0; i <= high - low; i++) {
      if (work > MAX_CUTS) return null;
      const start = [base[0] + offset[0] * (low + i), base[1] + offset[1] * (low + i)];
      const cuts = inside(start, along, loops);
      for (let k = 0; k + 1 < cuts.length; k += 2) {
        work += dashed(cuts[k], cuts[k + 1], dashes, (from, to) =>
          result.push([from, to].map((t) => [start[0] + along[0] * t, start[1] + along[1] * t])));
        if (result.length > MAX_PIECES) return null;
      }
    }
  }
  return result;
}

export function hatch(entity, note) {
  const system = ocs(entity.normal);
  const loops = entity.paths.map((loop) => loopMembers(loop, entity.elevation)).filter(Boolean).map((members) => {
    const points = strokes(members);
    return { members, points, area: area(points) };
  }).filter((loop) => loop.points.length > 2);
  if (loops.length === 0) return [];
  if (entity.isSolid || entity.gradient) {
    if (entity.gradient) note('gradients as plain fills');
    return fill(loops, system);
  }
  const lines = patternLines(entity.lines, loops);
  if (!lines || lines.length === 0) {
    note('hatches by their outlines, their patterns being too fine');
    return loops.map((loop) => outlineElement(loop, system, {})).filter(Boolean);
  }
  note('hatch patterns as lines');
  const members = lines.map((ends) => ({ kind: 'line', points: ends.map((p) => mapPoint(system, [...p, entity.elevation])) }));
  return [{ kind: 'cell', name: '', origin: members[0].points[0], axes: [[1, 0, 0], [0, 1, 0], [0, 0, 1]], members }];
}
