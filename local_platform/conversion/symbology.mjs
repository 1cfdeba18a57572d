// SPDX-License-Identifier: MIT
// How levels, colours, weights, line styles and units of DGN correspond to those of DWG.

import { Color, UnitsType } from '@node-projects/acad-ts';

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

/** Other line types take the style of the name that theirs begins with, so DASHED2 is DASHED. */
export function styleOfLineType(name) {
  const upper = name.toUpperCase();
  const exact = LINE_STYLES.findIndex((style) => style.name.toUpperCase() === upper);
  if (exact >= 0) return exact;
  if (upper.startsWith('PHANTOM') || upper.startsWith('BORDER')) return 6;
  return Math.max(0, LINE_STYLES.findIndex((style) => upper.startsWith(style.name.toUpperCase())));
}

/** DWG's line weights in hundredths of a millimetre, by DGN weight. */
const WEIGHTS = [0, 13, 20, 30, 40, 53, 70, 80, 100, 106, 120, 140, 158, 200, 211];

export const lineWeightOfWeight = (weight) => WEIGHTS[Math.min(weight, WEIGHTS.length - 1)];
export const weightOfLineWeight = (lineWeight) =>
  Math.max(0, WEIGHTS.findLastIndex((weight) => weight <= lineWeight));

const BACKGROUND = 255;

/** The nearest of DWG's indexed colours for each colour of a DGN table. */
export function indexedColors(table) {
  return table.map((rgb) => nearest(rgb, Array.from({ length: 255 }, (_, i) => Color.getIndexRGB(i + 1))) + 1);
}

function nearest(rgb, candidates) {
  let best = 0;
  let bestDistance = Infinity;
  candidates.forEach((candidate, i) => {
    const distance = candidate.reduce((sum, c, k) => sum + (c - rgb[k]) ** 2, 0);
    if (distance < bestDistance) [best, bestDistance] = [i, distance];
  });
  return best;
}

/** DGN numbers its first colours white, blue, green, red, yellow, magenta, orange, cyan. These keep
    their customary numbers, and the rest of the table holds the rest of DWG's, so none is lost. */
const CUSTOMARY = [7, 5, 3, 1, 2, 6, 30, 4];
const DWG_COLORS = [...CUSTOMARY,
  ...Array.from({ length: 254 }, (_, i) => i + 1).filter((index) => !CUSTOMARY.includes(index))];
const DGN_COLOR_OF = new Map(DWG_COLORS.map((index, color) => [index, color]));

export const DWG_COLOR_TABLE = Array.from({ length: 256 }, (_, i) =>
  (i < DWG_COLORS.length ? Color.getIndexRGB(DWG_COLORS[i]) : [0, 0, 0]));

/** The number, in DWG_COLOR_TABLE, of a colour that is neither by layer nor by block. */
export function colorNumber(color) {
  if (!color.isTrueColor) return DGN_COLOR_OF.get(color.index) ?? 0;
  return nearest(color.getTrueColorRgb(), DWG_COLOR_TABLE.slice(0, BACKGROUND - 1));
}

const UNIT_NAMES = new Map([
  [UnitsType.Inches, 'in'], [UnitsType.Feet, 'ft'], [UnitsType.Millimeters, 'mm'],
  [UnitsType.Centimeters, 'cm'], [UnitsType.Meters, 'm'], [UnitsType.Kilometers, 'km'],
]);

export const unitName = (units) => UNIT_NAMES.get(units) ?? 'mu';
export const unitsOfName = (name) =>
  [...UNIT_NAMES].find(([, known]) => known === name.toLowerCase())?.[0] ?? UnitsType.Unitless;

export const layerNameOfLevel = (level) => `Level ${level}`;

export const LEVELS = 63;

/** A level for each layer name: that in "Level 5" or "5", else the lowest free one; past 63 layers the
    last level takes the others. */
export function levelsOfLayers(names) {
  const levels = new Map();
  for (const name of names) {
    const number = Number(/^(?:level )?(\d{1,2})$/i.exec(name)?.[1] ?? 0);
    if (number >= 1 && number <= LEVELS) levels.set(name, number);
  }
  const taken = new Set(levels.values());
  let next = 1;
  for (const name of names) {
    if (levels.has(name)) continue;
    while (next < LEVELS && taken.has(next)) next++;
    levels.set(name, next);
    taken.add(next);
  }
  return levels;
}
