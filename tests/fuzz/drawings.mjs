// SPDX-License-Identifier: MIT
// node drawings.mjs dgn|dwg SECONDS PREFIX [SEED]
//
// Damages small drawings and converts them. Ends with 1 at one that brings anything but a drawing or a refusal, or no
// end, or takes far more memory than it is large, and leaves it in PREFIX<seed>-<round>.

import { readFileSync, writeFileSync } from 'node:fs';
import { Worker, isMainThread, workerData } from 'node:worker_threads';
import { dgnToDwg } from '../../local_platform/conversion/dgn_to_dwg.mjs';
import { dwgToDgn } from '../../local_platform/conversion/dwg_to_dgn.mjs';
import { Refusal } from '../../local_platform/conversion/outcome.mjs';

const MOST_BYTES = 1 << 17;
const STUCK_SECONDS = 25;
const MEMORY_MIB = 512;
/** With all that the program itself takes. */
const RESIDENT_MIB = 1024;

/** Tells the other thread what it is about to convert, for that one to know when this one is stuck. */
async function work({ format, seed, seconds, counts, input }) {
  let state = seed;
  const random = (below) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 2 ** 32) * below);
  };
  const { damagedDrawings } = await import(`./damaged_${format}.mjs`);
  const convert = { dgn: dgnToDwg, dwg: dwgToDgn }[format];
  const end = Date.now() + 1000 * seconds;
  for (const bytes of damagedDrawings(random)) {
    if (Date.now() > end) return;
    input.set(bytes);
    counts[1] = bytes.length;
    Atomics.add(counts, 0, 1);
    try {
      counts[2] += convert(bytes).bytes.length > 0;
    } catch (error) {
      if (!(error instanceof Refusal)) throw error;
    }
  }
}

/** What a thread has for itself, from the account that the system keeps; 0 where it keeps none. */
function residentMib() {
  try {
    return Number(/VmRSS:\s*(\d+)/.exec(readFileSync('/proc/self/status', 'utf8'))[1]) / 1024;
  } catch {
    return 0;
  }
}

function watch([format, seconds, prefix, seed = Date.now() % 2 ** 32]) {
  const counts = new Int32Array(new SharedArrayBuffer(12));
  const input = new Uint8Array(new SharedArrayBuffer(MOST_BYTES));
  const fail = (reason) => {
    const path = `${prefix}${seed}-${counts[0]}.${format}`;
    writeFileSync(path, input.slice(0, counts[1]));
    console.log(`${reason}\nThe drawing is ${path}`);
    process.exit(1);
  };
  console.log(`seed ${seed}`);
  const worker = new Worker(new URL(import.meta.url), { workerData: { format, seed: Number(seed), seconds, counts, input },
    resourceLimits: { maxOldGenerationSizeMb: MEMORY_MIB } });
  worker.on('error', (error) => fail(error.stack));
  let [last, still] = [0, 0];
  const timer = setInterval(() => {
    still = counts[0] === last ? still + 1 : 0;
    last = counts[0];
    if (last > 0 && still > STUCK_SECONDS) fail('The conversion does not end.');
    if (residentMib() > RESIDENT_MIB) fail('The conversion takes too much memory.');
  }, 1000);
  worker.on('exit', () => {
    clearInterval(timer);
    console.log(`${counts[2]} converted\nnumber_of_executed_units: ${counts[0]}\naverage_exec_per_sec: ${Math.round(counts[0] / seconds)}`);
  });
}

if (isMainThread) watch(process.argv.slice(2));
else await work(workerData);
