// SPDX-License-Identifier: MIT
// Construction lines have no end. What of them crosses the drawing is drawn.

import { combine, length } from '../geometry.mjs';

const MARGIN = 0.05;

/** The ends of the part of a line that lies within a box, seen from above; null if none does. `isRay` has it begin at its point. */
export function cutToExtent({ point, direction }, isRay, low, high) {
  if (!(length(direction) > 0)) return null;
  const margin = MARGIN * Math.max(...high.map((v, i) => v - low[i]));
  let [from, to] = [isRay ? 0 : -Infinity, Infinity];
  const axes = direction[0] === 0 && direction[1] === 0 ? [2] : [0, 1];
  for (const i of axes) {
    const ends = [low[i] - margin, high[i] + margin].map((v) => (v - point[i]) / direction[i]);
    if (direction[i] === 0) {
      if (!(point[i] >= low[i] - margin && point[i] <= high[i] + margin)) return null;
      continue;
    }
    from = Math.max(from, Math.min(...ends));
    to = Math.min(to, Math.max(...ends));
  }
  if (!(to > from) || !Number.isFinite(to - from)) return null;
  return [from, to].map((t) => combine(point, direction, t, direction, 0));
}
