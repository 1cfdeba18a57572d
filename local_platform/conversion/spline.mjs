// SPDX-License-Identifier: MIT
// B-splines: { degree, knots, points, weights }, with one knot more than points and degree together, and
// no weights where all are equal.

import { add, combine, length, scale, subtract, unit } from './geometry.mjs';

/** How far strokes may leave a curve, as a share of the curve's size. */
export const STROKE_TOLERANCE = 1e-4;

const MAX_DEGREE = 25;
const MAX_HALVINGS = 12;

/** Whether the numbers make up a curve at all. */
export function isCurve({ degree, knots, points, weights }) {
  return degree >= 1 && degree <= MAX_DEGREE && points.length > degree && knots.length === points.length + degree + 1
    && knots.every((u, i) => Number.isFinite(u) && (i === 0 || u >= knots[i - 1]))
    && knots[points.length] > knots[degree]
    && (weights.length === 0 || (weights.length === points.length && weights.every((w) => w > 0)));
}

const homogeneous = ({ points, weights }) =>
  points.map((p, i) => (weights.length ? [p[0] * weights[i], p[1] * weights[i], p[2] * weights[i], weights[i]] : [...p, 1]));

function fromHomogeneous(poles, isWeighted) {
  return {
    points: poles.map((p) => [p[0] / p[3], p[1] / p[3], p[2] / p[3]]),
    weights: isWeighted ? poles.map((p) => p[3]) : [],
  };
}

/** The point at `u` of the span that begins at knot `span`. */
function pointInSpan({ degree, knots }, poles, span, u) {
  const d = poles.slice(span - degree, span + 1);
  for (let r = 1; r <= degree; r++) {
    for (let j = degree; j >= r; j--) {
      const left = knots[span - degree + j];
      const t = (u - left) / (knots[span + 1 + j - r] - left || 1);
      const [a, b] = [d[j - 1], d[j]];
      d[j] = [a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t, a[3] + (b[3] - a[3]) * t];
    }
  }
  const [x, y, z, w] = d[degree];
  return [x / w, y / w, z / w];
}

const distanceToChord = (p, from, to) => {
  const chord = subtract(to, from);
  const size = length(chord);
  const offset = subtract(p, from);
  if (size === 0) return length(offset);
  const along = Math.min(size, Math.max(0, (offset[0] * chord[0] + offset[1] * chord[1] + offset[2] * chord[2]) / size));
  return length(combine(offset, chord, -along / size, chord, 0));
};

export function sizeOf(points) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (const p of points) {
    for (let i = 0; i < 3; i++) {
      if (p[i] < low[i]) low[i] = p[i];
      if (p[i] > high[i]) high[i] = p[i];
    }
  }
  return length(subtract(high, low));
}

/** Points on the curve, as close as STROKE_TOLERANCE demands. */
export function strokeSpline(spline, tolerance = STROKE_TOLERANCE * sizeOf(spline.points)) {
  const { degree, knots, points } = spline;
  const poles = homogeneous(spline);
  const result = [];
  const halve = (span, from, to, a, b, depth) => {
    const middle = (from + to) / 2;
    const c = pointInSpan(spline, poles, span, middle);
    const near = (t) => pointInSpan(spline, poles, span, from + (to - from) * t);
    const isStraight = depth > 1 && [c, near(0.25), near(0.75)].every((p) => distanceToChord(p, a, b) <= tolerance);
    if (isStraight || depth >= MAX_HALVINGS) return result.push(b);
    halve(span, from, middle, a, c, depth + 1);
    return halve(span, middle, to, c, b, depth + 1);
  };
  for (let span = degree; span < points.length; span++) {
    const [from, to] = [knots[span], knots[span + 1]];
    if (!(to > from)) continue;
    const [a, b] = [pointInSpan(spline, poles, span, from), pointInSpan(spline, poles, span, to)];
    if (result.length === 0) result.push(a);
    if (degree === 1) result.push(b);
    else halve(span, from, to, a, b, 0);
  }
  return result;
}

/** The same curve with one more knot. */
function withKnot({ degree, knots, poles }, u) {
  let span = degree;
  while (span < poles.length - 1 && knots[span + 1] <= u) span++;
  const result = [];
  for (let i = 0; i <= poles.length; i++) {
    if (i <= span - degree) {
      result.push(poles[i]);
    } else if (i > span) {
      result.push(poles[i - 1]);
    } else {
      const t = (u - knots[i]) / (knots[i + degree] - knots[i] || 1);
      result.push(poles[i].map((v, k) => poles[i - 1][k] * (1 - t) + v * t));
    }
  }
  return { degree, knots: [...knots.slice(0, span + 1), u, ...knots.slice(span + 1)], poles: result };
}

const multiplicity = (knots, u) => knots.reduce((count, k) => count + (k === u), 0);

/** The piece from one knot to another, with ends as open splines have them. */
function piece(spline, from, to) {
  let curve = { degree: spline.degree, knots: spline.knots, poles: homogeneous(spline) };
  for (const u of [from, to]) {
    for (let i = multiplicity(curve.knots, u); i < curve.degree; i++) curve = withKnot(curve, u);
  }
  const { degree, knots, poles } = curve;
  const first = knots.lastIndexOf(from);
  const last = knots.indexOf(to);
  const inner = knots.slice(first + 1, last);
  const ends = (u) => Array(degree + 1).fill(u);
  const start = first - degree;
  return { degree, knots: [...ends(from), ...inner, ...ends(to)],
    ...fromHomogeneous(poles.slice(start, start + inner.length + degree + 1), spline.weights.length > 0) };
}

