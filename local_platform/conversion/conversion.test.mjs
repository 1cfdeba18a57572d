// SPDX-License-Identifier: MIT
// node --test

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, describe, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { dgnToDwg } from './dgn_to_dwg.mjs';
import { dwgToDgn } from './dwg_to_dgn.mjs';
import { readDgn } from './dgn/reader.mjs';
import { TextCodec } from './dgn/text.mjs';
import { readDouble, readInt32, writeDouble, writeInt32 } from './dgn/vax.mjs';
import { indexRgb } from './indexed_colors.mjs';
import { FULL_TURN, arcEnds, arcExtremes, arcPoint } from './geometry.mjs';
import { Refusal } from './outcome.mjs';
import { strokeSpline } from './spline.mjs';
import { styleOfLineType } from './symbology.mjs';
import { assertClose, randomNumbers, styled, throughDgn, throughDwg, writeDgn } from './testing/compare.mjs';
import { assignLevels } from './to_dgn/levels.mjs';
import * as acad from '@node-projects/acad-ts';

const here = fileURLToPath(new URL('.', import.meta.url));
const scratch = mkdtempSync(join(tmpdir(), 'conversion-'));
after(() => rmSync(scratch, { recursive: true }));

const line = (...points) => styled({ kind: 'line', points });
const text = (value, angle = 0, style = {}) => styled({ kind: 'text', origin: [1.25, -2.5, 0],
  xAxis: [Math.cos(angle), Math.sin(angle), 0], yAxis: [-Math.sin(angle), Math.cos(angle), 0],
  height: 2.5, width: 2, text: value }, style);
const arc = (center, a, b, start, sweep) =>
  styled({ kind: 'arc', center, axis1: [a, 0, 0], axis2: [0, b, 0], start, sweep });
const ellipse = (center, a, b) => ({ ...arc(center, a, b, 0, FULL_TURN), kind: 'ellipse' });

test('VAX numbers', () => {
  const int32 = [writeInt32, readInt32];
  const double = [writeDouble, readDouble];
  for (const [[write, read], value, hex] of [
    [int32, -1, 'ffffffff'], [int32, 0x12345678, '34127856'], [int32, -(2 ** 31), '00800000'],
    [double, 0, '0000000000000000'], [double, -1, '80c0000000000000'], [double, 0.5, '0040000000000000'],
    [double, -12.5, '48c2000000000000'], [double, Math.PI, '4941da0f21a2c068'],
  ]) {
    const buffer = Buffer.alloc(hex.length / 2, 0xaa);
    write(buffer, 0, value);
    assert.equal(buffer.toString('hex'), hex);
    assert.equal(read(buffer, 0), value);
  }
  const buffer = Buffer.alloc(8, 0xaa);
  assert.throws(() => writeDouble(buffer, 0, 1e39), RangeError);
  writeDouble(buffer, 0, 1e-40);
  assert.equal(readDouble(buffer, 0), 0);
});

const tilted = [[2 / 3, 2 / 3, 1 / 3], [-2 / 3, 1 / 3, 2 / 3]];
const FLAT = {
  line: line([0.001, -0.002, 0], [123.456, 7, 0]),
  'point, a line without length': line([5, 6, 0], [5, 6, 0]),
  'far from the origin': line([2547096.425, 583254.579, 0], [2549380.882, 585026.501, 0]),
  lineString: styled({ kind: 'lineString', points: [[0, 0, 0], [1, 0, 0], [1, 1, 0]] }),
  shape: styled({ kind: 'shape', filled: false, points: [[0, 0, 0], [4, 0, 0], [4, 3, 0]] }),
  'filled shape': styled({ kind: 'shape', filled: true, points: [[0, 0, 0], [4, 0, 0], [4, 3, 0]] }),
  circle: ellipse([-7.5, 3, 0], 2, 2),
  ellipse: ellipse([1, 2, 0], 5, 2),
  arc: arc([1, 2, 0], 5, 5, 0.5, 1.5),
  'arc over more than half a turn': arc([1, 2, 0], 5, 5, 4, 5),
  text: text('Room 12'),
  'turned text': text('turned', 2.5),
  'Chinese text': text('办公室 一层平面图 ±0.000'),
  'other characters': text('Größe é 🙂'),
};

