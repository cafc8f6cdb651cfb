// The playground in Chromium: examples, pasted text, files, the slider, faults, the keyboard, dragging, fingers, saving, a narrow screen, many
// points, and the self-check beside that of the library on this machine. usage: page_test.js SITE SELFCHECK [SCREENSHOTS]
import assert from 'node:assert/strict';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import os from 'node:os';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const require = createRequire(new URL('../../site/tests/server.js', import.meta.url));
const puppeteer = require('puppeteer-core');
const { start } = require('./server.js');

const [site, selfcheck, shots] = process.argv.slice(2);
const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'playground-'));

const fitted = (tab, degree) => tab.waitForFunction((d) => document.getElementById('pg-app').dataset.fitted === String(d), { timeout: 20000 }, degree);
const text = (tab, id) => tab.$eval(`#pg-${id}`, (e) => e.textContent);
const rows = (tab, id) => tab.$$eval(`#pg-${id} tbody tr`, (all) => all.map((r) => Array.from(r.cells, (c) => c.textContent)));

async function enter(tab, words) {
  await tab.$eval('#pg-text', (e, v) => { e.value = v; }, words);
  await tab.$eval('#pg-app', (e) => { e.dataset.fitted = ''; });
  await tab.click('#pg-use');
}

async function slide(tab, degree) {
  await tab.$eval('#pg-degree', (e, v) => { e.value = v; e.dispatchEvent(new Event('input')); }, degree);
}

async function open(browser, address, size, scheme) {
  const tab = await browser.newPage();
  tab.faults = [];
  tab.on('pageerror', (error) => tab.faults.push(error.message));
  tab.on('console', (m) => m.type() === 'error' && tab.faults.push(m.text()));
  await tab.setViewport(typeof size === 'number' ? { width: size, height: 1000 } : size);
  await tab.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
  await tab.goto(address, { waitUntil: 'load' });
  await fitted(tab, 5);
  return tab;
}

