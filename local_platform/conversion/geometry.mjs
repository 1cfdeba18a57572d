// SPDX-License-Identifier: MIT
// Vectors are arrays [x, y, z]. An arc is { center, axis1, axis2, start, sweep }: its points are
// center + axis1 * cos(t) + axis2 * sin(t) for t from start over sweep (radians, signed).

export const FULL_TURN = 2 * Math.PI;

export const add = (a, b) => [a[0] + b[0], a[1] + b[1], a[2] + b[2]];
export const subtract = (a, b) => [a[0] - b[0], a[1] - b[1], a[2] - b[2]];
export const scale = (a, factor) => [a[0] * factor, a[1] * factor, a[2] * factor];
export const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
/** Math.hypot() takes many times as long. */
export const length = (a) => Math.sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
export const cross = (a, b) => [
  a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0],
];
export const samePoint = (a, b) => a[0] === b[0] && a[1] === b[1] && a[2] === b[2];

export function unit(a) {
  const size = length(a);
  return size > 0 ? scale(a, 1 / size) : [0, 0, 0];
}

export const combine = (origin, a, s, b, t) =>
  [origin[0] + a[0] * s + b[0] * t, origin[1] + a[1] * s + b[1] * t, origin[2] + a[2] * s + b[2] * t];

export const arcPoint = (arc, t) => combine(arc.center, arc.axis1, Math.cos(t), arc.axis2, Math.sin(t));
export const arcEnds = (arc) => [arcPoint(arc, arc.start), arcPoint(arc, arc.start + arc.sweep)];
export const isCircular = ({ axis1, axis2 }) =>
  Math.abs(length(axis1) - length(axis2)) <= 1e-9 * length(axis1);

/** Ends and the extremes in x, y and z that lie on the arc. */
export function arcExtremes(arc) {
  const points = arcEnds(arc);
  const from = Math.min(arc.start, arc.start + arc.sweep);
  for (let i = 0; i < 3; i++) {
    if (arc.axis1[i] === 0 && arc.axis2[i] === 0) continue;
    const t = Math.atan2(arc.axis2[i], arc.axis1[i]);
    for (let half = 0; half < 2; half++) {
      const candidate = t + half * Math.PI;
      const turned = (((candidate - from) % FULL_TURN) + FULL_TURN) % FULL_TURN;
      if (turned <= Math.abs(arc.sweep)) points.push(arcPoint(arc, candidate));
    }
  }
  return points;
}

/** As close to the arc as a ten-thousandth of its diameter. */
export function strokeArc(arc) {
  const steps = Math.max(2, Math.ceil((Math.abs(arc.sweep) / FULL_TURN) * 160));
  return Array.from({ length: steps + 1 }, (_, i) => arcPoint(arc, arc.start + (arc.sweep * i) / steps));
}

/** The arc from `a` to `b` of an OCS polyline: bulge is tan(sweep / 4), positive to the left. */
export function bulgeArc(a, b, bulge) {
  const sweep = 4 * Math.atan(bulge);
  const chord = subtract(b, a);
  const rise = (1 - bulge * bulge) / (4 * bulge);
  const center = [(a[0] + b[0]) / 2 - chord[1] * rise, (a[1] + b[1]) / 2 + chord[0] * rise, a[2]];
  const radius = Math.hypot(a[0] - center[0], a[1] - center[1]);
  const start = Math.atan2(a[1] - center[1], a[0] - center[0]);
  return { center, axis1: [radius, 0, 0], axis2: [0, radius, 0], start, sweep };
}

/** Affine maps: { x, y, z, origin } are the images of the unit vectors and of the origin. */
export const IDENTITY = { x: [1, 0, 0], y: [0, 1, 0], z: [0, 0, 1], origin: [0, 0, 0] };

const mapped = (m, v, i) => m.x[i] * v[0] + m.y[i] * v[1] + m.z[i] * v[2];
export const mapVector = (m, v) => [mapped(m, v, 0), mapped(m, v, 1), mapped(m, v, 2)];
export const mapPoint = (m, p) => (m === IDENTITY ? p : add(mapVector(m, p), m.origin));

/** The map that does `inner` first, then `outer`. */
export const compose = (outer, inner) => ({
  x: mapVector(outer, inner.x), y: mapVector(outer, inner.y), z: mapVector(outer, inner.z),
  origin: mapPoint(outer, inner.origin),
});

/** DWG's "arbitrary axis": the object coordinate system that belongs to an extrusion direction. */
export function ocs(normal) {
  const z = unit(normal);
  if (z[2] === 1 || length(z) === 0) return IDENTITY;
  const steep = Math.abs(z[0]) < 1 / 64 && Math.abs(z[1]) < 1 / 64;
  const x = unit(cross(steep ? [0, 1, 0] : [0, 0, 1], z));
  return { x, y: cross(z, x), z, origin: [0, 0, 0] };
}

/** A point of the world in an object coordinate system. */
export const toOcs = (system, p) =>
  (system === IDENTITY ? p : [dot(p, system.x), dot(p, system.y), dot(p, system.z)]);

/** An uneven scale leaves the axes no longer square; Rytz's construction finds the square ones. */
export function mapArc(m, arc) {
  const center = mapPoint(m, arc.center);
  const [u, v] = [mapVector(m, arc.axis1), mapVector(m, arc.axis2)];
  const skew = dot(u, v);
  if (Math.abs(skew) <= 1e-12 * length(u) * length(v)) return { ...arc, center, axis1: u, axis2: v };
  const t = 0.5 * Math.atan2(2 * skew, dot(u, u) - dot(v, v));
  const axis1 = combine([0, 0, 0], u, Math.cos(t), v, Math.sin(t));
  const axis2 = combine([0, 0, 0], u, -Math.sin(t), v, Math.cos(t));
  return { ...arc, center, axis1, axis2, start: arc.start - t };
}
