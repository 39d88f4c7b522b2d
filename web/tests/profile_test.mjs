// The explorer's wiring profile panel in headless Chromium: a profile file loads through the
// page's file input and switches to its hand, each output shows, by name beside its slot, the
// command the displayed targets give; faulty profiles are refused naming the field; the
// download gives the profile back.
//
//   node web/tests/profile_test.mjs --site DIR --profiles DIR --out DIR
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

const args = Object.fromEntries(process.argv.slice(2).reduce((pairs, a, i, all) => {
  if (a.startsWith('--')) pairs.push([a.slice(2), all[i + 1]]);
  return pairs;
}, []));
let failures = 0;
const check = (ok, what) => { if (!ok) { failures++; console.log(`FAILED: ${what}`); } };

const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', headless: true,
  args: ['--no-sandbox', '--disable-gpu', '--no-first-run', '--disable-background-networking'] });
try {
  const context = await browser.newContext({ viewport: { width: 1440, height: 1100 }, acceptDownloads: true });
  const page = await context.newPage();
  const problems = [];
  page.on('pageerror', (e) => problems.push(e.message));
  page.on('console', (m) => { if (m.type() === 'error') problems.push(m.text()); });
  await page.goto(pathToFileURL(join(args.site, 'index.html')).href);
  await page.evaluate(() => window.quilReady);

  for (const file of readdirSync(args.profiles).filter((f) => f.endsWith('.json')).sort()) {
    const path = join(args.profiles, file);
    const profile = JSON.parse(readFileSync(path, 'utf8'));
    await page.setInputFiles('#profile-file', path);
    await page.waitForSelector(`#profile-outputs tr[data-output="${profile.outputs[0].name}"]`);
    check(await page.$eval('#hand-select', (s) => s.value) === profile.hand, `${file}: the page shows ${profile.hand}`);
    // Move a reading so the targets change, then compare every command with the targets on show.
    await page.fill('#sliders input[type=number] >> nth=3', '75');
    await page.dispatchEvent('#sliders input[type=number] >> nth=3', 'change');
    const targets = await page.$$eval('#groups .target', (rows) =>
      rows.map((r) => [Number(r.dataset.slot), Number(r.dataset.value)]).sort((a, b) => a[0] - b[0]).map((x) => x[1]));
    const shown = await page.$$eval('#profile-outputs tr[data-output]', (rows) => rows.map((r) => [r.dataset.output, r.dataset.value]));
    check(shown.length === profile.outputs.length, `${file}: one row per output`);
    profile.outputs.forEach((o, i) => {
      const y = o.scale * targets[o.slot] + o.offset;
      const c = Math.min(Math.max(y, o.min), o.max);
      check(shown[i][0] === o.name && Number(shown[i][1]) === c, `${file}: ${o.name} shows ${shown[i][1]}, expected ${c}`);
    });
    const [download] = await Promise.all([page.waitForEvent('download'), page.click('#profile-download')]);
    check(download.suggestedFilename() === file, `${file}: downloads as ${download.suggestedFilename()}`);
    check(JSON.stringify(JSON.parse(readFileSync(await download.path(), 'utf8'))) === JSON.stringify(profile),
      `${file}: the download is the profile`);
  }

  const good = JSON.parse(readFileSync(join(args.profiles, readdirSync(args.profiles).filter((f) => f.endsWith('.json'))[0]), 'utf8'));
  const faults = [
    [(p) => { p.outputs[0].slot = 30; }, 'outputs[0].slot'],
    [(p) => { p.outputs[1].min = p.outputs[1].max + 1; }, 'outputs[1].min'],
    [(p) => { delete p.outputs[0].scale; }, 'outputs[0].scale is missing'],
    [(p) => { p.outputs[0].gain = 1; }, 'outputs[0].gain'],
    [(p) => { p.hand = 'NO_SUCH_HAND'; }, 'hand'],
    [(p) => { p.safe_after = -1; }, 'safe_after'],
    [(p) => { p.outputs[0].smoothing = { kind: 'ema' }; }, 'outputs[0].smoothing.alpha is missing'],
  ];
  for (const [spoil, field] of faults) {
    const p = JSON.parse(JSON.stringify(good));
    spoil(p);
    const loaded = await page.evaluate((text) => window.quilProfile.load('bad.json', text), JSON.stringify(p));
    const message = await page.$eval('#profile-status', (s) => s.textContent);
    check(!loaded && message.startsWith('bad.json: ' + field), `refused naming ${field}: "${message}"`);
  }
  // A slot named by its role.
  {
    const p = JSON.parse(JSON.stringify(good));
    const roles = await page.evaluate(async (hand) => (await window.quilReady).hand(hand).slotRoles, p.hand);
    const unique = roles.findIndex((r) => roles.filter((x) => x === r).length === 1);
    p.outputs[0].slot = roles[unique];
    const loaded = await page.evaluate((text) => window.quilProfile.load('roles.json', text), JSON.stringify(p));
    const row = await page.$eval('#profile-outputs tr[data-output]', (r) => r.children[1].textContent);
    check(loaded && row.startsWith(`${unique} `), `a slot by role loads as slot ${unique}: ${row}`);
  }
  await page.evaluate((text) => window.quilProfile.load('inspire.json', text),
    readFileSync(join(args.profiles, 'inspire_robots_rh56dfx_0_1000.json'), 'utf8'));
  await page.screenshot({ path: join(args.out, 'profile_panel.png'), fullPage: true });
  check(problems.length === 0, `no page errors: ${problems.join('; ')}`);
} finally {
  await browser.close();
}
console.log(failures ? `${failures} profile panel checks failed` : 'profile panel: all checks passed');
process.exit(failures ? 1 : 0);
