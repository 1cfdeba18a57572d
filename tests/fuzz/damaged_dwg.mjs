// SPDX-License-Identifier: MIT
// Small DWG drawings of several releases, damaged where it hurts: mostly with checksums that are right all the same, as
// otherwise nothing behind them would ever be reached.

import { crc16, pageSum } from '../../local_platform/conversion/dwg/checksums.mjs';
import { readObjectMap } from '../../local_platform/conversion/dwg/object_map.mjs';
import { acad, at, block, dwgOf, segment } from '../../local_platform/conversion/testing/drawings.mjs';

const RELEASES = ['AC1014', 'AC1015', 'AC1018', 'AC1021', 'AC1024', 'AC1027', 'AC1032'];
const VALUES = [0, 1, 0x10, 0x3f, 0x40, 0x7f, 0x80, 0xc0, 0xfe, 0xff];
const { XY, XYZ } = acad;

function draw(document, add) {
  const round = new acad.LwPolyline([new XY(0, 0), new XY(4, 0), new XY(4, 4)]);
  round.vertices[0].bulge = 1;
  add(round);
  add(at(new acad.MText('{\\H2x;a\\S1/2;}\\P\\W2;b'), { height: 3 }));
  add(at(new acad.TextEntity(), { value: 'Room %%d', height: 2, insertPoint: new XYZ(1, 2, 0) }));
  add(at(new acad.Spline(), { degree: 1, knots: [0, 0, 1, 1], controlPoints: [new XYZ(0, 0, 0), new XYZ(8, 8, 0)] }));
  add(new acad.Arc(new XYZ(1, 2, 0), 5, 0, Math.PI / 2));
  add(at(new acad.XLine(), { direction: new XYZ(1, 0, 0) }));
  const inner = block(document, 'inner', segment(0, 0, 1, 0), at(segment(0, 0, 1, 1), { thickness: 2 }));
  add(new acad.Insert(block(document, 'outer', new acad.Insert(inner), segment(5, 0, 6, 0))));
  const square = at(new acad.HatchBoundaryPathPolyline(), { isClosed: true, vertices: [new XYZ(0, 0, 0), new XYZ(9, 0, 0), new XYZ(9, 9, 0)] });
  const pattern = new acad.HatchPattern('LINES');
  pattern.lines.push(at(new acad.HatchPatternLine(), { angle: 0, basePoint: new XY(0, 1), offset: new XY(0, 4) }));
  add(at(new acad.Hatch(), { isSolid: false, pattern, paths: [new acad.HatchBoundaryPath([square])] }));
  for (let i = 0; i < 8; i++) add(segment(i, 0, i, 5));
}

/** Up to R2000: the sections and objects of the file, as [from, end, where the checksum stands] each. */
function plainParts(bytes) {
  const section = (i) => [bytes.readUInt32LE(0x19 + 9 * i + 1), bytes.readUInt32LE(0x19 + 9 * i + 5)];
  const parts = [0, 1].map((i) => {
    const [from, size] = section(i);
    const end = from + size - 18;
    return [from + 16, end, end];
  });
  const [mapAt, mapSize] = section(2);
  parts.push([mapAt, mapAt + bytes.readUInt16BE(mapAt)]);
  const objects = readObjectMap(bytes.subarray(mapAt, mapAt + mapSize));
  for (let i = 0; i < objects.count; i++) {
    const from = objects.offsetAt(i);
    const end = from + 2 + bytes.readUInt16LE(from);
    parts.push([from, end, end]);
  }
  return parts;
}

function sealPlain(bytes, [from, end, sum]) {
  if (sum === undefined) bytes.writeUInt16BE(crc16(bytes, from, end), end);
  else bytes.writeUInt16LE(crc16(bytes, from, end), sum);
}

const PAGE = 0x4163043b;

/** Since R2004: the data of its pages, each behind a head of 32 bytes that is masked with its place. */
function pagesOf(bytes) {
  const parts = [];
  for (let page = 0x100; page + 32 < bytes.length; page += 32) {
    const mask = (0x4164536b ^ page) >>> 0;
    if ((bytes.readUInt32LE(page) ^ mask) >>> 0 !== PAGE) continue;
    const size = (bytes.readUInt32LE(page + 8) ^ mask) >>> 0;
    if (page + 32 + size <= bytes.length) parts.push([page + 32, page + 32 + size]);
  }
  return parts;
}

function sealPage(bytes, [from, end]) {
  const page = from - 32;
  const mask = (0x4164536b ^ page) >>> 0;
  const head = Buffer.alloc(32);
  for (let i = 0; i < 32; i += 4) head.writeUInt32LE((bytes.readUInt32LE(page + i) ^ mask) >>> 0, i);
  const sum = pageSum(bytes.subarray(from, end));
  head.writeUInt32LE(sum, 0x1c);
  head.writeUInt32LE(0, 0x18);
  head.writeUInt32LE(pageSum(head, sum), 0x18);
  for (let i = 0; i < 32; i += 4) bytes.writeUInt32LE((head.readUInt32LE(i) ^ mask) >>> 0, page + i);
}

export function* damagedDrawings(random) {
  const oneOf = (list) => list[random(list.length)];
  const whole = RELEASES.map((release) => {
    const bytes = dwgOf(draw, release);
    const isPlain = release < 'AC1018';
    return { bytes, parts: isPlain ? plainParts(bytes) : pagesOf(bytes), seal: isPlain ? sealPlain : sealPage };
  });
  const damages = [
    (part) => { part[random(part.length)] = random(256); },
    (part) => { part[random(part.length)] ^= 1 << random(8); },
    (part) => { part[random(part.length)] = oneOf(VALUES); },
    (part) => { part.subarray(random(part.length)).subarray(0, random(16)).fill(oneOf(VALUES)); },
    (part) => { part.copyWithin(random(part.length), random(part.length), part.length - random(part.length)); },
  ];
  for (;;) {
    const { bytes: good, parts, seal } = oneOf(whole);
    const bytes = Buffer.from(good);
    for (let i = random(6); i >= 0; i--) {
      const isSealed = parts.length > 0 && random(8) > 0;
      const part = isSealed ? oneOf(parts) : [0, bytes.length];
      oneOf(damages)(bytes.subarray(part[0], part[1]));
      if (isSealed) seal(bytes, part);
    }
    yield bytes.subarray(0, random(20) ? bytes.length : random(bytes.length));
  }
}
