// SPDX-License-Identifier: MIT
// Names of cells: up to six characters, three to a word of base 40.

const LETTERS = ' ABCDEFGHIJKLMNOPQRSTUVWXYZ$.?0123456789';

function word(three) {
  return [...three.padEnd(3)].reduce((sum, char) => sum * 40 + Math.max(0, LETTERS.indexOf(char)), 0);
}

/** What of a name can stand there. */
const shortName = (name) => [...name.toUpperCase()].map((c) => (LETTERS.includes(c) ? c : '$')).join('').slice(0, 6).trim();

export function encodeName(name) {
  const short = shortName(name).padEnd(6);
  return [word(short.slice(0, 3)), word(short.slice(3))];
}

export const decodeName = (words) => words.map((value) =>
  [1600, 40, 1].map((unit) => LETTERS[Math.floor(value / unit) % 40]).join('')).join('').trimEnd();
