// SPDX-License-Identifier: MIT
// DGN drawings of a few elements of the sample drawing, damaged.

import { spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { readDgn } from '../../local_platform/conversion/dgn/reader.mjs';
import { writeDgn } from '../../local_platform/conversion/dgn/writer.mjs';

const MOST_BYTES = 1 << 16;
const TYPES = [2, 3, 4, 5, 6, 7, 9, 11, 12, 14, 15, 16, 17, 18, 21, 22, 26, 27, 28, 33, 34, 35, 37, 66];
const VALUES = [0, 1, 0x10, 0x3f, 0x40, 0x7f, 0x80, 0xc0, 0xfe, 0xff];

/** The elements as they lie in a file, the end mark after them. */
function split(bytes) {
  const parts = [];
  for (let at = 0; at < bytes.length; at += parts.at(-1).length) {
    const size = at + 4 > bytes.length ? 2 : 4 + 2 * bytes.readUInt16LE(at + 2);
    parts.push(bytes.subarray(at, at + size));
  }
  return parts;
}

export function* damagedDrawings(random) {
  const oneOf = (list) => list[random(list.length)];
  const sample = fileURLToPath(new URL('../../examples/make_sample_drawing.mjs', import.meta.url));
  spawnSync(process.execPath, [sample, 'sample.dgn']);
  const { elements } = readDgn(readFileSync('sample.dgn'));
  const kinds = [...new Set(elements.map((element) => element.kind))].map((kind) => elements.filter((element) => element.kind === kind));
  const damages = [
    (part) => { part[random(part.length)] = random(256); },
    (part) => { part[random(120)] = oneOf(VALUES); },
    (part) => { part[1] = oneOf(TYPES); },
    (part) => { part[0] ^= 0x80; },
    (part) => { part.subarray(random(part.length)).subarray(0, random(16)).fill(oneOf(VALUES)); },
    (part, parts, place) => { parts.splice(random(parts.length), 0, Buffer.from(parts[place])); },
    (part, parts, place) => { // cut, and as long as it says
      if (part.length <= 4) return;
      parts[place] = part.subarray(0, 4 + 2 * random(part.length / 2 - 2));
      parts[place].writeUInt16LE(parts[place].length / 2 - 2, 2);
    },
  ];
  for (;;) {
    const parts = split(writeDgn({ elements: Array.from({ length: 1 + random(6) }, () => oneOf(oneOf(kinds))) }).bytes);
    for (let i = random(8); i >= 0; i--) {
      const place = random(4) ? 3 + random(parts.length - 3) : random(parts.length);
      oneOf(damages)(parts[place], parts, place);
    }
    const bytes = Buffer.concat(parts);
    yield bytes.subarray(0, random(20) ? MOST_BYTES : random(bytes.length));
  }
}
