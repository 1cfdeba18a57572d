// SPDX-License-Identifier: MIT
// What a conversion tells of itself, as JSON:
//   outcome       "converted" or "refused"
//   direction, from, seconds, bytes: { read, written }
//   came          entities or elements of the source by kind
//   went          what was read back from the result, by kind
//   drawn         what was drawn from something else, by what
//   leftOut       what was not carried over, by what
//   references    files that the drawing refers to
//   layers        the level or name of each layer that is used; sharedLevels: how many layers share one
//   codePage      { read, written }
//   tolerance     { coordinates: half of the step between them, curves: share of a curve's size }
//   check         { readBackBy, agrees, differences, kinds, length, extent }
// or, of a refusal, kind and reason.

import { STROKE_TOLERANCE } from './spline.mjs';

export function reportOf(direction, input, result, seconds) {
  const { from, source, drawn, leftOut, references, layers, sharedLevels, damaged, check } = result;
  return {
    outcome: 'converted', direction, from, seconds, bytes: { read: input.length, written: result.bytes.length },
    came: source, went: check.kinds, drawn, leftOut, references, layers, sharedLevels,
    codePage: { read: result.sourceCodePage, written: result.codePage },
    tolerance: { coordinates: result.resolution / 2, curves: STROKE_TOLERANCE }, damaged, check,
  };
}

export const reportOfRefusal = (direction, kind, reason, seconds) => ({ outcome: 'refused', direction, kind, reason, seconds });

/** In one line, for a log. */
export function lineOf(report) {
  if (report.outcome === 'refused') return `refused (${report.kind}): ${report.reason}`;
  const { check, leftOut } = report;
  const parts = [`${report.from} to ${report.direction === 'dwg2dgn' ? 'DGN V7' : 'DWG R2000'} in ${report.seconds.toFixed(1)} s`,
    check.agrees ? `agrees with the source by ${check.readBackBy}` : `DIFFERS from the source: ${check.differences[0]}`];
  if (`${leftOut}`) parts.push(`left out: ${leftOut}`);
  return parts.join('; ');
}
