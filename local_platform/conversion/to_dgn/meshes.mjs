// SPDX-License-Identifier: MIT
// Meshes by their faces, and the lines of a multiline.

import { combine } from '../geometry.mjs';

export const faceOf = (points) => (points.length > 2 ? [{ kind: 'shape', points, filled: false }] : []);

export function polyface(parts) {
  const points = parts.filter((part) => part.kind === 'VERTEX_PFACE').map((part) => part.point);
  return parts.filter((part) => part.indices).flatMap(({ indices }) =>
    // An index below zero is that of a corner from which no visible edge goes out.
    faceOf(indices.filter((i) => i !== 0).map((i) => points[Math.abs(i) - 1]).filter(Boolean)));
}

const CLOSED_M = 1;
const CLOSED_N = 32;
const CONTROL = 16;

export function polymesh(entity, parts) {
  const isSmooth = entity.mSmooth > 0 && entity.nSmooth > 0 && parts.some((p) => p.flags & 8);
  const [m, n] = isSmooth ? [entity.mSmooth, entity.nSmooth] : [entity.m, entity.n];
  const points = parts.filter((p) => p.point && (!isSmooth || !(p.flags & CONTROL))).map((p) => p.point);
  if (points.length < m * n) return [];
  const at = (i, j) => points[(i % m) * n + (j % n)];
  const result = [];
  for (let i = 0; i < m - (entity.flags & CLOSED_M ? 0 : 1); i++) {
    for (let j = 0; j < n - (entity.flags & CLOSED_N ? 0 : 1); j++) {
      result.push(...faceOf([at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)]));
    }
  }
  return result;
}

/** Each line of a multiline, in the colour that its style gives it. */
export function multiline({ vertices, isClosed }, style) {
  const count = Math.min(...vertices.map((v) => v.lines.length));
  if (!(count > 0) || vertices.length < 2) return [];
  return Array.from({ length: count }, (_, i) => {
    const points = vertices.map((v) => combine(v.point, v.miter, v.lines[i][0] ?? 0, v.miter, 0));
    return { kind: isClosed ? 'shape' : 'lineString', points, filled: false, color: style?.lines[i]?.color };
  });
}
