// SPDX-License-Identifier: MIT
// What each kind of entity consists of, as it stands in the file. Points are arrays, angles radians.

import { DIMENSIONS, leader, multiLeader, tolerance } from './annotations.mjs';
import { hatch } from './hatch.mjs';

/** Names of the types that every release numbers alike. */
export const ENTITY_TYPES = new Map([
  [1, 'TEXT'], [2, 'ATTRIB'], [3, 'ATTDEF'], [4, 'BLOCK'], [5, 'ENDBLK'], [6, 'SEQEND'], [7, 'INSERT'],
  [8, 'MINSERT'], [10, 'VERTEX_2D'], [11, 'VERTEX_3D'], [12, 'VERTEX_MESH'], [13, 'VERTEX_PFACE'],
  [14, 'FACE'], [15, 'POLYLINE_2D'], [16, 'POLYLINE_3D'], [17, 'ARC'], [18, 'CIRCLE'], [19, 'LINE'],
  [20, 'DIM_ORDINATE'], [21, 'DIM_LINEAR'], [22, 'DIM_ALIGNED'], [23, 'DIM_ANGULAR_3'], [24, 'DIM_ANGULAR_2'],
  [25, 'DIM_RADIUS'], [26, 'DIM_DIAMETER'], [27, 'POINT'], [28, '3DFACE'], [29, 'POLYFACE'], [30, 'POLYMESH'],
  [31, 'SOLID'], [32, 'TRACE'], [33, 'SHAPE'], [34, 'VIEWPORT'], [35, 'ELLIPSE'], [36, 'SPLINE'], [37, 'REGION'],
  [38, '3DSOLID'], [39, 'BODY'], [40, 'RAY'], [41, 'XLINE'], [43, 'OLEFRAME'], [44, 'MTEXT'], [45, 'LEADER'],
  [46, 'TOLERANCE'], [47, 'MLINE'], [74, 'OLE2FRAME'], [77, 'LWPOLYLINE'], [78, 'HATCH'], [498, 'PROXY'],
]);

const at = (p, z) => [p[0], p[1], z];

function text(r) {
  if (!r.isNew) {
    const z = r.bd();
    const insert = at(r.rd2(), z);
    const align = at(r.rd2(), z);
    const [normal, thickness] = [r.bd3(), r.bd()];
    const [oblique, rotation, height, widthFactor] = [r.bd(), r.bd(), r.bd(), r.bd()];
    return { insert, align, normal, thickness, oblique, rotation, height, widthFactor, value: r.text(),
      generation: r.bs(), across: r.bs(), up: r.bs(), style: r.ref() };
  }
  const absent = r.u8();
  const has = (bit) => (absent & bit) === 0;
  const z = has(1) ? r.f64() : 0;
  const insert = at(r.rd2(), z);
  const align = has(2) ? [r.dd(insert[0]), r.dd(insert[1]), z] : null;
  const [normal, thickness] = [r.extrusion(), r.thickness()];
  const oblique = has(4) ? r.f64() : 0;
  const rotation = has(8) ? r.f64() : 0;
  const height = r.f64();
  const widthFactor = has(0x10) ? r.f64() : 1;
  return { insert, align, normal, thickness, oblique, rotation, height, widthFactor, value: r.text(),
    generation: has(0x20) ? r.bs() : 0, across: has(0x40) ? r.bs() : 0, up: has(0x80) ? r.bs() : 0, style: r.ref() };
}

function attribute(r, entity) {
  const base = text(r);
  if (r.year >= 2010) r.u8();
  let paragraphs = null;
  if (r.year >= 2018 && r.u8() > 1) {
    paragraphs = { ...r.symbology('MTEXT', entity.handle), ...mtext(r) };
    const size = r.bs();
    if (size > 0) {
      r.skip(8 * r.count(size, 8));
      r.ref();
      r.bs();
    }
  }
  const tag = r.text();
  r.bs();
  return { ...base, paragraphs, tag, flags: r.u8() };
}

