// SPDX-License-Identifier: MIT
// R2007: as in pages.mjs, sections are cut into pages, but pages are interleaved with the parity of a
// Reed-Solomon code, which is not used here, and packed another way. What the pages hold has checksums of
// its own, by which damage is seen.

import { Damage } from './damage.mjs';

const HEAD = { at: 0x80, size: 0x400, factor: 3 };
const PAGES_AT = 0x480;
const MAP_BLOCK = 239;
const DATA_BLOCK = 251;
const CODED = 255;
const INTERLEAVED = 4;
const MAX_SIZE = 1 << 30;
const META = { mapFactor: 3, mapOffset: 7, mapPacked: 10, mapSize: 11, sectionsPacked: 22, sectionsId: 24, sectionsSize: 25,
  sectionsFactor: 27 };
const SECTION_NAMES = { 'AcDb:Header': 'header', 'AcDb:Classes': 'classes', 'AcDb:Handles': 'handles',
  'AcDb:AcDbObjects': 'objects' };

/** The order in which the bytes of a short run stand, as [first, count] by the run's length. */
const RUNS = [[], [[0, 1]], [[1, 1], [0, 1]], [[2, 1], [1, 1], [0, 1]], [[0, 4]], [[4, 1], [0, 4]], [[5, 1], [1, 4], [0, 1]],
  [[6, 1], [5, 1], [1, 4], [0, 1]], [[0, 8]], [[8, 1], [0, 8]], [[9, 1], [1, 8], [0, 1]], [[10, 1], [9, 1], [1, 8], [0, 1]],
  [[8, 4], [0, 8]], [[12, 1], [8, 4], [0, 8]], [[13, 1], [9, 4], [1, 8], [0, 1]], [[14, 1], [13, 1], [9, 4], [1, 8], [0, 1]],
  [[8, 8], [0, 8]], [[9, 8], [8, 1], [0, 8]], [[17, 1], [9, 8], [1, 8], [0, 1]], [[18, 1], [17, 1], [16, 1], [8, 8], [0, 8]],
  [[16, 4], [8, 8], [0, 8]], [[20, 1], [16, 4], [8, 8], [0, 8]], [[21, 1], [20, 1], [16, 4], [8, 8], [0, 8]],
  [[22, 1], [21, 1], [20, 1], [16, 4], [8, 8], [0, 8]], [[16, 8], [8, 8], [0, 8]], [[17, 8], [16, 1], [8, 8], [0, 8]],
  [[25, 1], [17, 8], [16, 1], [8, 8], [0, 8]], [[26, 1], [25, 1], [17, 8], [16, 1], [8, 8], [0, 8]],
  [[24, 4], [16, 8], [8, 8], [0, 8]], [[28, 1], [24, 4], [16, 8], [8, 8], [0, 8]], [[29, 1], [28, 1], [24, 4], [16, 8], [8, 8], [0, 8]],
  [[30, 1], [26, 4], [18, 8], [10, 8], [2, 8], [1, 1], [0, 1]]];
const LONG_RUN = [[24, 8], [16, 8], [8, 8], [0, 8]];

function unpack(source, target) {
  let at = 0;
  let to = 0;
  const byte = () => {
    if (at >= source.length) throw new Damage('a compressed page ends too early');
    return source[at++];
  };
  const word = () => byte() | (byte() << 8);
  const run = (order, count) => {
    if (at + count > source.length || to + count > target.length) throw new Damage('a compressed page is damaged');
    for (const [first, size] of order) for (let i = 0; i < size; i++) target[to++] = source[at + first + i];
    at += count;
  };
  const literals = (count) => {
    let left = count;
    for (; left >= 32; left -= 32) run(LONG_RUN, 32);
    run(RUNS[left], left);
  };
  const literalCount = (code) => {
    let count = code + 8;
    if (count !== 0x17) return count;
    let more = byte();
    count += more;
    if (more !== 0xff) return count;
    do {
      more = word();
      count += more;
    } while (more === 0xffff);
    return count;
  };
  /** Copies what was unpacked before; returns the byte that says how it goes on. */
  const repeat = (code) => {
    let [count, offset, next] = [code & 0xf, 0, 0];
    switch (code >> 4) {
      case 0:
        offset = byte();
        next = byte();
        count += 0x13 + ((next >> 3) & 0x10);
        offset += ((next & 0x78) << 5) + 1;
        break;
      case 1:
        offset = byte();
        next = byte();
        count += 3;
        offset += ((next & 0xf8) << 5) + 1;
        break;
      case 2:
        offset = word();
        count = code & 7;
        if (code & 8) {
          offset++;
          count += byte() << 3;
          next = byte();
          count += ((next & 0xf8) << 8) + 0x100;
        } else {
          next = byte();
          count += next & 0xf8;
        }
        break;
      default:
        next = byte();
        offset = count + ((next & 0xf8) << 1) + 1;
        count = code >> 4;
    }
    if (offset > to || offset === 0 || to + count > target.length) throw new Damage('a compressed page is damaged');
    for (let i = 0; i < count; i++, to++) target[to] = target[to - offset];
    return next;
  };

  let code = byte();
  let count = 0;
  if ((code & 0xf0) === 0x20) {
    at += 2;
    count = byte() & 7;
  }
  while (at < source.length) {
    literals(count || literalCount(code));
    if (at >= source.length) return target;
    code = byte();
    for (;;) {
      count = repeat(code) & 7;
      if (count !== 0 || at >= source.length) break;
      code = byte();
      if (code >> 4 === 0) break;
      if (code >> 4 === 15) code &= 15;
    }
  }
  return target;
}

