// The two charts: points with the fit and its marks, and the residuals.
import uPlot from 'uplot';

import { range, thin } from './thin.js';

const style = (name) => getComputedStyle(document.body).getPropertyValue(name).trim();

export function colours() {
  return {
    ink: style('--color-foreground-primary') || '#000', grid: style('--color-background-border') || '#ddd',
    ground: style('--color-background-primary') || '#fff', point: style('--pg-point'), fit: style('--pg-fit'),
    band: style('--pg-band'), mark: style('--pg-mark'), circle: style('--pg-circle'),
  };
}

// The radius that is drawn: that of the sharpest bend, while it fits into the picture.
export function sharpest(result) {
  const bends = result.bends.list.filter((b) => b.maximum);
  return bends.reduce((best, b) => (!best || b.radius < best.radius ? b : best), null);
}

export class Charts {
  constructor(place, residualPlace) {
    this.places = [place, residualPlace];
    this.state = null;
    new ResizeObserver(() => this.resize()).observe(place);
  }

  // state: x, y, names, result, selected, equal. The scales stay while `hold` is set, as during a drag.
  show(state, hold = false) {
    this.state = state;
    this.colours = colours();
    if (!hold) this.ranges(state);
    const { result } = state;
    const upper = result.curveY.map((v, i) => v + result.half[i]);
    const lower = result.curveY.map((v, i) => v - result.half[i]);
    const data = [result.curveX, result.curveY, upper, lower];
    this.drawn = thin(state.x, state.y, result.low, result.high);
    this.drawnResiduals = thin(state.x, result.residuals, result.low, result.high);
    const residualData = [[result.low, result.high], [0, 0]];
    if (this.main && this.names === state.names.join()) {
      this.main.setData(data, false);
      this.residual.setData(residualData, false);
      this.rescale();
    } else {
      this.names = state.names.join();
      this.build(data, residualData);
    }
  }

  ranges({ x, y, result, equal }) {
    this.xRange = range([result.low, result.high]);
    this.yRange = range(y, result.curveY);
    const [low, high] = range(result.residuals, [0]);
    const room = (high - low) / 8;  // the panel is low, and the ring about a chosen point is not
    this.residualRange = [low - room, high + room];
    this.equal = equal;
  }

  // One unit on both axes: the shorter range is widened about its middle.
  adjusted() {
    const u = this.main;
    if (!this.equal || !u) return [this.xRange, this.yRange];
    const unit = Math.max((this.xRange[1] - this.xRange[0]) / u.over.clientWidth, (this.yRange[1] - this.yRange[0]) / u.over.clientHeight);
    const wider = ([a, b], pixels) => [(a + b - unit * pixels) / 2, (a + b + unit * pixels) / 2];
    return [wider(this.xRange, u.over.clientWidth), wider(this.yRange, u.over.clientHeight)];
  }

  rescale() {
    const [x, y] = this.adjusted();
    this.main.batch(() => {
      this.main.setScale('x', { min: x[0], max: x[1] });
      this.main.setScale('y', { min: y[0], max: y[1] });
    });
    this.residual.batch(() => {
      this.residual.setScale('x', { min: x[0], max: x[1] });
      this.residual.setScale('y', { min: this.residualRange[0], max: this.residualRange[1] });
    });
  }

  build(data, residualData) {
    for (const chart of [this.main, this.residual]) chart?.destroy();
    const axis = (label, more) => ({ label, labelSize: 20, stroke: () => this.colours.ink, grid: { stroke: () => this.colours.grid, width: 1 },
      ticks: { stroke: () => this.colours.grid }, ...more });
    const common = (height, labels) => ({
      width: this.places[0].clientWidth, height, legend: { show: false }, cursor: { drag: { x: false, y: false }, points: { show: false } },
      scales: { x: { time: false, auto: false }, y: { auto: false } },
      axes: [axis(labels[0], { size: 36 }), axis(labels[1], { size: 64, values: (u, ticks) => ticks.map((v) => String(Number(v.toPrecision(7)))) })],
    });
    const line = (width) => ({ stroke: () => this.colours.fit, width, points: { show: false } });
    const { names } = this.state;
    this.main = new uPlot({
      ...common(this.height(), names),
      series: [{}, line(2), { ...line(1), stroke: 'transparent' }, { ...line(1), stroke: 'transparent' }],
      bands: [{ series: [2, 3], fill: () => this.colours.band }],
      hooks: { draw: [(u) => this.drawPoints(u, this.drawn, this.state.y), (u) => this.drawMarks(u)] },
    }, data, this.places[0]);
    this.residual = new uPlot({
      ...common(150, [names[0], 'residual']),
      series: [{}, line(1)],
      hooks: { draw: [(u) => this.drawPoints(u, this.drawnResiduals, this.state.result.residuals)] },
    }, residualData, this.places[1]);
    for (const canvas of document.querySelectorAll('.pg canvas')) canvas.setAttribute('aria-hidden', 'true');
    this.rescale();
  }