const isOpen = ({ degree, knots, points }) =>
  knots[0] === knots[degree] && knots[points.length] === knots[points.length + degree];

/** Splines that begin and end on their first and last point and have at most `maxPoints` each. */
export function openPieces(spline, maxPoints = Infinity) {
  const { degree, knots, points } = spline;
  if (isOpen(spline) && points.length <= maxPoints) return [spline];
  const [from, to] = [knots[degree], knots[points.length]];
  const inner = [...new Set(knots.filter((u) => u > from && u < to))];
  const pieces = [];
  let start = from;
  let used = degree + 1;
  inner.forEach((u) => {
    const more = multiplicity(knots, u);
    if (used + more + degree > maxPoints) {
      pieces.push(piece(spline, start, u));
      start = u;
      used = degree + 1;
    } else {
      used += more;
    }
  });
  pieces.push(piece(spline, start, to));
  return pieces;
}

/** Knots from 0 to 1. */
export function unitKnots({ knots }) {
  const [first, last] = [knots[0], knots[knots.length - 1]];
  return knots.map((u) => (u - first) / (last - first));
}

/** The open curve that a closed one of DGN describes: its poles go round, and its knots repeat. */
export function openPeriodic({ degree, points, weights, innerKnots }) {
  const count = points.length;
  const basic = innerKnots.length === count - 1 ? [0, ...innerKnots, 1] : Array.from({ length: count + 1 }, (_, i) => i / count);
  const at = (i) => {
    const turn = Math.floor(i / count);
    return basic[i - turn * count] + turn;
  };
  const knots = Array.from({ length: count + 2 * degree + 1 }, (_, i) => at(i - degree));
  const round = (list) => [...list, ...list.slice(0, degree)];
  return openPieces({ degree, knots, points: round(points), weights: weights.length ? round(weights) : [] })[0];
}

/** Knots of an open curve that says nothing of them, or only of the inner ones. */
export function openKnots(degree, count, inner) {
  const spans = count - degree;
  const middle = inner.length === spans - 1 ? inner : Array.from({ length: spans - 1 }, (_, i) => (i + 1) / spans);
  return [...Array(degree + 1).fill(0), ...middle, ...Array(degree + 1).fill(1)];
}

/** The smooth curve through points: a cubic whose curvature is steady, its parameter the length of the
    chords. Where an end has no tangent, it has no curvature. */
export function interpolate(fitPoints, startTangent, endTangent) {
  const points = fitPoints.filter((p, i) => i === 0 || length(subtract(p, fitPoints[i - 1])) > 0);
  if (points.length < 2) return null;
  const last = points.length - 1;
  const steps = points.slice(1).map((p, i) => length(subtract(p, points[i])));
  const slopes = tangents(points, steps, [startTangent, endTangent].map((t) => (t && length(t) > 0 ? unit(t) : null)));
  const at = [0];
  for (const step of steps) at.push(at[at.length - 1] + step);
  const poles = [points[0]];
  points.forEach((p, i) => {
    const [before, after] = [i > 0 ? -steps[i - 1] : 0, i < last ? steps[i] : 0];
    let pole = add(p, scale(slopes[i], (before + after) / 3));
    if (before && after) {
      const bend = combine(scale(subtract(points[i + 1], p), 6 / after ** 2), slopes[i], -4 / after, slopes[i + 1], -2 / after);
      pole = add(pole, scale(bend, (before * after) / 6));
    }
    poles.push(pole);
  });
  poles.push(points[last]);
  return { degree: 3, knots: [0, 0, 0, ...at, at[last], at[last], at[last]], points: poles, weights: [] };
}

/** Derivatives at the points, from the equations that make the second ones meet. */
function tangents(points, steps, [start, end]) {
  const last = points.length - 1;
  const rows = points.map((p, i) => {
    if (i === 0) {
      return start ? [0, 1, 0, start] : [0, 2, 1, scale(subtract(points[1], p), 3 / steps[0])];
    }
    if (i === last) {
      return end ? [0, 1, 0, end] : [1, 2, 0, scale(subtract(p, points[i - 1]), 3 / steps[i - 1])];
    }
    const [a, b] = [steps[i - 1], steps[i]];
    const right = combine([0, 0, 0], subtract(p, points[i - 1]), (3 * b) / a, subtract(points[i + 1], p), (3 * a) / b);
    return [b, 2 * (a + b), a, right];
  });
  for (let i = 1; i <= last; i++) {
    const factor = rows[i][0] / rows[i - 1][1];
    rows[i][1] -= factor * rows[i - 1][2];
    rows[i][3] = combine(rows[i][3], rows[i - 1][3], -factor, [0, 0, 0], 0);
  }
  const result = Array(last + 1);
  for (let i = last; i >= 0; i--) {
    const right = i < last ? combine(rows[i][3], result[i + 1], -rows[i][2], [0, 0, 0], 0) : rows[i][3];
    result[i] = scale(right, 1 / rows[i][1]);
  }
  return result;
}

/** Cubic pieces, each given by its four points, as one curve. */
export function ofPieces(pieces) {
  const knots = [0, 0, 0, 0];
  const points = [pieces[0][0]];
  pieces.forEach(([, b, c, d], i) => {
    points.push(b, c);
    if (i < pieces.length - 1) knots.push(i + 1, i + 1);
    else points.push(d);
  });
  knots.push(...Array(4).fill(pieces.length));
  return { degree: 3, knots, points, weights: [] };
}
