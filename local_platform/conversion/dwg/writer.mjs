// SPDX-License-Identifier: MIT
// Writes DWG of R2000: an empty drawing, with its settings and tables written anew and entities added.

import { fittingCodePage, TextCodec } from '../dgn/text.mjs';
import { crc16 } from './checksums.mjs';
import { readDwg } from './document.mjs';
import { handlesOf, writeEntity } from './entity_writer.mjs';
import { copyHeader } from './header.mjs';
import { readObjectMap, ObjectReader } from './objects.mjs';
import { BitWriter } from './bit_writer.mjs';
import { Bytes, ObjectWriter, writeBlockEnds, writeBlockHeader, writeControl, writeLayer, writeLineType } from './object_writer.mjs';
import { sectionBody } from './sections.mjs';
import { emptyDrawing } from './template.mjs';

const RECORDS = { header: 0, classes: 1, handles: 2 };
const HEAD_SIZE = 0x61;
const SENTINEL = 16;

/** Numbers of code pages, in the order in which they are tried. */
const CODE_PAGES = { 'windows-1252': 30, gbk: 39, 'windows-1250': 28, 'windows-1251': 29, shift_jis: 38, 'euc-kr': 40, big5: 41 };

const MAP_PART = 2030;

function modular(value, isSigned) {
  const bytes = [];
  let rest = Math.abs(value);
  for (const last = isSigned ? 64 : 128; rest >= last; rest = Math.floor(rest / 128)) bytes.push((rest % 128) | 0x80);
  bytes.push(rest | (isSigned && value < 0 ? 0x40 : 0));
  return bytes;
}

/** The map of objects: steps from handle to handle and from place to place, in parts with a checksum each. */
function writeObjectMap(file, offsets) {
  const handles = [...offsets.keys()].sort((a, b) => a - b);
  let part = [];
  let [lastHandle, lastOffset] = [0, 0];
  const flush = () => {
    const from = file.length;
    file.u16be(part.length + 2);
    file.add(part);
    file.u16be(file.crc(from));
    part = [];
    [lastHandle, lastOffset] = [0, 0];
  };
  for (const handle of handles) {
    const offset = offsets.get(handle);
    const pair = [...modular(handle - lastHandle, false), ...modular(offset - lastOffset, true)];
    if (part.length + pair.length > MAP_PART) {
      flush();
      pair.splice(0, pair.length, ...modular(handle, false), ...modular(offset, true));
    }
    part.push(...pair);
    [lastHandle, lastOffset] = [handle, offset];
  }
  if (part.length > 0) flush();
  flush();
}

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

class DrawingWriter {
  constructor(drawing) {
    this.drawing = drawing;
    this.empty = emptyDrawing();
    this.template = readDwg(this.empty);
    this.codePage = fittingCodePage(textsOf(drawing), Object.keys(CODE_PAGES));
    const codec = new TextCodec(this.codePage);
    this.file = new Bytes();
    this.writer = new ObjectWriter(this.file, (text) => codec.encode(text));
    this.places = this.#objectMap();
    this.next = Math.max(...this.places.keys()) + 1;
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

  #objectMap() { return readObjectMap(this.#section(RECORDS.handles)); }

  #take(count = 1) {
    this.next += count;
    return this.next - count;
  }

