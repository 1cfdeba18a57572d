// SPDX-License-Identifier: MIT
// Where each object of a DWG file lies, by its handle: steps from handle to handle and from place to
// place, in parts with a checksum each.

import { Growing } from '../growing.mjs';
import { signedModular, unsignedModular } from './bits.mjs';
import { crc16 } from './checksums.mjs';
import { Damage } from './damage.mjs';

const MAP_PART = 2030;

/** Objects have numbers here, in the order of their handles. */
class ObjectMap {
  #handles;
  #offsets;
  #last = 0;

  constructor(handles, offsets) {
    const order = handles.every((handle, i) => i === 0 || handle > handles[i - 1]) ? null : inOrder(handles);
    this.#handles = order ? order.map((i) => handles[i]) : handles;
    this.#offsets = order ? order.map((i) => offsets[i]) : offsets;
  }

  get count() { return this.#handles.length; }
  handleAt(index) { return this.#handles[index]; }
  offsetAt(index) { return this.#offsets[index]; }

  /** The number of an object, -1 if there is none with this handle. Most follow the one asked for before. */
  indexOf(handle) {
    const handles = this.#handles;
    if (handles[this.#last + 1] === handle) return ++this.#last;
    let [low, high] = [0, handles.length];
    while (low < high) {
      const middle = (low + high) >> 1;
      if (handles[middle] < handle) low = middle + 1;
      else high = middle;
    }
    if (handles[low] !== handle) return -1;
    this.#last = low;
    return low;
  }
}

/** Of a handle that comes twice, the later place counts. */
function inOrder(handles) {
  const order = Float64Array.from(handles, (_, i) => i).sort((a, b) => handles[a] - handles[b] || a - b);
  return order.filter((index, i) => i + 1 === order.length || handles[order[i + 1]] !== handles[index]);
}

export function readObjectMap(section) {
  const [handles, offsets] = [new Growing(Float64Array), new Growing(Float64Array)];
  for (let at = 0;;) {
    if (at + 2 > section.length) throw new Damage('the map of objects is cut short');
    const size = section.readUInt16BE(at);
    if (size <= 2) return new ObjectMap(handles.values, offsets.values);
    const end = at + size;
    if (end + 2 > section.length) throw new Damage('the map of objects is cut short');
    if (crc16(section, at, end) !== section.readUInt16BE(end)) {
      throw new Damage('the checksum of the map of objects is wrong');
    }
    const place = { at: at + 2, end };
    let handle = 0;
    let offset = 0;
    while (place.at < end) {
      handle += unsignedModular(section, place);
      offset += signedModular(section, place);
      handles.push(handle);
      offsets.push(offset);
    }
    at = end + 2;
  }
}

/** Puts the bytes of a number at `at` of `bytes`; returns where they end. */
function putModular(bytes, at, value, isSigned) {
  let rest = Math.abs(value);
  for (const last = isSigned ? 64 : 128; rest >= last; rest = Math.floor(rest / 128)) bytes[at++] = (rest % 128) | 0x80;
  bytes[at++] = rest | (isSigned && value < 0 ? 0x40 : 0);
  return at;
}

/** `offsets` holds the place of each object at its handle, and 0 where there is none. */
export function writeObjectMap(file, offsets) {
  const part = new Uint8Array(MAP_PART + 32);
  let end = 0;
  let [lastHandle, lastOffset] = [0, 0];
  const flush = () => {
    const from = file.length;
    file.u16be(end + 2);
    file.add(part.subarray(0, end));
    file.u16be(file.crc(from));
    end = lastHandle = lastOffset = 0;
  };
  const put = (handle, offset) => putModular(part, putModular(part, end, handle - lastHandle, false), offset - lastOffset, true);
  for (let handle = 1; handle < offsets.length; handle++) {
    const offset = offsets[handle];
    if (offset === 0) continue;
    let next = put(handle, offset);
    if (next > MAP_PART) {
      flush();
      next = put(handle, offset);
    }
    [end, lastHandle, lastOffset] = [next, handle, offset];
  }
  if (end > 0) flush();
  flush();
}
