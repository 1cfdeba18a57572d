// SPDX-License-Identifier: MIT
// The entries of tables and the few other objects that drawings need: layers, line types, text and
// dimension styles, blocks, and what images and layouts are called.

const MODEL = /^\*model_space$/i;
const PAPER = /^\*paper_space/i;

function layer(r) {
  const result = { name: r.text() };
  r.xrefFlags();
  if (r.isNew) {
    const flags = r.bs();
    Object.assign(result, { isFrozen: (flags & 1) !== 0, isOn: (flags & 2) === 0, lineWeight: (flags >> 5) & 0x1f });
  } else {
    Object.assign(result, { isFrozen: r.bit() === 1, isOn: r.bit() === 0, lineWeight: 31 });
    r.skip(2);
  }
  result.color = r.color();
  // Some writers say by its sign that a layer is off.
  if (result.color > 0x7fff && r.year < 2004) result.color = -((result.color << 16) >> 16);
  if (result.color < 0) Object.assign(result, { color: -result.color, isOn: false });
  r.ref();
  if (r.isNew) result.plotStyle = r.ref();
  if (r.year >= 2007) r.ref();
  result.lineType = r.ref();
  return result;
}

function lineType(r) {
  const name = r.text();
  r.xrefFlags();
  r.text();
  r.bd();
  r.u8();
  const dashes = Array.from({ length: r.u8() }, () => {
    const size = r.bd();
    r.bs();
    r.rd2();
    r.bd();
    r.bd();
    r.bs();
    return size;
  });
  return { name, dashes };
}

function textStyle(r) {
  const name = r.text();
  r.xrefFlags();
  r.skip(2);
  const [height, width, oblique] = [r.bd(), r.bd(), r.bd()];
  r.u8();
  r.bd();
  return { name, height, width, oblique, font: r.text(), bigFont: r.text() };
}

function dimensionStyle(r) {
  const result = { name: r.text(), scale: 1, arrowSize: 0.18, extensionOffset: 0, extension: 0.18, textHeight: 0.18,
    tickSize: 0, factor: 1, gap: 0.09 };
  r.xrefFlags();
  // The older releases keep their settings in another order; their dimensions bring their pictures along.
  if (!r.isNew) return result;
  r.text();
  r.text();
  [result.scale, result.arrowSize, result.extensionOffset] = [r.bd(), r.bd(), r.bd()];
  r.bd();
  result.extension = r.bd();
  for (let i = 0; i < 4; i++) r.bd();
  if (r.year >= 2007) {
    r.bd();
    r.bd();
    r.bs();
    r.color();
  }
  r.skip(6);
  for (let i = 0; i < (r.year >= 2007 ? 4 : 3); i++) r.bs();
  result.textHeight = r.bd();
  r.bd();
  result.tickSize = r.bd();
  r.bd();
  result.factor = r.bd();
  r.bd();
  r.bd();
  result.gap = r.bd();
  result.scale ||= 1;
  return result;
}

function block(r) {
  const name = r.text();
  r.xrefFlags();
  const isAnonymous = r.bit() === 1;
  r.bit();
  const isExternal = [r.bit(), r.bit()].includes(1);
  if (r.isNew) r.bit();
  const ownedCount = r.year >= 2004 && !isExternal ? r.bl() : 0;
  const [base, path] = [r.bd3(), r.text()];
  let insertCount = 0;
  if (r.isNew) {
    while (r.u8() !== 0) insertCount++;
    r.text();
    r.skip(8 * r.counted(8));
  }
  if (r.year >= 2007) {
    r.bs();
    r.bit();
    r.u8();
  }
  r.ref();
  const head = r.ref();
  const result = { name, isAnonymous, isExternal, base, path, head, isModel: MODEL.test(name),
    isPaper: PAPER.test(name) };
  if (r.year >= 2004) result.parts = r.refs(ownedCount);
  else if (!isExternal) result.chain = { first: r.ref(), last: r.ref() };
  result.tail = r.ref();
  if (r.isNew) {
    r.refs(insertCount);
    result.layout = r.ref();
  }
  return result;
}

function multiLineStyle(r) {
  const name = r.text();
  r.text();
  r.bs();
  r.color();
  r.bd();
  r.bd();
  const lines = Array.from({ length: r.u8() }, () => {
    const result = { offset: r.bd(), color: r.color(), lineType: null };
    if (r.year < 2018) r.bs();
    else r.ref();
    return result;
  });
  return { name, lines };
}

const imageDefinition = (r) => {
  r.bl();
  r.rd2();
  return { path: r.text() };
};

/** What is printed how stands before the name of a sheet. */
function layout(r) {
  r.text();
  r.text();
  r.bs();
  for (let i = 0; i < 6; i++) r.bd();
  r.text();
  r.bd2();
  for (let i = 0; i < 3; i++) r.bs();
  for (let i = 0; i < 4; i++) r.bd();
  if (r.year < 2004) r.text();
  r.bd2();
  r.text();
  r.bs();
  for (let i = 0; i < 3; i++) r.bd();
  if (r.year >= 2004) for (let i = 0; i < 3; i++) r.bs();
  return { name: r.text() };
}

const TABLE_TYPES = new Map([
  [49, ['blocks', block]], [51, ['layers', layer]], [53, ['textStyles', textStyle]], [57, ['lineTypes', lineType]],
  [69, ['dimensionStyles', dimensionStyle]], [73, ['multiLineStyles', multiLineStyle]], [82, ['layouts', layout]],
]);
const TABLE_CLASSES = new Map([['IMAGEDEF', ['images', imageDefinition]], ['LAYOUT', ['layouts', layout]],
  ...['PDF', 'DGN', 'DWF'].map((kind) => [`${kind}DEFINITION`, ['underlays', (r) => ({ path: r.text() })]])]);

export const TABLES = ['blocks', 'layers', 'textStyles', 'lineTypes', 'dimensionStyles', 'multiLineStyles', 'images', 'layouts', 'underlays'];

/** [table, read] of an object's type, if it belongs to one. */
export const tableOf = (type, className) => TABLE_TYPES.get(type) ?? TABLE_CLASSES.get(className);