function mtext(r) {
  const [insert, normal, direction, width] = [r.bd3(), r.bd3(), r.bd3(), r.bd()];
  if (r.year >= 2007) r.bd();
  const [height, attachment, flow] = [r.bd(), r.bs(), r.bs()];
  r.bd();
  r.bd();
  const result = { insert, normal, direction, width, height, attachment, flow, value: r.text(), style: r.ref(),
    spacing: 1 };
  if (r.isNew) {
    r.bs();
    result.spacing = r.bd();
    r.bit();
  }
  if (r.year >= 2004) {
    const fill = r.bl();
    if ((fill & 1) !== 0 || (r.year >= 2018 && (fill & 0x10) !== 0)) {
      r.bd();
      r.color();
      r.bl();
    }
  }
  if (r.year >= 2018 && !r.bit()) {
    r.bs();
    r.bit();
    r.ref();
    r.bl();
    for (let i = 0; i < 2; i++) r.bd3();
    for (let i = 0; i < 4; i++) r.bd();
    if (r.bs() !== 0) {
      const count = r.bl();
      const [columnWidth, gutter, isAuto] = [r.bd(), r.bd(), r.bit()];
      r.bit();
      result.columns = { count, width: columnWidth, gutter,
        heights: isAuto || count <= 0 ? [] : r.left > count * 2 ? Array.from({ length: count }, () => r.bd()) : [] };
    }
  }
  return result;
}

function insertHead(r) {
  const result = { insert: r.bd3(), scale: [1, 1, 1], columns: 1, rows: 1, columnSpacing: 0, rowSpacing: 0 };
  if (!r.isNew) {
    result.scale = r.bd3();
  } else {
    const form = r.bb();
    const x = form === 0 || form === 2 ? r.f64() : 1;
    result.scale = form === 0 || form === 1 ? [x, r.dd(x), r.dd(x)] : [x, x, x];
  }
  result.rotation = r.bd();
  result.normal = r.bd3();
  const hasParts = r.bit() === 1;
  return { result, hasParts, partCount: r.year >= 2004 && hasParts ? r.bl() : 0 };
}

/** Parts of an entity: handles of their own since R2004, before that a chain from first to last. */
function parts(r, count) {
  if (r.year >= 2004) return { parts: r.refs(count) };
  const [first, last] = [r.ref(), r.ref()];
  return { chain: { first, last } };
}

function insert(r, isArray) {
  const { result, hasParts, partCount } = insertHead(r);
  if (isArray) {
    [result.columns, result.rows] = [r.bs() & 0xffff, r.bs() & 0xffff];
    [result.columnSpacing, result.rowSpacing] = [r.bd(), r.bd()];
  }
  result.block = r.ref();
  return hasParts ? { ...result, ...parts(r, partCount) } : result;
}

function lightPolyline(r) {
  const flags = r.bs();
  const has = (bit) => (flags & bit) !== 0;
  const width = has(4) ? r.bd() : 0;
  const elevation = has(8) ? r.bd() : 0;
  const thickness = has(2) ? r.bd() : 0;
  const normal = has(1) ? r.bd3() : [0, 0, 1];
  const count = r.counted(4);
  const bulgeCount = has(0x10) ? r.counted(2) : 0;
  const idCount = has(0x400) ? r.counted(2) : 0;
  const widthCount = has(0x20) ? r.counted(4) : 0;
  const points = new Array(count);
  for (let i = 0; i < count; i++) {
    const last = points[i - 1];
    points[i] = r.isNew && last ? [r.dd(last[0]), r.dd(last[1])] : r.rd2();
  }
  const bulges = Array.from({ length: bulgeCount }, () => r.bd());
  for (let i = 0; i < idCount; i++) r.bl();
  const widths = Array.from({ length: widthCount }, () => r.bd2());
  return { isClosed: has(0x200), width, elevation, thickness, normal, points, bulges, widths };
}

