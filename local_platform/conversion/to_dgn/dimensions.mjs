// SPDX-License-Identifier: MIT
// Dimensions that come without a picture, drawn from what they measure.

import { add, combine, cross, dot, length, ocs, scale, subtract, unit } from '../geometry.mjs';
import { layOut } from '../paragraphs.mjs';
import { arrow } from './leaders.mjs';

const line = (a, b) => ({ kind: 'line', points: [a, b] });

function figure(value) {
  return `${Number(value.toFixed(4))}`;
}

/** The text of a dimension: its own, in which <> stands for what is measured. */
function caption({ value, measurement }, style, measured, sign = '') {
  const number = figure((measurement || measured) * (sign === '°' ? 1 : style.factor || 1));
  const plain = sign === '°' ? `${number}°` : `${sign}${number}`;
  return value === ' ' ? '' : value ? value.replaceAll('<>', plain) : plain;
}

function label(entity, style, text, x) {
  const height = style.textHeight * style.scale;
  if (!text || !(height > 0)) return [];
  const turned = x[0] < -1e-9 || (Math.abs(x[0]) <= 1e-9 && x[1] < 0) ? scale(x, -1) : x;
  return layOut({ value: text, insert: entity.textMiddle, normal: entity.normal, direction: turned, height, width: 0, attachment: 5 });
}

/** From a point that is measured to beyond the dimension line. */
function extension(from, to, style) {
  const away = unit(subtract(to, from));
  if (length(subtract(to, from)) === 0) return [];
  return [line(add(from, scale(away, style.extensionOffset * style.scale)), add(to, scale(away, style.extension * style.scale)))];
}

function linear(entity, style, x) {
  const { first, second, definition } = entity;
  const on = (p) => combine(definition, x, dot(subtract(p, definition), x), x, 0);
  const [a, b] = [on(first), on(second)];
  const size = style.arrowSize * style.scale;
  return [line(a, b), ...extension(first, a, style), ...extension(second, b, style), ...arrow(a, b, size, entity.normal),
    ...arrow(b, a, size, entity.normal), ...label(entity, style, caption(entity, style, length(subtract(a, b))), x)];
}

function radial(entity, style, sign) {
  const { definition, vertex, normal } = entity;
  const x = unit(subtract(vertex, definition));
  const size = style.arrowSize * style.scale;
  const measured = length(subtract(vertex, definition));
  return [line(definition, vertex), ...arrow(vertex, definition, size, normal),
    ...(sign === 'Ø' ? arrow(definition, vertex, size, normal) : []),
    ...label(entity, style, caption(entity, style, measured, sign), x)];
}

function angular(entity, style, vertex, a, b, on) {
  const radius = length(subtract(on, vertex));
  const system = ocs(entity.normal);
  const angle = (p) => Math.atan2(dot(subtract(p, vertex), system.y), dot(subtract(p, vertex), system.x));
  let [start, sweep] = [angle(a), angle(b) - angle(a)];
  while (sweep < 0) sweep += 2 * Math.PI;
  // The arc is the one that the dimension's own point lies on.
  let middle = angle(on) - start;
  while (middle < 0) middle += 2 * Math.PI;
  if (middle > sweep) [start, sweep] = [angle(b), 2 * Math.PI - sweep];
  if (!(radius > 0)) return [];
  const arc = { kind: 'arc', center: vertex, axis1: scale(system.x, radius), axis2: scale(system.y, radius), start, sweep };
  const at = (t) => combine(vertex, system.x, radius * Math.cos(t), system.y, radius * Math.sin(t));
  return [arc, ...extension(a, at(angle(a)), style), ...extension(b, at(angle(b)), style),
    ...label(entity, style, caption(entity, style, (sweep * 180) / Math.PI, '°'), system.x)];
}

function crossing(a, b, c, d, normal) {
  const [u, v] = [subtract(b, a), subtract(d, c)];
  const bottom = dot(cross(u, v), normal);
  if (Math.abs(bottom) < 1e-12) return null;
  return add(a, scale(u, dot(cross(subtract(c, a), v), normal) / bottom));
}

const DRAW = {
  DIM_LINEAR: (e, style) => {
    const system = ocs(e.normal);
    return linear(e, style, combine([0, 0, 0], system.x, Math.cos(e.rotation), system.y, Math.sin(e.rotation)));
  },
  DIM_ALIGNED: (e, style) => linear(e, style, unit(subtract(e.second, e.first))),
  DIM_RADIUS: (e, style) => radial(e, style, 'R'),
  DIM_DIAMETER: (e, style) => radial(e, style, 'Ø'),
  DIM_ANGULAR_3: (e, style) => angular(e, style, e.vertex, e.first, e.second, e.definition),
  DIM_ANGULAR_2: (e, style) => {
    const vertex = crossing(e.first, e.second, e.vertex, e.definition, unit(e.normal));
    const far = (a, b) => (length(subtract(a, vertex)) > length(subtract(b, vertex)) ? a : b);
    return vertex ? angular(e, style, vertex, far(e.first, e.second), far(e.vertex, e.definition), [...e.arc, e.textMiddle[2]]) : [];
  },
  DIM_ORDINATE: (e, style) => {
    const away = subtract(e.feature, e.definition);
    return [line(e.feature, e.leaderEnd), ...label(e, style, caption(e, style, Math.abs(away[e.isX ? 0 : 1])), [1, 0, 0])];
  },
};

export function dimension(entity, style) {
  return DRAW[entity.kind]?.(entity, style) ?? [];
}
