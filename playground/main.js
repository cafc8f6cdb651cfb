// The page: takes numbers, asks the worker for the fit, shows it, and lets points be dragged.
import norris from '../examples/data/norris.csv';
import pontius from '../examples/data/pontius.csv';
import water from '../examples/data/water.csv';
import { Charts } from './chart.js';
import { parsePoints, TextError } from './parse.js';
import { svg } from './picture.js';
import { range } from './thin.js';

const SAMPLES = 401;
const MOST_SHOWN = 2000;  // points that the text field shows

const get = (id) => document.getElementById(`pg-${id}`);
const show = (v, digits = 9) => String(Number(v.toPrecision(digits)));

// A hundred thousand readings of a slow wave; a generator of its own, so that everyone sees the same ones.
function many() {
  const n = 100000;
  const x = new Float64Array(n);
  const y = new Float64Array(n);
  let seed = 1;
  for (let i = 0; i < n; ++i) {
    seed = (seed * 1103515245 + 12345) % 2147483648;
    x[i] = (10 * i) / n;
    y[i] = Math.sin(x[i]) + 0.2 * x[i] + (seed / 2147483648 - 0.5) * 0.6;
  }
  return { x, y, names: ['time (s)', 'reading'] };
}

// A profile with small errors of reading, which crosses zero, turns and bends.
function profile() {
  const n = 41;
  const x = new Float64Array(n);
  const y = new Float64Array(n);
  for (let i = 0; i < n; ++i) {
    const t = -1.15 + (3.5 * i) / (n - 1);
    x[i] = Number(t.toFixed(4));
    y[i] = Number((0.1 + t * (0.5 + t * (-1 + t * t * (1 - 0.375 * t))) + 0.02 * Math.sin(37 * i * i)).toFixed(4));
  }
  return { x, y, names: ['x (mm)', 'height (mm)'] };
}

const EXAMPLES = {
  profile: { degree: 5, points: profile },
  water: { degree: 4, points: () => parsePoints(water) },
  six: { degree: 2, points: () => parsePoints('x,y\n0,6.1\n1,3.0\n2,1.1\n3,0.8\n4,2.1\n5,5.2') },
  cell: { degree: 2, points: () => parsePoints(pontius) },
  line: { degree: 1, points: () => parsePoints(norris) },
  many: { degree: 7, points: many },
};

const state = { x: null, y: null, names: ['x', 'y'], result: null, selected: null, equal: false, degree: 2 };
const charts = new Charts(get('chart'), get('residuals'));
let worker;
let busy = false;
let waiting = false;
let asked = 0;
let dragging = null;  // the pointer that drags, since a second finger is none

function say(text) { get('live').textContent = text; }

function fault(text) {
  get('error').textContent = text;
  get('error').hidden = !text;
}

// One request at a time; while it runs, the last wish is kept.
function ask() {
  if (!state.x) return;
  if (busy) {
    waiting = true;
    return;
  }
  busy = true;
  worker.postMessage({ kind: 'fit', id: ++asked, degree: state.degree, samples: SAMPLES });
}

function answer({ data }) {
  if (data.kind === 'ready') {
    get('selfcheck').textContent = data.selfcheck;
    return;
  }
  if (data.kind === 'failed') {
    fault(`The library could not be started: ${data.message}`);
    return;
  }
  busy = false;
  if (waiting) {
    waiting = false;
    ask();
  }
  if (!data.result.ok) {
    fault(`Degree ${data.degree}: ${data.result.state}`);
    get('app').dataset.fitted = '';
    return;
  }
  if (data.result.residuals.length !== state.x.length) return;  // of points that were replaced meanwhile
  fault('');
  state.result = data.result;
  if (!state.result.half.every(Number.isFinite)) state.result.half.fill(0);  // as many unknowns as points: nothing tells the error
  charts.show(state, dragging !== null);
  report(data);
  get('app').dataset.fitted = data.degree;
}

function row(table, cells, head) {
  const line = table.insertRow();
  for (const cell of cells) {
    const place = head ? line.appendChild(document.createElement('th')) : line.insertCell();
    if (head) place.scope = 'col';
    place.append(...[].concat(cell));
  }
}

function power(k) {
  if (k === 0) return ['1'];
  const up = document.createElement('sup');
  up.textContent = k;
  return k === 1 ? ['x'] : ['x', up];
}

