// SPDX-License-Identifier: MIT
// Single texts of DWG.

import { add, combine, length, mapPoint, mapVector, ocs, scale } from '../geometry.mjs';
import { LEFT_BOTTOM, justificationOf } from '../dgn/format.mjs';
import { estimatedWidth } from '../paragraphs.mjs';
import { decodeLine } from '../text_codes.mjs';

const BACKWARDS = 2;
const UPSIDE_DOWN = 4;
const ALIGNED = 3;
const MIDDLE = 4;
const FIT = 5;

/** Across 0 left, 1 centre, 2 right; up 0 bottom, 1 middle, 2 top. */
function justification(across, up) {
  if (across === ALIGNED || across === FIT) return LEFT_BOTTOM;
  if (across === MIDDLE) return justificationOf(1, 1);
  return justificationOf(across, up === 2 ? 1 : up === 3 ? 2 : 0);
}

/** Programs keep the lower left corner of every text up to date; where one did not, it is worked out
    from the alignment point. */
function cornerOf(entity, value, x, y) {
  const { across, up, insert, align, height } = entity;
  if (!(across || up) || length(insert) > 0 || !align) return insert;
  const width = estimatedWidth(value) * height * entity.widthFactor;
  const left = across === 1 || across === MIDDLE ? width / 2 : across === 2 ? width : 0;
  const below = across === MIDDLE || up === 2 ? height / 2 : up === 3 ? height : 0;
  return combine(align, x, -left, y, -below);
}

export function text(entity) {
  const { text: value, isUnder, isOver } = decodeLine(entity.value);
  if (!value.trim() || !(entity.height > 0)) return [];
  const system = ocs(entity.normal);
  const turn = entity.rotation;
  const [x, y] = [[Math.cos(turn), Math.sin(turn), 0], [-Math.sin(turn), Math.cos(turn), 0]];
  const flip = entity.generation ?? 0;
  const xAxis = mapVector(system, flip & BACKWARDS ? scale(x, -1) : x);
  const yAxis = mapVector(system, flip & UPSIDE_DOWN ? scale(y, -1) : y);
  const width = entity.height * (Math.abs(entity.widthFactor) || 1);
  const origin = mapPoint(system, cornerOf(entity, value, x, y));
  const lines = [];
  const size = estimatedWidth(value) * width;
  const stroke = (up) => {
    const from = add(origin, scale(yAxis, up * entity.height));
    lines.push({ kind: 'line', points: [from, add(from, scale(xAxis, size))] });
  };
  if (isUnder) stroke(-0.2);
  if (isOver) stroke(1.2);
  return [{ kind: 'text', origin, xAxis, yAxis, height: entity.height, width, text: value,
    justification: justification(entity.across, entity.up) }, ...lines];
}
