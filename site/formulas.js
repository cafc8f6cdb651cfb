// Reads formulas from standard input, one JSON object a line, and writes each as HTML with MathML.
const katex = require('katex');
const lines = require('readline').createInterface({ input: process.stdin });
lines.on('line', (line) => {
  const { tex, display } = JSON.parse(line);
  let answer;
  try {
    answer = { html: katex.renderToString(tex, { displayMode: display, throwOnError: true, strict: 'error' }) };
  } catch (error) {
    answer = { error: error.message };
  }
  process.stdout.write(JSON.stringify(answer) + '\n');
});
