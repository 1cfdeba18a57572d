// SPDX-License-Identifier: MIT
// node convert.mjs [dgn2dwg|dwg2dgn] [--codepage NAME] [--seconds N] [--report FILE] IN OUT
//
// Ends with 0 and the drawing in OUT, saying on standard output what was left out, if anything; or with
// another code, one line of reason on standard error, and no OUT. Either way the report is in FILE.

import { readFileSync, renameSync, rmSync, writeFileSync } from 'node:fs';
import { extname } from 'node:path';
import { fileURLToPath } from 'node:url';
import { parseArgs } from 'node:util';
import { Worker, isMainThread, parentPort, workerData } from 'node:worker_threads';
import { Refusal } from './outcome.mjs';
import { lineOf, reportOf, reportOfRefusal } from './report.mjs';

const USAGE = 'usage: node convert.mjs [dgn2dwg|dwg2dgn] [--codepage NAME] [--seconds N] [--report FILE] IN OUT';
const DIRECTIONS = ['dgn2dwg', 'dwg2dgn'];
const DEFAULT_SECONDS = 120;
const MEMORY_MIB = 4096;
/** For what lives but for a moment: as next to nothing is kept, more room would only spread it out. */
const YOUNG_MIB = 16;

function readArguments(args) {
  const options = { codepage: { type: 'string' }, seconds: { type: 'string', default: `${DEFAULT_SECONDS}` },
    report: { type: 'string' } };
  const { values, positionals } = parse(args, options);
  const explicit = DIRECTIONS.includes(positionals[0]) ? positionals.shift() : null;
  const [input, output] = positionals;
  const seconds = Number(values.seconds);
  if (positionals.length !== 2 || !(seconds > 0)) throw new Refusal(USAGE);
  const suffix = (path) => extname(path).slice(1).toLowerCase();
  const direction = explicit ?? `${suffix(input)}2${suffix(output)}`;
  if (!DIRECTIONS.includes(direction)) throw new Refusal(USAGE);
  return { direction, input, output, seconds, codePage: values.codepage, report: values.report };
}

function parse(args, options) {
  try {
    return parseArgs({ args, options, allowPositionals: true });
  } catch {
    throw new Refusal(USAGE);
  }
}

function readInput(path) {
  try {
    return readFileSync(path);
  } catch (error) {
    throw new Refusal(`the input cannot be read: ${error.code}`);
  }
}

/** In a thread of its own, so that no drawing, however damaged, takes more time or memory than this. */
function convert({ direction, input, seconds, codePage }) {
  return new Promise((resolve, reject) => {
    const worker = new Worker(fileURLToPath(import.meta.url), {
      workerData: { direction, input, codePage }, stdout: true, stderr: true,
      resourceLimits: { maxOldGenerationSizeMb: MEMORY_MIB, maxYoungGenerationSizeMb: YOUNG_MIB },
    });
    const timer = setTimeout(() => {
      reject(new Refusal(`the conversion took more than ${seconds} seconds`, 'tooSlow'));
      worker.terminate();
    }, seconds * 1000);
    worker.once('message', (answer) => {
      clearTimeout(timer);
      if (answer.reason) reject(new Refusal(answer.reason, answer.kind));
      else resolve(answer);
    });
    worker.once('error', (error) => {
      clearTimeout(timer);
      reject(error.code === 'ERR_WORKER_OUT_OF_MEMORY' ? new Refusal('the drawing needs too much memory', 'tooLarge') : error);
    });
  });
}

async function work({ direction, input, codePage }) {
  const start = performance.now();
  try {
    const source = readInput(input);
    const result = direction === 'dgn2dwg'
      ? (await import('./dgn_to_dwg.mjs')).dgnToDwg(source, { codePage })
      : (await import('./dwg_to_dgn.mjs')).dwgToDgn(source, { codePage });
    const report = reportOf(direction, source, result, (performance.now() - start) / 1000);
    const { bytes } = result;
    // Handed over and not copied.
    parentPort.postMessage({ bytes, leftOut: `${result.leftOut}`, report: JSON.stringify({ summary: lineOf(report), ...report }) }, [bytes.buffer]);
  } catch (error) {
    if (!(error instanceof Refusal)) return parentPort.postMessage({ reason: `the drawing cannot be converted: ${error.message}`, kind: 'other' });
    return parentPort.postMessage({ reason: error.message, kind: error.kind });
  }
}

/** Whole or not at all. */
function writeOutput(path, bytes) {
  const partial = `${path}.${process.pid}.part`;
  try {
    writeFileSync(partial, bytes);
    renameSync(partial, path);
  } catch (error) {
    rmSync(partial, { force: true });
    throw new Refusal(`the output cannot be written: ${error.code}`);
  }
}

async function main() {
  let options = null;
  const start = performance.now();
  try {
    options = readArguments(process.argv.slice(2));
    const { bytes, leftOut, report } = await convert(options);
    writeOutput(options.output, bytes);
    if (options.report) writeOutput(options.report, `${report}\n`);
    if (leftOut) console.log(`left out: ${leftOut}`);
  } catch (error) {
    const reason = String(error.message).replace(/\s+/g, ' ').slice(0, 500);
    console.error(reason);
    process.exitCode = 1;
    if (!options?.report) return;
    const report = reportOfRefusal(options.direction, error.kind ?? 'other', reason, (performance.now() - start) / 1000);
    writeFileSync(options.report, `${JSON.stringify({ summary: lineOf(report), ...report })}\n`);
  }
}

if (isMainThread) await main();
else await work(workerData);
