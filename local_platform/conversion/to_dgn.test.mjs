// SPDX-License-Identifier: MIT
// What DWG has and DGN has not, or has otherwise.

import assert from 'node:assert/strict';
import { describe, test } from 'node:test';
import { arcEnds } from './geometry.mjs';
import { Refusal } from './outcome.mjs';
import { readDgn } from './dgn/reader.mjs';
import { dgnToDwg } from './dgn_to_dwg.mjs';
import { crc16 } from './dwg/checksums.mjs';
import { readDwg } from './dwg/document.mjs';
import { readObjectMap } from './dwg/object_map.mjs';
import { assertClose, randomNumbers } from './testing/compare.mjs';
import { acad, at, block, convert, dwgOf, segment } from './testing/drawings.mjs';
import { dwgToDgn } from './dwg_to_dgn.mjs';

const { XYZ, XY } = acad;

test('inserts become cells, with what they pass on', () => {
  const { elements } = convert((document, add) => {
    const layer = new acad.Layer('Level 9');
    layer.color = new acad.Color(5);
    document.layers.add(layer);
    const byBlock = at(segment(0, 0, 1, 0), { color: acad.Color.byBlock });
    const circle = at(new acad.Circle(), { center: new XYZ(1, 1, 0), radius: 1 });
    const inner = block(document, 'inner', byBlock, circle);
    const outer = block(document, 'outer', at(new acad.Insert(inner), { insertPoint: new XYZ(10, 0, 0), color: acad.Color.byBlock }),
      segment(0, 0, 1, 0));
    add(at(new acad.Insert(outer), { insertPoint: new XYZ(100, 50, 0), rotation: Math.PI / 2, xScale: 2, yScale: 3,
      color: new acad.Color(1), layer }));
    add(at(new acad.Insert(block(document, 'row', segment(0, 0, 1, 0))), { columnCount: 2, columnSpacing: 5 }));
  });
  const [whole, ...row] = elements;
  assertClose(whole, { kind: 'cell', name: 'OUTER', origin: [100, 50, 0], axes: [[0, 2, 0], [-3, 0, 0], [0, 0, 1]] }, 1e-3);
  const [inner] = whole.members;
  assert.deepEqual([inner.name, ...inner.members.map((e) => [e.kind, e.level, e.color])], ['INNER', ['line', 9, 3], ['ellipse', 9, 1]]);
  assertClose(inner.members[0].points, [[100, 70, 0], [100, 72, 0]], 1e-9);
  assertClose(inner.members[1], { center: [97, 72, 0], axis1: [0, 2, 0], axis2: [-3, 0, 0] }, 1e-6);
  assert.deepEqual(row.map((e) => e.members[0].points[0]), [[0, 0, 0], [5, 0, 0]]);
});

test('inserts of one block, turned, scaled and mirrored, are inserts of one block on the way back', () => {
  const places = [[0, 1, 1], [1, 2, 2], [2, 5, 5], [0, -2, 1], [4, 3, -3]];
  const { result } = convert((document, add) => {
    const window = block(document, 'Window-double-1200', segment(0, 0, 1, 0), at(new acad.Circle(), { center: new XYZ(0.5, 0.5, 0), radius: 0.3 }));
    places.forEach(([rotation, xScale, yScale], i) => add(at(new acad.Insert(window), { insertPoint: new XYZ(9 * i, 7, 0), rotation, xScale, yScale })));
  });
  const back = readDwg(dgnToDwg(result.bytes).bytes);
  assert.deepEqual([...back.blocks.values()].map((one) => one.name).slice(2), ['Window-double-1200']);
  const axes = (turn, x, y) => [[x * Math.cos(turn), x * Math.sin(turn)], [-y * Math.sin(turn), y * Math.cos(turn)]];
  assertClose(back.parts(back.model).map((e) => axes(e.rotation, e.scale[0], e.scale[1])), places.map((p) => axes(...p)), 1e-9);
});

