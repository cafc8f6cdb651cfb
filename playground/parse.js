// Reads two columns of numbers from text, with the separator and the decimal sign found out. A fault names line and column.

export class TextError extends Error {
  constructor(line, column, message) {
    super(`line ${line}, column ${column}: ${message}`);
    this.line = line;
    this.column = column;
  }
}

const MOST_POINTS = 1000000;
const NUMBER = /^[+-]?(\d+([.]\d*)?|[.]\d+)(e[+-]?\d+)?$/i;

// The lines that count, with their numbers, without comments.
function linesOf(text) {
  return text.replace(/^\uFEFF/, '').split(/\r\n|\n|\r/)
    .map((content, i) => ({ content, number: i + 1 }))
    .filter(({ content }) => content.trim() && !content.trim().startsWith('#'));
}

// The separator that half of the first lines have; a comma is a decimal sign where another one stands beside it.
function separatorOf(lines) {
  const sample = lines.slice(0, 20).map(({ content }) => content.trim());
  const having = (pattern) => sample.filter((line) => pattern.test(line)).length * 2 >= sample.length;
  if (having(/;/)) return { split: /;/, name: 'semicolon', decimalComma: sample.some((line) => /\d,\d/.test(line)) };
  if (having(/\t/)) return { split: /\t/, name: 'tab', decimalComma: sample.some((line) => /\d,\d/.test(line)) };
  if (having(/^\S*\d,\d\S*\s+\S/)) return { split: /\s+/, name: 'space', decimalComma: true };
  if (having(/,/)) return { split: /,/, name: 'comma', decimalComma: false };
  return { split: /\s+/, name: 'space', decimalComma: false };
}

// The fields of a line, each with the column of its first character, counted from 1.
function fieldsOf(content, separator) {
  const fields = [];
  let at = 0;
  const start = separator.name === 'space' ? content.length - content.trimStart().length : 0;
  const line = separator.name === 'space' ? content.trim() : content;
  const pattern = new RegExp(separator.split, 'g');
  for (;;) {
    const match = pattern.exec(line);
    const raw = line.slice(at, match ? match.index : line.length);
    const text = raw.trim().replace(/^"(.*)"$/, '$1').trim();
    fields.push({ text, column: start + at + (raw.length - raw.trimStart().length) + 1 });
    if (!match) return fields;
    at = match.index + match[0].length;
  }
}

function numberOf(field, separator, line) {
  if (field.text === '') throw new TextError(line, field.column, 'a number is missing');
  const text = separator.decimalComma ? field.text.replace(',', '.') : field.text;
  if (/^[+-]?(nan|inf|infinity)$/i.test(text)) throw new TextError(line, field.column, `'${field.text}' is not a finite number`);
  if (!NUMBER.test(text)) throw new TextError(line, field.column, `'${field.text.slice(0, 20)}' is not a number`);
  const value = Number(text);
  if (!Number.isFinite(value)) throw new TextError(line, field.column, `'${field.text}' is too large`);
  return value;
}

// The points, the names of the columns where the first line has some, and the separator that was found.
export function parsePoints(text) {
  let lines = linesOf(text);
  if (!lines.length) throw new TextError(1, 1, 'there are no numbers');
  const separator = separatorOf(lines);
  let names = ['x', 'y'];
  const head = fieldsOf(lines[0].content, separator);
  const words = head.filter((f) => f.text && !/^[+-]?[.\d]/.test(f.text) && !/^[+-]?(nan|inf)/i.test(f.text));
  if (words.length === head.length) {
    if (head.length === 2) names = head.map((f) => f.text);
    lines = lines.slice(1);
    if (!lines.length) throw new TextError(2, 1, 'there are no numbers below the names of the columns');
  }
  if (lines.length > MOST_POINTS) throw new TextError(lines[MOST_POINTS].number, 1, 'more than a million points');
  const x = new Float64Array(lines.length);
  const y = new Float64Array(lines.length);
  lines.forEach(({ content, number }, i) => {
    const fields = fieldsOf(content, separator);
    if (fields.length !== 2) {
      const column = fields.length > 2 ? fields[2].column : content.length + 1;
      throw new TextError(number, column, `two columns are expected, there ${fields.length === 1 ? 'is 1' : `are ${fields.length}`}`);
    }
    x[i] = numberOf(fields[0], separator, number);
    y[i] = numberOf(fields[1], separator, number);
  });
  return { x, y, names, separator: separator.name, decimalComma: separator.decimalComma };
}
