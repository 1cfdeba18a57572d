// SPDX-License-Identifier: MIT
// Where an instance of a shared cell lies. Its element holds a matrix and an origin as doubles, behind
// words that differ from one program's files to another's. So each place that may hold them is tried, and
// believed only if the definition, so placed, fills the range that the element states.

import { add, length, mapPoint, mapVector } from '../geometry.mjs';
import { extentOf } from './extent.mjs';
import { HEADER } from './format.mjs';
import { readDouble } from './vax.mjs';

const SAME = 2e-3;

const corners = ({ low, high }) => [low, high].flatMap((x) => [low, high].flatMap((y) =>
  [low, high].map((z) => [x[0], y[1], z[2]])));

/** Whether axes and origin take the definition into the stated range. */
function fits(map, extent, range, is3d) {
  const placed = corners(extent).map((p) => mapPoint(map, p));
  const size = Math.max(length(range.high.map((v, i) => (is3d || i < 2 ? v - range.low[i] : 0))), 1e-9);
  for (let i = 0; i < (is3d ? 3 : 2); i++) {
    const values = placed.map((p) => p[i]);
    // The box of a turned box is larger than the box of what is in it, never smaller.
    if (Math.min(...values) > range.low[i] + SAME * size || Math.max(...values) < range.high[i] - SAME * size) return false;
    if (Math.max(...values) - Math.min(...values) > 1.5 * size + SAME) return false;
  }
  return true;
}

/** { origin, axes } or null. */
export function placeInstance(reader, definition) {
  if (!definition || definition.members.length === 0) return null;
  const { is3d, uorPerMaster } = reader.settings;
  const range = reader.range();
  const extent = extentOf(definition.members);
  const end = reader.raw.length;
  for (const wide of [true, false]) {
    const count = wide ? 12 : 6;
    for (let at = HEADER; at + 8 * count <= end; at += 2) {
      const v = Array.from({ length: count }, (_, i) => readDouble(reader.raw, at + 8 * i));
      if (!v.every(Number.isFinite)) continue;
      const axes = wide ? [[v[0], v[3], v[6]], [v[1], v[4], v[7]], [v[2], v[5], v[8]]]
        : [[v[0], v[2], 0], [v[1], v[3], 0], [0, 0, 1]];
      const sizes = axes.map(length);
      if (sizes.some((s) => !(s > 1e-6 && s < 1e6))) continue;
      const placed = wide ? v.slice(9) : [v[4], v[5], 0];
      const origin = placed.map((u) => u / uorPerMaster);
      const local = { x: axes[0], y: axes[1], z: axes[2], origin: [0, 0, 0] };
      // Definitions lie around the origin of the file's coordinates, in its own units.
      const shift = reader.toMaster(0, 0, 0).map((u) => -u);
      const map = { ...local, origin: add(add(mapVector(local, shift), origin), shift.map((u) => -u)) };
      if (fits(map, extent, range, is3d)) return { origin: map.origin, axes };
    }
  }
  return null;
}
