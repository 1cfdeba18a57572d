// SPDX-License-Identifier: MIT
// The settings of the whole drawing. They stand in one fixed order, hundreds of them, of which only the
// units and the scale of line types matter here; the others have to be passed over.

/** What each release has, in order: D double, 3 point, 2 point in the plane, S short, L long, B bit,
    C byte, T text, H handle, K colour, Q 64 bits. A word before "=" names a value that is wanted. */
const LAYOUT = [
  [2013, , 'Q'], [, , 'DDDDTTTTLL'], [, 14, 'S'], [, 2000, 'H'], [, , 'BB'], [, 14, 'B'], [, , 'BBBBBBB'], [, 14, 'B'],
  [2004, , 'B'], [, , 'BBBB'], [, 14, 'BB'], [, , 'BB'], [, 14, 'B'], [, , 'BBB'], [, 14, 'B'], [, , 'BBS'], [, 14, 'S'],
  [, , 'SSSSS'], [, 14, 'S'], [, , 'S'], [, 14, 'S'], [, , 'S'], [, 14, 'S'], [2004, , 'LLL'], [, , 'SSSSSSSSSSSSSSSSSSS'],
  [, , 'lineTypeScale=D'], [, , 'DDDDDDDDDDDDDDDDDDDDTLLLL'], [2004, , 'LLL'], [, , 'LLLLK'], [, , 'handleSeed=h'], [, , 'HHH'], [2007, , 'H'],
  [, , 'HH'], [2000, , 'D'], [, , '33322D333H'], [2000, , 'HSH333333'], [, , '3'], [, , 'low=3'], [, , 'high=3'], [, , '22D333H'], [2000, , 'HSH333333TT'],
  [, 14, 'BBBBBBBBBBBCCBBCCCBCCCCSSSSSSH'], [, , 'DDDDDDDDD'], [2007, , 'DDSK'], [2000, , 'BBBBBBSSS'], [2007, , 'S'],
  [, , 'DDDDDDDD'], [, 14, 'TTTTT'], [2000, , 'DBSBBBB'], [, , 'KKK'], [2000, , 'SSSSSSSSSSSBBSSSSBS'], [2007, , 'B'],
  [2010, , 'BDTDT'], [2000, , 'HHHHH'], [2007, , 'HHH'], [2000, , 'SS'], [, , 'HHHHHHHHH'], [, 2000, 'H'], [, , 'HHH'],
  [2000, , 'SSTTHHH'], [2004, , 'HH'], [2007, , 'H'], [2013, , 'H'], [2000, , 'L'], [2000, , 'units=S'],
];

const READ = {
  D: (r) => r.bd(), 3: (r) => r.bd3(), 2: (r) => r.rd2(), S: (r) => r.bs(), L: (r) => r.bl(), B: (r) => r.bit(),
  C: (r) => r.u8(), T: (r) => r.text(), H: (r) => r.ref(), h: (r) => r.rawHandle().value, K: (r) => r.color(),
  Q: (r) => r.bll(),
};

const WRITE = {
  D: (w, v) => w.bd(v), 3: (w, v) => w.bd3(v), 2: (w, v) => w.rd2(v), S: (w, v) => w.bs(v), L: (w, v) => w.bl(v),
  B: (w, v) => w.bit(v), C: (w, v) => w.u8(v), T: (w, v) => w.text(v), H: (w, { code, value }) => w.handle(code, value),
  h: (w, v) => w.handle(0, v), K: (w, v) => w.bs(v),
};

/** Copies the settings of R2000 with some values changed. */
export function copyHeader(r, w, changes) {
  for (const [from = 0, to = Infinity, codes] of LAYOUT) {
    if (r.year < from || r.year > to) continue;
    const [name, code] = codes.includes('=') ? codes.split('=') : [null, codes];
    for (const one of code) {
      const value = one === 'H' ? r.rawHandle() : READ[one](r);
      WRITE[one](w, changes[name] ?? value);
    }
  }
  while (r.left > 0) w.bit(r.bit());
}

/** { units, lineTypeScale } as far as the release has them. */
export function readHeader(r) {
  const result = { units: 0, lineTypeScale: 1 };
  for (const [from = 0, to = Infinity, codes] of LAYOUT) {
    if (r.year < from || r.year > to) continue;
    const [name, code] = codes.includes('=') ? codes.split('=') : [null, codes];
    if (name) result[name] = READ[code](r);
    else for (const one of code) READ[one](r);
  }
  return result;
}
