// SPDX-License-Identifier: MIT

import { certifyDwg } from './certificate.mjs';
import { extentOf } from './dgn/extent.mjs';
import { readDgn } from './dgn/reader.mjs';
import { writeDwg } from './dwg/writer.mjs';
import { Refusal } from './outcome.mjs';
import { LINE_STYLES, unitsOfName } from './symbology.mjs';
import { Converter } from './to_dwg/converter.mjs';

/** Line types are sized for a sheet of about this many millimetres. */
const SHEET = 400;

/** Throws Refusal. { bytes, leftOut, ... } as report.mjs describes it. */
export function dgnToDwg(bytes, { codePage } = {}) {
  const drawing = readDgn(bytes, codePage);
  const converter = new Converter(drawing);
  const { entities, blocks, layers, source, leftOut, drawn } = converter;
  if (entities.length === 0) throw new Refusal('the DGN file holds nothing that can be converted', 'empty');
  const { low, high } = extentOf(drawing.elements);
  const written = writeDwg({
    units: unitsOfName(drawing.unitName), low, high, lineTypes: LINE_STYLES,
    lineTypeScale: Math.max(high[0] - low[0], high[1] - low[1], 1e-6) / SHEET,
    layers: [...layers.values()], blocks, entities,
  });
  return { bytes: written.bytes, leftOut, drawn, source, references: [],
    check: certifyDwg(written.bytes, { drawing, converter, codePage: written.codePage }),
    layers: Object.fromEntries([...layers.keys()].map((name) => [name, name])), from: 'DGN V7', damaged: [],
    codePage: written.codePage, sourceCodePage: drawing.codePage, sharedLevels: 0, resolution: 0 };
}
