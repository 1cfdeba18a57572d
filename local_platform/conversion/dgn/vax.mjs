// SPDX-License-Identifier: MIT
// The number formats of a VAX, in which DGN V7 keeps its coordinates: 32-bit integers with the high
// 16-bit word first ("middle-endian"), and D_floating doubles. All words are little-endian themselves.

const scratch = new DataView(new ArrayBuffer(8));

export function readInt32(buffer, at) {
  if (!(at >= 0 && at + 4 <= buffer.length)) throw new RangeError('a number beyond the end');
  return (buffer[at + 1] << 24) | (buffer[at] << 16) | (buffer[at + 3] << 8) | buffer[at + 2];
}

export function writeInt32(buffer, at, value) {
  buffer[at] = value >>> 16;
  buffer[at + 1] = value >>> 24;
  buffer[at + 2] = value;
  buffer[at + 3] = value >>> 8;
}

/** D_floating: sign, 8 bits of exponent biased by 128, then 55 bits of a fraction 0.1fff... */
export function readDouble(buffer, at) {
  const head = buffer.readUInt16LE(at);
  const exponent = (head >> 7) & 0xff;
  if (exponent === 0) return 0;
  const low = buffer.readUInt16LE(at + 4) * 0x10000 + buffer.readUInt16LE(at + 6);
  const mantissa = ((head & 0x7f) | 0x80) * 2 ** 48 + buffer.readUInt16LE(at + 2) * 2 ** 32 + low;
  return (head & 0x8000 ? -mantissa : mantissa) * 2 ** (exponent - 128 - 56);
}

/** Values too small for the format become 0; throws RangeError for those too large for it. */
export function writeDouble(buffer, at, value) {
  scratch.setFloat64(0, value);
  const high = scratch.getUint32(0);
  const low = scratch.getUint32(4);
  const exponent = ((high >>> 20) & 0x7ff) - 1023 + 129;
  if (exponent > 255) throw new RangeError(`${value} does not fit a VAX double`);
  if (exponent < 1) {
    buffer.fill(0, at, at + 8);
    return;
  }
  const top = high & 0xfffff;
  buffer.writeUInt16LE(((high >>> 16) & 0x8000) | (exponent << 7) | (top >>> 13), at);
  buffer.writeUInt16LE(((top & 0x1fff) << 3) | (low >>> 29), at + 2);
  buffer.writeUInt16LE((low >>> 13) & 0xffff, at + 4);
  buffer.writeUInt16LE((low & 0x1fff) << 3, at + 6);
}
