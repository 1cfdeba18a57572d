// SPDX-License-Identifier: MIT
// Linear dimensions of flat drawings. Their element keeps points, how far the line of the dimension lies from the first,
// and the size of its text; not its picture, nor its figure. Which way it is turned is believed only if the picture so
// drawn fills the range that the element states. Integers have their low word first here, unlike everywhere else.

import { add, combine, dot, length, scale, subtract, unit } from '../geometry.mjs';
import { LEFT_BOTTOM } from './format.mjs';

const AT = { kind: 48, count: 49, textHeight: 56, textWidth: 60, points: 136 };
const LINEAR = [1, 2];
const POINT_SIZE = 20;
const DIGITS = 3;
/** What the picture may lack of the range, in heights of the text. */
const SLACK = 2;

/** { points, offset, textOffsets, height, width } in master units; null if the element is of another kind. The offset of a text
    is how far from the point before it begins. */
function partsOf({ raw, settings: { origin, uorPerMaster, is3d } }) {
  if (is3d || raw.length < AT.points + 2 * POINT_SIZE || !LINEAR.includes(raw[AT.kind])) return null;
  const count = raw[AT.count];
  if (count < 2 || 32 + 2 * raw.readUInt16LE(30) !== AT.points + count * POINT_SIZE || AT.points + count * POINT_SIZE > raw.length) return null;
  const at = (i) => AT.points + i * POINT_SIZE;
  const points = Array.from({ length: count }, (_, i) =>
    [0, 1].map((k) => (raw.readInt32LE(at(i) + 4 * k) - origin[k]) / uorPerMaster).concat(0));
  const size = (place) => raw.readInt32LE(place) / uorPerMaster;
  const offsets = points.map((_, i) => size(at(i) + 12));
  return { points, offset: offsets[0], textOffsets: offsets.slice(1), height: size(AT.textHeight), width: size(AT.textWidth) };
}

/** Where the dimension's line has its ends and joints, if it runs along `along`. */
function joints({ points, offset }, along) {
  const start = add(points[0], scale([-along[1], along[0], 0], offset));
  return points.map((p) => combine(start, along, dot(subtract(p, start), along), along, 0));
}

/** How much of the range a picture leaves empty or goes beyond; Infinity if that is too much. */
function misfit({ points, height }, ends, { low, high }) {
  const all = [...points, ...ends];
  const gaps = [0, 1].flatMap((i) => {
    const values = all.map((p) => p[i]);
    return [Math.min(...values) - low[i], high[i] - Math.max(...values)];
  });
  if (gaps.some((gap) => gap < -0.01 * height || gap > SLACK * height)) return Infinity;
  return gaps.reduce((sum, gap) => sum + Math.abs(gap), 0);
}

function arrow(tip, from, size) {
  const back = scale(unit(subtract(from, tip)), size);
  const side = [-back[1] / 4, back[0] / 4, 0];
  const base = add(tip, back);
  return { kind: 'shape', points: [tip, add(base, side), subtract(base, side)], filled: true };
}

/** The elements that show a dimension, without their symbology; null if it is not known how it is drawn. */
export function pictureOf(reader) {
  const parts = partsOf(reader);
  if (!parts || !(parts.height > 0 && parts.width > 0)) return null;
  const { points, textOffsets, height, width } = parts;
  const range = reader.range();
  const turned = [[1, 0, 0], [0, 1, 0], unit(subtract(points[1], points[0]))].flatMap((along) => [along, scale(along, -1)])
    .map((along) => ({ along, ends: joints(parts, along) })).map((way) => ({ ...way, misfit: misfit(parts, way.ends, range) }));
  const best = turned.reduce((a, b) => (b.misfit < a.misfit ? b : a));
  if (!Number.isFinite(best.misfit)) return null;
  const { ends } = best;
  // Written to be read from below or from the right.
  const isBackwards = best.along[0] < -1e-9 || (Math.abs(best.along[0]) <= 1e-9 && best.along[1] < 0);
  const xAxis = isBackwards ? scale(best.along, -1) : best.along;
  const yAxis = [-xAxis[1], xAxis[0], 0];
  const result = points.map((p, i) => ({ kind: 'line', points: [p, ends[i]] }));
  for (let i = 0; i + 1 < ends.length; i++) {
    const [a, b] = [ends[i], ends[i + 1]];
    const measured = length(subtract(b, a));
    if (!(measured > 0)) continue;
    const text = `${Number(measured.toFixed(DIGITS))}`;
    const lead = isBackwards ? (measured - text.length * width) / 2 : textOffsets[i];
    const begin = combine(isBackwards ? b : a, xAxis, lead, yAxis, height / 4);
    result.push({ kind: 'line', points: [a, b] }, arrow(a, b, Math.min(height, measured / 3)), arrow(b, a, Math.min(height, measured / 3)),
      { kind: 'text', origin: begin, xAxis, yAxis, height, width, text, justification: LEFT_BOTTOM });
  }
  return result;
}
