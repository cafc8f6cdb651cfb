// The reader of pasted numbers: separators, decimal commas, names, and faults by line and column.
import assert from 'node:assert/strict';

import { parsePoints } from '../parse.js';

const good = [
  ['1,2\n3,4', [1, 3], [2, 4], 'comma'],
  ['1;2\n3;4', [1, 3], [2, 4], 'semicolon'],
  ['1,5;2,25\n3;-4,5e1', [1.5, 3], [2.25, -45], 'semicolon'],
  ['1,5\t2,5\n3,5\t4,5', [1.5, 3.5], [2.5, 4.5], 'tab'],
  ['1,5 2,5\n3,5   4,5', [1.5, 3.5], [2.5, 4.5], 'space'],
  ['  1 2\n 3  4  ', [1, 3], [2, 4], 'space'],
  ['\uFEFFx,y\r\n1,2\r\n\r\n# comment\r\n3,4\r\n', [1, 3], [2, 4], 'comma'],
  ['"time (s)";"length"\n"1";"2"\n"3";"4"', [1, 3], [2, 4], 'semicolon'],
  ['.5,+7e0\n-1.,1E-3', [0.5, -1], [7, 0.001], 'comma'],
];
for (const [text, x, y, separator] of good) {
  const read = parsePoints(text);
  assert.deepEqual([Array.from(read.x), Array.from(read.y), read.separator], [x, y, separator], JSON.stringify(text));
}
assert.deepEqual(parsePoints('time (s),length\n1,2').names, ['time (s)', 'length']);
assert.deepEqual(parsePoints('1,2').names, ['x', 'y']);

const bad = [
  ['', 1, 1, 'there are no numbers'],
  ['# only this', 1, 1, 'there are no numbers'],
  ['x,y', 2, 1, 'below the names'],
  ['1,2\n3,abc', 2, 3, "'abc' is not a number"],
  ['1,2\n\n  3, 4x', 3, 6, "'4x' is not a number"],
  ['1,2\n3,nan', 2, 3, 'not a finite number'],
  ['1,2\ninf,3', 2, 1, 'not a finite number'],
  ['1,2\n3,1e999', 2, 3, 'too large'],
  ['1,2\n3,', 2, 3, 'a number is missing'],
  ['1,2\n3,4,5', 2, 5, 'there are 3'],
  ['1,2\n3', 2, 2, 'there is 1'],
  ['1;2\n3;0x10', 2, 3, 'is not a number'],
  ['1 2\n3 4 5', 2, 5, 'there are 3'],
];
for (const [text, line, column, message] of bad) {
  assert.throws(() => parsePoints(text), (error) => {
    assert.deepEqual([error.line, error.column], [line, column], `${JSON.stringify(text)}: ${error.message}`);
    assert.match(error.message, new RegExp(message.replace(/[()]/g, '.')), JSON.stringify(text));
    return true;
  });
}
console.log(`the reader of numbers: ${good.length} texts read, ${bad.length} refused at their place`);
