// SPDX-License-Identifier: MIT

import { certifyDwg, measureForDwg } from './certificate.mjs';
import { readDgn } from './dgn/reader.mjs';
import { DwgWriter } from './dwg/writer.mjs';
import { Refusal } from './outcome.mjs';
import { LINE_STYLES, unitsOfName } from './symbology.mjs';
import { Converter } from './to_dwg/converter.mjs';

/** Line types are sized for a sheet of about this many millimetres. */
const SHEET = 400;

/** Takes elements as they are read and has them measured, converted and written, so that none is kept. */
class Conversion {
  constructor(size) {
    this.size = size;
  }

  begin(drawing) {
    const { notes, foreignTexts } = drawing;
    const names = [...Object.values(notes?.layers ?? {}), ...(notes?.sharing ?? []), ...(notes?.blocks ?? []), ...(notes?.attributes ?? [])];
    this.writer = new DwgWriter(LINE_STYLES, [...foreignTexts(), ...names], 1.25 * this.size);
    this.converter = new Converter(drawing, this.writer);
    this.measure = measureForDwg(drawing, this.converter);
  }

  push(element) {
    this.measure.push(element);
    this.converter.push(element);
  }
}

/** Throws Refusal. { bytes, leftOut, ... } as report.mjs describes it. */
export function dgnToDwg(bytes, { codePage } = {}) {
  const conversion = new Conversion(bytes.length);
  const drawing = readDgn(bytes, codePage, conversion);
  const { writer, converter, measure } = conversion;
  if (writer.count === 0) throw new Refusal('the DGN file holds nothing that can be converted', 'empty');
  const [low, high] = [measure.low, measure.high].map((p) => p.map((v) => (Number.isFinite(v) ? v : 0)));
  const result = writer.finish({ units: unitsOfName(drawing.unitName), low, high,
    lineTypeScale: Math.max(high[0] - low[0], high[1] - low[1], 1e-6) / SHEET,
    isOn: (name) => converter.layers.get(name)?.isOn ?? true });
  const { source, leftOut, drawn, layers } = converter;
  return { bytes: result, leftOut, drawn, source, references: drawing.references,
    check: certifyDwg(result, { expected: measure, codePage: writer.codePage }),
    layers: Object.fromEntries([...layers.keys()].map((name) => [name, name])), from: 'DGN V7', damaged: [],
    codePage: writer.codePage, sourceCodePage: drawing.codePage, sharedLevels: 0, resolution: 0 };
}
