// SPDX-License-Identifier: MIT

import { IDENTITY, combine, dot, length, mapArc, mapPoint, mapVector, scale, unit } from './geometry.mjs';

/** An element where an affine map takes it. */
export function mapElement(map, element) {
  if (map === IDENTITY) return element;
  if (element.members) {
    const members = element.members.map((m) => mapElement(map, m));
    if (element.kind !== 'cell') return { ...element, members };
    return { ...element, members, origin: mapPoint(map, element.origin), axes: element.axes.map((a) => mapVector(map, a)) };
  }
  if (element.points) return { ...element, points: element.points.map((p) => mapPoint(map, p)) };
  if (element.kind !== 'text') return { ...element, ...mapArc(map, element) };
  const along = mapVector(map, scale(element.xAxis, element.width));
  const xAxis = unit(along);
  const up = mapVector(map, scale(element.yAxis, element.height));
  const upright = combine(up, xAxis, -dot(up, xAxis), xAxis, 0);
  return { ...element, origin: mapPoint(map, element.origin), xAxis, yAxis: unit(upright),
    width: length(along), height: length(upright) };
}