/** Takes the blocks of a page apart, of which each has every `factor`th byte. */
function separate(bytes, factor, blockSize) {
  if (bytes.length < factor * CODED - (CODED - blockSize)) throw new Damage('the file is cut short');
  const result = Buffer.alloc(factor * blockSize);
  for (let block = 0, to = 0; block < factor; block++) {
    for (let i = 0; i < blockSize; i++, to++) result[to] = bytes[block + i * factor];
  }
  return result;
}

const aligned = (size) => Math.ceil(size / 8) * 8;

function bounded(size, file) {
  // Nothing unpacks to more than a few thousand times its size.
  if (!(size >= 0) || size > MAX_SIZE || size > 4096 * file.length) throw new Damage('a map of the file is damaged');
  return size;
}

function mapPage(file, offset, packed, size, correction) {
  const factor = Math.ceil((aligned(packed) * correction) / MAP_BLOCK);
  const from = PAGES_AT + offset;
  bounded(factor * CODED, file);
  const data = separate(file.subarray(from, from + factor * CODED), factor, MAP_BLOCK);
  return unpack(data.subarray(0, packed), Buffer.alloc(bounded(size, file)));
}

function metadata(file) {
  const data = separate(file.subarray(HEAD.at, HEAD.at + HEAD.size), HEAD.factor, MAP_BLOCK);
  const size = data.readInt32LE(24);
  const plain = size < 0 ? data.subarray(32, 32 - size) : unpack(data.subarray(32, 32 + size), Buffer.alloc(0x110));
  if (plain.length < 0x110) throw new Damage('the head of the file is damaged');
  return (index) => Number(plain.readBigUInt64LE(8 * index));
}

function page(file, place, { size, packed, encoding }) {
  if (!place) throw new Damage('a page is missing');
  const from = PAGES_AT + place.offset;
  let data = file.subarray(from, from + place.size);
  if (encoding === INTERLEAVED) data = separate(data, Math.ceil(aligned(packed) / DATA_BLOCK), DATA_BLOCK);
  if (data.length < Math.min(packed, size)) throw new Damage('the file is cut short');
  return packed === size ? data.subarray(0, size) : unpack(data.subarray(0, packed), Buffer.alloc(bounded(size, file)));
}

export function readPages2007(file) {
  const meta = metadata(file);
  const map = mapPage(file, meta(META.mapOffset), meta(META.mapPacked), meta(META.mapSize), meta(META.mapFactor));
  const places = new Map();
  let offset = 0;
  for (let at = 0; at + 16 <= map.length; at += 16) {
    const size = Number(map.readBigInt64LE(at));
    const id = Number(map.readBigInt64LE(at + 8));
    places.set(Math.abs(id), { offset, size });
    offset += size;
  }
  const place = places.get(meta(META.sectionsId));
  if (!place) throw new Damage('the file has no map of sections');
  const list = mapPage(file, place.offset, meta(META.sectionsPacked), meta(META.sectionsSize), meta(META.sectionsFactor));
  const sections = {};
  const u64 = (at) => Number(list.readBigUInt64LE(at));
  for (let at = 0; at + 64 <= list.length;) {
    const [size, nameLength, encoding, pageCount] = [u64(at), u64(at + 32), u64(at + 48), u64(at + 56)];
    at += 64;
    if (at + nameLength + 56 * pageCount > list.length) throw new Damage('the map of sections is damaged');
    const name = SECTION_NAMES[list.toString('utf16le', at, at + nameLength).replace(/\0+$/, '')];
    at += nameLength;
    const whole = name ? Buffer.alloc(bounded(size, file)) : null;
    for (let i = 0; i < pageCount; i++, at += 56) {
      if (!whole) continue;
      const start = u64(at);
      if (start > size) throw new Damage('the map of sections is damaged');
      page(file, places.get(u64(at + 16)), { size: u64(at + 24), packed: u64(at + 32), encoding }).copy(whole, start);
    }
    if (whole) sections[name] = whole;
  }
  return sections;
}
