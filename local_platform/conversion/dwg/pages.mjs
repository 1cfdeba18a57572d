// SPDX-License-Identifier: MIT
// R2004, R2010 and later: sections are cut into pages, each compressed and with checksums of its own.
// A map of pages says where they lie, a map of sections which belong together.

import { Refusal } from '../outcome.mjs';
import { crc32, pageSum } from './checksums.mjs';
import { Damage } from './damage.mjs';

const HEAD = { at: 0x80, size: 0x6c, mark: 'AcFssFcAJMB' };
const PAGE_MAP = 0x41630e3b;
const SECTION_MAP = 0x4163003b;
const DATA_PAGE = 0x4163043b;
const DATA_MASK = 0x4164536b;
const SECTION_NAMES = { 'AcDb:Header': 'header', 'AcDb:Classes': 'classes', 'AcDb:Handles': 'handles',
  'AcDb:AcDbObjects': 'objects' };
const MAX_SECTION = 1 << 30;

/** The head is combined with the numbers of a generator, so that it does not look like one. */
function unmasked(bytes) {
  const head = Buffer.from(bytes.subarray(HEAD.at, HEAD.at + HEAD.size));
  if (head.length < HEAD.size) throw new Damage('the file is cut short');
  let seed = 1;
  for (let i = 0; i < head.length; i++) {
    seed = (Math.imul(seed, 0x343fd) + 0x269ec3) | 0;
    head[i] ^= (seed >> 16) & 0xff;
  }
  return head;
}

const isMarked = (head) => head.toString('latin1', 0, HEAD.mark.length) === HEAD.mark;
export const hasPages = (bytes) => isMarked(unmasked(bytes));

function plainHead(bytes) {
  const head = unmasked(bytes);
  const sum = head.readUInt32LE(0x68);
  head.writeUInt32LE(0, 0x68);
  if (!isMarked(head) || crc32(head) !== sum) {
    throw new Damage('the checksum of the head of the file is wrong');
  }
  return head;
}

/** Fills `target`, which says how much there must be. */
function decompress(source, target) {
  let at = 0;
  let to = 0;
  const byte = () => {
    if (at >= source.length) throw new Damage('a compressed page ends too early');
    return source[at++];
  };
  const long = (start) => {
    let value = start;
    let next = byte();
    while (next === 0) {
      value += 0xff;
      next = byte();
    }
    return value + next;
  };
  const literals = (count) => {
    if (at + count > source.length || to + count > target.length) throw new Damage('a compressed page is damaged');
    target.set(source.subarray(at, at + count), to);
    at += count;
    to += count;
  };
  const literalCount = (code) => (code === 0 ? long(0x0f) : code) + 3;

  let code = byte();
  if (code < 0x10) {
    literals(literalCount(code));
    code = byte();
  }
  while (code !== 0x11) {
    let count;
    let offset;
    let tail;
    if (code >= 0x40) {
      count = (code >> 4) - 1;
      offset = ((code >> 2) & 3) | (byte() << 2);
      tail = code & 3;
    } else {
      const isNear = code >= 0x20;
      const mask = isNear ? 0x1f : 7;
      if (code < 0x10) throw new Damage('a compressed page is damaged');
      count = (code & mask ? code & mask : long(mask)) + 2;
      offset = isNear ? 0 : ((code & 8) << 11) + 0x3fff;
      const low = byte();
      offset += (low >> 2) | (byte() << 6);
      tail = low & 3;
    }
    const from = to - offset - 1;
    if (from < 0 || to + count > target.length) throw new Damage('a compressed page is damaged');
    for (let i = 0; i < count; i++) target[to + i] = target[from + i];
    to += count;
    if (tail > 0) {
      literals(tail);
      code = byte();
    } else {
      code = byte();
      if (code < 0x10) {
        literals(literalCount(code));
        code = byte();
      }
    }
  }
  return target;
}