  #tables() {
    const { writer: w, template, drawing } = this;
    const [zero] = template.layers.values();
    const control = zero.owner;
    const types = new Map([...template.lineTypes.values()].map((type) => [type.name.toUpperCase(), type.handle]));
    const typeControl = [...template.lineTypes.values()][0].owner;
    const added = [];
    for (const { name, dashes } of drawing.lineTypes) {
      if (types.has(name.toUpperCase())) continue;
      const handle = this.#take();
      writeLineType(w, { handle, control: typeControl, name, dashes });
      types.set(name.toUpperCase(), handle);
      added.push(handle);
    }
    this.lineTypes = drawing.lineTypes.map(({ name }) => types.get(name.toUpperCase()));
    const [byLayer, byBlock] = ['BYLAYER', 'BYBLOCK'].map((name) => types.get(name));
    writeControl(w, 'lineTypes', typeControl, [types.get('CONTINUOUS'), ...added], [byBlock, byLayer]);
    this.layers = new Map();
    const listed = [zero.handle];
    for (const { name, isOn } of drawing.layers) {
      const isZero = name === zero.name;
      const handle = isZero ? zero.handle : this.#take();
      if (!isZero) listed.push(handle);
      writeLayer(w, { handle, control, name, isOn, plotStyle: zero.plotStyle, lineType: types.get('CONTINUOUS') });
      this.layers.set(name, handle);
    }
    writeControl(w, 'layers', control, listed);
    this.layerZero = zero.handle;
    [this.textStyle] = [...template.textStyles.values()].map((style) => style.handle);
  }

  #symbology({ layer, color, weight, lineType }) {
    return { layer: this.layers.get(layer) ?? this.layerZero, color, weight, lineType: this.lineTypes[lineType] };
  }

  /** The entities of a block, or of the model without an owner: { first, last } of their chain. */
  #entities(entities, owner) {
    const handles = entities.map((entity) => this.#take(handlesOf(entity)));
    entities.forEach((entity, i) => {
      const place = { handle: handles[i], owner, previous: handles[i - 1] ?? 0, next: handles[i + 1] ?? 0 };
      const used = entity.kind === 'INSERT' ? this.blocks.get(entity.block).handle : this.textStyle;
      writeEntity(this.writer, place, this.#symbology(entity), entity, used);
    });
    return { first: handles[0] ?? 0, last: handles.at(-1) ?? 0 };
  }

  #blocks() {
    const { writer: w, template, drawing } = this;
    const control = template.model.owner;
    this.blocks = new Map();
    for (const block of drawing.blocks) {
      const handle = this.#take(3);
      this.blocks.set(block.name, { handle, head: handle + 1, tail: handle + 2 });
    }
    for (const { name, isAnonymous, entities } of drawing.blocks) {
      const own = this.blocks.get(name);
      const chain = this.#entities(entities, own.handle);
      writeBlockHeader(w, { ...own, ...chain, control, name, isAnonymous, base: [0, 0, 0], layout: 0 });
      writeBlockEnds(w, { ...own, name, layer: this.layerZero });
    }
    const chain = this.#entities(drawing.entities, 0);
    const { model } = template;
    writeBlockHeader(w, { ...model, ...chain, control, isAnonymous: false });
    const paper = [...template.blocks.values()].find((block) => block.isPaper);
    writeControl(w, 'blocks', control, [...this.blocks.values()].map((block) => block.handle), [model.handle, paper.handle]);
  }

  /** Objects of the empty drawing that were not written anew. */
  #rest() {
    const { places, empty, file, writer } = this;
    for (const [handle, offset] of places) {
      if (writer.offsets.has(handle)) continue;
      const size = empty.readUInt16LE(offset) + 4;
      writer.offsets.set(handle, file.length);
      file.add(empty.subarray(offset, offset + size));
    }
  }

  write() {
    const { file, empty, drawing } = this;
    file.add(empty.subarray(0, HEAD_SIZE));
    const places = new Map();
    for (let i = 0; i < empty.readUInt32LE(0x15); i++) {
      const number = empty[0x19 + 9 * i];
      if (number === RECORDS.handles || number === RECORDS.header) continue;
      places.set(number, [file.length, this.#record(number).size]);
      file.add(this.#section(number));
    }
    const preview = empty.readUInt32LE(0x0d);
    const previewAt = file.length;
    file.add(empty.subarray(preview, this.#record(RECORDS.header).from));
    this.#tables();
    this.#blocks();
    this.#rest();
    const header = headerSection(this.#section(RECORDS.header), { handleSeed: this.next, low: drawing.low, high: drawing.high,
      units: drawing.units, lineTypeScale: drawing.lineTypeScale });
    places.set(RECORDS.header, [file.length, header.length]);
    file.add(header);
    const mapAt = file.length;
    writeObjectMap(file, this.writer.offsets);
    places.set(RECORDS.handles, [mapAt, file.length - mapAt]);
    return this.#head(places, previewAt);
  }

  /** Where the sections came to lie. */
  #head(places, previewAt) {
    const bytes = this.file.take();
    bytes.writeUInt32LE(previewAt, 0x0d);
    bytes.writeUInt16LE(CODE_PAGES[this.codePage], 0x13);
    const count = bytes.readUInt32LE(0x15);
    for (let i = 0; i < count; i++) {
      const at = 0x19 + 9 * i;
      const [from, size] = places.get(bytes[at]);
      bytes.writeUInt32LE(from, at + 1);
      bytes.writeUInt32LE(size, at + 5);
    }
    const end = 0x19 + 9 * count;
    bytes.writeUInt16LE(crc16(bytes, 0, end), end);
    return bytes;
  }
}

function* textsOf({ entities, blocks, layers }) {
  for (const list of [entities, ...blocks.map((block) => block.entities)]) {
    for (const entity of list) if (entity.value) yield entity.value;
  }
  for (const { name } of [...layers, ...blocks]) yield name;
}

/** `drawing` is { units, lineTypeScale, low, high, lineTypes: [{ name, dashes }], layers: [{ name, isOn }],
    blocks: [{ name, isAnonymous, entities }], entities }. Entities name their layer and their block, and their line type by its
    place in the list. Returns { bytes, codePage }. */
export function writeDwg(drawing) {
  const writer = new DrawingWriter(drawing);
  return { bytes: writer.write(), codePage: writer.codePage };
}
