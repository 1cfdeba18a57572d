// SPDX-License-Identifier: MIT
// Writes DWG of R2000: an empty drawing, with its settings and tables written anew and entities added.

import { fittingCodePage, TextCodec } from '../dgn/text.mjs';
import { crc16 } from './checksums.mjs';
import { readDwg } from './document.mjs';
import { handlesOf, writeEntity } from './entity_writer.mjs';
import { copyHeader } from './header.mjs';
import { readObjectMap, writeObjectMap } from './object_map.mjs';
import { ObjectReader } from './objects.mjs';
import { BitWriter } from './bit_writer.mjs';
import { Bytes, ObjectWriter, writeBlockEnds, writeBlockHeader, writeControl, writeLayer, writeLineType } from './object_writer.mjs';
import { sectionBody } from './sections.mjs';
import { emptyDrawing } from './template.mjs';

const RECORDS = { header: 0, classes: 1, handles: 2 };
const HEAD_SIZE = 0x61;
const SENTINEL = 16;

/** Numbers of code pages, in the order in which they are tried. */
const CODE_PAGES = { 'windows-1252': 30, gbk: 39, 'windows-1250': 28, 'windows-1251': 29, shift_jis: 38, 'euc-kr': 40, big5: 41 };

/** The settings, between the marks that stand around them. */
function headerSection(section, changes) {
  const reader = new ObjectReader(sectionBody(section, 'header'), 2000, (bytes) => Buffer.from(bytes).toString('latin1'));
  reader.handles = reader;
  const writer = new BitWriter((value) => Buffer.from(value, 'latin1'));
  copyHeader(reader, writer, changes);
  const body = Buffer.from(writer.bytes.subarray(0, (writer.at + 7) >> 3));
  const result = Buffer.alloc(SENTINEL + 4 + body.length + 2 + SENTINEL);
  section.copy(result, 0, 0, SENTINEL);
  result.writeUInt32LE(body.length, SENTINEL);
  body.copy(result, SENTINEL + 4);
  const end = SENTINEL + 4 + body.length;
  result.writeUInt16LE(crc16(result, SENTINEL, end), end);
  section.copy(result, end + 2, section.length - SENTINEL);
  return result;
}

/** Writes a drawing as it comes: blocks and entities are pushed, the tables follow at the end. Entities name their block, and by
    their symbology, { layer, color, weight, lineType }, their layer, and their line type by its place in the list of { name, dashes }. */
export class DwgWriter {
  count = 0;
  #layers = new Map();
  #blocks = new Map();
  #waiting = null;
  #first = 0;
  #last = 0;

  /** `texts` are those that are not plain ASCII; the code page is one that has their characters. `room` is how many bytes
      the file is likely to take. */
  constructor(lineTypes, texts, room) {
    this.empty = emptyDrawing();
    this.template = readDwg(this.empty);
    this.codePage = fittingCodePage(texts, Object.keys(CODE_PAGES));
    const codec = new TextCodec(this.codePage);
    this.file = new Bytes(room);
    this.writer = new ObjectWriter(this.file, (text) => codec.encode(text));
    this.places = readObjectMap(this.#section(RECORDS.handles));
    this.next = this.places.handleAt(this.places.count - 1) + 1;
    [this.zero] = this.template.layers.values();
    [this.textStyle] = [...this.template.textStyles.values()].map((style) => style.handle);
    this.#head();
    this.#writeLineTypes(lineTypes);
  }

  #record(number) {
    for (let i = 0; i < this.empty.readUInt32LE(0x15); i++) {
      const at = 0x19 + 9 * i;
      if (this.empty[at] === number) return { at, from: this.empty.readUInt32LE(at + 1), size: this.empty.readUInt32LE(at + 5) };
    }
    return null;
  }

