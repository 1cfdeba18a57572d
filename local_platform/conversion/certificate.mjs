// SPDX-License-Identifier: MIT
// The proof of a result: it is read back by the reader of its format, which shares but tables with the writer,
// and compared with what was read from the source.

import { readDgn } from './dgn/reader.mjs';
import { TextCodec } from './dgn/text.mjs';
import { readDwg } from './dwg/document.mjs';
import { Measure, differences } from './measure.mjs';
import { DWG_COLOR_NUMBERS } from './symbology.mjs';
import { Converter as ToDgn } from './to_dgn/converter.mjs';

/** Texts as their code page can say them. */
function asWritten(sum, codePage) {
  const codec = new TextCodec(codePage);
  const texts = new Map();
  for (const [text, count] of sum.texts) {
    const written = codec.decode(codec.encode(text));
    texts.set(written, (texts.get(written) ?? 0) + count);
  }
  return Object.assign(sum, { texts });
}

function verdict(expected, actual, resolution, readBackBy) {
  const found = differences(expected, actual, resolution);
  const kinds = Object.fromEntries(actual.kinds);
  return { readBackBy, agrees: found.length === 0, differences: found, kinds, length: actual.length,
    extent: { low: actual.low, high: actual.high } };
}

/** `elements` are what was to be written, each with its layer. */
export function certifyDgn(bytes, { elements, codePage, resolution }) {
  const colorOf = (element, isFill) => (isFill ? element.fillColor : undefined) ?? element.color;
  const expected = asWritten(new Measure({ layerOf: (e) => e.layer.name, colorOf, resolution }).of(elements), codePage);
  // The names of layers stand in the notes, which are read before any element.
  const actual = new Measure({ layerOf: (e) => actual.notes.sharing[e.layerNote] ?? actual.notes.layers[e.level], colorOf, resolution });
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
    colorOf: (element, isFill) => DWG_COLOR_NUMBERS[(isFill ? element.fillColor : undefined) ?? element.color] });
  new ToDgn(readDwg(bytes), actual).model();
  return verdict(asWritten(expected, codePage), actual, resolution, 'the DWG reader');
}