const tests = {
  async 'the self-check equals that of the library'(tab) {
    await tab.waitForFunction(() => document.getElementById('pg-selfcheck').textContent);
    assert.equal(await text(tab, 'selfcheck'), selfcheck);
  },

  async 'the first example shows zeros, extreme points and bends'(tab) {
    const kinds = (await rows(tab, 'places')).map((r) => r[0]);
    for (const kind of ['zero', 'maximum', 'minimum', 'sharpest bend']) assert.ok(kinds.includes(kind), kind);
  },

  async 'the density of water is largest near 4 degrees'(tab) {
    await tab.select('#pg-example', 'water');
    await fitted(tab, 4);
    const places = await rows(tab, 'places');
    const maximum = places.find((r) => r[0] === 'maximum');
    assert.ok(Math.abs(Number(maximum[1]) - 4) < 0.2, maximum.join(' '));
    assert.equal((await rows(tab, 'coefficients')).length, 5);
  },

  async 'pasted points give their parabola'(tab) {
    await slide(tab, 2);
    await enter(tab, '0;-6,5\n1;0\n2;6,5\n3;13');
    await fitted(tab, 2);
    const coefficients = (await rows(tab, 'coefficients')).map((r) => Number(r[1]));
    assert.ok(Math.abs(coefficients[0] + 6.5) < 1e-12 && Math.abs(coefficients[1] - 6.5) < 1e-12 && Math.abs(coefficients[2]) < 1e-12);
    assert.deepEqual((await rows(tab, 'places'))[0].slice(0, 2), ['zero', '1']);
    assert.match(await text(tab, 'live'), /4 points, separated by semicolon, with decimal commas/);
    assert.equal(await tab.$eval('#pg-degree', (e) => e.max), '3');
  },

  async 'as many coefficients as points leave the errors unknown'(tab) {
    await slide(tab, 3);
    await fitted(tab, 3);
    assert.match(await text(tab, 'summary'), /residual deviation not known/);
    assert.equal((await rows(tab, 'coefficients'))[0][2], 'not known');
    await slide(tab, 2);
  },

  async 'one point, and points without order, are taken'(tab) {
    await enter(tab, '7 5');
    await fitted(tab, 0);
    assert.equal((await rows(tab, 'coefficients'))[0][1], '5');
    await enter(tab, '3 9\n1 1\n2 4\n0 0\n4 16');
    await slide(tab, 2);
    await fitted(tab, 2);
    assert.ok(Math.abs(Number((await rows(tab, 'coefficients'))[2][1]) - 1) < 1e-12);
  },

  async 'the slider changes the fit'(tab) {
    await enter(tab, '0 0\n1 1\n2 8\n3 27\n4 64\n5 125');
    await fitted(tab, 2);
    const before = await text(tab, 'summary');
    await tab.focus('#pg-degree');
    await tab.keyboard.press('ArrowRight');
    await fitted(tab, 3);
    assert.equal(await text(tab, 'degree-value'), '3');
    assert.notEqual(await text(tab, 'summary'), before);
    assert.ok(Math.abs(Number((await rows(tab, 'coefficients'))[3][1]) - 1) < 1e-12);
  },

  async 'bad input is named by line and column'(tab) {
    await enter(tab, '1,2\n3,4\n5,six');
    assert.match(await text(tab, 'error'), /line 3, column 3: 'six' is not a number/);
    assert.equal(await tab.$eval('#pg-text', (e) => e.value.slice(e.selectionStart, e.selectionEnd)), 'six');
    assert.ok(await tab.$eval('#pg-error', (e) => !e.hidden));
    await enter(tab, '3,1\n3,2\n3,3');
    await fitted(tab, 0);
    assert.equal(await tab.$eval('#pg-error', (e) => e.hidden), true);
    await enter(tab, '<script>alert(1)</script>');
    assert.match(await text(tab, 'error'), /cannot be read/);
    await enter(tab, '0,1e308\n1,-1e308\n2,1e308\n3,-1e308');
    await tab.waitForFunction(() => document.getElementById('pg-error').textContent || document.getElementById('pg-app').dataset.fitted);
  },

  async 'a file is read'(tab) {
    const file = path.join(folder, 'points.csv');
    fs.writeFileSync(file, '\uFEFFt (s);h (mm)\r\n0;1\r\n1;3\r\n2;5\r\n3;7,5\r\n');
    await slide(tab, 1);
    await (await tab.$('#pg-file')).uploadFile(file);
    await tab.waitForFunction(() => /4 points/.test(document.getElementById('pg-summary').textContent));
    assert.match(await tab.$eval('#pg-text', (e) => e.value), /t \(s\);h \(mm\)/);
  },

  async 'points move by the keyboard and by dragging'(tab) {
    await enter(tab, '0,0\n1,1\n2,2\n3,3\n4,4');
    await slide(tab, 1);
    await fitted(tab, 1);
    assert.equal((await rows(tab, 'coefficients'))[1][1], '1');
    await tab.focus('#pg-chart');
    await tab.keyboard.press('ArrowRight');
    assert.match(await text(tab, 'live'), /^point 1: 0, 0/);
    await tab.keyboard.press('ArrowUp');
    await tab.waitForFunction(() => document.querySelector('#pg-coefficients tbody tr:nth-child(2) td:nth-child(2)').textContent !== '1');
    const frame = await tab.$eval('#pg-chart .u-over', (e) => { e.scrollIntoView({ block: 'center', behavior: 'instant' }); const r = e.getBoundingClientRect(); return { x: r.x, y: r.y, w: r.width, h: r.height }; });
    const slope = Number((await rows(tab, 'coefficients'))[1][1]);
    // the last point: x from -0.2 to 4.2, y about the same
    await tab.mouse.move(frame.x + (4.2 / 4.4) * frame.w, frame.y + frame.h * (0.2 / 4.4));
    await tab.mouse.down();
    await tab.mouse.move(frame.x + (4.2 / 4.4) * frame.w, frame.y + frame.h * 0.9, { steps: 8 });
    await tab.mouse.up();
    await tab.waitForFunction((s) => Number(document.querySelector('#pg-coefficients tbody tr:nth-child(2) td:nth-child(2)').textContent) < s / 2, {}, slope);
    assert.match(await tab.$eval('#pg-text', (e) => e.value), /\n4[.\d]*,0[.\d]*$|\n[34][.\d]*,[01][.\d]*$/);
  },

  async 'pictures and numbers are saved'(tab) {
    const client = await tab.createCDPSession();
    await client.send('Browser.setDownloadBehavior', { behavior: 'allow', downloadPath: folder });
    for (const kind of ['png', 'svg', 'json']) await tab.click(`#pg-${kind}`);
    const there = () => ['png', 'svg', 'json'].every((k) => fs.existsSync(path.join(folder, `fit.${k}`)));
    for (let i = 0; i < 100 && !there(); ++i) await new Promise((r) => setTimeout(r, 100));
    assert.ok(there(), 'not all three files came');
    assert.equal(fs.readFileSync(path.join(folder, 'fit.png')).subarray(1, 4).toString(), 'PNG');
    assert.match(fs.readFileSync(path.join(folder, 'fit.svg'), 'utf8'), /^<svg[^]*<circle[^]*<\/svg>$/);
    const numbers = JSON.parse(fs.readFileSync(path.join(folder, 'fit.json'), 'utf8'));
    assert.equal(numbers.coefficients.length, 2);
    assert.equal(numbers.selfcheck, selfcheck);
  },

  async '100,000 points follow the slider while the page stays fluid'(tab) {
    await tab.select('#pg-example', 'many');
    await tab.waitForFunction(() => /^100000 points/.test(document.getElementById('pg-summary').textContent), { timeout: 30000 });
    // the longest pause between two frames while the slider moves through all degrees
    const longest = await tab.evaluate(async () => {
      let last = performance.now();
      let pause = 0;
      let running = true;
      const frame = (now) => { pause = Math.max(pause, now - last); last = now; if (running) requestAnimationFrame(frame); };
      requestAnimationFrame(frame);
      const slider = document.getElementById('pg-degree');
      for (let d = 0; d <= 12; ++d) {
        slider.value = d;
        slider.dispatchEvent(new Event('input'));
        await new Promise((r) => setTimeout(r, 120));
      }
      running = false;
      return pause;
    });
    await fitted(tab, 12);
    return `longest pause of a frame ${longest.toFixed(0)} ms, ${(await text(tab, 'summary')).match(/[\d.]+ ms/)[0]} for the fit of degree 12`;
  },
};

