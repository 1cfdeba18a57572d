// SPDX-License-Identifier: MIT

import assert from 'node:assert/strict';
import { describe, test } from 'node:test';
import { certifyDgn, measureForDgn } from './certificate.mjs';
import { writeDgn } from './dgn/writer.mjs';
import { dgnToDwg } from './dgn_to_dwg.mjs';
import { dwgToDgn } from './dwg_to_dgn.mjs';
import { randomNumbers, styled } from './testing/compare.mjs';

/** A drawing that looks random: every kind, on many levels, in many colours. */
function randomElements(seed) {
  const random = randomNumbers(seed);
  const at = (n = 1000) => (random(n * 1000) - n * 500) / 1000;
  const point = () => [at(), at(), 0];
  const points = (count) => Array.from({ length: count }, point);
  const turn = () => random(6283) / 1000;
  const axes = (angle) => ({ xAxis: [Math.cos(angle), Math.sin(angle), 0], yAxis: [-Math.sin(angle), Math.cos(angle), 0] });
  const letters = ['Room', '办公室', 'Größe', 'Ø12', '±0.00', 'a^b', '50%', '\\P{x}'];
  const make = [
    () => ({ kind: 'line', points: points(2) }),
    () => ({ kind: 'lineString', points: points(2 + random(150)) }),
    () => ({ kind: 'shape', points: points(3 + random(120)), filled: false }),
    () => ({ kind: 'shape', points: points(4), filled: true, fillColor: random(254) }),
    () => ({ kind: 'ellipse', center: point(), axis1: [5 + random(50), 0, 0], axis2: [0, 5 + random(50), 0], start: 0, sweep: 2 * Math.PI }),
    () => ({ kind: 'arc', center: point(), axis1: [9, 0, 0], axis2: [0, 9, 0], start: turn(), sweep: turn() / 2 - 1.6 }),
    () => ({ kind: 'text', origin: point(), ...axes(turn()), height: 1 + random(5), width: 2, text: `${letters[random(letters.length)]} ${random(99)}`,
      justification: random(15) }),
    () => ({ kind: 'spline', degree: 3, points: points(6), weights: random(2) ? [1, 2, 1, 3, 1, 1] : [], knots: [0, 0, 0, 0, 0.3, 0.5, 1, 1, 1, 1] }),
    (depth) => {
      const angle = turn();
      const { xAxis, yAxis } = axes(angle);
      const size = 1 + random(3);
      const mirror = random(2) ? -size : size;
      const members = Array.from({ length: 1 + random(4) }, () => element(depth + 1));
      return { kind: 'cell', name: ['', 'DOOR', 'TAP'][random(3)], origin: point(), members,
        axes: [xAxis.map((v) => v * size), yAxis.map((v) => v * mirror), [0, 0, 1]] };
    },
  ];
  const element = (depth) => styled(make[random(depth > 2 ? make.length - 1 : make.length)](depth),
    { level: 1 + random(63), color: random(254), weight: random(24), style: random(8) });
  return Array.from({ length: 60 }, () => element(0));
}

test('random drawings there and back amount to the same', () => {
  for (let seed = 1; seed <= 12; seed++) {
    const there = dgnToDwg(writeDgn({ elements: randomElements(seed) }).bytes);
    const back = dwgToDgn(there.bytes);
    const again = dgnToDwg(back.bytes);
    for (const { check } of [there, back, again]) assert.deepEqual(check.differences, [], `seed ${seed}`);
    assert.equal(`${there.leftOut}${back.leftOut}${again.leftOut}`, '');
    assert.ok(Math.abs(again.check.length - there.check.length) < 1e-6 * there.check.length, `seed ${seed}`);
  }
});

describe('a result that is not what was to be written', () => {
  const layer = { name: 'walls' };
  const text = styled({ kind: 'text', origin: [0, 0, 0], xAxis: [1, 0, 0], yAxis: [0, 1, 0], height: 1, width: 1, text: 'one', layer });
  const line = styled({ kind: 'line', points: [[0, 0, 0], [10, 0, 0]], layer });
  const notes = { sharing: [], blocks: [], layers: { 5: 'walls', 6: 'doors' } };
  for (const [name, changed, expected] of [
    ['a line moved', { ...line, points: [[0, 1, 0], [10, 1, 0]] }, /highest y/],
    ['a line shorter', { ...line, points: [[0, 0, 0], [9, 0, 0]] }, /length on layer "walls"/],
    ['another layer', { ...line, level: 6 }, /layer "doors"/],
    ['another colour', { ...line, color: 4 }, /colour 4/],
    ['another text', { ...text, text: 'two' }, /texts missing, as "one"/],
    ['a point more', { ...line, points: [[0, 0, 0], [0, 0, 0]] }, /points/],
  ]) {
    test(name, () => {
      const wrong = changed.kind === 'text' ? [line, changed] : [changed, text];
      const { bytes } = writeDgn({ elements: wrong, notes });
      const { agrees, differences } = certifyDgn(bytes, { expected: measureForDgn(1e-6).of([line, text]), codePage: 'gbk' });
      assert.equal(agrees, false);
      assert.ok(differences.some((one) => expected.test(one)), `${differences}`);
    });
  }
});
