// SPDX-License-Identifier: MIT
// What reading and writing DGN V7 share: numbers of types, places of settings, and the colours of a
// drawing without a table of its own.
//
// A file is a run of elements, each led by level, type and length in words, and ends with ff ff. The
// first element (type 9) holds the settings of the whole drawing. Coordinates are integers, "UORs"; in
// this program they come and go in master units. An element is one of
//   { kind: 'line' | 'lineString' | 'points', points }
//   { kind: 'shape', points, filled, fillColor, isHole }     the closing point is not repeated
//   { kind: 'ellipse' | 'arc', center, axis1, axis2, start, sweep }            see geometry.mjs
//   { kind: 'spline', degree, knots, points, weights }                         see spline.mjs
//   { kind: 'text', origin, xAxis, yAxis, height, width, text, justification }  unit axes, width per character
//   { kind: 'chain', closed, members, filled, fillColor, isHole }
//   { kind: 'cell', name, origin, axes, members }     members in the drawing's coordinates
//   { kind: 'instance', name, origin, axes }          of a shared cell's definition
// and has level (1 to 63), color (0 to 255), weight (0 to 31), style (0 to 7) and group (0 to 65535).

export const TYPE = {
  library: 1, cell: 2, line: 3, lineString: 4, group: 5, shape: 6, textNode: 7, digitizer: 8, settings: 9,
  levels: 10, curve: 11, chain: 12, closedChain: 14, ellipse: 15, arc: 16, text: 17, surface: 18, solid: 19,
  poles: 21, points: 22, splineSurface: 24, surfaceBoundary: 25, knots: 26, spline: 27, weights: 28,
  dimension: 33, definition: 34, instance: 35, tag: 37, application: 66, raster: 87,
};

export const HEADER = 36;
export const SETTINGS_SIZE = 1536;
export const AT = { subUnits: 1112, uorPerSub: 1116, unitName: 1120, dimension: 1214, origin: 1240 };
export const VIEWS = { at: 46, size: 118, count: 8, levels: 2, origin: 10, delta: 22, rotation: 34, scale: 106 };
export const VIEW_ON = 0x80;
export const IS_3D = 0x40;
export const COMPLEX = 0x80;
export const HAS_ATTRIBUTES = 0x0800;
export const IS_HOLE = 0x8000;
export const COLOR_TABLE_LEVEL = 1;
export const FILL_LINKAGE = [0x1007, 0x0041, 0x0802, 0x0001];
export const END_MARK = 0xffff;
export const MAX_INT = 2 ** 31 - 1;

/** Units of angles to the radian, of a cell's matrix and of a text's size. */
export const ANGLE_UNIT = 360000 * (180 / Math.PI);
export const MATRIX_UNIT = 2 ** 31 / 10000;
export const TEXT_UNIT = 6 / 1000;

/** Words before those that a complex element's length counts. */
export const COMPLEX_HEAD = 38;
export const SPLINE_HEAD = 40;
export const IS_RATIONAL = 0x40;
export const IS_CLOSED = 0x80;
export const MAX_POLES = 101;
export const MAX_VERTICES = 101;

/** What this program notes about a drawing and a DGN has no place for: it stands in application
    elements of a level that no other program uses, and elements refer to it by a linkage. */
export const NOTES = { level: 60, mark: 0x4e54, chunk: 1400 };
export const NOTE_LINKAGE = 0x5ae1;
export const NOTE = { layer: 1, block: 2, axes: 3, attribute: 4 };

/** Justification of texts: rows left, left margin, centre, right margin, right; top, centre, bottom. */
export const LEFT_BOTTOM = 2;
export const justificationOf = (across, up) => [0, 6, 12][across] + [2, 1, 0][up];
export function placeOfJustification(code) {
  const column = Math.floor(code / 3);
  return { across: column < 2 ? 0 : column === 2 ? 1 : 2, up: 2 - (code % 3) };
}

const HUES = [
  [255, 255, 255], [0, 0, 255], [0, 255, 0], [255, 0, 0], [255, 255, 0], [255, 0, 255], [255, 127, 0],
  [0, 255, 255],
];
const FIRST_ROW = [
  [64, 64, 64], [192, 192, 192], [254, 0, 96], [160, 224, 0], [0, 254, 160], [128, 0, 160], [176, 176, 176],
];
const LAST = [[192, 192, 192], [28, 0, 100]];

/** Eight hues that fade from one row of sixteen to the next, but for a few. */
function defaultColor(index) {
  if (index >= 8 && index < 15) return FIRST_ROW[index - 8];
  if (index >= 254) return LAST[index - 254];
  const row = Math.floor(index / 16) + (index % 16 === 15 ? 1 : 0);
  const fade = { 0: 0, 127: 5 * row, 255: 15 * row };
  return HUES[index % 8].map((c) => c - fade[c]);
}
export const DEFAULT_COLORS = Array.from({ length: 256 }, (_, index) => defaultColor(index));
