// SPDX-License-Identifier: MIT

import { certifyDgn, measureForDgn } from './certificate.mjs';
import { Spool } from './dgn/spool.mjs';
import { writeDgn } from './dgn/writer.mjs';
import { readDwg } from './dwg/document.mjs';
import { Refusal } from './outcome.mjs';
import { DWG_COLOR_TABLE, unitName } from './symbology.mjs';
import { Converter } from './to_dgn/converter.mjs';
import { assignLevels } from './to_dgn/levels.mjs';

/** Gives an element the level of its layer, and one whose layer shares it a note of which layer it was. */
function putOnLevel(element, levels, indices) {
  element.level = levels.get(element.layer.name);
  element.layerNote = indices.get(element.layer.name);
  if (element.kind === 'cell') for (const member of element.members) putOnLevel(member, levels, indices);
}

/** Throws Refusal. { bytes, leftOut, ... } as report.mjs describes it. */
export function dwgToDgn(bytes, { codePage } = {}) {
  const document = readDwg(bytes);
  const elements = new Spool();
  const converter = new Converter(document, elements);
  converter.model();
  converter.paper();
  const { leftOut, drawn, source, references } = converter;
  for (const { what } of document.damaged) leftOut.add(`damaged ${what}`);
  if (elements.length === 0) throw new Refusal('the DWG file holds nothing in model space that can be converted', 'empty');
  const used = [...converter.layers.values()];
  const { levels, sharing, hiddenLevels } = assignLevels(used);
  const notes = { sharing: [...sharing], blocks: converter.blockNames, attributes: converter.attributeNames,
    layers: Object.fromEntries(used.filter((l) => l.use > 0 && !sharing.has(l.name)).map((l) => [levels.get(l.name), l.name])) };
  const indices = new Map(notes.sharing.map((name, i) => [name, i]));
  let expected = null;
  const begin = ({ uorPerMaster }) => {
    expected = measureForDgn(1 / uorPerMaster);
    return (element) => {
      putOnLevel(element, levels, indices);
      expected.push(element);
    };
  };
  const written = writeDgn({ elements, colors: DWG_COLOR_TABLE, unitName: unitName(document.settings.units), hiddenLevels, codePage,
    notes, drawn, begin });
  leftOut.add('elements far from the rest of the drawing', written.outliers);
  return {
    bytes: written.bytes, leftOut, drawn, source, references, check: certifyDgn(written.bytes, { expected, codePage: written.codePage }),
    layers: Object.fromEntries(levels), sharedLevels: sharing.size, from: document.release, damaged: document.damaged,
    codePage: written.codePage, sourceCodePage: document.codePage, resolution: expected.resolution,
  };
}
