// The picture as SVG, from the data of the chart: points, band, fit, marks, axes with their numbers.
import { sharpest } from './chart.js';

const WIDTH = 800;
const HEIGHT = 480;
const FRAME = { left: 80, top: 20, right: 20, bottom: 50 };
const escape = (text) => text.replace(/[&<>"]/g, (c) => ({ '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;' })[c]);
const short = (v) => String(Number(v.toPrecision(7)));

// About six round numbers of a range.
export function ticks(low, high) {
  const raw = (high - low) / 6;
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = [1, 2, 5, 10].map((f) => f * power).find((s) => s >= raw);
  const out = [];
  for (let k = Math.ceil(low / step); k * step <= high; ++k) out.push(k * step);
  return out;
}

export function svg(charts, state) {
  const { result, names } = state;
  const [[x0, x1], [y0, y1]] = charts.adjusted();
  const px = (v) => +(FRAME.left + ((v - x0) / (x1 - x0)) * (WIDTH - FRAME.left - FRAME.right)).toFixed(2);
  const py = (v) => +(HEIGHT - FRAME.bottom - ((v - y0) / (y1 - y0)) * (HEIGHT - FRAME.top - FRAME.bottom)).toFixed(2);
  const path = (xs, ys) => Array.from(xs, (x, i) => `${i ? 'L' : 'M'}${px(x)} ${py(ys[i])}`).join('');
  const out = [`<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${WIDTH} ${HEIGHT}" font-family="sans-serif" font-size="13">`,
    `<rect width="${WIDTH}" height="${HEIGHT}" fill="#fff"/>`];
  for (const t of ticks(x0, x1)) {
    out.push(`<path d="M${px(t)} ${FRAME.top}V${HEIGHT - FRAME.bottom}" stroke="#ddd"/>`,
      `<text x="${px(t)}" y="${HEIGHT - FRAME.bottom + 18}" text-anchor="middle">${short(t)}</text>`);
  }
  for (const t of ticks(y0, y1)) {
    out.push(`<path d="M${FRAME.left} ${py(t)}H${WIDTH - FRAME.right}" stroke="#ddd"/>`,
      `<text x="${FRAME.left - 6}" y="${py(t) + 4}" text-anchor="end">${short(t)}</text>`);
  }
  out.push(`<clipPath id="f"><rect x="${FRAME.left}" y="${FRAME.top}" width="${WIDTH - FRAME.left - FRAME.right}" height="${
    HEIGHT - FRAME.top - FRAME.bottom}"/></clipPath><g clip-path="url(#f)">`);
  const up = path(result.curveX, result.curveY.map((v, i) => v + result.half[i]));
  const down = path(result.curveX.slice().reverse(), result.curveY.map((v, i) => v - result.half[i]).reverse());
  out.push(`<path d="${up}${down.replace('M', 'L')}Z" fill="#0b63b6" opacity=".15"/>`,
    `<path d="${path(result.curveX, result.curveY)}" fill="none" stroke="#0b63b6" stroke-width="2"/>`);
  for (const i of charts.drawn) out.push(`<circle cx="${px(state.x[i])}" cy="${py(state.y[i])}" r="${charts.drawn.length > 400 ? 1.2 : 3}"/>`);
  const bend = sharpest(result);
  if (bend && Number.isFinite(bend.radius)) {
    out.push(`<ellipse cx="${px(bend.centreX)}" cy="${py(bend.centreY)}" rx="${Math.abs(px(bend.centreX + bend.radius) - px(bend.centreX))}" ry="${
      Math.abs(py(bend.centreY + bend.radius) - py(bend.centreY))}" fill="none" stroke="#7c3aed" stroke-dasharray="6 4"/>`);
  }
  for (const p of [...result.zeros.list, ...result.extremes.list]) {
    out.push(`<rect x="${px(p.x) - 4}" y="${py(p.y) - 4}" width="8" height="8" fill="none" stroke="#c2410c" stroke-width="2"/>`);
  }
  out.push('</g>', `<text x="${WIDTH / 2}" y="${HEIGHT - 10}" text-anchor="middle">${escape(names[0])}</text>`,
    `<text transform="translate(16 ${HEIGHT / 2}) rotate(-90)" text-anchor="middle">${escape(names[1])}</text>`, '</svg>');
  return out.join('\n');
}