function vertex2d(r) {
  const [flags, point] = [r.u8(), r.bd3()];
  const start = r.bd();
  const widths = start < 0 ? [-start, -start] : [start, r.bd()];
  const bulge = r.bd();
  return { flags, point, widths, bulge };
}

function polyline2d(r) {
  const flags = r.bs();
  r.bs();
  const result = { flags, isClosed: (flags & 1) !== 0, widths: r.bd2(), thickness: r.thickness(), elevation: r.bd(),
    normal: r.extrusion() };
  return { ...result, ...parts(r, r.year >= 2004 ? r.bl() : 0) };
}

function polyline3d(r) {
  r.u8();
  const isClosed = (r.u8() & 1) !== 0;
  return { isClosed, ...parts(r, r.year >= 2004 ? r.bl() : 0) };
}

function polyface(r) {
  r.bs();
  r.bs();
  return parts(r, r.year >= 2004 ? r.bl() : 0);
}

function mesh(r) {
  const flags = r.bs();
  r.bs();
  const [m, n, mSmooth, nSmooth] = [r.bs(), r.bs(), r.bs(), r.bs()];
  return { flags, m, n, mSmooth, nSmooth, ...parts(r, r.year >= 2004 ? r.bl() : 0) };
}

function line(r) {
  if (!r.isNew) return { start: r.bd3(), end: r.bd3(), thickness: r.bd(), normal: r.bd3() };
  const isFlat = r.bit();
  const x = r.f64();
  const x2 = r.dd(x);
  const y = r.f64();
  const y2 = r.dd(y);
  const z = isFlat ? 0 : r.f64();
  const z2 = isFlat ? 0 : r.dd(z);
  return { start: [x, y, z], end: [x2, y2, z2], thickness: r.thickness(), normal: r.extrusion() };
}

function corners(r) {
  const thickness = r.thickness();
  const z = r.bd();
  return { thickness, corners: [at(r.rd2(), z), at(r.rd2(), z), at(r.rd2(), z), at(r.rd2(), z)],
    normal: r.extrusion() };
}

function face(r) {
  if (!r.isNew) return { corners: [r.bd3(), r.bd3(), r.bd3(), r.bd3()], hiddenEdges: r.bs() };
  const [hasNoFlags, isFlat] = [r.bit(), r.bit()];
  const result = [[r.f64(), r.f64(), isFlat ? 0 : r.f64()]];
  for (let i = 0; i < 3; i++) result.push(result[i].map((v) => r.dd(v)));
  return { corners: result, hiddenEdges: hasNoFlags ? 0 : r.bs() };
}

function spline(r) {
  let scenario = r.bl();
  if (r.year >= 2013) {
    const [flags, knotForm] = [r.bl(), r.bl()];
    scenario = knotForm === 15 || !(flags & 1) ? 1 : 2;
  }
  const degree = r.bl();
  if (scenario === 2) {
    r.bd();
    const [startTangent, endTangent] = [r.bd3(), r.bd3()];
    return { degree, startTangent, endTangent, fitPoints: r.list(6, () => r.bd3()), knots: [], points: [],
      weights: [] };
  }
  r.bit();
  const [isClosed, isPeriodic] = [r.bit() === 1, r.bit() === 1];
  r.bd();
  r.bd();
  const [knotCount, pointCount] = [r.counted(2), r.counted(6)];
  const isWeighted = r.bit();
  const knots = Array.from({ length: knotCount }, () => r.bd());
  const [points, weights] = [[], []];
  for (let i = 0; i < pointCount; i++) {
    points.push(r.bd3());
    if (isWeighted) weights.push(r.bd());
  }
  return { degree, isClosed, isPeriodic, knots, points, weights, fitPoints: [] };
}

