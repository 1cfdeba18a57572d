// SPDX-License-Identifier: MIT

import { add, arcExtremes, cross, scale } from '../geometry.mjs';

/** Points that span all of an element; those of a B-spline are its poles. */
export function outline(element) {
  switch (element.kind) {
    case 'ellipse':
    case 'arc':
      return arcExtremes(element);
    case 'text': {
      const across = scale(element.xAxis, element.width * Math.max(1, element.text.length));
      const up = scale(element.yAxis, element.height);
      return [element.origin, add(element.origin, across), add(element.origin, up), add(add(element.origin, across), up)];
    }
    case 'chain':
      return element.members.flatMap(outline);
    case 'cell':
      return element.members.length > 0 ? element.members.flatMap(outline) : [element.origin];
    case 'instance':
      return [element.origin];
    default:
      return element.points;
  }
}

export function extentOf(elements) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (const element of elements) {
    for (const point of outline(element)) {
      for (let i = 0; i < 3; i++) {
        if (point[i] < low[i]) low[i] = point[i];
        if (point[i] > high[i]) high[i] = point[i];
      }
    }
  }
  return { low, high };
}

export function isFlat(element) {
  if (element.members) return element.members.every(isFlat);
  if (element.kind === 'text') return element.origin[2] === 0 && cross(element.xAxis, element.yAxis)[2] > 1 - 1e-9;
  if (element.points) return element.points.every((p) => p[2] === 0);
  return element.center[2] === 0 && element.axis1[2] === 0 && element.axis2[2] === 0;
}
