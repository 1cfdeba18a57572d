// SPDX-License-Identifier: MIT
// Paragraphs laid out as lines of single texts. The fonts are not at hand, so widths are estimated.

import { combine, cross, length, ocs, unit } from './geometry.mjs';
import { parseParagraphs } from './mtext.mjs';

const LINE_PITCH = 5 / 3;
const STACKED = 0.7;

/** Widths of characters in heights of capitals, about as the usual fonts have them. */
const NARROW = new Set("ijltfrI.,:;'|!()[]{} \u00a0");
const BROAD = new Set('mwMW@%&');

function charWidth(char) {
  if (char >= '\u2e80') return 1.2;
  if (NARROW.has(char)) return 0.45;
  if (BROAD.has(char)) return 1.15;
  return char >= 'a' && char <= 'z' ? 0.75 : 0.85;
}

/** In heights. */
export function estimatedWidth(text) {
  let sum = 0;
  for (const char of text) sum += charWidth(char);
  return sum;
}

const runWidth = ({ text, stack, height, width, spacing }) => {
  const own = stack ? stackWidth(stack) : estimatedWidth(text);
  return own * height * width * spacing;
};

const stackWidth = ({ upper, lower, kind }) => (kind === '#'
  ? (estimatedWidth(upper) + estimatedWidth(lower)) * STACKED + 0.5
  : Math.max(estimatedWidth(upper), estimatedWidth(lower)) * STACKED);

const WORDS = /[\u2e80-\uffff]|[^\s\u2e80-\uffff]+[^\S\u00a0]*|[^\S\u00a0]+|\u00a0+/g;

/** Breaks at blanks and between wide characters. */
function wrap({ align, runs }, limit) {
  const lines = [{ align, runs: [] }];
  let used = 0;
  for (const run of runs) {
    const words = run.stack ? [null] : run.text.match(WORDS) ?? [];
    for (const word of words) {
      const part = run.stack ? run : { ...run, text: word };
      const needed = runWidth(run.stack ? run : { ...run, text: word.trimEnd() });
      if (used > 0 && used + needed > limit) {
        lines.push({ align, runs: [] });
        used = 0;
      }
      const last = lines.at(-1).runs.at(-1);
      if (!run.stack && last && last.from === run) last.text += word;
      else lines.at(-1).runs.push({ ...part, from: run });
      used += runWidth(part);
    }
  }
  for (const line of lines) {
    const last = line.runs.at(-1);
    if (last && !last.stack) last.text = last.text.trimEnd();
  }
  return lines;
}

const COLUMN = { left: 0, center: 1, right: 2 };
const tallest = (line) => line.runs.reduce((most, run) => Math.max(most, run.height), 0) || 1;

/** Pieces { kind: 'text' | 'line', ..., color } of a paragraph entity, whatever its kind. `slant` is
    kept for what draws it; a DGN text has none. */
export function layOut({ value, insert, normal, direction, height, width, attachment, spacing = 1, widthFactor = 1 }) {
  if (!(height > 0)) return [];
  const limit = width > 0 ? width / height : Infinity;
  const lines = parseParagraphs(value, height)
    .map((line) => ({ ...line, runs: line.runs.map((run) => ({ ...run, width: run.width * widthFactor })) }))
    .flatMap((line) => wrap(line, limit));
  const system = ocs(normal);
  const given = unit(direction);
  const x = length(given) > 0 ? given : system.x;
  const y = cross(system.z, x);
  const column = (attachment - 1) % 3;
  const row = Math.floor((attachment - 1) / 3);
  const pitch = LINE_PITCH * (spacing || 1);
  let below = -tallest(lines[0]);
  const baselines = lines.map((line, i) => {
    if (i > 0) below -= pitch * tallest(line);
    return below;
  });
  const shift = -(baselines.at(-1) * row) / 2;
  const at = (across, up) => combine(insert, x, across * height, y, up * height);
  const pieces = [];
  const put = (text, across, up, run, factor = 1) => {
    if (!text.trim()) return;
    const size = height * run.height * factor;
    const lead = estimatedWidth(text.slice(0, text.length - text.trimStart().length)) * run.height * run.width * factor;
    pieces.push({ kind: 'text', origin: at(across + lead, up), xAxis: x, yAxis: y, height: size, width: size * run.width,
      text: text.trim().replace(/[\0-\x1f\x7f\u00a0]/g, ' '), color: run.color });
  };
  const stroke = (from, to, up, run) =>
    pieces.push({ kind: 'line', points: [at(from, up), at(to, up)], color: run.color });
  lines.forEach((line, i) => {
    const whole = line.runs.reduce((sum, run) => sum + runWidth(run), 0);
    // What a paragraph says of its own alignment counts within the width of the whole.
    const own = line.align !== null && limit < Infinity ? COLUMN[line.align] : column;
    const left = limit < Infinity ? -(limit * column) / 2 : 0;
    let across = limit < Infinity && line.align !== null ? left + ((limit - whole) * own) / 2 : -(whole * column) / 2;
    const up = baselines[i] + shift;
    for (const run of line.runs) {
      const size = runWidth(run);
      if (run.stack) putStack(run, across, up, size, put, stroke);
      else put(run.text, across, up, run);
      if (run.isUnder) stroke(across, across + size, up - 0.2 * run.height, run);
      if (run.isOver) stroke(across, across + size, up + 1.2 * run.height, run);
      if (run.isStruck) stroke(across, across + size, up + 0.5 * run.height, run);
      across += size;
    }
  });
  return pieces;
}

function putStack(run, across, up, size, put, stroke) {
  const { upper, lower, kind } = run.stack;
  const unitWidth = run.height * run.width;
  if (kind === '#') {
    const middle = across + estimatedWidth(upper) * STACKED * unitWidth;
    put(upper, across, up + 0.5 * run.height, run, STACKED);
    put('/', middle, up, run);
    put(lower, middle + 0.5 * unitWidth, up - 0.2 * run.height, run, STACKED);
    return;
  }
  const centred = (text) => across + (size - estimatedWidth(text) * STACKED * unitWidth) / 2;
  const place = kind === '/' ? centred : () => across;
  put(upper, place(upper), up + 0.65 * run.height, run, STACKED);
  put(lower, place(lower), up - 0.45 * run.height, run, STACKED);
  if (kind === '/') stroke(across, across + size, up + 0.45 * run.height, run);
}