describe('every kind there and back', () => {
  for (const [name, element] of Object.entries(FLAT)) {
    test(name, () => {
      for (const drawing of [throughDgn([element]), throughDwg([element])]) {
        assert.equal(drawing.is3d, false);
        assertClose(drawing.elements, [element], 1e-7);
        if (element.points) assert.deepEqual(drawing.elements[0].points, element.points);
      }
    });
  }

  const SOLID = [
    line([0, 0, 0], [1, 2, 3]),
    styled({ kind: 'lineString', points: [[0, 0, -1], [1, 0, 5], [1, 1, 2]] }),
    { ...text('in space'), origin: [1, 2, 3], xAxis: tilted[0], yAxis: tilted[1] },
    styled({ kind: 'arc', center: [1, 2, 3], axis1: tilted[0].map((v) => 3 * v), axis2: tilted[1].map((v) => 2 * v), start: 1, sweep: 2 }),
    ...[[1, -1, -1], [-1, 1, -1], [-1, -1, 1]].map(([x, y]) =>
      styled({ kind: 'arc', center: [0, 0, 3], axis1: [2 * x, 0, 0], axis2: [0, y, 0], start: 1, sweep: 2 })),
  ];
  test('in space, half turns among them', () => {
    for (const drawing of [throughDgn(SOLID), throughDwg(SOLID)]) {
      assert.equal(drawing.is3d, true);
      drawing.elements.forEach((element, i) => {
        assertClose(element.axis1 ? arcEnds(element) : element, SOLID[i].axis1 ? arcEnds(SOLID[i]) : SOLID[i], 1e-6);
      });
    }
  });

  test('an ellipse whose second axis is the longer keeps its axes', () => {
    const [{ axis1, axis2 }] = throughDwg([ellipse([1, 2, 0], 2, 5)]).elements;
    assertClose([axis1, axis2], [[0, 5, 0], [-2, 0, 0]], 1e-6);
  });

  test('clockwise arcs keep their ends and middle', () => {
    const clockwise = arc([1, 2, 0], 5, 5, 2, -1.5);
    const [direct] = throughDgn([clockwise]).elements;
    assertClose([direct.start, direct.sweep], [2, -1.5], 1e-7);
    const [turned] = throughDwg([clockwise]).elements;
    assertClose(arcEnds(turned), arcEnds(clockwise).reverse(), 1e-6);
    assertClose(arcPoint(turned, turned.start + turned.sweep / 2), arcPoint(clockwise, 1.25), 1e-6);
  });

  test('a closed outline of lines and arcs stays one', () => {
    const member = (a, b) => ({ kind: 'lineString', points: [a, b] });
    const outline = styled({ kind: 'chain', closed: true, members: [
      member([0, 0, 0], [10, 0, 0]), { ...arc([10, 5, 0], 5, 5, -Math.PI / 2, Math.PI) },
      member([10, 10, 0], [0, 10, 0]), { ...arc([0, 5, 0], 5, 5, Math.PI / 2, Math.PI) },
    ] });
    const [there] = throughDwg([outline]).elements;
    assert.equal(there.closed, true);
    assert.deepEqual(there.members.map((m) => m.kind), ['lineString', 'arc', 'lineString', 'arc']);
    assertClose(there.members.filter((m) => m.points).map((m) => m.points), outline.members.filter((m) => m.points).map((m) => m.points), 1e-6);
    assertClose(there.members.filter((m) => m.center).map((m) => m.center), [[10, 5, 0], [0, 5, 0]], 1e-6);
  });

  for (const [kind, count] of [['lineString', 101], ['lineString', 25000], ['shape', 101]]) {
    test(`${kind} of ${count} points`, () => {
      const points = Array.from({ length: count }, (_, i) => [i, i % 7, 0]);
      const elements = throughDwg([styled({ kind, points, filled: false })]).elements;
      const parts = elements.flatMap((e) => e.members ?? [e]);
      assert.ok(parts.every((part) => part.points.length + (part.kind === 'shape') <= 101), 'no element holds more');
      const found = elements.flatMap((e) => (e.members ?? [e]).flatMap((m, i) => m.points.slice(i > 0 ? 1 : 0)));
      const distinct = found.filter((p, i) => i === 0 || p[0] !== found[i - 1][0]).slice(0, count);
      assert.deepEqual(distinct, points);
    });
  }

  test('level, weight and style at their ends, and hidden levels', () => {
    const elements = [[1, 0, 0], [63, 14, 7]].map(([level, weight, style]) => ({ ...FLAT.line, level, weight, style }));
    assertClose(throughDwg(elements).elements, elements, 0);
    const hidden = dgnToDwg(writeDgn({ elements, hiddenLevels: [63, 9] }));
    assert.deepEqual([...readDgn(dwgToDgn(Buffer.from(hidden.bytes)).bytes).hiddenLevels], [63]);
  });
});