  #section(number) {
    const { from, size } = this.#record(number);
    return this.empty.subarray(from, from + size);
  }

  #take(count = 1) {
    this.next += count;
    return this.next - count;
  }

  #writeLineTypes(lineTypes) {
    const standing = [...this.template.lineTypes.values()];
    const known = new Map(standing.map((type) => [type.name.toUpperCase(), type.handle]));
    const control = standing[0].owner;
    const added = [];
    for (const { name, dashes } of lineTypes) {
      if (known.has(name.toUpperCase())) continue;
      const handle = this.#take();
      writeLineType(this.writer, { handle, control, name, dashes });
      known.set(name.toUpperCase(), handle);
      added.push(handle);
    }
    this.lineTypes = lineTypes.map(({ name }) => known.get(name.toUpperCase()));
    this.continuous = known.get('CONTINUOUS');
    writeControl(this.writer, 'lineTypes', control, [this.continuous, ...added], [known.get('BYBLOCK'), known.get('BYLAYER')]);
  }

  #layer(name) {
    if (name === this.zero.name) return this.zero.handle;
    if (!this.#layers.has(name)) this.#layers.set(name, this.#take());
    return this.#layers.get(name);
  }

  #writeLayers(isOn) {
    const control = this.zero.owner;
    const listed = [[this.zero.name, this.zero.handle], ...this.#layers];
    for (const [name, handle] of listed) {
      writeLayer(this.writer, { handle, control, name, isOn: isOn(name), plotStyle: this.zero.plotStyle, lineType: this.continuous });
    }
    writeControl(this.writer, 'layers', control, listed.map(([, handle]) => handle));
  }

  #symbology({ symbology: { layer, color, weight, lineType } }) {
    return { layer: this.#layer(layer), color, weight, lineType: this.lineTypes[lineType] };
  }

  #entity(entity, place) {
    const used = entity.kind === 'INSERT' ? this.#blocks.get(entity.block).handle : this.textStyle;
    writeEntity(this.writer, place, this.#symbology(entity), entity, used);
    (entity.attributes ?? []).forEach((attribute, i, { length }) => {
      const handle = place.handle + 1 + i;
      const chain = { handle, owner: place.handle, previous: i > 0 ? handle - 1 : 0, next: i + 1 < length ? handle + 1 : 0 };
      writeEntity(this.writer, chain, this.#symbology(attribute), attribute, this.textStyle);
    });
  }

  /** An entity says which comes next, so each waits for the one after it. */
  push(entity) {
    this.count++;
    const handle = this.#take(handlesOf(entity));
    this.#flush(handle);
    this.#first ||= handle;
    this.#waiting = { entity, handle };
  }

  #flush(next) {
    if (!this.#waiting) return;
    const { entity, handle } = this.#waiting;
    this.#entity(entity, { handle, owner: 0, previous: this.#last, next });
    this.#last = handle;
    this.#waiting = null;
  }

  addBlock({ name, isAnonymous, entities }) {
    const handle = this.#take(3);
    const own = { handle, head: handle + 1, tail: handle + 2 };
    this.#blocks.set(name, own);
    const handles = entities.map((entity) => this.#take(handlesOf(entity)));
    entities.forEach((entity, i) =>
      this.#entity(entity, { handle: handles[i], owner: handle, previous: handles[i - 1] ?? 0, next: handles[i + 1] ?? 0 }));
    writeBlockHeader(this.writer, { ...own, first: handles[0] ?? 0, last: handles.at(-1) ?? 0, control: this.template.model.owner, name,
      isAnonymous, base: [0, 0, 0], layout: 0 });
    writeBlockEnds(this.writer, { ...own, name, layer: this.zero.handle });
  }

  #writeModel() {
    const { model, blocks } = this.template;
    this.#flush(0);
    writeBlockHeader(this.writer, { ...model, control: model.owner, isAnonymous: false, first: this.#first, last: this.#last });
    const paper = [...blocks.values()].find((block) => block.isPaper);
    writeControl(this.writer, 'blocks', model.owner, [...this.#blocks.values()].map((block) => block.handle), [model.handle, paper.handle]);
  }

  /** Objects of the empty drawing that were not written anew. */
  #rest() {
    const { places, empty, file, writer } = this;
    for (let i = 0; i < places.count; i++) {
      const [handle, offset] = [places.handleAt(i), places.offsetAt(i)];
      if (writer.offsets[handle] > 0) continue;
      const size = empty.readUInt16LE(offset) + 4;
      writer.place(handle);
      file.add(empty.subarray(offset, offset + size));
    }
  }

  /** What stands before the objects: the head of the file, and sections that stay as they are. */
  #head() {
    const { file, empty } = this;
    file.add(empty.subarray(0, HEAD_SIZE));
    this.sections = new Map();
    for (let i = 0; i < empty.readUInt32LE(0x15); i++) {
      const number = empty[0x19 + 9 * i];
      if (number === RECORDS.handles || number === RECORDS.header) continue;
      this.sections.set(number, [file.length, this.#record(number).size]);
      file.add(this.#section(number));
    }
    this.previewAt = file.length;
    file.add(empty.subarray(empty.readUInt32LE(0x0d), this.#record(RECORDS.header).from));
  }

  /** The file's bytes. `isOn` says which layers are shown. */
  finish({ units, lineTypeScale, low, high, isOn }) {
    this.#writeModel();
    this.#writeLayers(isOn);
    this.#rest();
    const header = headerSection(this.#section(RECORDS.header), { handleSeed: this.next, low, high, units, lineTypeScale });
    this.sections.set(RECORDS.header, [this.file.length, header.length]);
    this.file.add(header);
    const mapAt = this.file.length;
    writeObjectMap(this.file, this.writer.offsets);
    this.sections.set(RECORDS.handles, [mapAt, this.file.length - mapAt]);
    return this.#placeSections();
  }

  /** Where the sections came to lie. */
  #placeSections() {
    const bytes = this.file.take();
    bytes.writeUInt32LE(this.previewAt, 0x0d);
    bytes.writeUInt16LE(CODE_PAGES[this.codePage], 0x13);
    const count = bytes.readUInt32LE(0x15);
    for (let i = 0; i < count; i++) {
      const at = 0x19 + 9 * i;
      const [from, size] = this.sections.get(bytes[at]);
      bytes.writeUInt32LE(from, at + 1);
      bytes.writeUInt32LE(size, at + 5);
    }
    const end = 0x19 + 9 * count;
    bytes.writeUInt16LE(crc16(bytes, 0, end), end);
    return bytes;
  }
}
