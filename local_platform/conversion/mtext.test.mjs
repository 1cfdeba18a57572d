// SPDX-License-Identifier: MIT

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { parseParagraphs } from './mtext.mjs';

/** The runs of each line, with what differs from a plain one. */
const told = (value) => parseParagraphs(value, 2).map(({ align, runs }) => [...(align ? [align] : []), ...runs.map((run) => {
  const { text, stack, ...formats } = run;
  const plain = { height: 1, width: 1, spacing: 1, slant: 0, color: null, font: null, isUnder: false, isOver: false, isStruck: false };
  const other = Object.entries(formats).filter(([name, v]) => v !== plain[name]).map(([name, v]) => `${name}=${v}`);
  return [stack ? `${stack.upper}${stack.kind}${stack.lower}` : text, ...other].join(' ');
})]);

for (const [value, expected] of [
  ['one\\Ptwo\nthree', [['one'], ['two'], ['three']]],
  ['{\\fArial|b1|i0;bold} plain', [['bold font=Arial', ' plain']]],
  ['\\H4;high\\H0.5x;half', [['high height=2', 'half']]],
  ['\\W0.8;\\T1.2;\\Q15;x', [['x width=0.8 spacing=1.2 slant=15']]],
  ['\\Lunder\\l\\Oover\\o\\Kstruck\\k', [['under isUnder=true', 'over isOver=true', 'struck isStruck=true']]],
  ['1\\S1/2;\\S+0.1^-0.2;\\S3#4;', [['1', '1/2', '+0.1^-0.2', '3#4']]],
  ['\\C1;red\\c255;true', [['red color=1', 'true color=33488896']]],
  ['\\pxqc;middle\\Pstill\\pql;left', [['center', 'middle'], ['left', 'stillleft']]],
  ['a\\~b \\U+6d4b\\M+5B2E2 %%d%%p%%c%%065', [['a\u00a0b 测测 °±φA']]],
  ['\\\\P \\{x\\} ^I^ \\z', [['\\P {x}     ^z']]],
  ['\\H2', [['H2']]],
  ['{open {inner}', [['open inner']]],
]) test(JSON.stringify(value), () => assert.deepEqual(told(value), expected));