test('weights to 23, units however they are written, one view that is on', () => {
  const weights = Array.from({ length: 24 }, (_, weight) => ({ ...FLAT.line, weight }));
  assert.deepEqual(throughDwg(weights).elements.map((e) => e.weight), weights.map((e) => e.weight));
  for (const [unitName, back] of [["'", 'ft'], ['"', 'in'], ['mm', 'mm'], ['m', 'm'], ['FT', 'ft'], ['xx', 'mu']]) {
    assert.equal(throughDwg([FLAT.line], { unitName }).unitName, back);
  }
  const bytes = writeDgn({ elements: [FLAT.line] });
  assert.deepEqual(Array.from({ length: 8 }, (_, view) => bytes.readUInt16LE(46 + 118 * view) >> 7 & 1), [1, 0, 0, 0, 0, 0, 0, 0]);
});

test('a long text is split between its characters', () => {
  const { elements } = throughDgn([{ ...FLAT.text, text: '办'.repeat(200) }]);
  assert.deepEqual(elements.map((e) => e.text.length), [127, 73]);
});

test('files that a DGN refers to are named', () => {
  const bytes = writeDgn({ elements: [FLAT.line] });
  const attachment = Buffer.alloc(100);
  attachment.set([9, 5, 48, 0]);
  attachment.write('C:\\plans\\ground floor.dgn', 60, 'latin1');
  const { references } = readDgn(Buffer.concat([bytes.subarray(0, -2), attachment, bytes.subarray(-2)]));
  assert.deepEqual(references, ['drawing: C:\\plans\\ground floor.dgn']);
});

test('a linear dimension is drawn if its picture fills its range', () => {
  /** The element as it lies in a file: two points, and how far from the first its line is. */
  const dimension = (points, offset, range) => {
    const raw = Buffer.alloc(176);
    raw.set([5, 33, 86, 0]);
    range.flatMap((p) => [...p, 0]).forEach((v, i) => writeInt32(raw, 4 + 4 * i, (v * 1e6) ^ 0x80000000));
    raw.writeUInt16LE(72, 30);
    raw.set([1, 2], 48);
    [56, 60].forEach((at) => raw.writeInt32LE(1e6, at));
    points.forEach((p, i) => [...p, 0, i === 0 ? offset : 4].forEach((v, k) => raw.writeInt32LE(Math.round(v * 1e6), 136 + 20 * i + 4 * k)));
    return raw;
  };
  for (const [name, points, offset, range, figure, ends] of [
    ['across', [[0, 0], [9, 3]], 5, [[0, 0], [9, 6]], '9', [[0, 5, 0], [9, 5, 0]]],
    ['upwards', [[0, 0], [3, 9]], -5, [[0, 0], [6, 9]], '9', [[5, 0, 0], [5, 9, 0]]],
    ['along its points', [[0, 0], [8, 6]], 5, [[-3, 0], [8, 10]], '10', [[-3, 4, 0], [5, 10, 0]]],
    ['out of its range', [[0, 0], [9, 3]], 5, [[0, 0], [9, 50]], null],
  ]) {
    const bytes = writeDgn({ elements: [line([-50, -50, 0], [50, 50, 0])] });
    const { elements, leftOut } = readDgn(Buffer.concat([bytes.subarray(0, -2), dimension(points, offset, range), bytes.subarray(-2)]));
    if (!figure) {
      assert.equal(`${leftOut}`, '1 DIMENSION', name);
      continue;
    }
    const { members } = elements[1];
    assert.equal(members.find((m) => m.kind === 'text').text, figure, name);
    assertClose(members[2].points, ends, 1e-6, name);
  }
});

