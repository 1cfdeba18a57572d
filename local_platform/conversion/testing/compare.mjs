// SPDX-License-Identifier: MIT
// What several tests use.

import assert from 'node:assert/strict';
import { dgnToDwg } from '../dgn_to_dwg.mjs';
import { dwgToDgn } from '../dwg_to_dgn.mjs';
import { readDgn } from '../dgn/reader.mjs';
import { writeDgn as write } from '../dgn/writer.mjs';

const STYLE = { level: 5, color: 3, weight: 2, style: 2, group: 0 };
export const styled = (element, style = {}) => ({ ...STYLE, ...element, ...style });

/** Compares all numbers within `tolerance` and all else exactly. */
export function assertClose(actual, expected, tolerance, path = '') {
  if (typeof expected === 'number') {
    assert.ok(Math.abs(actual - expected) <= tolerance, `${path}: ${actual} instead of ${expected}`);
  } else if (expected && typeof expected === 'object') {
    if (Array.isArray(expected)) assert.equal(actual.length, expected.length, path);
    for (const key of Object.keys(expected)) assertClose(actual[key], expected[key], tolerance, `${path}.${key}`);
  } else {
    assert.equal(actual, expected, path);
  }
}

export const writeDgn = (drawing) => write(drawing).bytes;
export const throughDgn = (elements, options) => readDgn(writeDgn({ elements, ...options }));
export const throughDwg = (elements, options) =>
  readDgn(dwgToDgn(dgnToDwg(writeDgn({ elements, ...options })).bytes).bytes);

/** Numbers that look random and are the same every time. */
export function randomNumbers(seed) {
  let state = seed;
  return (below) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 2 ** 32) * below);
  };
}