function report({ result, milliseconds }) {
  const table = get('coefficients');
  table.tBodies[0]?.remove();
  const body = table.createTBody();
  if (result.powersOk) {
    result.coefficients.forEach((c, k) => row(body, [power(k), show(c, 12), Number.isFinite(result.errors[k]) ? `± ${show(result.errors[k], 3)}` : 'not known']));
  }
  get('summary').textContent = `${result.points} points, residual deviation ${Number.isFinite(result.deviation) ? show(result.deviation, 6) : 'not known'}, R² ${show(result.rSquared, 8)}, `
    + `largest residual ${show(result.largestResidual, 6)} at point ${result.largestAt + 1}, ${milliseconds.toFixed(1)} ms`;
  const places = get('places');
  places.tBodies[0]?.remove();
  const list = places.createTBody();
  for (const z of result.zeros.list) row(list, ['zero', show(z.x), '0', z.multiplicity > 1 ? `${z.multiplicity}-fold` : '']);
  for (const e of result.extremes.list) row(list, [e.maximum ? 'maximum' : 'minimum', show(e.x), show(e.y), '']);
  for (const b of result.bends.list) {
    row(list, [b.maximum ? 'sharpest bend' : 'flattest', show(b.x), show(b.y), `radius ${show(b.radius, 7)}, curvature ${show(b.curvature, 7)}`]);
  }
  for (const [kind, found] of [['zeros', result.zeros], ['extremes', result.extremes], ['bends', result.bends]]) {
    if (!found.ok) row(list, [kind, '', '', found.state]);
  }
  get('places-box').hidden = !list.rows.length;
}

function textOf({ x, y, names }) {
  const lines = [names.map((n) => (n.includes(',') ? `"${n}"` : n)).join(',')];
  for (let i = 0; i < Math.min(x.length, MOST_SHOWN); ++i) lines.push(`${x[i]},${y[i]}`);
  if (x.length > MOST_SHOWN) lines.push(`# ${x.length - MOST_SHOWN} more points`);
  return lines.join('\n');
}

function use(points, degree) {
  Object.assign(state, { x: points.x, y: points.y, names: points.names, selected: null, result: null });
  const distinct = points.x.length > 40 ? 40 : new Set(points.x).size;
  get('degree').max = Math.max(0, Math.min(12, distinct - 1));
  get('degree').value = Math.min(degree ?? state.degree, get('degree').max);
  state.degree = Number(get('degree').value);
  get('degree-value').textContent = state.degree;
  worker.postMessage({ kind: 'points', x: points.x, y: points.y });
  ask();
}

// Puts the cursor of the text field to the place of a fault.
function pointAt({ line, column }) {
  const field = get('text');
  const before = field.value.split('\n').slice(0, line - 1).reduce((sum, text) => sum + text.length + 1, 0) + column - 1;
  field.focus();
  field.setSelectionRange(before, before + field.value.slice(before).search(/[,;\s]|$/));
}

function useText(text, degree) {
  try {
    const points = parsePoints(text);
    fault('');
    use(points, degree);
    say(`${points.x.length} points, separated by ${points.separator}${points.decimalComma ? ', with decimal commas' : ''}`);
  } catch (error) {
    fault(`The numbers cannot be read: ${error.message}`);
    if (error instanceof TextError) pointAt(error);
  }
}

async function useFile(file) {
  if (!file) return;
  const bytes = new Uint8Array(await file.arrayBuffer());
  let text;
  if ((bytes[0] === 0xFF && bytes[1] === 0xFE) || (bytes[0] === 0xFE && bytes[1] === 0xFF)) {
    text = new TextDecoder(bytes[0] === 0xFF ? 'utf-16le' : 'utf-16be').decode(bytes);
  } else {
    text = new TextDecoder().decode(bytes);
  }
  get('text').value = text.length < 200000 ? text : `${text.slice(0, text.lastIndexOf('\n', 20000))}\n# and more`;
  useText(text);
}

function move(point, x, y) {
  state.x[point] = x;
  state.y[point] = y;
  worker.postMessage({ kind: 'move', point, x, y });
  ask();
}

function showText() {
  if (state.x.length <= MOST_SHOWN) get('text').value = textOf(state);
}