test('attributes lie where they lie, whatever the scale of their insert, and come back as attributes of one block', () => {
  const values = ['D-1', 'Größe'];
  const { elements, result } = convert((document, add) => {
    const door = block(document, 'door', segment(0, 0, 1, 0));
    values.forEach((value, i) => {
      const insert = at(new acad.Insert(door), { xScale: 10, yScale: 10, zScale: 10, insertPoint: new XYZ(40 * i, 0, 0) });
      insert.attributes.push(at(new acad.AttributeEntity(), { value, tag: 'NO', insertPoint: new XYZ(3 + 40 * i, 4, 0), height: 2, handle: 900 + i }));
      add(insert);
    });
  });
  const texts = elements.map((cell) => cell.members.find((e) => e.kind === 'text')).sort((a, b) => a.origin[0] - b.origin[0]);
  assertClose(texts, values.map((text, i) => ({ text, origin: [3 + 40 * i, 4, 0], height: 2 })), 1e-6);
  const back = dgnToDwg(result.bytes);
  assert.deepEqual(back.check.differences, []);
  const inserts = [...acad.DwgReader.readFromStream(Uint8Array.from(back.bytes).buffer).modelSpace.entities];
  assert.deepEqual(inserts.map((insert) => insert.block.name), ['door', 'door']);
  const seen = inserts.flatMap((insert) => [...insert.attributes].map(({ tag, value }) => [tag, value]));
  assert.deepEqual(seen.sort(), values.map((value) => ['NO', value]));
});

test('blocks within blocks do not run away', () => {
  assert.throws(() => convert((document, add) => {
    let inner = block(document, 'b0', segment(0, 0, 1, 0));
    for (let i = 1; i < 40; i++) inner = block(document, `b${i}`, new acad.Insert(inner));
    add(new acad.Insert(inner));
  }), (error) => error instanceof Refusal && /nested/.test(error.message));
});

test('dimensions are the picture that they come with, or drawn from what they measure', () => {
  const { elements, drawn } = convert((document, add) => {
    const picture = block(document, '*D1', segment(0, 3, 10, 3), at(new acad.TextEntity('10.00'), { height: 1 }),
      at(new acad.Point(), { location: new XYZ(10, 0, 0) }));
    add(at(new acad.DimensionAligned(), { secondPoint: new XYZ(10, 0, 0), block: picture }));
    add(at(new acad.DimensionAligned(), { firstPoint: new XYZ(0, 0, 0), secondPoint: new XYZ(8, 0, 0), definitionPoint: new XYZ(8, 4, 0) }));
  });
  assert.deepEqual(elements.map((e) => e.members.map((m) => m.kind)), [['line', 'text'],
    ['line', 'line', 'line', 'shape', 'shape', 'text']]);
  assertClose(elements[1].members[0].points, [[0, 4, 0], [8, 4, 0]], 1e-6);
  assert.equal(elements[1].members.at(-1).text, '8');
  assert.equal(drawn, '1 dimensions as their pictures, 1 dimensions from their definitions');
});

test('bulges, splines, paragraphs, seen from below, true colours, left out', () => {
  const { elements, leftOut, is3d } = convert((document, add) => {
    const round = new acad.LwPolyline([new XY(0, 0), new XY(4, 0)]);
    round.vertices[0].bulge = 1;
    add(round);
    add(at(new acad.Spline(), { degree: 1, knots: [0, 0, 1, 1], controlPoints: [new XYZ(0, 0, 0), new XYZ(8, 8, 0)] }));
    add(at(new acad.MText('{\\fArial|b0;first}\\P\\W1.5;sec\\~ond %%d \\U+6d4b'), { insertPoint: new XYZ(0, 10, 0), height: 3 }));
    add(at(new acad.Arc(new XYZ(1, 2, 0), 5, 0, Math.PI / 2), { normal: new XYZ(0, 0, -1) }));
    add(at(segment(0, 0, 1, 1), { color: new acad.Color(5, 250, 5) }));
    add(at(segment(0, 0, NaN, 1), {}));
  });
  assert.equal(is3d, false);
  assert.deepEqual(elements.map((e) => e.kind), ['arc', 'spline', 'text', 'text', 'arc', 'line']);
  assertClose(elements[0], { center: [2, 0, 0], sweep: Math.PI }, 1e-7);
  assertClose(elements[1].points, [[0, 0, 0], [8, 8, 0]], 0);
  assert.deepEqual(elements.slice(2, 4).map((e) => e.text), ['first', 'sec ond ° 测']);
  assertClose(elements.slice(2, 4).map((e) => [...e.origin, e.width]), [[0, 7, 0, 3], [0, 2, 0, 4.5]], 1e-6);
  assertClose(arcEnds(elements[4]), [[-6, 2, 0], [-1, 7, 0]], 1e-6);
  assert.equal(elements[5].color, 2);
  assert.equal(leftOut, '1 LINE without a place');
});