// A telephone: the first finger drags a point while the page stays, a second one changes nothing, and a finger that begins
// beside the points scrolls the page.
async function fingers(browser, address) {
  const tab = await open(browser, address, { width: 390, height: 844, isMobile: true, hasTouch: true }, 'light');
  const client = await tab.createCDPSession();
  const touch = (type, ...points) => client.send('Input.dispatchTouchEvent', { type, touchPoints: points.map(([x, y], id) => ({ x, y, id })) });
  const glide = async (from, to, steps, ...others) => {
    for (let i = 1; i <= steps; ++i) {
      await touch('touchMove', [from[0] + ((to[0] - from[0]) * i) / steps, from[1] + ((to[1] - from[1]) * i) / steps], ...others);
      await new Promise((r) => setTimeout(r, 20));
    }
  };
  const scrolled = () => tab.evaluate(() => scrollY);
  const slope = async () => Number((await rows(tab, 'coefficients'))[1][1]);
  const lastPoint = async () => (await tab.$eval('#pg-text', (e) => e.value)).trim().split('\n').pop().split(/[,;]/).map(Number);
  await enter(tab, '0,0\n1,1\n2,2\n3,3\n4,4');
  await slide(tab, 1);
  await fitted(tab, 1);
  const frame = await tab.$eval('#pg-chart .u-over', (e) => { e.scrollIntoView({ block: 'center', behavior: 'instant' }); const r = e.getBoundingClientRect(); return { x: r.x, y: r.y, w: r.width, h: r.height }; });
  const at = (x, y) => [frame.x + ((x + 0.2) / 4.4) * frame.w, frame.y + ((4.2 - y) / 4.4) * frame.h];
  const before = await scrolled();

  await touch('touchStart', at(4, 4));
  await glide(at(4, 4), at(4, 1), 8);
  await touch('touchMove', at(4, 1), at(0.5, 3));
  await glide(at(4, 1), at(4, 1), 3, at(0.5, 2));
  await touch('touchEnd');
  await tab.waitForFunction(() => Number(document.querySelector('#pg-coefficients tbody tr:nth-child(2) td:nth-child(2)').textContent) < 0.6);
  const [x, y] = await lastPoint();
  assert.ok(Math.abs(x - 4) < 0.1 && Math.abs(y - 1) < 0.1, `the point was left at ${x}, ${y}`);
  // Text that grows above the middle of the page may move it by a pixel.
  const still = async () => Math.abs(await scrolled() - before) < 10;
  assert.ok(await still(), 'the page scrolled while a point was dragged');

  const kept = await slope();
  const free = [at(2, 4), [at(2, 4)[0], at(2, 4)[1] - 200]];
  await touch('touchStart', free[0]);
  await glide(...free, 10);
  await touch('touchEnd');
  for (let i = 0; i < 50 && await still(); ++i) await new Promise((r) => setTimeout(r, 100));
  assert.ok(!(await still()), 'a finger beside the points does not scroll the page');
  assert.equal(await slope(), kept, 'a finger beside the points moved one');
  assert.deepEqual(tab.faults, []);
  if (shots) await tab.screenshot({ path: path.join(shots, 'playground-fingers.png') });
  await tab.close();
}

