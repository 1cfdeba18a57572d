// SPDX-License-Identifier: MIT
// How colours, weights, line styles and units of DGN correspond to those of DWG.

import { indexRgb } from './indexed_colors.mjs';

/** Line styles 0 to 7 of DGN by the customary line type names; dashes and gaps in drawing millimetres. */
export const LINE_STYLES = [
  { name: 'Continuous', dashes: [] },
  { name: 'DOT', dashes: [0, -6] },
  { name: 'DASHED', dashes: [12, -6] },
  { name: 'DASHEDX2', dashes: [24, -12] },
  { name: 'DASHDOT', dashes: [12, -6, 0, -6] },
  { name: 'HIDDEN', dashes: [6, -3] },
  { name: 'DIVIDE', dashes: [12, -6, 0, -6, 0, -6] },
  { name: 'CENTER', dashes: [30, -6, 6, -6] },
];

const styles = new Map();

/** Other line types take the style of the name that theirs begins with, so DASHED2 is DASHED. */
export function styleOfLineType(name) {
  if (!styles.has(name)) styles.set(name, findStyle(name));
  return styles.get(name);
}

function findStyle(name) {
  const upper = name.toUpperCase();
  const exact = LINE_STYLES.findIndex((style) => style.name.toUpperCase() === upper);
  if (exact >= 0) return exact;
  if (upper.startsWith('PHANTOM') || upper.startsWith('BORDER')) return 6;
  return Math.max(0, LINE_STYLES.findIndex((style) => upper.startsWith(style.name.toUpperCase())));
}

/** DWG's line weights in hundredths of a millimetre, by DGN weight: each has one of its own. DGN counts
    further, to 31. */
const WEIGHTS = [0, 5, 9, 13, 15, 18, 20, 25, 30, 35, 40, 50, 53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211];

export const lineWeightNumber = (weight) => Math.min(weight, WEIGHTS.length - 1);
const WEIGHT_OF = Array.from({ length: WEIGHTS.at(-1) + 1 }, (_, lineWeight) => WEIGHTS.findLastIndex((weight) => weight <= lineWeight));
export const weightOfLineWeight = (lineWeight) => WEIGHT_OF[lineWeight] ?? 0;

const BACKGROUND = 255;

function nearest(rgb, candidates) {
  let best = 0;
  let bestDistance = Infinity;
  candidates.forEach((candidate, i) => {
    const distance = candidate.reduce((sum, c, k) => sum + (c - rgb[k]) ** 2, 0);
    if (distance < bestDistance) [best, bestDistance] = [i, distance];
  });
  return best;
}

/** The nearest of DWG's indexed colours for each colour of a DGN table. */
export function indexedColors(table) {
  const indexed = Array.from({ length: 255 }, (_, i) => indexRgb(i + 1));
  return table.map((rgb) => nearest(rgb, indexed) + 1);
}

/** DGN numbers its first colours white, blue, green, red, yellow, magenta, orange, cyan. These keep
    their customary numbers, and the rest of the table holds the rest of DWG's, so none is lost. */
const CUSTOMARY = [7, 5, 3, 1, 2, 6, 30, 4];
const DWG_COLORS = [...CUSTOMARY,
  ...Array.from({ length: 254 }, (_, i) => i + 1).filter((index) => !CUSTOMARY.includes(index))];
const DGN_COLOR_OF = new Map(DWG_COLORS.map((index, color) => [index, color]));

export const DWG_COLOR_TABLE = Array.from({ length: 256 }, (_, i) =>
  (i < DWG_COLORS.length ? indexRgb(DWG_COLORS[i]) : [0, 0, 0]));

/** DWG's number of each colour of that table. */
export const DWG_COLOR_NUMBERS = DWG_COLORS;

const trueColors = new Map();

/** The number, in DWG_COLOR_TABLE, of a colour that is neither by layer nor by block. */
export function colorNumber(color) {
  if (color < 256) return DGN_COLOR_OF.get(color) ?? 0;
  if (!trueColors.has(color)) {
    const rgb = [(color >> 16) & 0xff, (color >> 8) & 0xff, color & 0xff];
    trueColors.set(color, nearest(rgb, DWG_COLOR_TABLE.slice(0, BACKGROUND - 1)));
  }
  return trueColors.get(color);
}

/** DWG's numbers for units, and what master units are called in DGN: first as it is written. */
const UNITS = [
  [1, 'in', '"', 'inch'], [2, 'ft', "'", 'feet', 'foot'], [3, 'mi'], [4, 'mm'], [5, 'cm'], [6, 'm'], [7, 'km'],
  [10, 'yd'], [14, 'dm'],
];

export const unitName = (units) => UNITS.find(([number]) => number === units)?.[1] ?? 'mu';
export const unitsOfName = (name) => UNITS.find(([, ...names]) => names.includes(name.toLowerCase()))?.[0] ?? 0;