test('construction lines end with the drawing, thickness has edges, sheets are named', () => {
  for (const version of ['AC1014', 'AC1015', 'AC1018', 'AC1024', 'AC1032']) {
    const { elements, leftOut } = convert((document, add) => {
      add(at(new acad.XLine(), { firstPoint: new XYZ(3, 1, 0), direction: new XYZ(0, 2, 0) }));
      add(at(new acad.Ray(), { startPoint: new XYZ(9, 1, 0), direction: new XYZ(-1, 0, 0) }));
      add(at(new acad.Ray(), { startPoint: new XYZ(9, 50, 0), direction: new XYZ(-1, 0, 0) }));
      add(at(segment(0, 0, 10, 4), { thickness: 5 }));
      document.paperSpace.entities.add(segment(0, 0, 1, 1));
    }, version);
    const seen = elements.map(({ points }) => points.map((p) => p.map((v) => Math.round(10 * v) / 10)));
    assert.deepEqual(seen, [
      [[0, 0, 0], [10, 4, 0]], [[0, 0, 5], [10, 4, 5]], [[0, 0, 0], [0, 0, 5]], [[10, 4, 0], [10, 4, 5]],
      [[3, -0.5, 0], [3, 4.5, 0]], [[9, 1, 0], [-0.5, 1, 0]],
    ], version);
    assert.match(leftOut, /^1 RAY beside the drawing, 1 entities on the sheet "(Layout1|\*Paper_Space)"$/);
  }
});

test('numbers far beyond the drawing do not keep a hatch going', () => {
  const arc = at(new acad.HatchBoundaryPathArc(), { center: new XY(5, 5), radius: 5, startAngle: 0, endAngle: -1e300, counterClockWise: true });
  const corners = [[0, 0, 0], [1e17, 0, 0], [0, 1e17, 0]].map((p) => new XYZ(...p));
  const outline = at(new acad.HatchBoundaryPathPolyline(), { isClosed: true, vertices: corners });
  for (const edge of [arc, outline]) {
    for (const dashLengths of [[], [1, -1]]) {
      const pattern = new acad.HatchPattern('LINES');
      pattern.lines.push(at(new acad.HatchPatternLine(), { angle: 0, basePoint: new XY(0, -1e20), offset: new XY(0, 1e13), dashLengths }));
      const path = new acad.HatchBoundaryPath([edge]);
      const draw = () => convert((document, add) => add(at(new acad.Hatch(), { isSolid: false, pattern, paths: [path] })));
      if (edge === arc) assert.equal(draw().elements.length, 1);
      else assert.throws(draw, (error) => error instanceof Refusal);
    }
  }
});

test('a fill with an island is a cell with a hole, a pattern its lines', () => {
  const square = (from, to) => at(new acad.HatchBoundaryPathPolyline(), { isClosed: true,
    vertices: [[from, from], [to, from], [to, to], [from, to]].map(([x, y]) => new XYZ(x, y, 0)) });
  const hatch = (pattern, ...loops) => at(new acad.Hatch(), { isSolid: !pattern, pattern: pattern ?? acad.HatchPattern.solid,
    paths: loops.map((loop) => new acad.HatchBoundaryPath([loop])) });
  const lines = new acad.HatchPattern('LINES');
  lines.lines.push(at(new acad.HatchPatternLine(), { angle: 0, basePoint: new XY(0, 1), offset: new XY(0, 4) }));
  const { elements } = convert((document, add) => {
    add(hatch(null, square(0, 10), square(2, 4)));
    add(hatch(lines, square(0, 10), square(4, 6)));
  });
  assert.deepEqual(elements[0].members.map((m) => [m.kind, m.filled, m.isHole ?? false]), [['shape', true, false], ['shape', false, true]]);
  assertClose(elements[1].members.map((m) => m.points), [[[0, 1, 0], [10, 1, 0]], [[0, 5, 0], [4, 5, 0]], [[6, 5, 0], [10, 5, 0]],
    [[0, 9, 0], [10, 9, 0]]], 1e-9);
});

