// SPDX-License-Identifier: MIT
// Tags: values that elements of their own hold, and sets that say what they are called.

import { readDouble } from './vax.mjs';

const AT = { set: 68, index: 72, type: 74, size: 150, value: 154 };
const SET = { level: 24, count: 44, name: 48, linkage: 0x7d2f };
const VALUE = { text: 1, integer: 3, real: 4 };

export function tagValue(bytes, codec) {
  switch (bytes.readUInt16LE(AT.type)) {
    case VALUE.text: {
      const value = bytes.subarray(AT.value, AT.value + bytes.readUInt16LE(AT.size));
      const end = value.indexOf(0);
      return codec.decode(end < 0 ? value : value.subarray(0, end));
    }
    case VALUE.integer: return `${bytes.readInt32LE(AT.value)}`;
    case VALUE.real: return `${Number(readDouble(bytes, AT.value).toPrecision(10))}`;
    default: return '';
  }
}

/** Which set and which of its tags a value belongs to. */
export const keyOfTag = (bytes) => `${bytes.readUInt16LE(AT.set)} ${bytes.readUInt16LE(AT.index)}`;

/** Texts end with a zero, and default values stand between them. */
function readSet(bytes, number, codec, names) {
  let at = SET.name;
  const text = () => {
    const end = bytes.indexOf(0, at);
    if (end < 0) throw new RangeError('a text without an end');
    const value = codec.decode(bytes.subarray(at, end));
    at = end + 1;
    return value;
  };
  const set = text();
  at += at % 2;
  for (let left = bytes.readUInt16LE(SET.count); left > 0; left--) {
    const name = text();
    names.set(`${number} ${bytes.readUInt16LE(at)}`, { set, name });
    at += 2;
    text();
    const type = bytes.readUInt16LE(at);
    at += 7;
    if (type === VALUE.text) text();
    else at += type === VALUE.real ? 8 : 4;
  }
}

/** { set, name } of each tag by its key. `elements` are those that may define sets, as readers. A set that makes no sense names
    nothing. */
export function readTagSets(elements, codec) {
  const names = new Map();
  for (const reader of elements) {
    const { raw } = reader;
    try {
      reader.linkages((at, size) => {
        if (size >= 8 && raw.readUInt16LE(at + 2) === SET.linkage) readSet(raw, raw.readUInt16LE(at + 4), codec, names);
      });
    } catch (error) {
      if (!(error instanceof RangeError)) throw error;
    }
  }
  return names;
}

export const TAG_SET_LEVEL = SET.level;
