// SPDX-License-Identifier: MIT
// Hatches: their boundaries and patterns.

function hatchEdge(r) {
  switch (r.u8()) {
    case 1: return { kind: 'line', start: r.rd2(), end: r.rd2() };
    case 2: {
      const [center, radius, start, end] = [r.rd2(), r.bd(), r.bd(), r.bd()];
      return { kind: 'arc', center, axis: [radius, 0], ratio: 1, start, end, isLeft: r.bit() === 1 };
    }
    case 3: {
      const [center, axis, ratio, start, end] = [r.rd2(), r.rd2(), r.bd(), r.bd(), r.bd()];
      return { kind: 'arc', center, axis, ratio, start, end, isLeft: r.bit() === 1 };
    }
    default: {
      const degree = r.bl();
      const isWeighted = r.bit();
      r.bit();
      const [knotCount, pointCount] = [r.counted(2), r.counted(128)];
      const knots = Array.from({ length: knotCount }, () => r.bd());
      const [points, weights] = [[], []];
      for (let i = 0; i < pointCount; i++) {
        points.push(r.rd2());
        if (isWeighted) weights.push(r.bd());
      }
      if (r.year >= 2010) {
        const fit = r.list(128, () => r.rd2());
        if (fit.length > 0) for (let i = 0; i < 2; i++) r.rd2();
      }
      return { kind: 'spline', degree, knots, points, weights };
    }
  }
}

const POLYLINE_PATH = 2;

function hatchPath(r) {
  const flags = r.bl();
  const result = { flags, edges: null, points: null, bulges: [] };
  if (flags & POLYLINE_PATH) {
    const hasBulges = r.bit();
    r.bit();
    result.points = r.list(128, () => {
      const point = r.rd2();
      result.bulges.push(hasBulges ? r.bd() : 0);
      return point;
    });
  } else {
    result.edges = r.list(8, () => hatchEdge(r));
  }
  r.refs(r.bl());
  return result;
}

export function hatch(r) {
  let gradient = null;
  if (r.year >= 2004) {
    const isGradient = r.bl() !== 0;
    r.bl();
    r.bd();
    r.bd();
    r.bl();
    r.bd();
    const colors = r.list(4, () => {
      r.bd();
      return r.color();
    });
    const name = r.text();
    if (isGradient) gradient = { name, colors };
  }
  const [elevation, normal, pattern, isSolid] = [r.bd(), r.bd3(), r.text(), r.bit() === 1];
  r.bit();
  const paths = r.list(4, () => hatchPath(r));
  const style = r.bs();
  r.bs();
  const lines = [];
  if (!isSolid) {
    r.bd();
    r.bd();
    r.bit();
    for (let left = r.count(r.bs(), 12); left > 0; left--) {
      const [angle, base, offset] = [r.bd(), r.bd2(), r.bd2()];
      lines.push({ angle, base, offset, dashes: Array.from({ length: r.count(r.bs(), 2) }, () => r.bd()) });
    }
  }
  return { gradient, elevation, normal, pattern, isSolid, paths, style, lines };
}
