// SPDX-License-Identifier: MIT
// node bench/conversion.mjs [MEGABYTES...]
//
// Converts a drawing of each size there and back, and has other programs read the same files where they are
// installed: processor seconds (user and system), seconds in all, and the most memory, also as times the file. Of one
// run each. GDAL is Debian's gdal-bin; LibreDWG is no package of Debian 12 and has to be put in the path.

import { spawnSync } from 'node:child_process';
import { mkdtempSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { writeDgn } from '../local_platform/conversion/dgn/writer.mjs';

const BYTES_PER_ELEMENT = 70.5;
const CONVERTER = fileURLToPath(new URL('../local_platform/conversion/convert.mjs', import.meta.url));
const folder = mkdtempSync(join(tmpdir(), 'conversion-'));

let state = 1;
const random = () => {
  state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
  return state / 2 ** 32;
};
const point = () => [random() * 10000, random() * 10000, 0];

/** Half of all are lines, the rest line strings, texts, arcs and shapes, some of them filled. */
function element(i) {
  const symbology = { level: 1 + (i % 40), color: i % 255, weight: i % 10, style: i % 8, group: 0 };
  const kind = i % 10;
  if (kind < 5) return { ...symbology, kind: 'line', points: [point(), point()] };
  if (kind < 7) {
    const [x, y] = point();
    return { ...symbology, kind: 'lineString', points: Array.from({ length: 6 }, (_, k) => [x + k, y + random(), 0]) };
  }
  if (kind < 8) {
    return { ...symbology, kind: 'text', origin: point(), xAxis: [1, 0, 0], yAxis: [0, 1, 0], height: 2, width: 2, text: `Room ${i}` };
  }
  if (kind < 9) {
    return { ...symbology, kind: 'arc', center: point(), axis1: [5, 0, 0], axis2: [0, 5, 0], start: random(), sweep: 1 + random() };
  }
  return { ...symbology, kind: 'shape', points: [point(), point(), point(), point()], filled: i % 20 === 9 };
}

/** The same elements whenever they are asked for, and none of them kept. */
const drawing = (length) => ({ length, forEach(visit) {
  state = 1;
  for (let i = 0; i < length; i++) visit(element(i), i);
} });

/** Runs a command that reads a file under time(1). */
function measured(what, path, command) {
  const { status, stderr } = spawnSync('/usr/bin/time', ['-f', '%U %S %e %M', ...command], { encoding: 'utf8', stdio: ['ignore', 'ignore', 'pipe'] });
  if (status !== 0) return console.log(`${what.padEnd(26)} not here, or failed`);
  const [user, system, all, kilobytes] = stderr.trim().split('\n').at(-1).split(' ').map(Number);
  const [processor, memory] = [user + system, kilobytes / 1024].map((v, i) => v.toFixed(1 - i).padStart(6));
  const share = ((1024 * kilobytes) / statSync(path).size).toFixed(1);
  return console.log(`${what.padEnd(26)} ${processor} s of ${all.toFixed(1).padStart(5)} s ${memory} MiB, ${share} times the file`);
}

const megabytes = (path) => `${(statSync(path).size / 1e6).toFixed(1)} MB`;

for (const size of process.argv.length > 2 ? process.argv.slice(2).map(Number) : [1, 20]) {
  const [dgn, dwg, back] = ['a.dgn', 'a.dwg', 'b.dgn'].map((name) => join(folder, name));
  writeFileSync(dgn, writeDgn({ elements: drawing(Math.round((size * 2 ** 20) / BYTES_PER_ELEMENT)), unitName: 'm' }).bytes);
  measured(`${megabytes(dgn)} DGN to DWG`, dgn, ['node', CONVERTER, '--seconds', '600', dgn, dwg]);
  measured('  GDAL reads the DGN', dgn, ['ogrinfo', '-q', '-al', dgn]);
  measured(`${megabytes(dwg)} DWG to DGN`, dwg, ['node', CONVERTER, '--seconds', '600', dwg, back]);
  measured('  GDAL reads the DWG', dwg, ['ogrinfo', '-q', '-al', dwg]);
  measured('  LibreDWG reads the DWG', dwg, ['dwgread', '-O', 'JSON', '-o', '/dev/null', dwg]);
}
rmSync(folder, { recursive: true });