const server = await start(path.resolve(site));
const browser = await puppeteer.launch({ executablePath: '/usr/bin/chromium', headless: true, args: ['--no-sandbox', '--allow-file-access-from-files'] });
let failed = 0;
try {
  const address = `${server.address}/playground.html`;
  const tab = await open(browser, address, 1280, 'light');
  for (const [name, test] of Object.entries(tests)) {
    try {
      const note = await test(tab);
      console.log(`${name}${note ? `: ${note}` : ''}`);
    } catch (error) {
      failed += 1;
      console.error(`FAILED: ${name}: ${error.message}`);
    }
  }
  try {
    await fingers(browser, address);
    console.log('points move by a finger');
  } catch (error) {
    failed += 1;
    console.error(`FAILED: points move by a finger: ${error.message}`);
  }
  const views = [[1280, 'light', address], [1280, 'dark', address], [390, 'light', address], [390, 'dark', address],
    [1280, 'light', pathToFileURL(path.resolve(site, 'playground.html')).href]];
  for (const [width, scheme, from] of views) {
    const other = await open(browser, from, width, scheme);
    const wide = await other.evaluate(() => document.scrollingElement.scrollWidth - document.scrollingElement.clientWidth);
    if (wide > 0 || other.faults.length) {
      failed += 1;
      console.error(`FAILED: ${from}, ${width}, ${scheme}: ${wide} pixels too wide; ${other.faults.join('; ')}`);
    }
    if (shots) await other.screenshot({ path: path.join(shots, `playground-${width}-${scheme}.png`), fullPage: true });
    await other.close();
  }
  if (tab.faults.length) {
    failed += 1;
    console.error(`FAILED: ${tab.faults.join('; ')}`);
  }
  console.log(`playground: ${Object.keys(tests).length + 1 + views.length - failed} checks passed, ${failed} failed`);
} finally {
  await browser.close();
  server.stop();
  fs.rmSync(folder, { recursive: true, force: true });
}
process.exit(failed ? 1 : 0);
