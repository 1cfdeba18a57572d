// SPDX-License-Identifier: MIT
// The proof of a result: it is read back by the reader of its format, which shares no code with the writer,
// and compared with what was read from the source.

import { readDgn } from './dgn/reader.mjs';
import { TextCodec } from './dgn/text.mjs';
import { readDwg } from './dwg/document.mjs';
import { differences, measure } from './measure.mjs';
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
  const back = readDgn(bytes);
  const nameOf = ({ level, layerNote }) => back.notes.sharing[layerNote] ?? back.notes.layers[level];
  const colorOf = (element, isFill) => (isFill ? element.fillColor : undefined) ?? element.color;
  const expected = asWritten(measure(elements, { layerOf: (e) => e.layer.name, colorOf, resolution }), codePage);
  return verdict(expected, measure(back.elements, { layerOf: nameOf, colorOf, resolution }), resolution, 'the DGN reader');
}

/** `drawing` is what was read from the DGN, `converter` what made entities of it. */
export function certifyDwg(bytes, { drawing, converter, codePage }) {
  const back = new ToDgn(readDwg(bytes));
  back.model();
  const colorOf = (element, isFill) => converter.colors[(isFill ? element.fillColor : undefined) ?? element.color];
  const resolution = 1 / drawing.uorPerMaster;
  const expected = asWritten(measure(drawing.elements, { layerOf: (e) => converter.layerOf(e), colorOf, resolution,
    contentOf: (instance) => converter.contentOf(instance) }), codePage);
  const actual = measure(back.elements, { layerOf: (e) => e.layer.name, resolution,
    colorOf: (element, isFill) => DWG_COLOR_NUMBERS[(isFill ? element.fillColor : undefined) ?? element.color] });
  return verdict(expected, actual, resolution, 'the DWG reader');
}