  height() { return Math.round(Math.min(420, Math.max(280, this.places[0].clientWidth * 0.55))); }

  resize() {
    if (!this.main) return;
    this.main.setSize({ width: this.places[0].clientWidth, height: this.height() });
    this.residual.setSize({ width: this.places[1].clientWidth, height: 150 });
    this.rescale();
  }

  // Draws inside the frame of a chart, in pixels of its canvas.
  inside(u, draw) {
    const { ctx } = u;
    ctx.save();
    ctx.beginPath();
    ctx.rect(u.bbox.left, u.bbox.top, u.bbox.width, u.bbox.height);
    ctx.clip();
    draw(ctx, (v) => u.valToPos(v, 'x', true), (v) => u.valToPos(v, 'y', true), devicePixelRatio || 1);
    ctx.restore();
  }

  drawPoints(u, indices, y) {
    this.inside(u, (ctx, px, py, ratio) => {
      const radius = (indices.length > 400 ? 1.3 : indices.length > 60 ? 2.2 : 3.5) * ratio;
      ctx.fillStyle = this.colours.point;
      for (const i of indices) {
        ctx.beginPath();
        ctx.arc(px(this.state.x[i]), py(y[i]), radius, 0, 2 * Math.PI);
        ctx.fill();
      }
      const { selected } = this.state;
      if (selected === null) return;
      ctx.strokeStyle = this.colours.ink;
      ctx.lineWidth = 2 * ratio;
      ctx.beginPath();
      ctx.arc(px(this.state.x[selected]), py(y[selected]), radius + 4 * ratio, 0, 2 * Math.PI);
      ctx.stroke();
    });
  }

  drawMarks(u) {
    const { result } = this.state;
    this.inside(u, (ctx, px, py, ratio) => {
      ctx.lineWidth = 2 * ratio;
      const bend = sharpest(result);
      if (bend && Number.isFinite(bend.radius)) {
        ctx.strokeStyle = this.colours.circle;
        ctx.setLineDash([6 * ratio, 4 * ratio]);
        ctx.beginPath();
        ctx.ellipse(px(bend.centreX), py(bend.centreY), Math.abs(px(bend.centreX + bend.radius) - px(bend.centreX)),
          Math.abs(py(bend.centreY + bend.radius) - py(bend.centreY)), 0, 0, 2 * Math.PI);
        ctx.stroke();
        ctx.setLineDash([]);
      }
      ctx.strokeStyle = this.colours.mark;
      const size = 6 * ratio;
      for (const { x, y } of result.zeros.list) {
        ctx.strokeRect(px(x) - size / 2, py(y) - size / 2, size, size);
      }
      for (const { x, y, maximum } of result.extremes.list) {
        const up = maximum ? -1 : 1;
        ctx.beginPath();
        ctx.moveTo(px(x) - size, py(y) - up * size * 0.6);
        ctx.lineTo(px(x) + size, py(y) - up * size * 0.6);
        ctx.lineTo(px(x), py(y) + up * size);
        ctx.closePath();
        ctx.stroke();
      }
    });
  }

  // The point nearest to a place of the frame, within so many pixels, or null.
  nearest(left, top, reach) {
    const u = this.main;
    let best = null;
    let least = reach * reach;
    const { x, y } = this.state;
    for (let i = 0; i < x.length; ++i) {
      const dx = u.valToPos(x[i], 'x') - left;
      if (dx > reach || dx < -reach) continue;
      const dy = u.valToPos(y[i], 'y') - top;
      const distance = dx * dx + dy * dy;
      if (distance <= least) [best, least] = [i, distance];
    }
    return best;
  }

  redraw() {
    this.colours = colours();
    this.main?.redraw(false);
    this.residual?.redraw(false);
  }

  // Both charts on one ground.
  canvas() {
    const [a, b] = [this.main.ctx.canvas, this.residual.ctx.canvas];
    const both = document.createElement('canvas');
    both.width = a.width;
    both.height = a.height + b.height;
    const ctx = both.getContext('2d');
    ctx.fillStyle = this.colours.ground;
    ctx.fillRect(0, 0, both.width, both.height);
    ctx.drawImage(a, 0, 0);
    ctx.drawImage(b, 0, a.height);
    return both;
  }
}
