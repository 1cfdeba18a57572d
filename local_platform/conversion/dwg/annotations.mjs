// SPDX-License-Identifier: MIT
// Dimensions, leaders and tolerances.

function dimension(r, shape) {
  if (r.year >= 2010) r.u8();
  const normal = r.bd3();
  const middle = r.rd2();
  const z = r.bd();
  const flags = r.u8();
  const [value, textRotation, horizontal] = [r.text(), r.bd(), r.bd()];
  for (let i = 0; i < 4; i++) r.bd();
  let measurement = null;
  if (r.isNew) {
    r.bs();
    r.bs();
    r.bd();
    measurement = r.bd();
  }
  if (r.year >= 2007) r.skip(3);
  r.rd2();
  const result = { normal, textMiddle: [...middle, z], flags, value, textRotation, horizontal, measurement,
    ...shape(r) };
  const [style, block] = [r.ref(), r.ref()];
  return { ...result, style, block };
}

const SHAPES = {
  DIM_ORDINATE: (r) => ({ definition: r.bd3(), feature: r.bd3(), leaderEnd: r.bd3(), isX: (r.u8() & 1) !== 0 }),
  DIM_ALIGNED: (r) => ({ first: r.bd3(), second: r.bd3(), definition: r.bd3(), oblique: r.bd() }),
  DIM_LINEAR: (r) => ({ ...SHAPES.DIM_ALIGNED(r), rotation: r.bd() }),
  DIM_ANGULAR_3: (r) => ({ definition: r.bd3(), first: r.bd3(), second: r.bd3(), vertex: r.bd3() }),
  DIM_ANGULAR_2: (r) => ({ arc: r.rd2(), first: r.bd3(), second: r.bd3(), vertex: r.bd3(), definition: r.bd3() }),
  DIM_RADIUS: (r) => ({ definition: r.bd3(), vertex: r.bd3(), leaderLength: r.bd() }),
  DIM_DIAMETER: (r) => ({ vertex: r.bd3(), definition: r.bd3(), leaderLength: r.bd() }),
};

/** Readers of dimensions by their kinds. */
export const DIMENSIONS = Object.fromEntries(Object.entries(SHAPES).map(([kind, shape]) => [kind, (r) => dimension(r, shape)]));

export function leader(r) {
  r.bit();
  const [creation, path] = [r.bs(), r.bs()];
  const points = r.list(6, () => r.bd3());
  r.bd3();
  const normal = r.bd3();
  for (let i = 0; i < (r.year >= 14 ? 3 : 2); i++) r.bd3();
  if (!r.isNew) r.bd();
  if (r.year <= 2007) {
    r.bd();
    r.bd();
  }
  r.bit();
  const hasArrow = r.bit() === 1;
  let arrowSize = null;
  if (!r.isNew) {
    r.bs();
    arrowSize = r.bd();
    r.skip(2);
    r.bs();
    r.bs();
    r.skip(2);
  } else {
    r.bs();
    r.skip(2);
  }
  r.ref();
  return { creation, isSpline: path === 1, points, normal, hasArrow, arrowSize, style: r.ref() };
}

const breaks = (r) => { r.list(12, () => [r.bd3(), r.bd3()]); };

function leaderLine(r) {
  const points = r.list(6, () => r.bd3());
  if (r.bl() > 0) {
    r.bl();
    breaks(r);
  }
  r.bl();
  if (r.year >= 2010) {
    r.bs();
    r.color();
    r.ref();
    r.bl();
    r.bd();
    r.ref();
    r.bl();
  }
  return points;
}

function leaderRoot(r) {
  r.skip(2);
  const [connection, direction] = [r.bd3(), r.bd3()];
  breaks(r);
  r.bl();
  const landing = r.bd();
  const lines = r.list(8, () => leaderLine(r));
  if (r.year >= 2010) r.bs();
  return { connection, direction, landing, lines };
}

export function multiLeader(r) {
  if (r.year >= 2010) r.bs();
  let rootCount = r.bl();
  if (rootCount === 0) {
    r.skip(5);
    rootCount = r.bit() ? 2 : 1;
    r.skip(1);
  }
  const roots = Array.from({ length: r.count(rootCount, 16) }, () => leaderRoot(r));
  const result = { roots, text: null, block: null };
  r.bd();
  r.bd3();
  const [height, arrowSize] = [r.bd(), r.bd()];
  result.arrowSize = arrowSize;
  r.bd();
  for (let i = 0; i < 4; i++) r.bs();
  if (r.bit()) {
    const [value, normal, style, insert, direction] = [r.text(), r.bd3(), r.ref(), r.bd3(), r.bd3()];
    r.bd();
    const width = r.bd();
    r.bd();
    const spacing = r.bd();
    r.bs();
    r.color();
    const attachment = r.bs();
    r.bs();
    r.color();
    r.bd();
    r.bl();
    r.skip(2);
    r.bs();
    r.bit();
    r.bd();
    r.bd();
    r.bit();
    r.list(2, () => r.bd());
    r.skip(2);
    // Three ways to stand: to the right of its point, centred, to the left.
    result.text = { value, normal, style, insert, direction, width, height, spacing: spacing || 1,
      attachment: { 1: 1, 2: 2, 3: 3 }[attachment] ?? 1 };
  } else if (r.bit()) {
    const block = r.ref();
    const [normal, insert, scale, rotation] = [r.bd3(), r.bd3(), r.bd3(), r.bd()];
    result.block = { block, normal, insert, scale, rotation };
    r.color();
    for (let i = 0; i < 16; i++) r.bd();
  }
  for (let i = 0; i < 3; i++) r.bd3();
  r.bit();
  if (r.year >= 2010) for (let i = 0; i < 2; i++) r.bs();
  r.ref();
  r.bl();
  const path = r.bs();
  result.isDrawn = path !== 0;
  result.isSpline = path === 2;
  r.color();
  r.ref();
  r.bl();
  const [hasLanding, hasDogleg] = [r.bit(), r.bit()];
  result.hasDogleg = hasLanding === 1 && hasDogleg === 1;
  r.bd();
  result.arrow = r.ref();
  result.arrowSize = r.bd() || arrowSize;
  return result;
}

export function tolerance(r) {
  if (!r.isNew) {
    r.bs();
    r.bd();
    r.bd();
  }
  const [insert, direction, normal] = [r.bd3(), r.bd3(), r.bd3()];
  return { insert, direction, normal, value: r.text(), style: r.ref() };
}