test('tags become attributes with the names of their set', () => {
  const sealed = (bytes, wordsToAttributes, properties = 0) => {
    bytes.writeUInt16LE(bytes.length / 2 - 2, 2);
    bytes.writeUInt16LE(wordsToAttributes, 30);
    bytes.writeUInt16LE(properties, 32);
    return bytes;
  };
  const names = Buffer.from('doors\0no\0\x07\0which?\0\x01\0\0\0\0\0\0D-0\0width\0\x08\0\0\x04\0\0\0\0\0\0\0\0\0\0\0\0\0\0', 'latin1');
  const head = Buffer.alloc(48);
  head.set([24, 66]);
  head.writeUInt16LE(2, 44);
  const body = Buffer.concat([head, names, Buffer.alloc(names.length % 2)]);
  const linkage = Buffer.from([3, 0x10, 0x2f, 0x7d, 5, 0, 0, 0]);
  const set = sealed(Buffer.concat([body, linkage]), (body.length - 32) / 2, 0x0800);
  const tag = (index, type, value, x) => {
    const bytes = Buffer.alloc(162);
    bytes.set([5, 37]);
    [x, 0, 0, x + 4, 1, 0].forEach((v, i) => writeInt32(bytes, 4 + 4 * i, (v * 1e6) ^ 0x80000000));
    [[68, 5], [72, index], [74, type], [150, 4]].forEach(([at, v]) => bytes.writeUInt16LE(v, at));
    value.copy(bytes, 154);
    return sealed(bytes, 65);
  };
  const plain = writeDgn({ elements: [line([-50, -50, 0], [50, 50, 0])] });
  const width = Buffer.alloc(8);
  writeDouble(width, 0, 2.5);
  const bytes = Buffer.concat([plain.subarray(0, -2), set, tag(7, 1, Buffer.from('D-1\0'), 3), tag(8, 4, width, 9), tag(9, 1, Buffer.from('lost'), 20), plain.subarray(-2)]);
  const result = dgnToDwg(bytes);
  assert.deepEqual([result.check.differences, `${result.drawn}`], [[], '2 tags as attributes, 1 tags as texts']);
  const entities = [...acad.DwgReader.readFromStream(Uint8Array.from(result.bytes).buffer).modelSpace.entities].filter((e) => e.block);
  assert.deepEqual(entities.map((e) => [e.block.name, ...[...e.attributes].map((a) => `${a.tag}=${a.value}`)]),
    [['doors', 'no=D-1'], ['doors', 'width=2.5']]);
});

test('the code page is that of the whole file, unless it is told', () => {
  const texts = ['Matériel', 'Größe', 'plain'].map((text) => ({ ...FLAT.text, text }));
  const western = writeDgn({ elements: texts, codePage: 'windows-1252' });
  assert.deepEqual(readDgn(western).elements.map((e) => e.text), texts.map((e) => e.text));
  assert.notEqual(readDgn(western, 'gbk').elements[0].text, 'Matériel');
});

test('the design plane is as fine as its extent and its tallest text allow', () => {
  for (const [element, resolution] of [[line([0, 0, 0], [1000, 0, 0]), 1e6], [line([0, 0, 0], [1e9, 0, 0]), 1],
    [text('tall', 0, { height: 900 }), 1e4]]) assert.equal(throughDgn([element]).uorPerMaster, resolution);
  assert.throws(() => writeDgn({ elements: [line([0, 0, 0], [1e10, 0, 0])] }), Refusal);
});

test('extremes of an arc lie on it, and only on it', () => {
  const xs = arcExtremes(arc([0, 0, 0], 2, 2, -0.1, 0.2)).map((p) => p[0]);
  assert.equal(Math.max(...xs), 2);
  assert.ok(Math.min(...xs) > 1.9);
});

test('a quarter circle as a rational spline', () => {
  const points = strokeSpline({ degree: 2, knots: [0, 0, 0, 1, 1, 1], weights: [1, Math.SQRT1_2, 1],
    points: [[1, 0, 0], [1, 1, 0], [0, 1, 0]] });
  for (const p of points) assertClose(Math.hypot(...p), 1, 1e-12);
});