test('layers beyond the levels of DGN keep their names and what is off, there and back', () => {
  const named = (i) => (i === 0 ? '办公' : `layer ${i}`);
  const { result } = convert((document, add) => Array.from({ length: 90 }, (_, i) => {
    const layer = at(new acad.Layer(named(i)), { isOn: i % 3 > 0 });
    document.layers.add(layer);
    for (let k = 0; k <= i % 5; k++) add(at(segment(i, k, i, k + 1), { layer }));
    return layer;
  }), 'AC1032');
  assert.deepEqual(Object.keys(result.layers).length, 90);
  const back = readDwg(dgnToDwg(result.bytes).bytes);
  const seen = back.parts(back.model).map((e) => [e.start[0], back.layers.get(e.layer)]);
  assert.ok(seen.every(([x, layer]) => layer.name === named(x) && layer.isOn === (x % 3 > 0)));
});

describe('precision', () => {
  const small = Array.from({ length: 60 }, (_, i) => segment(i, 1.2345, i + 1, 0));
  test('a point far from all others is left out', () => {
    const { elements, leftOut } = convert((document, add) => {
      small.forEach(add);
      add(at(new acad.Point(), { location: new XYZ(3e9, 0, 0) }));
    });
    assertClose(elements[0].points[0], [0, 1.2345, 0], 1e-6);
    assert.equal(leftOut, '1 elements far from the rest of the drawing');
  });
  test('a drawing too large for its own details is refused', () => {
    assert.throws(() => convert((document, add) => {
      add(segment(0, 1.2345, 1, 0));
      add(segment(3e9, 0, 3e9 + 1, 0));
    }), (error) => error instanceof Refusal && error.kind === 'tooLarge');
  });
});

describe('damage', () => {
  test('objects that say nonsense with a right checksum are a drawing or a reason', () => {
    const whole = dwgOf((document, add) => {
      add(new acad.LwPolyline([new XY(0, 0), new XY(4, 0)]));
      add(at(new acad.MText('{\\H2x;a\\S1/2;}'), { height: 3 }));
      add(at(new acad.Spline(), { degree: 1, knots: [0, 0, 1, 1], controlPoints: [new XYZ(0, 0, 0), new XYZ(8, 8, 0)] }));
      add(new acad.Insert(block(document, 'b', segment(0, 0, 1, 0))));
      Array.from({ length: 20 }, (_, i) => add(segment(i, 0, i, 5)));
    }, 'AC1015');
    const map = whole.readUInt32LE(0x19 + 9 * 2 + 1);
    const objects = readObjectMap(whole.subarray(map));
    const places = Array.from({ length: objects.count }, (_, i) => objects.offsetAt(i));
    const random = randomNumbers(7);
    for (let round = 0; round < 150; round++) {
      const bytes = Buffer.from(whole);
      for (let i = 0; i < 6; i++) {
        const place = places[random(places.length)];
        const end = place + 2 + bytes.readUInt16LE(place);
        bytes[place + 2 + random(end - place - 2)] = random(256);
        bytes.writeUInt16LE(crc16(bytes, place, end), end);
      }
      try {
        dwgToDgn(bytes);
      } catch (error) {
        assert.ok(error instanceof Refusal, error.stack);
      }
    }
  });

  const fill = (document, add) => Array.from({ length: 40 }, (_, i) => add(segment(i, 0, i, 5)));
  for (const version of ['AC1014', 'AC1015', 'AC1018', 'AC1021', 'AC1027', 'AC1032']) {
    test(`a bit that has changed in ${version} is seen`, () => {
      const good = dwgOf(fill, version);
      const lines = convert(fill, version).elements.length;
      for (let at = 0x60; at < good.length; at += 61) {
        const bad = Buffer.from(good);
        bad[at] ^= 1 << (at & 7);
        let outcome;
        try {
          const { bytes, leftOut } = dwgToDgn(bad);
          const { elements } = readDgn(bytes);
          outcome = elements.length === lines || /damaged/.test(`${leftOut}`);
          const moved = elements.some(({ points }, i) => points[0][0] !== points[1][0] || points[1][1] !== 5 || (elements.length === lines && points[0][0] !== i));
          assert.ok(!moved, `byte ${at} moved a line`);
        } catch (error) {
          outcome = error instanceof Refusal;
        }
        assert.ok(outcome, `byte ${at}`);
      }
    });
  }
});
