// SPDX-License-Identifier: MIT
// The entities that are written, as R2000 has them. Symbology is { layer, color, weight, lineType }, handles all but
// the colour and the weight.

import { OWNED, POINTER } from './object_writer.mjs';

const TYPE = { ATTRIB: 2, SEQEND: 6, INSERT: 7, VERTEX_3D: 11, POLYLINE_3D: 16, ARC: 17, CIRCLE: 18, LINE: 19, POINT: 27,
  ELLIPSE: 35, SPLINE: 36, TEXT: 1, LWPOLYLINE: 77, HATCH: 78 };
const UP = [0, 0, 1];

function text(w, e) {
  const has = [e.insert[2] !== 0, Boolean(e.align), false, e.rotation !== 0, e.widthFactor !== 1, Boolean(e.generation),
    Boolean(e.across), Boolean(e.up)];
  w.u8(has.reduce((flags, present, i) => flags | (present ? 0 : 1 << i), 0));
  if (has[0]) w.f64(e.insert[2]);
  w.rd2(e.insert);
  if (has[1]) for (let i = 0; i < 2; i++) w.dd(e.align[i], e.insert[i]);
  w.extrusion(e.normal);
  w.thickness();
  if (has[3]) w.f64(e.rotation);
  w.f64(e.height);
  if (has[4]) w.f64(e.widthFactor);
  w.text(e.value);
  if (has[5]) w.bs(e.generation);
  if (has[6]) w.bs(e.across);
  if (has[7]) w.bs(e.up);
}

function lightPolyline(w, { points, bulges, isClosed, elevation }) {
  const hasBulges = bulges.some(Boolean);
  w.bs((isClosed ? 0x200 : 0) | (hasBulges ? 0x10 : 0) | (elevation !== 0 ? 8 : 0));
  if (elevation !== 0) w.bd(elevation);
  w.bl(points.length);
  if (hasBulges) w.bl(points.length);
  points.forEach((p, i) => {
    if (i === 0) return w.rd2(p);
    w.dd(p[0], points[i - 1][0]);
    return w.dd(p[1], points[i - 1][1]);
  });
  if (hasBulges) points.forEach((_, i) => w.bd(bulges[i] ?? 0));
}

function spline(w, { degree, knots, points, weights }) {
  w.bl(1);
  w.bl(degree);
  w.bit(weights.length > 0);
  w.bit(0);
  w.bit(0);
  w.bd(1e-7);
  w.bd(1e-7);
  w.bl(knots.length);
  w.bl(points.length);
  w.bit(weights.length > 0);
  knots.forEach((u) => w.bd(u));
  points.forEach((p, i) => {
    w.bd3(p);
    if (weights.length > 0) w.bd(weights[i]);
  });
}

const PATH = { external: 1, polyline: 2, outermost: 16 };

function hatchEdge(w, edge) {
  if (edge.kind === 'line') {
    w.u8(1);
    w.rd2(edge.start);
    return w.rd2(edge.end);
  }
  if (edge.kind === 'spline') {
    w.u8(4);
    w.bl(edge.degree);
    w.bit(edge.weights.length > 0);
    w.bit(0);
    w.bl(edge.knots.length);
    w.bl(edge.points.length);
    edge.knots.forEach((u) => w.bd(u));
    return edge.points.forEach((p, i) => {
      w.rd2(p);
      if (edge.weights.length > 0) w.bd(edge.weights[i]);
    });
  }
  const isRound = edge.ratio === 1;
  w.u8(isRound ? 2 : 3);
  w.rd2(edge.center);
  if (isRound) {
    w.bd(edge.radius);
  } else {
    w.rd2(edge.axis);
    w.bd(edge.ratio);
  }
  w.bd(edge.start);
  w.bd(edge.end);
  return w.bit(edge.isLeft);
}

function hatch(w, { paths, elevation }) {
  w.bd(elevation);
  w.bd3(UP);
  w.text('SOLID');
  w.bit(1);
  w.bit(0);
  w.bl(paths.length);
  paths.forEach((path, i) => {
    w.bl((i === 0 ? PATH.external : PATH.outermost) | (path.points ? PATH.polyline : 0));
    if (path.points) {
      w.bit(0);
      w.bit(1);
      w.bl(path.points.length);
      path.points.forEach((p) => w.rd2(p));
    } else {
      w.bl(path.edges.length);
      path.edges.forEach((edge) => hatchEdge(w, edge));
    }
    w.bl(0);
  });
  w.bs(0);
  w.bs(1);
  w.bl(0);
}