describe('symbology', () => {
  test('levels of layers', () => {
    const of = (layers) => assignLevels(layers.map(([name, use, isHidden = false]) => ({ name, use, isHidden })));
    const few = of([['0', 1], ['Level 2', 1], ['walls', 5], ['7', 1], ['Level 99', 1], ['unused', 0]]);
    assert.deepEqual([...few.levels], [['Level 2', 2], ['7', 7], ['0', 1], ['walls', 3], ['Level 99', 4]]);
    // 40 visible and 40 hidden ones, with use that grows.
    const many = of(Array.from({ length: 80 }, (_, i) => [`layer ${i}`, i + 1, i % 2 === 1]));
    const visible = new Set(Array.from({ length: 40 }, (_, i) => many.levels.get(`layer ${2 * i}`)));
    assert.equal(visible.size, 40, 'each visible layer has a level of its own');
    assert.ok(many.hiddenLevels.every((level) => !visible.has(level)));
    assert.ok(!many.sharing.has('layer 79') && many.sharing.has('layer 1'));
    const crowd = of(Array.from({ length: 100 }, (_, i) => [`layer ${i}`, 1, i === 99]));
    assert.deepEqual(crowd.hiddenLevels, [crowd.levels.get('layer 99')]);
    assert.equal(new Set(crowd.levels.values()).size, 63);
  });
  test('line types', () => assert.deepEqual(
    ['Continuous', 'dashed2', 'DASHEDX2', 'HIDDEN', 'PHANTOM2', 'odd'].map(styleOfLineType), [0, 2, 3, 5, 6, 0]));
  test('the indexed colours of DWG keep their values', () => {
    const document = new acad.CadDocument(acad.ACadVersion.AC1015);
    for (let i = 1; i <= 254; i++) {
      const entity = new acad.Line();
      entity.endPoint = new acad.XYZ(i, 1, 0);
      entity.color = new acad.Color(i);
      document.modelSpace.entities.add(entity);
    }
    const back = acad.DwgReader.readFromStream(dgnToDwg(dwgToDgn(Buffer.from(acad.DwgWriter.writeToBuffer(document))).bytes).bytes.buffer);
    [...back.modelSpace.entities].forEach((entity, i) => assert.deepEqual(indexRgb(entity.color.index), indexRgb(i + 1), `colour ${i + 1}`));
  });
});

test('text is read and written in its code page', () => {
  for (const [page, bytes, expected] of [
    ['gbk', [0xb0, 0xec, 0x41, 0], '办A'], ['gbk', [0xff, 0xfd, 0xec, 0xb0, 0x41, 0x00], '办A'],
    ['windows-1252', [0xc4, 0xd6], 'ÄÖ'], ['gbk', [0x43, 0x61, 0x66, 0xe9], 'Café'],
    ['gbk', [...Buffer.from('\\U+00C4')], 'Ä'],
  ]) assert.equal(new TextCodec(page).decode(Uint8Array.from(bytes)), expected);
  assert.deepEqual([...new TextCodec('gbk').encode('办\tüÄ🙂')],
    [0xb0, 0xec, 0x20, 0xa8, 0xb9, ...Buffer.from('\\U+00C4\\U+D83D\\U+DE42')]);
});