function setUpDragging() {
  const box = get('chart');
  const place = (event) => {
    const frame = charts.main.over.getBoundingClientRect();
    return [event.clientX - frame.left, event.clientY - frame.top];
  };
  box.addEventListener('pointerdown', (event) => {
    if (!state.result || dragging !== null) return;
    const point = charts.nearest(...place(event), event.pointerType === 'touch' ? 24 : 12);
    if (point === null) return;
    event.preventDefault();
    box.focus({ preventScroll: true });
    state.selected = point;
    dragging = event.pointerId;
    box.setPointerCapture(event.pointerId);
    charts.show(state, true);
  });
  box.addEventListener('pointermove', (event) => {
    if (event.pointerId !== dragging) return;
    const [left, top] = place(event);
    move(state.selected, charts.main.posToVal(left, 'x'), charts.main.posToVal(top, 'y'));
  });
  // A finger that starts on a point drags it, and scrolls the page elsewhere.
  box.addEventListener('touchstart', (event) => {
    if (event.touches.length === 1 && state.result && charts.nearest(...place(event.touches[0]), 24) !== null) event.preventDefault();
  }, { passive: false });
  const drop = (event) => {
    if (event.pointerId !== dragging) return;
    dragging = null;
    showText();
    ask();
  };
  box.addEventListener('pointerup', drop);
  box.addEventListener('pointercancel', drop);
}

function setUpKeys() {
  get('chart').addEventListener('keydown', (event) => {
    if (!state.result || !['ArrowLeft', 'ArrowRight', 'ArrowUp', 'ArrowDown'].includes(event.key)) return;
    event.preventDefault();
    const n = state.x.length;
    if (event.key === 'ArrowLeft' || event.key === 'ArrowRight' || state.selected === null) {
      const step = event.key === 'ArrowLeft' ? n - 1 : 1;
      state.selected = state.selected === null ? 0 : (state.selected + step) % n;
      charts.show(state, true);
    } else {
      const [low, high] = range(state.y);
      const step = ((high - low) / (event.shiftKey ? 20 : 200)) * (event.key === 'ArrowUp' ? 1 : -1);
      move(state.selected, state.x[state.selected], state.y[state.selected] + step);
      showText();
    }
    say(`point ${state.selected + 1}: ${show(state.x[state.selected], 6)}, ${show(state.y[state.selected], 6)}`);
  });
}

function save(name, kind, content) {
  const link = document.createElement('a');
  link.download = name;
  link.href = URL.createObjectURL(content instanceof Blob ? content : new Blob([content], { type: kind }));
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}

function json() {
  const { result, x, y, names, degree } = state;
  const list = (v) => Array.from(v);
  return JSON.stringify({
    selfcheck: get('selfcheck').textContent, degree, names, points: result.points, coefficients: list(result.coefficients),
    standardErrors: list(result.errors), residualDeviation: result.deviation, rSquared: result.rSquared,
    largestResidual: result.largestResidual, largestAt: result.largestAt, zeros: result.zeros.list, extremes: result.extremes.list,
    bends: result.bends.list, x: list(x), y: list(y), residuals: list(result.residuals),
  }, null, 1);
}

function setUpSaving() {
  get('png').addEventListener('click', () => state.result && charts.canvas().toBlob((blob) => save('fit.png', 'image/png', blob)));
  get('svg').addEventListener('click', () => state.result && save('fit.svg', 'image/svg+xml', svg(charts, state)));
  get('json').addEventListener('click', () => state.result && save('fit.json', 'application/json', json()));
}

function setUpInput() {
  get('use').addEventListener('click', () => useText(get('text').value));
  get('file').addEventListener('change', () => useFile(get('file').files[0]));
  get('example').addEventListener('change', () => {
    const chosen = EXAMPLES[get('example').value];
    const points = chosen.points();
    get('text').value = textOf(points);
    fault('');
    use(points, chosen.degree);
  });
  get('degree').addEventListener('input', () => {
    state.degree = Number(get('degree').value);
    get('degree-value').textContent = state.degree;
    ask();
  });
  get('equal').addEventListener('change', () => {
    state.equal = get('equal').checked;
    if (state.result) charts.show(state);
  });
  const box = get('app');
  box.addEventListener('dragover', (event) => { event.preventDefault(); box.classList.add('pg-over'); });
  box.addEventListener('dragleave', () => box.classList.remove('pg-over'));
  box.addEventListener('drop', (event) => {
    event.preventDefault();
    box.classList.remove('pg-over');
    const { files } = event.dataTransfer;
    if (files.length) useFile(files[0]);
    else useText(get('text').value = event.dataTransfer.getData('text/plain'));
  });
}

function start() {
  worker = new Worker(URL.createObjectURL(new Blob([globalThis.playgroundWorker], { type: 'text/javascript' })));
  worker.onmessage = answer;
  worker.onerror = (event) => fault(`The library could not be started: ${event.message}`);
  setUpInput();
  setUpDragging();
  setUpKeys();
  setUpSaving();
  const redraw = () => charts.redraw();
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', redraw);
  new MutationObserver(redraw).observe(document.body, { attributes: true, attributeFilter: ['data-theme'] });
  get('example').dispatchEvent(new Event('change'));
}

start();
