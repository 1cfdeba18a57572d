// SPDX-License-Identifier: MIT
// A DWG drawing as it lies in its file. Tables are read at once, entities one at a time as they are
// asked for. An object whose checksum or content is wrong is left out and listed in `damaged`; damage to
// what the whole drawing hangs on is thrown.

import { Refusal } from '../outcome.mjs';
import { openDwg } from './container.mjs';
import { Damage } from './damage.mjs';
import { ENTITY_TYPES, readEntity } from './entities.mjs';
import { readHeader } from './header.mjs';
import { ObjectReader, readClasses, readObjectMap } from './objects.mjs';
import { isSectionWhole, sectionBody } from './sections.mjs';
import { TABLES, tableOf } from './tables.mjs';

const FIRST_CLASS = 500;
const CLASS_NAMES = new Map([['ACDBMLEADER', 'MULTILEADER'], ['MLEADER', 'MULTILEADER'], ['ACAD_TABLE', 'TABLE']]);
const IN_MODEL = 2;

/** A decoder of texts in a code page. */
function decoderOf(codePage) {
  const decoder = new TextDecoder(codePage ?? 'windows-1252');
  return (bytes) => decoder.decode(bytes);
}

class DwgDocument {
  #offsets;
  reader;
  #classes;
  #entityHandles = [];
  #refused = new Set();
  damaged = [];

  constructor(bytes, codePage) {
    const { mark, year, maintenance, codePage: ownPage, sections } = openDwg(bytes);
    this.release = mark;
    this.year = year;
    this.codePage = year >= 2007 ? 'utf-16' : codePage ?? ownPage ?? 'windows-1252';
    const decode = decoderOf(year >= 2007 ? null : this.codePage);
    for (const name of TABLES) this[name] = new Map();
    // The length of these sections grew from four bytes to eight within R2010.
    const lengths = year >= 2018 || (year >= 2010 && maintenance > 3) ? [8, 4] : [4, 8];
    const body = (name) => this.#section(sections[name], name, year < 2010 ? [4] : lengths, decode);
    this.settings = readHeader(body('header'));
    const classes = body('classes');
    this.#classes = readClasses(classes, year, classes.strings ? classes.strings.at : classes.end);
    this.#offsets = readObjectMap(sections.handles);
    this.reader = new ObjectReader(sections.objects, year, decode);
    this.#readTables();
  }

  /** A section's body as a reader; only since R2007 its texts and handles stand apart, as in an object. */
  #section(section, name, lengths, decode) {
    if (!section) throw new Damage(`the file has no section of ${name}`);
    const bytes = sectionBody(section, name, lengths.find((length) => isSectionWhole(section, length)) ?? lengths[0]);
    const reader = new ObjectReader(bytes, this.year, decode);
    if (this.year >= 2007) reader.parts(reader.u32());
    else reader.handles = reader;
    return reader;
  }

  #readTables() {
    for (const [handle, offset] of this.#offsets) {
      const found = this.#attempt(handle, () => {
        const type = this.reader.open(offset);
        const table = tableOf(type, this.#classes.get(type)?.name);
        if (table) this[table[0]].set(handle, Object.assign(this.reader.object(), table[1](this.reader)));
        return type;
      });
      if (found !== null && this.#kindOf(found)) this.#entityHandles.push(handle);
    }
    for (const block of this.blocks.values()) if (block.isModel) this.model = block;
    if (!this.model) throw new Damage('the file has no model space');
  }

  #attempt(handle, read) {
    try {
      return read();
    } catch (error) {
      if (!(error instanceof Damage)) throw error;
      if (!this.#refused.has(handle)) this.damaged.push({ handle, what: this.kindNow ?? 'object', reason: error.message });
      this.#refused.add(handle);
      return null;
    } finally {
      this.kindNow = null;
    }
  }

  #kindOf(type) {
    if (type < FIRST_CLASS) return ENTITY_TYPES.get(type) ?? null;
    const known = this.#classes.get(type);
    return known?.isEntity ? CLASS_NAMES.get(known.name) ?? known.name : null;
  }

  /** The entity with this handle; null if there is none or it is damaged. */
  entity(handle) {
    const offset = this.#offsets.get(handle);
    if (offset === undefined || this.#refused.has(handle)) return null;
    return this.#attempt(handle, () => {
      const kind = this.#kindOf(this.reader.open(offset, true));
      this.kindNow = kind;
      return kind && readEntity(this.reader, kind);
    });
  }

  /** The parts of a block, or of an entity such as a polyline, in their order. */
  * parts(whole) {
    if (whole.parts) {
      for (const handle of whole.parts) {
        const part = this.entity(handle);
        if (part) yield part;
      }
      return;
    }
    const { first, last } = whole.chain ?? {};
    if (!first) return;
    const seen = new Set();
    for (let handle = first; ;) {
      const part = seen.has(handle) ? null : this.entity(handle);
      seen.add(handle);
      if (!part) break;
      yield part;
      if (handle === last) return;
      // The parts of a part stand between it and the next in files that number them in one go.
      handle = part.next;
    }
    yield* this.#strays(whole, seen);
  }

  /** Where a chain is broken, what still says that it belongs to the whole. */
  * #strays(whole, seen) {
    for (const handle of this.#entityHandles) {
      if (seen.has(handle)) continue;
      const entity = this.entity(handle);
      const isOurs = entity && (whole.isModel ? entity.space === IN_MODEL : entity.owner === whole.handle);
      if (isOurs && entity.kind !== 'BLOCK' && entity.kind !== 'ENDBLK') yield entity;
    }
  }
}

/** Reads texts in `codePage` if it is given, otherwise in the file's own. Throws Refusal. */
export function readDwg(bytes, codePage) {
  try {
    return new DwgDocument(bytes, codePage);
  } catch (error) {
    if (error instanceof Damage) throw new Refusal(`the DWG file is damaged: ${error.message}`, 'damaged');
    throw error;
  }
}

