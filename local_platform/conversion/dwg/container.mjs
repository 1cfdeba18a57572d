// SPDX-License-Identifier: MIT
// The outermost layer of a DWG file: which version it is, and the bytes of each of its sections, their
// checksums proved. Up to R2000 sections lie in the file as they are (sections.mjs), later they are cut
// into compressed pages (pages.mjs), of a kind of its own in R2007 (pages_2007.mjs).

import { Refusal } from '../outcome.mjs';
import { Damage } from './damage.mjs';
import { hasPages, readPages } from './pages.mjs';
import { readPages2007 } from './pages_2007.mjs';
import { readSections } from './sections.mjs';

/** The first six bytes of a file, and the release that wrote them. */
const RELEASES = {
  AC1012: 13, AC1014: 14, AC1015: 2000, AC1018: 2004, AC1021: 2007, AC1024: 2010, AC1027: 2013, AC1032: 2018,
};
const TOO_OLD = /^(MC0\.0|AC1\.|AC2\.|AC10(0\d|1[01]))/;
const LATEST = 'AC1032';

/** The code pages of texts by the number in the file's head; those left out are not known to Node. */
const CODE_PAGES = [, 'windows-1252', 'iso-8859-1', 'iso-8859-2', 'iso-8859-3', 'iso-8859-4', 'iso-8859-5',
  'iso-8859-6', 'iso-8859-7', 'iso-8859-8', 'windows-1254', , , , , , , , , , , , 'shift_jis', 'macintosh', 'big5',
  'euc-kr', , 'ibm866', 'windows-1250', 'windows-1251', 'windows-1252', 'gbk', 'windows-1253', 'windows-1254',
  'windows-1255', 'windows-1256', 'windows-1257', 'windows-874', 'shift_jis', 'gbk', 'euc-kr', 'big5', , ,
  'windows-1258'];

function release(bytes) {
  if (bytes.length === 0) throw new Refusal('the file is empty', 'empty');
  const mark = bytes.toString('latin1', 0, 6);
  if (TOO_OLD.test(mark)) {
    throw new Refusal(`this DWG file (${mark}) is too old: R13 is the first release that can be read`, 'tooOld');
  }
  if (mark in RELEASES) return { mark, year: RELEASES[mark] };
  if (!/^AC1\d{3}/.test(mark)) throw new Refusal('this is not a DWG file', 'notADrawing');
  if (mark > LATEST) throw new Refusal(`this DWG file (${mark}) is too new: R2018 is the last release that can be read`, 'tooNew');
  throw new Refusal(`this DWG file is of no known release (${mark})`, 'notADrawing');
}

/** { mark, year, codePage, sections: { header, classes, handles, objects } }. Throws Refusal, Damage. */
export function openDwg(bytes) {
  const { mark, year } = release(bytes);
  if (bytes.length < 0x100) throw new Damage('the file is cut short');
  const codePage = CODE_PAGES[bytes.readUInt16LE(0x13)] ?? null;
  // Some programs write R2007 with the pages of the releases around it.
  const read = year <= 2000 ? readSections : year === 2007 && !hasPages(bytes) ? readPages2007 : readPages;
  const sections = read(bytes);
  for (const name of ['handles', 'objects']) {
    if (!sections[name]) throw new Damage(`the file has no section of ${name}`);
  }
  return { mark, year, maintenance: bytes[0x0b], codePage, sections };
}
