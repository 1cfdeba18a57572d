// SPDX-License-Identifier: MIT
// node examples/make_sample_drawing.mjs OUT.dgn
// Draws a two-wing office floor as a DGN V7 file, in metres. The same drawing every time.

import { writeFileSync } from 'node:fs';
import { writeDgn } from '../local_platform/conversion/dgn/writer.mjs';

const COLOR = { white: 0, blue: 1, green: 2, red: 3, yellow: 4, magenta: 5, orange: 6, cyan: 7 };
const SYMBOLOGY = {
  grid: { level: 1, color: COLOR.red, weight: 0, style: 4 },
  walls: { level: 2, color: COLOR.white, weight: 3, style: 0 },
  columns: { level: 3, color: COLOR.yellow, weight: 2, style: 0 },
  doors: { level: 4, color: COLOR.green, weight: 1, style: 0 },
  windows: { level: 5, color: COLOR.cyan, weight: 1, style: 0 },
  furniture: { level: 6, color: COLOR.orange, weight: 0, style: 0 },
  dimensions: { level: 7, color: COLOR.magenta, weight: 0, style: 0 },
  labels: { level: 8, color: COLOR.white, weight: 0, style: 0 },
  site: { level: 9, color: COLOR.blue, weight: 1, style: 3 },
};

const BAY = 6;
const BAYS_X = 8;
const BAYS_Y = 3;
const WIDTH = BAY * BAYS_X;
const DEPTH = BAY * BAYS_Y;
const WALL = 0.3;
const DOOR = 0.9;
const elements = [];

const put = (layer, element) => elements.push({ ...element, ...SYMBOLOGY[layer] });
const line = (layer, x1, y1, x2, y2) => put(layer, { kind: 'line', points: [[x1, y1, 0], [x2, y2, 0]] });
const lineString = (layer, points) => put(layer, { kind: 'lineString', points: points.map(([x, y]) => [x, y, 0]) });
const circle = (layer, x, y, r) =>
  put(layer, { kind: 'ellipse', center: [x, y, 0], axis1: [r, 0, 0], axis2: [0, r, 0], start: 0, sweep: 2 * Math.PI });
const arc = (layer, x, y, r, start, sweep) =>
  put(layer, { kind: 'arc', center: [x, y, 0], axis1: [r, 0, 0], axis2: [0, r, 0], start, sweep });

function rectangle(layer, x, y, width, depth, filled = false) {
  const points = [[x, y, 0], [x + width, y, 0], [x + width, y + depth, 0], [x, y + depth, 0]];
  put(layer, { kind: 'shape', points, filled });
}

function label(layer, x, y, height, text, angle = 0) {
  const [c, s] = [Math.cos(angle), Math.sin(angle)];
  put(layer, { kind: 'text', origin: [x, y, 0], xAxis: [c, s, 0], yAxis: [-s, c, 0], height, width: height, text });
}

function bubble(x, y, name) {
  circle('grid', x, y, 0.6);
  label('grid', x - 0.2, y - 0.2, 0.4, name);
}

function grid() {
  for (let i = 0; i <= BAYS_X; i++) {
    line('grid', i * BAY, -4, i * BAY, DEPTH + 2);
    bubble(i * BAY, -4.6, `${i + 1}`);
  }
  for (let j = 0; j <= BAYS_Y; j++) {
    line('grid', -4, j * BAY, WIDTH + 2, j * BAY);
    bubble(-4.6, j * BAY, String.fromCharCode(65 + j));
  }
}

function columns() {
  for (let i = 0; i <= BAYS_X; i++) {
    for (let j = 0; j <= BAYS_Y; j++) {
      if (j === 0 || j === BAYS_Y) rectangle('columns', i * BAY - 0.2, j * BAY - 0.2, 0.4, 0.4, true);
      else circle('columns', i * BAY, j * BAY, 0.2);
    }
  }
}

function outerWalls() {
  rectangle('walls', -WALL, -WALL, WIDTH + 2 * WALL, DEPTH + 2 * WALL);
  rectangle('walls', 0, 0, WIDTH, DEPTH);
  for (let i = 0; i < BAYS_X; i++) {
    for (const y of [-WALL, DEPTH]) {
      const x = i * BAY + 1.5;
      rectangle('windows', x, y, 3, WALL);
      line('windows', x, y + WALL / 2, x + 3, y + WALL / 2);
    }
  }
}

