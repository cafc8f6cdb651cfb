// Opens every page of the site in Chromium, wide and narrow, light and dark, and fails at a request to another host, an error on
// the console, a page that scrolls sideways, or an obstacle that axe-core calls serious or critical. Then it searches.
// usage: browser.js SITE [SCREENSHOTS [PAGE...]]
const fs = require('fs');
const path = require('path');
const puppeteer = require('puppeteer-core');
const { start } = require('./server.js');

const site = path.resolve(process.argv[2]);
const shots = process.argv[3];
const chosen = process.argv.slice(4);
const axe = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
const faults = [];

function pagesOf(folder, prefix = '') {
  return fs.readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    if (entry.isDirectory()) return entry.name === '_static' ? [] : pagesOf(path.join(folder, entry.name), `${prefix}${entry.name}/`);
    return entry.name.endsWith('.html') ? [prefix + entry.name] : [];
  });
}

// A tab that notes what goes wrong in it.
async function open(browser, address, view) {
  const tab = await browser.newPage();
  tab.noting = [];
  await tab.setViewport({ width: view.width, height: 900 });
  await tab.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: view.scheme }]);
  tab.on('request', (request) => {
    const url = request.url();
    if (!url.startsWith(address) && !/^(data|blob):/.test(url)) tab.noting.push(`asks for ${url}`);
  });
  tab.on('response', (response) => response.status() >= 400 && tab.noting.push(`${response.status()} for ${response.url()}`));
  tab.on('console', (message) => message.type() === 'error' && tab.noting.push(`console: ${message.text()}`));
  tab.on('pageerror', (error) => tab.noting.push(`error: ${error.message}`));
  return tab;
}

async function check(tab, address, page, view) {
  tab.noting.length = 0;
  await tab.goto(`${address}/${page}`, { waitUntil: 'load' });
  const wide = await tab.evaluate(() => document.scrollingElement.scrollWidth - document.scrollingElement.clientWidth);
  if (wide > 0) tab.noting.push(`scrolls sideways by ${wide} pixels`);
  const cut = await tab.evaluate(() => {
    const scrolls = (e) => e.closest('article') && (/auto|scroll/.test(getComputedStyle(e).overflowX) || scrolls(e.parentElement));
    // Not seen: what formulas hold for screen readers, and the part of a root sign that its frame cuts off.
    const unseen = (e) => e.closest('.katex-mathml, .katex .hide-tail');
    const beyond = Array.from(document.querySelectorAll('article *')).filter((e) => {
      const place = e.getBoundingClientRect();
      return place.width > 1 && place.right > innerWidth + 1 && !unseen(e) && !scrolls(e);
    });
    return beyond.length ? beyond[0].outerHTML.slice(0, 120) : '';
  });
  if (cut) tab.noting.push(`is cut at the right: ${cut}`);
  if (shots) {
    const name = `${page.replace(/\//g, '-').replace('.html', '')}-${view.width}-${view.scheme}.png`;
    await tab.screenshot({ path: path.join(shots, name), fullPage: false });
  }
  await tab.evaluate(axe);
  const found = await tab.evaluate(async () => {
    const result = await axe.run(document, { resultTypes: ['violations'] });
    return result.violations.filter((v) => v.impact === 'serious' || v.impact === 'critical')
      .map((v) => `${v.id} (${v.impact}): ${v.nodes.length} times, first ${v.nodes[0].html.slice(0, 160)}`);
  });
  tab.noting.push(...found);
  faults.push(...tab.noting.map((what) => `${page}, ${view.width} pixels, ${view.scheme}: ${what}`));
}

async function search(browser, address) {
  const tab = await open(browser, address, { width: 1280, scheme: 'light' });
  const counts = [];
  for (const word of ['zero', 'fit', 'residual', 'singular', 'align', 'nan', 'inverse', 'curvature', 'threads', 'numpy']) {
    await tab.goto(`${address}/search.html?q=${word}`, { waitUntil: 'load' });
    await tab.waitForFunction(() => /\d/.test(document.querySelector('#search-results .search-summary')?.textContent || ''),
      { timeout: 10000 }).catch(() => {});
    const found = await tab.$$eval('#search-results li', (items) => items.length);
    counts.push(`${word} ${found}`);
    if (found === 0) faults.push(`the search finds nothing for ${word}`);
  }
  await tab.goto(`${address}/search.html?q=xyzzyplugh`, { waitUntil: 'load' });
  await new Promise((resolve) => setTimeout(resolve, 1500));
  if ((await tab.$$('#search-results li')).length) faults.push('the search finds a word that nobody wrote');
  faults.push(...tab.noting.map((what) => `search: ${what}`));
  await tab.close();
  return counts.join(', ');
}

(async () => {
  const server = await start(site);
  const browser = await puppeteer.launch({ executablePath: '/usr/bin/chromium', headless: true, args: ['--no-sandbox', '--disable-gpu'] });
  const pages = chosen.length ? chosen : pagesOf(site);
  const views = [
    { width: 1280, scheme: 'light' }, { width: 1280, scheme: 'dark' },
    { width: 390, scheme: 'light' }, { width: 390, scheme: 'dark' },
  ];
  try {
    for (const view of views) {
      const tab = await open(browser, server.address, view);
      for (const page of pages) await check(tab, server.address, page, view);
      await tab.close();
    }
    const counts = await search(browser, server.address);
    if (faults.length) {
      console.error([...new Set(faults)].join('\n'));
      process.exitCode = 1;
    } else {
      console.log(`${pages.length} pages in ${views.length} views: no fault. The search finds: ${counts}`);
    }
  } finally {
    await browser.close();
    server.stop();
  }
})().catch((error) => { console.error(error); process.exit(1); });
