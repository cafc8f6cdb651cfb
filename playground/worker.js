// Runs the library beside the page, so that the page stays fluid. The engine (createEngine) stands in front of this text.
/* global createEngine */
let fitter;

const ready = createEngine().then((engine) => {
  fitter = new engine.Fitter();
  postMessage({ kind: 'ready', selfcheck: engine.selfcheck() });
}).catch((error) => postMessage({ kind: 'failed', message: String(error && error.message || error) }));

onmessage = async ({ data }) => {
  await ready;
  if (!fitter) return;
  if (data.kind === 'points') fitter.set(data.x, data.y);
  if (data.kind === 'move') fitter.move(data.point, data.x, data.y);
  if (data.kind === 'fit') {
    const start = performance.now();
    const result = fitter.analyse(data.degree + 1, data.samples);
    const milliseconds = performance.now() - start;
    const parts = ['residuals', 'curveX', 'curveY', 'half'].filter((name) => result[name]).map((name) => result[name].buffer);
    postMessage({ kind: 'fit', id: data.id, degree: data.degree, milliseconds, result }, parts);
  }
};