describe('the command', () => {
  const inScratch = (name) => join(scratch, name);
  function file(name, bytes) {
    writeFileSync(inScratch(name), bytes);
    return inScratch(name);
  }
  function run(...args) {
    const { status, stdout, stderr } = spawnSync(process.execPath, [join(here, 'convert.mjs'), ...args], { encoding: 'utf8' });
    return { status, stdout, stderr };
  }
  const good = writeDgn({ elements: Object.values(FLAT) });
  const dimension = writeDgn({ elements: [FLAT.line, FLAT.circle] });
  dimension[dimension.lastIndexOf(Buffer.from([5, 15])) + 1] = 33;
  const dwg = Buffer.from(dgnToDwg(good).bytes);
  const empty = Buffer.from(acad.DwgWriter.writeToBuffer(new acad.CadDocument(acad.ACadVersion.AC1015)));

  test('says what it left out', () => {
    const output = inScratch('out.dwg');
    assert.deepEqual(run(file('in.dgn', dimension), output), { status: 0, stdout: 'left out: 1 DIMENSION\n', stderr: '' });
    const back = inScratch('back.dgn');
    assert.deepEqual(run('dwg2dgn', output, back), { status: 0, stdout: '', stderr: '' });
    assert.equal(readDgn(readFileSync(back)).elements.length, 1);
  });

  test('reports what came and went, and which refusal it was', () => {
    const report = inScratch('report.json');
    const told = () => JSON.parse(readFileSync(report));
    run('--report', report, file('r.dgn', dimension), inScratch('r.dwg'));
    const { outcome, came, leftOut, check, tolerance } = told();
    assert.deepEqual([outcome, came, leftOut, check.agrees, check.kinds], ['converted', { LINE: 1 }, { DIMENSION: 1 }, true, { lines: 1 }]);
    assert.equal(tolerance.curves, 1e-4);
    for (const [kind, name, bytes] of [['tooNew', 's.dgn', Buffer.from('d0cf11e0a1b11ae10000', 'hex')], ['tooOld', 's.dwg', 'AC1006' + ' '.repeat(99)],
      ['damaged', 't.dwg', dwg.subarray(0, -300)], ['empty', 'u.dwg', '']]) {
      const to = name.endsWith('dwg') ? 'r.dgn' : 'r.dwg';
      const { stderr } = run('--report', report, file(name, bytes), inScratch(to));
      assert.deepEqual([told().outcome, told().kind, `${told().reason}\n`], ['refused', kind, stderr]);
    }
  });

  const refused = { dgn: inScratch('refused.dwg'), dwg: inScratch('refused.dgn') };
  for (const [reason, ...args] of [
    [/the file is empty/, file('a.dgn', ''), refused.dgn],
    [/DGN V8/, file('b.dgn', Buffer.from('d0cf11e0a1b11ae10000', 'hex')), refused.dgn],
    [/cell library/, file('c.dgn', Buffer.from('0805170000000000', 'hex')), refused.dgn],
    [/not a DGN/, file('d.dgn', dwg), refused.dgn],
    [/not a DWG/, file('e.dwg', good), refused.dwg],
    [/DGN file is cut short/, file('f.dgn', good.subarray(0, -300)), refused.dgn],
    [/DWG file is damaged/, file('g.dwg', dwg.subarray(0, -300)), refused.dwg],
    [/DGN file holds nothing/, file('h.dgn', Buffer.concat([good.subarray(0, 2048), Buffer.from('ffff', 'hex')])), refused.dgn],
    [/DWG file holds nothing/, file('i.dwg', empty), refused.dwg],
    [/DWG file is damaged/, file('j.dwg', Buffer.concat([Buffer.from('AC1032'), Buffer.alloc(5000, 0x5a)])), refused.dwg],
    [/AC1009\) is too old/, file('m.dwg', 'AC1009' + ' '.repeat(500)), refused.dwg],
    [/AC1035\) is too new/, file('n.dwg', 'AC1035' + ' '.repeat(500)), refused.dwg],
    [/usage/], [/usage/, 'a.dxf', 'a.dwg'], [/input cannot be read/, 'no-such.dgn', refused.dgn],
    [/klingon/, '--codepage', 'klingon', file('k.dgn', good), refused.dgn],
    [/output cannot be written/, 'dgn2dwg', file('l.dgn', good), mkdtempSync(inScratch('folder'))],
  ]) {
    test(`refuses ${args.map((arg) => arg.replace(scratch, ''))}: ${reason}`, () => {
      const { status, stdout, stderr } = run(...args);
      assert.deepEqual([status, stdout], [1, '']);
      assert.match(stderr, /^[^\n]+\n$/);
      assert.match(stderr, reason);
      assert.deepEqual(readdirSync(scratch).filter((name) => /^refused|\.part$/.test(name)), []);
    });
  }
});

test('a DGN file with bytes changed is a drawing or a reason', () => {
  const bytes = writeDgn({ elements: [FLAT.text, FLAT.arc, FLAT['filled shape'], styled({ kind: 'chain', closed: true,
    members: [{ kind: 'lineString', points: [[0, 0, 0], [1, 1, 0]] }, { kind: 'line', points: [[1, 1, 0], [0, 0, 0]] }] })] });
  const random = randomNumbers(20240607);
  let read = 0;
  for (let round = 0; round < 400; round++) {
    const damaged = Buffer.from(bytes);
    // Mostly the elements, where the lengths and counts are.
    for (let i = 0; i <= random(6); i++) damaged[random(3) ? 2854 + random(bytes.length - 2854) : random(1536)] = random(256);
    try {
      dgnToDwg(damaged);
      read++;
    } catch (error) {
      assert.ok(error instanceof Refusal, error.stack);
    }
  }
  assert.ok(read > 0 && read < 400, `${read} of 400 read`);
});