function insert(w, e) {
  w.bd3(e.insert);
  if (e.scale.every((s) => s === 1)) {
    w.bb(3);
  } else {
    w.bb(0);
    w.f64(e.scale[0]);
    w.dd(e.scale[1], e.scale[0]);
    w.dd(e.scale[2], e.scale[0]);
  }
  w.bd(e.rotation);
  w.bd3(e.normal);
  w.bit(e.attributes?.length > 0);
}

function attribute(w, e) {
  text(w, e);
  w.text(e.tag);
  w.bs(0);
  w.u8(0);
}

function circle(w, e) {
  w.bd3(e.center);
  w.bd(e.radius);
  w.thickness();
  w.extrusion(e.normal);
}

function line(w, { start, end }) {
  const isFlat = start[2] === 0 && end[2] === 0;
  w.bit(isFlat);
  for (let i = 0; i < (isFlat ? 2 : 3); i++) {
    w.f64(start[i]);
    w.dd(end[i], start[i]);
  }
  w.thickness();
  w.extrusion(UP);
}

const WRITE = {
  LINE: line,
  POINT: (w, e) => {
    w.bd3(e.point);
    w.thickness();
    w.extrusion(UP);
    w.bd(0);
  },
  CIRCLE: circle,
  ARC: (w, e) => {
    circle(w, e);
    w.bd(e.start);
    w.bd(e.end);
  },
  ELLIPSE: (w, e) => {
    w.bd3(e.center);
    w.bd3(e.axis);
    w.bd3(e.normal);
    w.bd(e.ratio);
    w.bd(e.start);
    w.bd(e.end);
  },
  TEXT: text,
  ATTRIB: attribute,
  LWPOLYLINE: lightPolyline,
  SPLINE: spline,
  HATCH: hatch,
  INSERT: insert,
};

/** The parts of an entity are a chain with an end, and have handles of their own that follow its own. */
const partCount = ({ kind, points, attributes }) => (kind === 'POLYLINE_3D' ? points.length : kind === 'INSERT' ? attributes?.length ?? 0 : 0);
export const handlesOf = (entity) => (partCount(entity) > 0 ? partCount(entity) + 2 : 1);

function partHandles(w, { handle }, count) {
  w.handle(POINTER.soft, handle + 1);
  w.handle(POINTER.soft, handle + count);
  w.handle(OWNED.hard, handle + count + 1);
}

const chainEnd = (w, { handle }, count, symbology) =>
  w.entity(TYPE.SEQEND, { handle: handle + count + 1, owner: handle, previous: 0, next: 0 }, symbology, () => {});

/** A polyline in space: its head, its vertices in a chain of their own, and their end. */
function polyline(w, place, symbology, entity) {
  const { handle } = place;
  const last = handle + entity.points.length;
  w.entity(TYPE.POLYLINE_3D, place, symbology, () => {
    w.u8(0);
    w.u8(entity.isClosed ? 1 : 0);
  }, () => partHandles(w, place, entity.points.length));
  entity.points.forEach((p, i) => {
    const own = handle + 1 + i;
    const chain = { handle: own, owner: handle, previous: i > 0 ? own - 1 : 0, next: own < last ? own + 1 : 0 };
    w.entity(TYPE.VERTEX_3D, chain, symbology, () => {
      w.u8(32);
      w.bd3(p);
    });
  });
  chainEnd(w, place, entity.points.length, symbology);
}

/** `used` is the handle of what the entity makes use of: a block, or the style of a text. */
export function writeEntity(w, place, symbology, entity, used) {
  if (entity.kind === 'POLYLINE_3D') return polyline(w, place, symbology, entity);
  const count = partCount(entity);
  w.entity(TYPE[entity.kind], place, symbology, () => WRITE[entity.kind](w, entity), () => {
    if (entity.kind === 'TEXT' || entity.kind === 'ATTRIB' || entity.kind === 'INSERT') w.pointer(used);
    if (count > 0) partHandles(w, place, count);
  });
  if (count > 0) chainEnd(w, place, count, symbology);
  return undefined;
}
