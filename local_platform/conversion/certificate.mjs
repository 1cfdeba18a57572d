// SPDX-License-Identifier: MIT
// The proof of a result: it is read back by the reader of its format, which shares but tables with the writer,
// and compared with what was read from the source.

import { readDgn } from './dgn/reader.mjs';
import { TextCodec } from './dgn/text.mjs';
import { readDwg } from './dwg/document.mjs';
import { Measure, differences } from './measure.mjs';
import { DWG_COLOR_NUMBERS } from './symbology.mjs';
import { Converter as ToDgn } from './to_dgn/converter.mjs';

/** What every code page has, and no notation of a character begins with. */
const PLAIN = /^[\x20-\x5b\x5d-\x7e]*$/;

/** Texts as their code page can say them. */
function asWritten(sum, codePage) {
  const codec = new TextCodec(codePage);
  const others = [...sum.texts].filter(([text]) => !PLAIN.test(text));
  for (const [text] of others) sum.texts.delete(text);
  for (const [text, count] of others) {
    const written = codec.decode(codec.encode(text));
    sum.texts.set(written, (sum.texts.get(written) ?? 0) + count);
    sum.characters += (written.trim().length - text.trim().length) * count;
  }
  return sum;
}

function verdict(expected, actual, resolution, readBackBy) {
  const found = differences(expected, actual, resolution);
  const kinds = Object.fromEntries(actual.kinds);
  return { readBackBy, agrees: found.length === 0, differences: found, kinds, length: actual.length,
    extent: { low: actual.low, high: actual.high } };
}

const dgnColor = (element, isFill) => (isFill ? element.fillColor : undefined) ?? element.color;

/** What elements that are to be written as DGN amount to: they are pushed into it, each with its layer. */
export const measureForDgn = (resolution) => new Measure({ layerOf: (e) => e.layer.name, colorOf: dgnColor, resolution });

/** `expected` is what measureForDgn() makes of what was to be written. */
export function certifyDgn(bytes, { expected, codePage }) {
  const { resolution } = expected;
  // The names of layers stand in the notes, which are read before any element.
  const layerOf = (e) => actual.notes.sharing[e.layerNote] ?? actual.notes.layers[e.level];
  const actual = new Measure({ layerOf, colorOf: dgnColor, resolution }).against(asWritten(expected, codePage));
  readDgn(bytes, codePage, actual);
  return verdict(expected, actual, resolution, 'the DGN reader');
}

/** What the elements of a DGN amount to, in the names that `converter` gives them: they are pushed into it. */
export const measureForDwg = (drawing, converter) => new Measure({
  layerOf: (element) => converter.layerOf(element), contentOf: (instance) => converter.contentOf(instance),
  colorOf: (element, isFill) => converter.colors[(isFill ? element.fillColor : undefined) ?? element.color],
  resolution: 1 / drawing.uorPerMaster,
});

/** `expected` is what measureForDwg() makes of the source. */
export function certifyDwg(bytes, { expected, codePage }) {
  const { resolution } = expected;
  const actual = new Measure({ layerOf: (e) => e.layer.name, resolution,
    colorOf: (element, isFill) => DWG_COLOR_NUMBERS[(isFill ? element.fillColor : undefined) ?? element.color] })
    .against(asWritten(expected, codePage));
  new ToDgn(readDwg(bytes), actual).model();
  return verdict(expected, actual, resolution, 'the DWG reader');
}