function mline(r) {
  const [scale, justification, start, normal] = [r.bd(), r.u8(), r.bd3(), r.bd3()];
  const flags = r.bs();
  const lineCount = r.u8();
  const vertices = Array.from({ length: r.count(r.bs(), 18) }, () => {
    const [point, direction, miter] = [r.bd3(), r.bd3(), r.bd3()];
    const lines = Array.from({ length: lineCount }, () => {
      const offsets = Array.from({ length: r.count(r.bs(), 2) }, () => r.bd());
      for (let i = r.count(r.bs(), 2); i > 0; i--) r.bd();
      return offsets;
    });
    return { point, direction, miter, lines };
  });
  return { scale, justification, start, normal, isClosed: (flags & 2) !== 0, vertices, style: r.ref() };
}

function image(r) {
  r.bl();
  const [insert, u, v, size] = [r.bd3(), r.bd3(), r.bd3(), r.rd2()];
  r.bs();
  const isClipped = r.bit() === 1;
  r.skip(24);
  if (r.year >= 2010) r.bit();
  const clip = r.bs() === 1 ? [r.rd2(), r.rd2()] : r.list(128, () => r.rd2());
  return { insert, u, v, size, isClipped, clip, definition: r.ref() };
}

/** A mesh of faces, of which each lists its corners. */
function faces(r) {
  r.bs();
  r.bit();
  r.bl();
  const points = r.list(6, () => r.bd3());
  const numbers = r.list(2, () => r.bl());
  const result = [];
  for (let at = 0; at < numbers.length;) {
    const count = numbers[at];
    if (!(count > 0)) break;
    result.push(numbers.slice(at + 1, at + 1 + count).map((i) => points[i]).filter(Boolean));
    at += count + 1;
  }
  return { faces: result };
}

function viewport(r) {
  const [center, width, height] = [r.bd3(), r.bd(), r.bd()];
  return { center, width, height };
}

function ellipse(r) {
  return { center: r.bd3(), axis: r.bd3(), normal: r.bd3(), ratio: r.bd(), start: r.bd(), end: r.bd() };
}

const circle = (r) => ({ center: r.bd3(), radius: r.bd(), thickness: r.thickness(), normal: r.extrusion() });

const vertex3d = (r) => ({ flags: r.u8(), point: r.bd3() });

const READ = {
  TEXT: text,
  ATTRIB: attribute,
  ATTDEF: attribute,
  BLOCK: (r) => ({ name: r.text() }),
  ENDBLK: () => ({}),
  SEQEND: () => ({}),
  INSERT: (r) => insert(r, false),
  TABLE: (r) => insert(r, false),
  HELIX: spline,
  MINSERT: (r) => insert(r, true),
  VERTEX_2D: vertex2d,
  VERTEX_3D: vertex3d,
  VERTEX_MESH: vertex3d,
  VERTEX_PFACE: vertex3d,
  FACE: (r) => ({ indices: [r.bs(), r.bs(), r.bs(), r.bs()] }),
  POLYLINE_2D: polyline2d,
  POLYLINE_3D: polyline3d,
  POLYFACE: polyface,
  POLYMESH: mesh,
  ARC: (r) => ({ ...circle(r), start: r.bd(), end: r.bd() }),
  CIRCLE: circle,
  LINE: line,
  POINT: (r) => ({ point: r.bd3(), thickness: r.thickness(), normal: r.extrusion() }),
  '3DFACE': face,
  SOLID: corners,
  TRACE: corners,
  VIEWPORT: viewport,
  ELLIPSE: ellipse,
  SPLINE: spline,
  RAY: (r) => ({ point: r.bd3(), direction: r.bd3() }),
  XLINE: (r) => ({ point: r.bd3(), direction: r.bd3() }),
  MTEXT: mtext,
  LEADER: leader,
  TOLERANCE: tolerance,
  MLINE: mline,
  LWPOLYLINE: lightPolyline,
  HATCH: hatch,
  IMAGE: image,
  WIPEOUT: image,
  MULTILEADER: multiLeader,
  MESH: faces,
  ...DIMENSIONS,
};

/** The entity that the reader has been opened at; of kinds that are not known only what all share. */
export function readEntity(r, kind) {
  const entity = r.entity(kind);
  const read = READ[kind];
  return read ? Object.assign(entity, read(r, entity)) : Object.assign(entity, { isUnknown: true });
}