/** A page of one of the two maps. */
function mapPage(bytes, at, type) {
  if (at < 0 || at + 20 > bytes.length) throw new Damage('the file is cut short');
  const head = Buffer.from(bytes.subarray(at, at + 20));
  const [size, packed, sum] = [head.readUInt32LE(4), head.readUInt32LE(8), head.readUInt32LE(16)];
  if (head.readUInt32LE(0) !== type || at + 20 + packed > bytes.length || size > MAX_SECTION) {
    throw new Damage('a map of the file is damaged');
  }
  const data = bytes.subarray(at + 20, at + 20 + packed);
  head.writeUInt32LE(0, 16);
  if (pageSum(data, pageSum(head)) !== sum) throw new Damage('the checksum of a map of the file is wrong');
  return head.readUInt32LE(12) === 2 ? decompress(data, Buffer.alloc(size)) : data;
}

function pagePlaces(map) {
  const places = new Map();
  let place = 0x100;
  for (let at = 0; at + 8 <= map.length; at += 8) {
    const [number, size] = [map.readInt32LE(at), map.readUInt32LE(at + 4)];
    if (number >= 0) places.set(number, place);
    else at += 16; // a gap, with its neighbours
    place += size;
  }
  return places;
}

function dataPage(bytes, at, isCompressed, target) {
  if (at === undefined || at + 32 > bytes.length) throw new Damage('the file is cut short');
  const head = Buffer.alloc(32);
  const mask = (DATA_MASK ^ at) >>> 0;
  for (let i = 0; i < 32; i += 4) head.writeUInt32LE((bytes.readUInt32LE(at + i) ^ mask) >>> 0, i);
  const [packed, headSum, dataSum] = [8, 0x18, 0x1c].map((place) => head.readUInt32LE(place));
  if (head.readUInt32LE(0) !== DATA_PAGE || at + 32 + packed > bytes.length) throw new Damage('a page is damaged');
  const data = bytes.subarray(at + 32, at + 32 + packed);
  head.writeUInt32LE(0, 0x18);
  if (pageSum(data) !== dataSum || pageSum(head, dataSum) !== headSum) {
    throw new Damage(`the checksum of the page at byte ${at} is wrong`);
  }
  if (isCompressed) decompress(data, target);
  else target.set(data.subarray(0, target.length));
}

export function readPages(bytes) {
  const head = plainHead(bytes);
  const places = pagePlaces(mapPage(bytes, Number(head.readBigUInt64LE(0x54)) + 0x100, PAGE_MAP));
  const map = mapPage(bytes, places.get(head.readUInt32LE(0x5c)) ?? -1, SECTION_MAP);
  const sections = {};
  const u64 = (at) => Number(map.readBigUInt64LE(at));
  let at = 20;
  for (let left = map.readUInt32LE(0); left > 0; left--) {
    if (at + 96 > map.length) throw new Damage('the map of sections is damaged');
    const [size, pageCount, pageSize] = [u64(at), map.readUInt32LE(at + 8), map.readUInt32LE(at + 12)];
    const isCompressed = map.readUInt32LE(at + 20) === 2;
    const isSecret = map.readUInt32LE(at + 28) === 1;
    const name = SECTION_NAMES[map.toString('latin1', at + 32, at + 96).replace(/\0[^]*$/, '')];
    at += 96;
    if (at + 16 * pageCount > map.length) throw new Damage('the map of sections is damaged');
    if (name) {
      if (isSecret) throw new Refusal('the DWG file is locked with a password', 'locked');
      // No page unpacks to more than 1,500 times its size, so the file bounds what a section can hold.
      if (size > MAX_SECTION || size > 1500 * bytes.length) throw new Damage('the map of sections is damaged');
      sections[name] = Buffer.alloc(size);
      for (let i = 0; i < pageCount; i++) {
        const [number, start] = [map.readUInt32LE(at + 16 * i), u64(at + 16 * i + 8)];
        if (start >= size) throw new Damage('the map of sections is damaged');
        const page = Buffer.alloc(pageSize);
        dataPage(bytes, places.get(number), isCompressed, page);
        page.copy(sections[name], start, 0, Math.min(pageSize, size - start));
      }
    }
    at += 16 * pageCount;
  }
  return sections;
}
