// SPDX-License-Identifier: MIT
// The design plane: which whole number stands for which coordinate. It holds 2^32 positions each way, so
// one point far from all others would cost the rest of the drawing its precision. Such outliers are left
// out; a drawing that is too large for its own details all the same is refused.

import { Refusal } from '../outcome.mjs';
import { extentOf, outline } from './extent.mjs';
import { MAX_INT, TEXT_UNIT } from './format.mjs';
import { Survey } from './survey.mjs';

/** The largest step between positions, as a share of what most of the drawing spans. */
const PRECISION = 1e-6;

const MAX_DIGITS = 6;
const FAR = 1000;
const MAX_OUTLIERS = 0.02;
const MAX_SAMPLE = 20000;

const quantile = (sorted, share) => sorted[Math.floor(share * (sorted.length - 1))];

function centerOf(element) {
  const { low, high } = extentOf([element]);
  return low.map((v, i) => v / 2 + high[i] / 2);
}

/** What the middle half of the elements spans, and where its middle is; of very many, a part tells. */
function bulkOf(all, without) {
  const step = Math.ceil(all.length / MAX_SAMPLE);
  const extents = [];
  all.forEach((element, i) => { if (i % step === 0 && !without.has(i)) extents.push(extentOf([element])); });
  const spans = [0, 1, 2].map((i) => {
    const sorted = Float64Array.from(extents, ({ low, high }) => low[i] / 2 + high[i] / 2).sort();
    return { middle: quantile(sorted, 0.5), size: quantile(sorted, 0.75) - quantile(sorted, 0.25) };
  });
  const sizes = Float64Array.from(extents, ({ low, high }) => Math.max(high[0] - low[0], high[1] - low[1], high[2] - low[2])).sort();
  return { middle: spans.map((s) => s.middle), size: Math.max(...spans.map((s) => s.size), quantile(sizes, 0.5)) };
}

/** The finest decimal resolution that leaves half of the design plane free for what is drawn later. */
function plan({ low, high, isFlat, tallestText }) {
  const is3d = !isFlat;
  const center = low.map((v, i) => (i === 2 && !is3d ? 0 : Math.round(v / 2 + high[i] / 2)));
  const reach = Math.max(...center.map((c, i) => (i === 2 && !is3d ? 0 : Math.max(high[i] - c, c - low[i]))));
  const text = tallestText / TEXT_UNIT;
  const fits = (uor, share) => reach * uor <= MAX_INT * share && text * uor <= MAX_INT;
  let digits = MAX_DIGITS;
  while (digits > 0 && !fits(10 ** digits, 0.5)) digits--;
  const uorPerMaster = 10 ** digits;
  return { is3d, uorPerMaster, subUnits: 10 ** Math.min(digits, 3), low, high, fits: fits(uorPerMaster, 1),
    origin: center.map((c) => 0 - c * uorPerMaster) };
}

/** Whether every coordinate stands on a position. */
function isExact(elements, { uorPerMaster, origin }, without) {
  let result = true;
  elements.forEach((element, i) => {
    result &&= without.has(i) || outline(element).every((p) => p.every((v, i) => {
      const uor = v * uorPerMaster + origin[i];
      return Math.abs(uor - Math.round(uor)) < 1e-3;
    }));
  });
  return result;
}

/** { plane, outliers: the numbers of the elements that are too far away }. `elements` have length and forEach(), `survey` is what
    there is of them. Throws Refusal. */
export function planDesignPlane(elements, survey) {
  const none = new Set();
  const whole = plan(survey);
  const isFinest = ({ fits, uorPerMaster }) => fits && uorPerMaster === 10 ** MAX_DIGITS;
  if (isFinest(whole)) return { plane: whole, outliers: none };
  const isFine = (plane, size, without) => plane.fits && (isFinest(plane) || size === 0 || 1 / plane.uorPerMaster <= PRECISION * size
    || isExact(elements, plane, without));
  const { middle, size } = bulkOf(elements, none);
  if (isFine(whole, size, none)) return { plane: whole, outliers: none };
  const outliers = new Set();
  elements.forEach((element, i) => {
    if (centerOf(element).some((v, k) => Math.abs(v - middle[k]) > FAR * size)) outliers.add(i);
  });
  if (outliers.size > 0 && elements.length > 3 && outliers.size <= Math.max(1, MAX_OUTLIERS * elements.length)) {
    const plane = plan(Survey.of(elements, outliers));
    if (isFine(plane, bulkOf(elements, outliers).size, outliers)) return { plane, outliers };
  }
  if (!whole.fits) throw new Refusal('the drawing is too large for the design plane of DGN V7', 'tooLarge');
  throw new Refusal('the drawing spans so much that DGN V7 would round it to '
    + `${1 / whole.uorPerMaster} units; most of it spans ${Number(size.toPrecision(3))}`, 'tooLarge');
}
