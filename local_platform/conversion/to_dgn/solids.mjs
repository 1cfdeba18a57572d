// SPDX-License-Identifier: MIT
// Entities with a thickness, by the edges of what it makes of them.

import { FULL_TURN, IDENTITY, add, arcEnds, arcPoint } from '../geometry.mjs';
import { mapElement } from '../mapping.mjs';

/** Where an edge stands upright: at corners and ends, and at the quarters of what is round. */
function cornersOf(element) {
  switch (element.kind) {
    case 'text':
      return [];
    case 'chain':
      return element.members.flatMap(cornersOf);
    case 'ellipse':
      return [0, 1, 2, 3].map((quarter) => arcPoint(element, (quarter * FULL_TURN) / 4));
    case 'arc':
      return arcEnds(element);
    case 'line':
    case 'lineString':
    case 'shape':
      return element.points;
    default:
      return [];
  }
}

/** Elements, their other ends in the direction of `thickness`, and the edges between both. */
export function thickened(elements, thickness) {
  const map = { ...IDENTITY, origin: thickness };
  return elements.flatMap((element) => {
    if (element.kind === 'text' || element.kind === 'cell') return [element];
    const edges = new Map(cornersOf(element).map((p) => [`${p}`, { kind: 'line', points: [p, add(p, thickness)] }]));
    return [element, mapElement(map, element), ...edges.values()];
  });
}
