// SPDX-License-Identifier: MIT
// A DWG drawing as it lies in its file. Tables are read at once, entities one at a time as they are
// asked for. An object whose checksum or content is wrong is left out and listed in `damaged`; damage to
// what the whole drawing hangs on is thrown.

import { Refusal } from '../outcome.mjs';
import { openDwg } from './container.mjs';
import { Damage } from './damage.mjs';
import { ENTITY_TYPES, readEntity } from './entities.mjs';
import { readHeader } from './header.mjs';
import { readObjectMap } from './object_map.mjs';
import { ObjectReader, readClasses } from './objects.mjs';
import { isSectionWhole, sectionBody } from './sections.mjs';
import { TABLES, tableOf } from './tables.mjs';

const FIRST_CLASS = 500;
const CLASS_NAMES = new Map([['ACDBMLEADER', 'MULTILEADER'], ['MLEADER', 'MULTILEADER'], ['ACAD_TABLE', 'TABLE']]);
const IN_MODEL = 2;
/** Stands for the owner of what lies in the model. */
const MODEL = -1;

/** A decoder of texts in a code page. */
function decoderOf(codePage) {
  const decoder = new TextDecoder(codePage ?? 'windows-1252');
  return (bytes) => decoder.decode(bytes);
}

/** Which objects have been seen, of those that a file has. */
class Marks {
  #map;
  #bits;

  constructor(map) {
    this.#map = map;
    this.#bits = new Uint8Array(map.count);
  }

  has(handle) { return this.#bits[this.#map.indexOf(handle)] === 1; }

  add(handle) {
    const index = this.#map.indexOf(handle);
    if (index >= 0) this.#bits[index] = 1;
  }
}

class DwgDocument {
  #map;
  reader;
  #classes;
  /** The type of each object; 0 where it is damaged. */
  #types;
  #owned = null;
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
    this.#map = readObjectMap(sections.handles);
    this.#types = new Uint16Array(this.#map.count);
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
    for (let i = 0; i < this.#map.count; i++) {
      try {
        const type = this.reader.open(this.#map.offsetAt(i)) & 0xffff;
        this.#types[i] = type;
        const table = tableOf(type, this.#classes.get(type)?.name);
        if (table) this[table[0]].set(this.#map.handleAt(i), Object.assign(this.reader.object(), table[1](this.reader)));
      } catch (error) {
        this.#refuse(i, 'object', error);
      }
    }
    for (const block of this.blocks.values()) if (block.isModel) this.model = block;
    if (!this.model) throw new Damage('the file has no model space');
  }

  #refuse(index, what, error) {
    if (!(error instanceof Damage)) throw error;
    this.damaged.push({ handle: this.#map.handleAt(index), what, reason: error.message });
    this.#types[index] = 0;
  }

  #kindOf(type) {
    if (type < FIRST_CLASS) return ENTITY_TYPES.get(type) ?? null;
    const known = this.#classes.get(type);
    return known?.isEntity ? CLASS_NAMES.get(known.name) ?? known.name : null;
  }

  #entityAt(index) {
    const kind = this.#kindOf(this.#types[index]);
    if (!kind) return null;
    try {
      this.reader.open(this.#map.offsetAt(index), true);
      return readEntity(this.reader, kind);
    } catch (error) {
      this.#refuse(index, kind, error);
      return null;
    }
  }

  /** The entity with this handle; null if there is none or it is damaged. */
  entity(handle) {
    const index = this.#map.indexOf(handle);
    return index < 0 ? null : this.#entityAt(index);
  }

  /** Calls `visit` with the parts of a block, or of an entity such as a polyline, in their order. */
  eachPart(whole, visit) {
    if (whole.parts) {
      for (const handle of whole.parts) {
        const part = this.entity(handle);
        if (part) visit(part);
      }
      return;
    }
    const { first, last } = whole.chain ?? {};
    if (!first) return;
    const seen = whole.isModel ? new Marks(this.#map) : new Set();
    for (let handle = first; ;) {
      const part = seen.has(handle) ? null : this.entity(handle);
      seen.add(handle);
      if (!part) break;
      visit(part);
      if (handle === last) return;
      // The parts of a part stand between it and the next in files that number them in one go.
      handle = part.next;
    }
    this.#eachStray(whole, seen, visit);
  }

  parts(whole) {
    const all = [];
    this.eachPart(whole, (part) => all.push(part));
    return all;
  }

  /** Where a chain is broken, what still says that it belongs to the whole. */
  #eachStray(whole, seen, visit) {
    this.#owned ??= this.#byOwner();
    for (const index of this.#owned.get(whole.isModel ? MODEL : whole.handle) ?? []) {
      const entity = seen.has(this.#map.handleAt(index)) ? null : this.#entityAt(index);
      if (entity) visit(entity);
    }
  }

  /** The numbers of the entities of each owner, in the order of their handles. */
  #byOwner() {
    const owned = new Map();
    for (let i = 0; i < this.#map.count; i++) {
      const entity = this.#entityAt(i);
      if (!entity || entity.kind === 'BLOCK' || entity.kind === 'ENDBLK') continue;
      const owner = entity.space === IN_MODEL ? MODEL : entity.owner;
      if (!owned.has(owner)) owned.set(owner, []);
      owned.get(owner).push(i);
    }
    return owned;
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
