// SPDX-License-Identifier: MIT
// Leaders, with their arrows, and what they lead to.

import { add, combine, cross, length, scale, subtract, unit } from '../geometry.mjs';
import { layOut } from '../paragraphs.mjs';
import { interpolate } from '../spline.mjs';
import { straight } from './curves.mjs';

/** A filled arrow head with its tip at `tip`, pointing away from `from`. */
export function arrow(tip, from, size, normal) {
  const back = unit(subtract(from, tip));
  if (!(size > 0) || length(back) === 0) return [];
  const side = scale(cross(unit(normal), back), size / 6);
  const base = add(tip, scale(back, size));
  return [{ kind: 'shape', points: [tip, add(base, side), subtract(base, side)], filled: true }];
}

function line(points, isSpline) {
  const curve = isSpline && points.length > 2 ? interpolate(points) : null;
  return curve ? [{ kind: 'spline', ...curve }] : straight(points);
}

export function leader(entity, style) {
  const { points, isSpline, hasArrow, normal } = entity;
  if (points.length < 2) return [];
  const size = entity.arrowSize ?? style.arrowSize * style.scale;
  return [...line(points, isSpline), ...(hasArrow ? arrow(points[0], points[1], size, normal) : [])];
}

/** All but the block that some carry instead of a text. */
export function multiLeader(entity) {
  const elements = [];
  const normal = entity.text?.normal ?? entity.block?.normal ?? [0, 0, 1];
  for (const root of entity.roots) {
    const landing = combine(root.connection, root.direction, entity.hasDogleg ? root.landing : 0, root.direction, 0);
    for (const points of root.lines) {
      if (points.length === 0 || !entity.isDrawn) continue;
      const whole = [...points, root.connection].filter((p, i, all) => i === 0 || length(subtract(p, all[i - 1])) > 0);
      elements.push(...line(whole, entity.isSpline));
      if (whole.length > 1) elements.push(...arrow(whole[0], whole[1], entity.arrowSize, normal));
    }
    if (entity.isDrawn && entity.hasDogleg && length(subtract(landing, root.connection)) > 0) {
      elements.push({ kind: 'line', points: [root.connection, landing] });
    }
  }
  if (entity.text) elements.push(...layOut(entity.text));
  return elements;
}

