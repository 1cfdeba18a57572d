// SPDX-License-Identifier: MIT
// R13 to R2000: the head of the file says where each section lies.

import { crc16 } from './checksums.mjs';
import { Damage } from './damage.mjs';

const NAMES = ['header', 'classes', 'handles'];

/** What the checksum of the head is combined with, by the number of sections. */
const HEAD_MASKS = { 3: 0xa598, 4: 0x8101, 5: 0x3cc4, 6: 0x8461 };

const SENTINEL = 16;

export function isSectionWhole(section, lengthBytes) {
  const end = section.length < SENTINEL + lengthBytes + 2 ? Infinity : SENTINEL + lengthBytes + section.readUInt32LE(SENTINEL);
  return end + 2 <= section.length && crc16(section, SENTINEL, end) === section.readUInt16LE(end);
}

/** Between two marks of 16 bytes: a length, the data, and a checksum of both. */
export function sectionBody(section, name, lengthBytes = 4) {
  const from = SENTINEL;
  if (section.length < from + lengthBytes + 2) throw new Damage(`the section of ${name} is cut short`);
  const end = from + lengthBytes + section.readUInt32LE(from);
  if (end + 2 > section.length) throw new Damage(`the section of ${name} is cut short`);
  if (crc16(section, from, end) !== section.readUInt16LE(end)) {
    throw new Damage(`the checksum of the section of ${name} is wrong`);
  }
  return section.subarray(from + lengthBytes, end);
}

export function readSections(bytes) {
  const count = bytes.readInt32LE(0x15);
  const end = 0x19 + 9 * count;
  if (count < 3 || count > 16 || end + 2 > bytes.length) throw new Damage('the head of the file is damaged');
  const mask = HEAD_MASKS[count];
  if (mask !== undefined && (crc16(bytes, 0, end, 0) ^ mask) !== bytes.readUInt16LE(end)) {
    throw new Damage('the checksum of the head of the file is wrong');
  }
  const sections = { objects: bytes };
  for (let i = 0; i < count; i++) {
    const [from, size] = [bytes.readUInt32LE(0x19 + 9 * i + 1), bytes.readUInt32LE(0x19 + 9 * i + 5)];
    if (from + size > bytes.length) throw new Damage('the file is cut short');
    const name = NAMES[bytes[0x19 + 9 * i]];
    if (name) sections[name] = bytes.subarray(from, from + size);
  }
  return sections;
}
