// SPDX-License-Identifier: MIT
// Objects of R2000: what all begin and end with, and the entries of tables.

import { BitWriter } from './bit_writer.mjs';
import { crc16 } from './checksums.mjs';

/** Kinds of handles: owned and needed, or only pointed at. */
export const OWNED = { soft: 2, hard: 3 };
export const POINTER = { soft: 4, hard: 5 };

/** The bytes of one file as they grow. */
export class Bytes {
  #buffer;
  length = 0;

  /** What is not used of the room costs no memory. */
  constructor(room = 0) {
    this.#buffer = Buffer.alloc(Math.max(room, 1 << 20));
  }

  #room(count) {
    if (this.length + count > this.#buffer.length) {
      const larger = Buffer.alloc(Math.ceil(1.5 * this.#buffer.length) + count);
      larger.set(this.#buffer.subarray(0, this.length));
      this.#buffer = larger;
    }
    this.length += count;
    return this.length - count;
  }

  // The place first: to make it may take another buffer.
  add(bytes) { const at = this.#room(bytes.length); this.#buffer.set(bytes, at); }
  u16(value) { const at = this.#room(2); this.#buffer.writeUInt16LE(value, at); }
  u16be(value) { const at = this.#room(2); this.#buffer.writeUInt16BE(value, at); }

  /** The first `size` bytes of an object, between their number, in words of 15 bits, and their checksum. */
  object(bytes, size) {
    const from = this.length;
    let rest = size;
    while (rest > 0x7fff) {
      this.u16((rest & 0x7fff) | 0x8000);
      rest >>>= 15;
    }
    this.u16(rest);
    const at = this.#room(size);
    for (let i = 0; i < size; i++) this.#buffer[at + i] = bytes[i];
    this.u16(this.crc(from));
  }

  crc(from) { return crc16(this.#buffer, from, this.length); }
  take() { return this.#buffer.subarray(0, this.length); }
}

export class ObjectWriter extends BitWriter {
  /** Where each object lies, at its handle. */
  offsets = new Uint32Array(1 << 12);

  constructor(file, encode) {
    super(encode);
    this.file = file;
  }

  /** The object comes next in the file. */
  place(handle) {
    if (handle >= this.offsets.length) {
      const larger = new Uint32Array(2 * handle);
      larger.set(this.offsets);
      this.offsets = larger;
    }
    this.offsets[handle] = this.file.length;
  }

  #begin(type, handle) {
    this.clear();
    this.own = handle;
    this.bs(type);
    this.sizeAt = this.at;
    this.u32(0);
    this.handle(0, handle);
    this.bs(0);
  }

  /** The end of the data; the handles follow. */
  endData() { this.patch32(this.sizeAt, this.at); }

  #end() {
    this.place(this.own);
    this.file.object(this.bytes, (this.at + 7) >> 3);
  }

  pointer(handle) { this.handle(POINTER.hard, handle); }

  /** An object without a picture: `data` and `handles` write what is its own. */
  object(type, handle, owner, data, handles) {
    this.#begin(type, handle);
    this.bl(0);
    data();
    this.endData();
    this.handle(POINTER.soft, owner);
    this.handle(OWNED.hard, 0);
    handles();
    this.#end();
  }

  /** An entity. `place` is { handle, owner, previous, next }; without an owner it lies in model space. */
  entity(type, { handle, owner, previous, next }, { layer, color, weight, lineType }, data, handles) {
    this.#begin(type, handle);
    this.bit(0);
    this.bb(owner ? 0 : 2);
    this.bl(0);
    const isInLine = previous === handle - 1 && next === handle + 1;
    this.bit(isInLine);
    this.bs(color);
    this.bd(1);
    this.bb(lineType ? 3 : 0);
    this.bb(0);
    this.bs(0);
    this.u8(weight);
    data();
    this.endData();
    if (owner) this.handle(POINTER.soft, owner);
    this.handle(OWNED.hard, 0);
    if (!isInLine) {
      this.handle(POINTER.soft, previous);
      this.handle(POINTER.soft, next);
    }
    this.pointer(layer);
    if (lineType) this.pointer(lineType);
    handles?.();
    this.#end();
  }
}

const TYPE = { block: 4, endBlock: 5, control: { blocks: 48, layers: 50, lineTypes: 56 }, blockHeader: 49, layer: 51, lineType: 57 };
const OFF = 2;
const PLOTTED = 16;
const BY_LAYER = { color: 256, weight: 29, lineType: 0 };

function tableEntry(w, type, { handle, control, name }, data, handles) {
  w.object(type, handle, control, () => {
    w.text(name);
    w.bit(1);
    w.bs(0);
    w.bit(0);
    data();
  }, () => {
    handles();
  });
}

/** `weight` is the number of a line weight, 31 the usual one. */
export function writeLayer(w, { plotStyle, lineType, isOn, color = 7, weight = 31, ...entry }) {
  tableEntry(w, TYPE.layer, entry, () => {
    w.bs((isOn ? 0 : OFF) | PLOTTED | (weight << 5));
    w.bs(color);
  }, () => {
    w.pointer(0);
    w.pointer(plotStyle);
    w.pointer(lineType);
  });
}

export function writeLineType(w, { dashes, ...entry }) {
  tableEntry(w, TYPE.lineType, entry, () => {
    w.text('');
    w.bd(dashes.reduce((sum, dash) => sum + Math.abs(dash), 0));
    w.u8(0x41);
    w.u8(dashes.length);
    for (const dash of dashes) {
      w.bd(dash);
      w.bs(0);
      w.rd2([0, 0]);
      w.bd(1);
      w.bd(0);
      w.bs(0);
    }
    for (let i = 0; i < 256; i++) w.u8(0);
  }, () => {
    w.pointer(0);
    for (let i = 0; i < dashes.length; i++) w.pointer(0);
  });
}

/** The record of a block, with its first and last entity. */
export function writeBlockHeader(w, { base, isAnonymous, head, tail, first, last, layout, hasAttributes = false, ...entry }) {
  tableEntry(w, TYPE.blockHeader, entry, () => {
    for (const flag of [isAnonymous, hasAttributes, false, false, false]) w.bit(flag);
    w.bd3(base);
    w.text('');
    w.u8(0);
    w.text('');
    w.bl(0);
  }, () => {
    w.pointer(0);
    w.handle(OWNED.hard, head);
    w.handle(POINTER.soft, first);
    w.handle(POINTER.soft, last);
    w.handle(OWNED.hard, tail);
    w.pointer(layout);
  });
}

/** The two entities that a block begins and ends with. */
export function writeBlockEnds(w, { handle, name, head, tail, layer }) {
  const symbology = { ...BY_LAYER, layer };
  const place = (own) => ({ handle: own, owner: handle, previous: 0, next: 0 });
  w.entity(TYPE.block, place(head), symbology, () => w.text(name));
  w.entity(TYPE.endBlock, place(tail), symbology, () => {});
}

/** The list of a table's entries. Some tables have entries that every drawing has, apart from the others. */
export function writeControl(w, table, handle, entries, standing = []) {
  w.object(TYPE.control[table], handle, 0, () => w.bl(entries.length), () => {
    for (const entry of entries) w.handle(OWNED.soft, entry);
    for (const entry of standing) w.handle(OWNED.hard, entry);
  });
}
