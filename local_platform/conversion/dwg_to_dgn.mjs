// SPDX-License-Identifier: MIT

import { certifyDgn } from './certificate.mjs';
import { writeDgn } from './dgn/writer.mjs';
import { readDwg } from './dwg/document.mjs';
import { Refusal } from './outcome.mjs';
import { DWG_COLOR_TABLE, unitName } from './symbology.mjs';
import { Converter } from './to_dgn/converter.mjs';
import { assignLevels } from './to_dgn/levels.mjs';

/** Gives every element the level of its layer, and those that share one a note of which layer it was. */
function putOnLevels(elements, { levels, sharing }, notes) {
  const indices = new Map();
  const noteOf = (layer) => {
    if (!sharing.has(layer.name)) return undefined;
    if (!indices.has(layer.name)) indices.set(layer.name, notes.sharing.push(layer.name) - 1);
    return indices.get(layer.name);
  };
  for (const element of elements) {
    element.level = levels.get(element.layer.name);
    if (sharing.size > 0) element.layerNote = noteOf(element.layer);
    if (element.kind === 'cell') putOnLevels(element.members, { levels, sharing }, notes);
  }
}

/** Throws Refusal. { bytes, leftOut, ... } as report.mjs describes it. */
export function dwgToDgn(bytes, { codePage } = {}) {
  const document = readDwg(bytes);
  const converter = new Converter(document);
  converter.model();
  converter.paper();
  const { elements, leftOut, drawn, source, references } = converter;
  for (const { what } of document.damaged) leftOut.add(`damaged ${what}`);
  if (elements.length === 0) throw new Refusal('the DWG file holds nothing in model space that can be converted', 'empty');
  const used = [...converter.layers.values()];
  const assigned = assignLevels(used);
  const notes = { sharing: [], blocks: converter.blockNames,
    layers: Object.fromEntries(used.filter((l) => l.use > 0 && !assigned.sharing.has(l.name)).map((l) => [assigned.levels.get(l.name), l.name])) };
  putOnLevels(elements, assigned, notes);
  const written = writeDgn({ elements, colors: DWG_COLOR_TABLE, unitName: unitName(document.settings.units),
    hiddenLevels: assigned.hiddenLevels, codePage, notes, drawn });
  leftOut.add('elements far from the rest of the drawing', written.outliers.length);
  const resolution = 1 / written.plane.uorPerMaster;
  return {
    bytes: written.bytes, leftOut, drawn, source, references, elements: written.elements,
    check: certifyDgn(written.bytes, { elements: written.elements, codePage: written.codePage, resolution }),
    layers: Object.fromEntries(assigned.levels), sharedLevels: assigned.sharing.size,
    from: document.release, damaged: document.damaged, codePage: written.codePage, sourceCodePage: document.codePage,
    resolution,
  };
}
