// SPDX-License-Identifier: MIT
// node dgn.mjs SECONDS PREFIX [SEED]
//
// Damages small drawings made of the sample drawing's elements and converts them. Ends with 1 at one that
// brings anything but a drawing or a refusal, or no end, and leaves it in PREFIX<seed>-<round>.dgn.

import { spawnSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { Worker, isMainThread, workerData } from 'node:worker_threads';
import { readDgn } from '../../local_platform/conversion/dgn/reader.mjs';
import { writeDgn } from '../../local_platform/conversion/dgn/writer.mjs';
import { dgnToDwg } from '../../local_platform/conversion/dgn_to_dwg.mjs';
import { Refusal } from '../../local_platform/conversion/outcome.mjs';

const MOST_BYTES = 1 << 16;
const STUCK_SECONDS = 25;
const MEMORY_MIB = 512;
const TYPES = [2, 3, 4, 5, 6, 7, 9, 11, 12, 14, 15, 16, 17, 18, 21, 22, 26, 27, 28, 33, 34, 35, 66];
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

function* damagedDrawings(random) {
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

/** Tells the other thread what it is about to convert, for that one to know when this one is stuck. */
function work({ seed, seconds, counts, input }) {
  let state = seed;
  const random = (below) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 2 ** 32) * below);
  };
  const end = Date.now() + 1000 * seconds;
  for (const bytes of damagedDrawings(random)) {
    if (Date.now() > end) return;
    input.set(bytes);
    counts[1] = bytes.length;
    Atomics.add(counts, 0, 1);
    try {
      counts[2] += dgnToDwg(bytes).bytes.length > 0;
    } catch (error) {
      if (!(error instanceof Refusal)) throw error;
    }
  }
}

function watch([seconds, prefix, seed = Date.now() % 2 ** 32]) {
  const counts = new Int32Array(new SharedArrayBuffer(12));
  const input = new Uint8Array(new SharedArrayBuffer(MOST_BYTES));
  const fail = (reason) => {
    const path = `${prefix}${seed}-${counts[0]}.dgn`;
    writeFileSync(path, input.slice(0, counts[1]));
    console.log(`${reason}\nThe drawing is ${path}`);
    process.exit(1);
  };
  console.log(`seed ${seed}`);
  const worker = new Worker(new URL(import.meta.url), { workerData: { seed: Number(seed), seconds, counts, input },
    resourceLimits: { maxOldGenerationSizeMb: MEMORY_MIB } });
  worker.on('error', (error) => fail(error.stack));
  let [last, still] = [0, 0];
  const timer = setInterval(() => {
    still = counts[0] === last ? still + 1 : 0;
    last = counts[0];
    if (last > 0 && still > STUCK_SECONDS) fail('The conversion does not end.');
  }, 1000);
  worker.on('exit', () => {
    clearInterval(timer);
    console.log(`${counts[2]} converted\nnumber_of_executed_units: ${counts[0]}\naverage_exec_per_sec: ${Math.round(counts[0] / seconds)}`);
  });
}

if (isMainThread) watch(process.argv.slice(2));
else work(workerData);