/** A door leaf standing open at a right angle, and the way it swings. */
function door(x, y, up) {
  line('doors', x, y, x, y + up * DOOR);
  arc('doors', x, y, DOOR, 0, (up * Math.PI) / 2);
}

/** A row of offices between the corridor and an outer wall; `up` is the way from the corridor. */
function offices(corridorY, up, firstNumber) {
  const rooms = BAYS_X;
  for (let i = 0; i < rooms; i++) {
    const [x, far] = [i * BAY, corridorY + up * BAY];
    const doorX = x + 0.6;
    lineString('walls', [[x, corridorY], [doorX, corridorY]]);
    line('walls', doorX + DOOR, corridorY, x + BAY, corridorY);
    door(doorX, corridorY, up);
    if (i > 0) {
      line('walls', x - 0.05, corridorY, x - 0.05, far);
      line('walls', x + 0.05, corridorY, x + 0.05, far);
    }
    const deskY = corridorY + up * 3.4 - 0.4;
    rectangle('furniture', x + 2.2, deskY, 1.6, 0.8);
    circle('furniture', x + 3, deskY + 0.4 + up * 0.8, 0.25);
    label('labels', x + 2, corridorY + up * 1.6, 0.35, `Office ${firstNumber + i}`);
    label('labels', x + 2, corridorY + up * 1.6 - 0.5, 0.25, `${(BAY * BAY).toFixed(1)} m2`);
  }
}

function stair(x, y) {
  for (let step = 0; step <= 12; step++) line('walls', x + step * 0.28, y, x + step * 0.28, y + 1.2);
  lineString('dimensions', [[x, y + 0.6], [x + 3.36, y + 0.6], [x + 3.16, y + 0.7]]);
  label('labels', x + 0.2, y + 1.4, 0.3, 'UP 13');
}

function dimension(x1, x2, y) {
  line('dimensions', x1, y, x2, y);
  for (const x of [x1, x2]) {
    line('dimensions', x, y - 0.3, x, y + 0.3);
    line('dimensions', x - 0.15, y - 0.15, x + 0.15, y + 0.15);
  }
  label('dimensions', (x1 + x2) / 2 - 0.5, y + 0.15, 0.3, (x2 - x1).toFixed(2));
}

/** A boundary with rounded corners, straight pieces and arcs in one closed chain. */
function site() {
  const [x1, y1, x2, y2, r] = [-12, -12, WIDTH + 12, DEPTH + 12, 5];
  const corner = (x, y, start) =>
    ({ kind: 'arc', center: [x, y, 0], axis1: [r, 0, 0], axis2: [0, r, 0], start, sweep: Math.PI / 2 });
  const side = (...points) => ({ kind: 'lineString', points: points.map(([x, y]) => [x, y, 0]) });
  put('site', { kind: 'chain', closed: true, members: [
    side([x1 + r, y1], [x2 - r, y1]), corner(x2 - r, y1 + r, -Math.PI / 2),
    side([x2, y1 + r], [x2, y2 - r]), corner(x2 - r, y2 - r, 0),
    side([x2 - r, y2], [x1 + r, y2]), corner(x1 + r, y2 - r, Math.PI / 2),
    side([x1, y2 - r], [x1, y1 + r]), corner(x1 + r, y1 + r, Math.PI),
  ] });
  label('site', x1 + 0.8, y1 + 8, 0.8, 'Property line', Math.PI / 2);
}

grid();
columns();
outerWalls();
offices(2 * BAY, 1, 201);
offices(BAY, -1, 101);
stair(1, BAY + 2);
stair(WIDTH - 5, BAY + 2);
for (let i = 0; i < BAYS_X; i++) dimension(i * BAY, (i + 1) * BAY, -2);
dimension(0, WIDTH, -3);
site();
label('labels', 0, DEPTH + 4, 1.2, 'Office building, floor plan 1:100');

const [output] = process.argv.slice(2);
if (!output) {
  console.error('usage: node make_sample_drawing.mjs OUT.dgn');
  process.exitCode = 2;
} else {
  writeFileSync(output, writeDgn({ elements, unitName: 'm' }).bytes);
  console.log(`${elements.length} elements`);
}
