// SPDX-License-Identifier: MIT
// The design plane: which whole number stands for which coordinate. It holds 2^32 positions each way, so
// one point far from all others would cost the rest of the drawing its precision. Such outliers are left
// out; a drawing that is too large for its own details all the same is refused.

import { Refusal } from '../outcome.mjs';
import { extentOf, isFlat, outline } from './extent.mjs';
import { MAX_INT, TEXT_UNIT } from './format.mjs';

/** The largest step between positions, as a share of what most of the drawing spans. */
const PRECISION = 1e-6;

const MAX_DIGITS = 6;
const FAR = 1000;
const MAX_OUTLIERS = 0.02;
const MAX_SAMPLE = 20000;

const quantile = (sorted, share) => sorted[Math.floor(share * (sorted.length - 1))];

function tallestText(elements) {
  let tallest = 0;
  for (const element of elements) {
    if (element.kind === 'text') tallest = Math.max(tallest, element.height, element.width);
    if (element.members) tallest = Math.max(tallest, tallestText(element.members));
  }
  return tallest;
}

function centerOf(element) {
  const { low, high } = extentOf([element]);
  return low.map((v, i) => v / 2 + high[i] / 2);
}

/** What the middle half of the elements spans, and where its middle is; of very many, a part tells. */
function bulkOf(all) {
  const step = Math.ceil(all.length / MAX_SAMPLE);
  const extents = all.filter((_, i) => i % step === 0).map((element) => extentOf([element]));
  const spans = [0, 1, 2].map((i) => {
    const sorted = Float64Array.from(extents, ({ low, high }) => low[i] / 2 + high[i] / 2).sort();
    return { middle: quantile(sorted, 0.5), size: quantile(sorted, 0.75) - quantile(sorted, 0.25) };
  });
  const sizes = Float64Array.from(extents, ({ low, high }) => Math.max(high[0] - low[0], high[1] - low[1], high[2] - low[2])).sort();
  return { middle: spans.map((s) => s.middle), size: Math.max(...spans.map((s) => s.size), quantile(sizes, 0.5)) };
}

/** The finest decimal resolution that leaves half of the design plane free for what is drawn later. */
function plan(elements) {
  const { low, high } = extentOf(elements);
  const is3d = !elements.every(isFlat);
  const center = low.map((v, i) => (i === 2 && !is3d ? 0 : Math.round(v / 2 + high[i] / 2)));
  const reach = Math.max(...center.map((c, i) => (i === 2 && !is3d ? 0 : Math.max(high[i] - c, c - low[i]))));
  const text = tallestText(elements) / TEXT_UNIT;
  const fits = (uor, share) => reach * uor <= MAX_INT * share && text * uor <= MAX_INT;
  let digits = MAX_DIGITS;
  while (digits > 0 && !fits(10 ** digits, 0.5)) digits--;
  const uorPerMaster = 10 ** digits;
  return { is3d, uorPerMaster, subUnits: 10 ** Math.min(digits, 3), low, high, fits: fits(uorPerMaster, 1),
    origin: center.map((c) => 0 - c * uorPerMaster) };
}

/** Whether every coordinate stands on a position. */
function isExact(elements, { uorPerMaster, origin }) {
  return elements.every((element) => outline(element).every((p) => p.every((v, i) => {
    const uor = v * uorPerMaster + origin[i];
    return Math.abs(uor - Math.round(uor)) < 1e-3;
  })));
}

/** { plane, elements, outliers }. Throws Refusal. */
export function planDesignPlane(elements) {
  const whole = plan(elements);
  const isFine = (plane, size) => plane.fits && (plane.uorPerMaster === 10 ** MAX_DIGITS || size === 0
    || 1 / plane.uorPerMaster <= PRECISION * size || isExact(elements, plane));
  if (whole.fits && whole.uorPerMaster === 10 ** MAX_DIGITS) return { plane: whole, elements, outliers: [] };
  const { middle, size } = bulkOf(elements);
  if (isFine(whole, size)) return { plane: whole, elements, outliers: [] };
  const isFar = (element) => centerOf(element).some((v, i) => Math.abs(v - middle[i]) > FAR * size);
  const far = new Set(elements.filter(isFar));
  const near = elements.filter((element) => !far.has(element));
  if (far.size > 0 && elements.length > 3 && far.size <= Math.max(1, MAX_OUTLIERS * elements.length)) {
    const plane = plan(near);
    if (isFine(plane, bulkOf(near).size)) return { plane, elements: near, outliers: [...far] };
  }
  if (!whole.fits) throw new Refusal('the drawing is too large for the design plane of DGN V7', 'tooLarge');
  throw new Refusal('the drawing spans so much that DGN V7 would round it to '
    + `${1 / whole.uorPerMaster} units; most of it spans ${Number(size.toPrecision(3))}`, 'tooLarge');
}
