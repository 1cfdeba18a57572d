// SPDX-License-Identifier: MIT
// DWG drawings made by another program's writer, and what becomes of them.

import * as acad from '@node-projects/acad-ts';
import { readDgn } from '../dgn/reader.mjs';
import { dwgToDgn } from '../dwg_to_dgn.mjs';

export { acad };
export const at = (entity, properties) => Object.assign(entity, properties);
export const segment = (x1, y1, x2, y2) =>
  at(new acad.Line(), { startPoint: new acad.XYZ(x1, y1, 0), endPoint: new acad.XYZ(x2, y2, 0) });

/** `fill` gets the document and a function that adds an entity to its model space. */
export function dwgOf(fill, version = 'AC1018') {
  const document = new acad.CadDocument(acad.ACadVersion[version]);
  fill(document, (entity) => {
    document.modelSpace.entities.add(entity);
    return entity;
  });
  return Buffer.from(acad.DwgWriter.writeToBuffer(document));
}

export function convert(fill, version) {
  const result = dwgToDgn(dwgOf(fill, version));
  return { ...readDgn(result.bytes), result, leftOut: `${result.leftOut}`, drawn: `${result.drawn}` };
}

export function block(document, name, ...entities) {
  const record = new acad.BlockRecord(name);
  entities.forEach((entity) => record.entities.add(entity));
  document.blockRecords.add(record);
  return record;
}
