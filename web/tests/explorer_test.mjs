// The hand explorer in headless Chromium: the page loads cleanly, its controls drive the
// targets and the memory display, sessions go in and out exactly, and window.quilReady's API
// gives the native library's bits for every hand.
//
//   node web/tests/explorer_test.mjs --url URL --site DIR --native-reference BIN --out DIR [--tool BIN]
//
// URL serves the site built in DIR (which is also opened from disk).
// BIN is web/tests/native_reference.cpp built against the native library; --tool adds the
// command-line tool's f64 output as a second native witness.
import { spawnSync } from 'node:child_process';
import { mkdirSync, readFileSync, writeFileSync, existsSync } from 'node:fs';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

const args = Object.fromEntries(process.argv.slice(2).reduce((pairs, a, i, all) => {
  if (a.startsWith('--')) pairs.push([a.slice(2), all[i + 1]]);
  return pairs;
}, []));
for (const need of ['url', 'site', 'native-reference', 'out']) {
  if (!args[need]) throw new Error(`missing --${need}`);
}
const out = args.out;
mkdirSync(join(out, 'native'), { recursive: true });

// ---- The samples: a few hundred glove rows that exercise pinches, dropouts and odd doubles.

function rng(seed) {
  let a = seed >>> 0;
  return () => {
    a = (a + 0x6d2b79f5) >>> 0;
    let t = a;
    t = Math.imul(t ^ (t >>> 15), t | 1);
    t ^= t + Math.imul(t ^ (t >>> 7), t | 61);
    return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
  };
}

function bitsToDouble(hex) {
  const b = new BigUint64Array([BigInt(hex)]);
  return new Float64Array(b.buffer)[0];
}

const SPECIALS = [
  NaN, Infinity, -Infinity, -0, 0, -20, 120, 1e308, -1e308, 5e-324,
  -20.000000000000004, 120.00000000000001, 119.99999999999999,
  bitsToDouble('0xfff8000000000000'), bitsToDouble('0x7ff0000000000123'),
];

function sessionRows() {
  const text = readFileSync(new URL('../../data/sample_session.csv', import.meta.url), 'utf8');
  return text.trim().split('\n').slice(1).map((l) => l.split(',').slice(1).map(Number));
}

function makeSamples() {
  const session = sessionRows();
  const random = rng(15);
  const rows = [];
  // The sample session's fist and its index and middle pinches, at 12.5 Hz: the latches close
  // and open as on a live glove.
  for (let r = 0; r < session.length; r += 8) rows.push(session[r]);
  // The index pinch again with channels dropping out while the hand holds it.
  for (let k = 0, r = 950; r < 1100; r += 3, k++) {
    const row = session[r].slice();
    if (k >= 10 && k < 20) row[1] = NaN;
    if (k >= 25 && k < 30) row[3] = Infinity;
    if (k >= 35 && k < 40) row[5] = -Infinity;
    if (k >= 42 && k < 46) row[0] = NaN;
    rows.push(row);
  }
  // Every odd double on every channel of a half-closed hand.
  const mid = [30, 28, 25, 40, 8, 45, 35, 6, 40, 30, 8, 30];
  for (let c = 0; c < 12; c++) {
    for (const v of SPECIALS) {
      const row = mid.slice();
      row[c] = v;
      rows.push(row);
    }
  }
  // Random hands, some readings replaced by odd doubles.
  for (let k = 0; k < 60; k++) {
    rows.push(Array.from({ length: 12 }, () =>
      (random() < 0.1 ? SPECIALS[Math.floor(random() * SPECIALS.length)] : -30 + 160 * random())));
  }
  for (const v of [NaN, -0, Infinity, -Infinity]) rows.push(new Array(12).fill(v));
  return Float64Array.from(rows.flat());
}

const samples = makeSamples();
const rows = samples.length / 12;
const readingsPath = join(out, 'readings.f64');
writeFileSync(readingsPath, new Uint8Array(samples.buffer));

const ref = spawnSync(args['native-reference'], [readingsPath, join(out, 'native')], { stdio: 'inherit' });
if (ref.status !== 0) throw new Error('the native reference failed');
const nativeHands = readFileSync(join(out, 'native', 'hands.tsv'), 'utf8').trim().split('\n').map((line) => {
  const [name, version, keeps, ...slotRoles] = line.split('\t');
  return { name, version, keepsState: keeps === '1', slotRoles };
});
const nativeBytes = (name, policy, ext) => readFileSync(join(out, 'native', `${name}.${policy}.${ext}`));

// ---- Running the cases.

const results = [];
async function check(name, body) {
  const started = Date.now();
  try {
    await body();
    results.push({ name, ok: true });
    console.log(`  ok    ${name} (${Date.now() - started} ms)`);
  } catch (err) {
    results.push({ name, ok: false });
    console.log(`  FAIL  ${name}\n        ${String(err && err.stack || err).split('\n').slice(0, 6).join('\n        ')}`);
  }
}

function assert(cond, message) {
  if (!cond) throw new Error(message);
}

// The first differing double of two byte strings of rows of 24, as a readable message.
function firstDifference(got, want, what) {
  if (got.length !== want.length) return `${what}: ${got.length} bytes, native ${want.length}`;
  const g = new BigUint64Array(got.buffer, got.byteOffset, got.length / 8);
  const w = new BigUint64Array(want.buffer, want.byteOffset, want.length / 8);
  for (let i = 0; i < w.length; i++) {
    if (g[i] !== w[i]) {
      return `${what}: row ${Math.floor(i / 24)} slot ${i % 24}: 0x${g[i].toString(16)}, native 0x${w[i].toString(16)}`;
    }
  }
  return null;
}

const toBase64 = (bytes) => Buffer.from(bytes.buffer, bytes.byteOffset, bytes.byteLength).toString('base64');
const fromBase64 = (text) => new Uint8Array(Buffer.from(text, 'base64'));

// In the page: base64 <-> bytes, so every bit of a double survives the trip (NaN, -0.0).
const PAGE_HELPERS = `
  window.__b64 = {
    toF64(text) {
      const bin = atob(text);
      const bytes = new Uint8Array(bin.length);
      for (let i = 0; i < bin.length; i++) bytes[i] = bin.charCodeAt(i);
      return new Float64Array(bytes.buffer);
    },
    fromBytes(bytes) {
      let bin = '';
      for (let i = 0; i < bytes.length; i++) bin += String.fromCharCode(bytes[i]);
      return btoa(bin);
    },
    fromF64(values) {
      const copy = Float64Array.from(values);
      return this.fromBytes(new Uint8Array(copy.buffer));
    },
  };`;

const browser = await chromium.launch({
  executablePath: '/usr/bin/chromium',
  headless: true,
  args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync'],
});
const context = await browser.newContext({ viewport: { width: 1440, height: 1000 }, acceptDownloads: true });
const page = await context.newPage();
const problems = [];
page.on('console', (m) => { if (m.type() === 'error' || m.type() === 'warning') problems.push(`console ${m.type()}: ${m.text()}`); });
page.on('pageerror', (e) => problems.push(`page error: ${e.message}`));
page.on('requestfailed', (r) => problems.push(`request failed: ${r.url()}`));
page.on('response', (r) => { if (r.status() >= 400) problems.push(`HTTP ${r.status()}: ${r.url()}`); });
const external = [];
page.on('request', (r) => { if (!r.url().startsWith(args.url) && !r.url().startsWith('data:') && !r.url().startsWith('blob:')) external.push(r.url()); });

const readDisplayedTargets = () => page.$$eval('#groups .target', (rowsEl) =>
  rowsEl.map((r) => [Number(r.dataset.slot), r.dataset.value]).sort((a, b) => a[0] - b[0]).map((x) => x[1]));

try {
  console.log(`hand explorer at ${args.url}: ${rows} samples per hand and policy`);

  await check('the page loads with no console errors and nothing from outside the site', async () => {
    await page.goto(args.url);
    await page.waitForSelector('body[data-ready="true"]', { timeout: 30000 });
    await page.evaluate(PAGE_HELPERS);
    await page.waitForTimeout(300);
    assert(problems.length === 0, problems.join('\n'));
    assert(external.length === 0, `requests outside the site: ${external.join(', ')}`);
  });

  await check('the catalogue matches the native library, and the picker offers every hand', async () => {
    const hands = await page.evaluate(async () => (await window.quilReady).hands());
    assert(JSON.stringify(hands.map(({ name, version, keepsState, slotRoles }) => ({ name, version, keepsState, slotRoles })))
      === JSON.stringify(nativeHands), 'api.hands() differs from the native catalogue');
    const options = await page.$$eval('#hand-select option', (o) => o.map((x) => [x.value, `${x.textContent} ${x.title}`]));
    assert(options.length === nativeHands.length, `${options.length} hands in the picker`);
    for (const [i, h] of nativeHands.entries()) {
      assert(options[i][0] === h.name && options[i][1].includes(h.version), `picker entry ${i}: ${options[i]}`);
      assert(options[i][1].includes('keeps state') === h.keepsState, `picker entry ${i} state mark: ${options[i][1]}`);
    }
  });

  await check('every slot says what the native library says, and its bar shows it', async () => {
    const hands = await page.evaluate(async () => (await window.quilReady).hands());
    const lines = readFileSync(join(out, 'native', 'slots.tsv'), 'utf8').trim().split('\n');
    assert(lines.length === 24 * nativeHands.length, `${lines.length} native slot lines`);
    const num = (t) => (t === 'nan' || t === '-nan' ? NaN : Number(t));
    const same = (a, b) => Object.is(a, b) || (Number.isNaN(a) && Number.isNaN(b)) || a === b;
    for (const line of lines) {
      const [name, slot, role, kind, relation, departs, value, sign, min, max, movedBy] = line.split('\t');
      const f = hands.find((h) => h.name === name).slots[Number(slot)];
      const moved = f.movedBy.reduce((m, r) => m | (1 << r), 0);
      assert(f.role === role && f.kind === kind && f.relation === relation && f.departs === departs &&
        same(f.value, num(value)) && f.sign === Number(sign) && same(f.range[0], num(min)) &&
        same(f.range[1], num(max)) && moved === Number(movedBy), `${name} slot ${slot}: ${JSON.stringify(f)} vs ${line}`);
    }
    const readings = await page.evaluate(async () => (await window.quilReady).readings());
    assert(readings.length === 12 && readings.every((r) => r.unit === 'degrees'), 'twelve readings in degrees');
    const label = await page.$eval('label[for="reading-3"] .channel-name', (e) => e.textContent);
    assert(label === readings[3].name.replace(/_/g, ' '), `slider x3 is labelled ${label}`);
    const hand = await page.$eval('#hand-select', (e) => e.value);
    const h = hands.find((x) => x.name === hand);
    const follower = h.slots.findIndex((f) => f.kind === 'follower');
    if (follower >= 0) {
      const tip = await page.$eval(`.target[data-slot="${follower}"]`, (e) => e.title);
      assert(tip.includes(h.slots[follower].relation), `the tooltip of slot ${follower} lacks its relation: ${tip}`);
    }
    const bands = await page.$$eval('.target .track .range', (b) => b.length);
    assert(bands === 24, `${bands} range bands`);
  });

  // Both entry points (one sample at a time, and many at once from a Float64Array) against the
  // native handle, with both dropout policies; the saved state after the last sample too.
  const mapped = await page.evaluate(async ({ samplesB64, names }) => {
    const api = await window.quilReady;
    const input = window.__b64.toF64(samplesB64);
    const res = {};
    for (const name of names) {
      for (const policy of ['pass', 'hold']) {
        const one = api.open(name);
        one.setDropout(policy);
        const single = new Float64Array(input.length * 2);
        for (let r = 0; r < input.length / 12; r++) single.set(one.map(Array.from(input.subarray(12 * r, 12 * r + 12))), 24 * r);
        const many = api.open(name);
        many.setDropout(policy);
        const batch = many.mapMany(input);
        res[`${name}.${policy}`] = {
          single: window.__b64.fromF64(single),
          many: window.__b64.fromF64(batch),
          state: window.__b64.fromBytes(one.state()),
        };
        one.close();
        many.close();
      }
    }
    return res;
  }, { samplesB64: toBase64(samples), names: nativeHands.map((h) => h.name) });

  await check(`every hand gives the native bits over ${rows} samples, one at a time and in bulk, both dropout policies`, async () => {
    const faults = [];
    for (const h of nativeHands) {
      for (const policy of ['pass', 'hold']) {
        const want = nativeBytes(h.name, policy, 'f64');
        const got = mapped[`${h.name}.${policy}`];
        for (const [how, bytes] of [['map', fromBase64(got.single)], ['mapMany', fromBase64(got.many)]]) {
          const d = firstDifference(bytes, want, `${h.name} ${policy} ${how}`);
          if (d) faults.push(d);
        }
        if (Buffer.compare(Buffer.from(fromBase64(got.state)), nativeBytes(h.name, policy, 'state')) !== 0) {
          faults.push(`${h.name} ${policy}: saved state after the last sample differs`);
        }
      }
    }
    assert(faults.length === 0, faults.join('\n'));
  });

  if (args.tool && existsSync(args.tool)) {
    await check('the command-line tool agrees with the native handles (C exports, fresh process)', async () => {
      const faults = [];
      for (const h of nativeHands) {
        const dest = join(out, 'native', `${h.name}.tool.f64`);
        const run = spawnSync(args.tool, ['map', '--model', h.name, '--format', 'f64', '--quiet', readingsPath, '-o', dest]);
        if (run.status !== 0) { faults.push(`${h.name}: tool exit ${run.status}: ${run.stderr}`); continue; }
        const d = firstDifference(new Uint8Array(readFileSync(dest)), nativeBytes(h.name, 'pass', 'f64'), `${h.name} tool`);
        if (d) faults.push(d);
      }
      assert(faults.length === 0, faults.join('\n'));
    });
  }

  await check('a saved state carries a session on in another handle; reset starts it over', async () => {
    const res = await page.evaluate(async ({ samplesB64, names }) => {
      const api = await window.quilReady;
      const input = window.__b64.toF64(samplesB64);
      const n = input.length / 12;
      const half = Math.floor(n / 2);
      const out = {};
      for (const name of names) {
        const first = api.open(name);
        first.setDropout('hold');
        const a = first.mapMany(input.subarray(0, 12 * half));
        const second = api.open(name);
        second.restore(first.state());
        const memory = [first.memory(), second.memory()].map((m) => JSON.stringify(m));
        const b = second.mapMany(input.subarray(12 * half));
        second.reset();
        const again = second.mapMany(input.subarray(0, 12 * half));
        const joined = new Float64Array(24 * n);
        joined.set(a);
        joined.set(b, 24 * half);
        out[name] = { joined: window.__b64.fromF64(joined), again: window.__b64.fromF64(again), policy: second.dropout, memory };
        first.close();
        second.close();
      }
      return out;
    }, { samplesB64: toBase64(samples), names: nativeHands.map((h) => h.name) });
    const faults = [];
    for (const h of nativeHands) {
      const want = nativeBytes(h.name, 'hold', 'f64');
      const d1 = firstDifference(fromBase64(res[h.name].joined), want, `${h.name} saved and loaded`);
      const half = Math.floor(rows / 2);
      const d2 = firstDifference(fromBase64(res[h.name].again), want.subarray(0, 24 * 8 * half), `${h.name} after reset`);
      if (d1) faults.push(d1);
      if (d2) faults.push(d2);
      if (res[h.name].policy !== 'hold') faults.push(`${h.name}: reset dropped the dropout policy`);
      const [before, after] = res[h.name].memory;
      if (before !== after || JSON.parse(after).dropout !== 'hold') faults.push(`${h.name}: memory ${before} restored as ${after}`);
    }
    assert(faults.length === 0, faults.join('\n'));
  });

  await check('the API refuses what it cannot do', async () => {
    const res = await page.evaluate(async () => {
      const api = await window.quilReady;
      const tries = {
        unknownHand: () => api.open('NO_SUCH_HAND'),
        shortRow: () => { const h = api.open(api.hands()[0].name); try { h.map([1, 2, 3]); } finally { h.close(); } },
        badPolicy: () => { const h = api.open(api.hands()[0].name); try { h.setDropout('drop'); } finally { h.close(); } },
        otherHandsState: () => {
          const [a, b] = api.hands();
          const ha = api.open(a.name);
          const hb = api.open(b.name);
          try { hb.restore(ha.state()); } finally { ha.close(); hb.close(); }
        },
        closed: () => { const h = api.open(api.hands()[0].name); h.close(); h.map(new Array(12).fill(0)); },
      };
      const out = {};
      for (const [k, f] of Object.entries(tries)) {
        try { f(); out[k] = 'no error'; } catch (e) { out[k] = e.message; }
      }
      out.caseInsensitive = api.open(api.hands()[3].name.toLowerCase()).name === api.hands()[3].name;
      out.names = [api.DROPOUT_PASS, api.DROPOUT_HOLD, api.version, api.versionNumber];
      return out;
    });
    for (const k of ['unknownHand', 'shortRow', 'badPolicy', 'otherHandsState', 'closed']) {
      assert(res[k] !== 'no error', `${k} was accepted`);
    }
    assert(/closest/.test(res.unknownHand), `unknown hand message: ${res.unknownHand}`);
    assert(/another hand/.test(res.otherHandsState), `state of another hand: ${res.otherHandsState}`);
    assert(res.caseInsensitive, 'a hand name in lower case does not open the hand');
    const [pass, hold, version, number] = res.names;
    assert(pass === 'pass' && hold === 'hold', `dropout names ${pass}, ${hold}`);
    assert(version.split('.').reduce((n, part) => 100 * n + Number(part), 0) === number, `version ${version} numbered ${number}`);
  });

  // A stateless hand, so what the bars show can be recomputed from the sliders alone.
  const stateless = nativeHands.find((h) => !h.keepsState).name;
  const liveTargets = (name, policy, readings) => page.evaluate(async ({ name, policy, readings }) => {
    const api = await window.quilReady;
    const h = api.open(name);
    h.setDropout(policy);
    const fmt = (v) => window.QuilSession.formatNumber(v);
    const t = h.map(readings).map(fmt);
    h.close();
    return t;
  }, { name, policy, readings });
  // What the sliders hold, exactly: the number fields next to them (a slider snaps to its step).
  const sliderReadings = () => page.$$eval('#sliders input.reading-value', (s) => s.map((x) => Number(x.value)));

  await check('moving a slider changes the displayed targets to what the hand maps', async () => {
    await page.selectOption('#hand-select', stateless);
    const before = await readDisplayedTargets();
    await page.focus('#reading-3');
    await page.keyboard.press('End');
    await page.waitForTimeout(50);
    const after = await readDisplayedTargets();
    assert(JSON.stringify(before) !== JSON.stringify(after), 'the targets did not change');
    const readings = await sliderReadings();
    assert(readings[3] === 120, `slider x3 reads ${readings[3]}`);
    const want = await liveTargets(stateless, 'pass', readings);
    assert(JSON.stringify(after) === JSON.stringify(want), `shown ${after}\n        mapped ${want}`);
    assert(await page.textContent('#mode') === 'live from the sliders', 'the page does not say it is live');
  });

  await check('a dropped channel reaches the hand as NaN, or holds, as the policy says', async () => {
    await page.check('#dropout-5');
    const readings = await sliderReadings();
    readings[5] = NaN;
    let want = await liveTargets(stateless, 'pass', readings);
    assert(JSON.stringify(await readDisplayedTargets()) === JSON.stringify(want), 'pass: the bars are not the NaN mapping');
    await page.click('#dropout-policy button[data-policy="hold"]');
    const shown = await readDisplayedTargets();
    const held = await page.textContent('#held-5 .mono');
    readings[5] = (await sliderReadings())[5];
    want = await liveTargets(stateless, 'pass', readings);
    assert(JSON.stringify(shown) === JSON.stringify(want), 'hold: the bars are not those of the held reading');
    assert(Math.abs(Number(held) - readings[5]) < 0.051, `held x5 shows ${held}, the slider ${readings[5]}`);
    await page.uncheck('#dropout-5');
    await page.click('#dropout-policy button[data-policy="pass"]');
  });

  await check('the memory display follows the session for every hand that keeps state', async () => {
    const faults = [];
    let latched = 0;
    for (const h of nativeHands.filter((x) => x.keepsState)) {
      await page.selectOption('#hand-select', h.name);
      for (const row of [0, 430, 530, 1050, 1460, 1999]) {
        await page.evaluate((r) => {
          const c = document.getElementById('cursor');
          c.value = String(r);
          c.dispatchEvent(new Event('input'));
        }, row);
        const shown = await page.$$eval('#memory .latch', (ls) => ls.map((l) => l.classList.contains('on')));
        const shownValues = await page.$$eval('#thumb1-ref, #thumb2-ref, .held-cell .mono', (vs) => vs.map((v) => v.dataset.value));
        const shownTargets = await readDisplayedTargets();
        const want = await page.evaluate(async ({ name, row }) => {
          const api = await window.quilReady;
          const hand = api.open(name);
          const ses = api.readSession('sample_session.csv', new TextEncoder().encode(window.QUIL_SAMPLE_SESSION));
          const t = hand.mapMany(ses.readings.subarray(0, 12 * (row + 1)));
          const memory = hand.memory();
          hand.close();
          const f = window.QuilSession.formatNumber;
          return {
            latches: memory.pinchLatches,
            values: [...memory.thumbReferences, ...memory.heldReadings].map(f),
            targets: Array.from(t.subarray(24 * row)).map(f),
          };
        }, { name: h.name, row });
        latched += shown.filter(Boolean).length;
        if (JSON.stringify(shown) !== JSON.stringify(want.latches)) faults.push(`${h.name} row ${row}: latches shown ${shown}, hand ${want.latches}`);
        if (JSON.stringify(shownValues) !== JSON.stringify(want.values)) faults.push(`${h.name} row ${row}: thumb references or held readings shown ${shownValues}, hand ${want.values}`);
        if (JSON.stringify(shownTargets) !== JSON.stringify(want.targets)) faults.push(`${h.name} row ${row}: targets differ`);
      }
    }
    assert(faults.length === 0, faults.join('\n'));
    assert(latched > 0, 'no pinch latch closed at any of the rows looked at');
  });

  await check('reset puts the hand back to its start-up memory', async () => {
    const h = nativeHands.find((x) => x.keepsState);
    await page.selectOption('#hand-select', h.name);
    await page.click('#reset');
    const held = await page.$$eval('.held-cell .mono', (c) => c.map((x) => x.textContent));
    const readings = await sliderReadings();
    // After the reset the hand has seen one sample: the readings on the sliders.
    assert(held.every((v, i) => Math.abs(Number(v.replace('−', '-')) - readings[i]) < 0.051), `held readings after reset: ${held}`);
    assert(await page.textContent('#mode') === 'live from the sliders', 'reset did not go live');
  });

  await check('playback moves the cursor through the session', async () => {
    await page.evaluate(() => { const c = document.getElementById('cursor'); c.value = '0'; c.dispatchEvent(new Event('input')); });
    await page.click('#play');
    await page.waitForTimeout(600);
    await page.click('#play');
    const at = Number(await page.inputValue('#cursor'));
    assert(at > 10, `cursor at ${at} after 0.6 s`);
    assert(await page.textContent('#mode') === 'session at the cursor', 'not following the session');
  });

  await check('a dropped CSV is played and exported exactly (NaN, infinities, -0 included)', async () => {
    const lines = ['t;' + Array.from({ length: 12 }, (_, i) => `x${i}`).join(';')];
    for (let r = 0; r < 120; r++) {
      const v = Array.from({ length: 12 }, (_, i) => (20 + 30 * Math.sin(r / 9 + i)).toFixed(3));
      if (r === 40) v[2] = 'nan';
      if (r === 41) v[7] = '-inf';
      if (r === 42) v[0] = '-0';
      if (r === 43) v[4] = 'inf';
      lines.push(`${(r / 50).toFixed(2)};${v.join(';')}`);
    }
    lines.splice(5, 0, '# a comment', '');
    const csv = lines.join('\n') + '\n';
    await page.selectOption('#hand-select', nativeHands.find((x) => x.keepsState).name);
    await page.evaluate((text) => {
      const dt = new DataTransfer();
      dt.items.add(new File([text], 'dropped.csv', { type: 'text/csv' }));
      window.dispatchEvent(new DragEvent('drop', { dataTransfer: dt, bubbles: true, cancelable: true }));
    }, csv);
    await page.waitForFunction(() => document.getElementById('session-name').textContent.startsWith('dropped.csv'));
    const label = await page.textContent('#session-name');
    assert(/120 rows/.test(label) && /time column “t” in s/.test(label), `session label: ${label}`);
    const [download] = await Promise.all([page.waitForEvent('download'), page.click('#export')]);
    const exported = readFileSync(await download.path(), 'utf8').trim().split('\n');
    assert(download.suggestedFilename().startsWith('dropped.'), `file name ${download.suggestedFilename()}`);
    assert(exported[0] === 't,' + Array.from({ length: 24 }, (_, i) => `out${i}`).join(','), `header ${exported[0]}`);
    assert(exported.length === 121, `${exported.length - 1} rows exported`);
    const want = await page.evaluate(async ({ text, name }) => {
      const api = await window.quilReady;
      const ses = api.readSession('dropped.csv', new TextEncoder().encode(text));
      const h = api.open(name);
      const t = h.mapMany(ses.readings);
      h.close();
      return window.__b64.fromF64(t);
    }, { text: csv, name: nativeHands.find((x) => x.keepsState).name });
    const parse = (s) => ({ nan: NaN, inf: Infinity, '-inf': -Infinity }[s] ?? Number(s));
    const got = Float64Array.from(exported.slice(1).flatMap((l) => l.split(',').slice(1).map(parse)));
    const d = firstDifference(new Uint8Array(got.buffer), fromBase64(want), 'export');
    assert(!d, d);
    assert(exported[1].startsWith('0.00,'), `time column: ${exported[1].slice(0, 20)}`);
  });

  // Real-looking recordings, small and generated: what the tool reads the page reads, to the
  // same readings; what the tool refuses the page refuses, with the tool's own message.
  await check('the page reads every file the tool reads and refuses the others with its messages', async () => {
    const dir = join(out, 'sessions');
    mkdirSync(dir, { recursive: true });
    const random = rng(20);
    const rows = Array.from({ length: 30 }, () => Array.from({ length: 12 }, () => Math.round(random() * 9000) / 100));
    const fmt = (v) => String(v);
    const npy = (data, cols) => {
      let dict = `{'descr': '<f8', 'fortran_order': False, 'shape': (${data.length}, ${cols}), }`;
      while ((10 + dict.length + 1) % 64) dict += ' ';
      dict += '\n';
      const head = Buffer.concat([Buffer.from([0x93]), Buffer.from('NUMPY'), Buffer.from([1, 0, dict.length & 255, dict.length >> 8]), Buffer.from(dict, 'latin1')]);
      return Buffer.concat([head, Buffer.from(Float64Array.from(data.flat()).buffer)]);
    };
    const quoted = ['"Stamp"', ...Array.from({ length: 12 }, (_, i) => `"Sensor ${i}"`)].join(',') + ',';
    const files = {
      'radians.txt': rows.map((r) => r.map((v) => fmt(v * Math.PI / 180)).join(' ')).join('\n') + '\n',
      'aligned.txt': rows.map((r) => r.map((v) => v.toFixed(4).padStart(11)).join('')).join('\n') + '\n',
      'export.csv': [quoted, ...rows.map((r, k) => `${1715000000000 + 10 * k},${r.map(fmt).join(',')},`)].join('\r\n') + '\r\n',
      'tabs.tsv': rows.map((r) => r.map(fmt).join('\t')).join('\n'),
      'timed.npy': npy(rows.map((r, k) => [k * 0.02, ...r]), 13),
      'commas.csv': 'x0;x1;x2;x3;x4;x5;x6;x7;x8;x9;x10;x11\n' + rows.slice(0, 3).map((r) => r.map((v) => String(v).replace('.', ',')).join(';')).join('\n') + '\n',
      'short.csv': rows.slice(0, 4).map((r) => r.join(',')).join('\n') + '\n1,2,3\n',
      'empty.csv': 'time,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n',
      'clock12.csv': 'time,a,b,c,d,e,f,g,h,i,j,k\n' + rows[0].join(',') + '\n',
      'cut.npy': npy(rows, 12).subarray(0, 128 + 96 * 7 + 50),
    };
    const faults = [];
    for (const [name, content] of Object.entries(files)) {
      writeFileSync(join(dir, name), content);
      const got = await page.evaluate(async ({ name, b64 }) => {
        const api = await window.quilReady;
        const bin = atob(b64);
        const bytes = Uint8Array.from(bin, (c) => c.charCodeAt(0));
        const s = api.readSession(name, bytes);
        return { error: s.error, rows: s.rows, unit: s.timeUnit, readings: window.__b64.fromF64(s.readings) };
      }, { name, b64: Buffer.from(content).toString('base64') });
      const refused = ['commas.csv', 'short.csv', 'empty.csv', 'clock12.csv', 'cut.npy'].includes(name);
      if (refused !== (got.error !== '')) faults.push(`${name}: page says "${got.error}"`);
      if (name === 'export.csv' && got.unit !== 'ms') faults.push(`${name}: time unit ${got.unit}`);
      if (!refused && got.rows !== rows.length) faults.push(`${name}: ${got.rows} rows`);
      if (!args.tool) continue;
      const tool = spawnSync(resolve(args.tool), ['map', '-m', nativeHands[0].name, name, '--to', 'f64', '-q'], { cwd: dir });
      const said = tool.stderr.toString();
      if ((tool.status !== 0) !== refused) faults.push(`${name}: the tool exits ${tool.status}: ${said}`);
      if (refused && said.split('\n')[0] !== `quil-retarget: ${got.error}`) faults.push(`${name}: the tool says "${said.trim()}", the page "${got.error}"`);
      if (!refused) {
        // The same readings: the tool's targets are what the page's hand maps from the page's readings.
        const want = await page.evaluate(async ({ hand, readings }) => {
          const api = await window.quilReady;
          const h = api.open(hand);
          const t = h.mapMany(window.__b64.toF64(readings));
          h.close();
          return window.__b64.fromF64(t);
        }, { hand: nativeHands[0].name, readings: got.readings });
        const d = firstDifference(new Uint8Array(tool.stdout), fromBase64(want), name);
        if (d) faults.push(d);
      }
    }
    assert(faults.length === 0, faults.join('\n'));
    // Dropped on the page, a refused file names its place in the status line.
    await page.evaluate((text) => {
      const dt = new DataTransfer();
      dt.items.add(new File([text], 'commas.csv', { type: 'text/csv' }));
      window.dispatchEvent(new DragEvent('drop', { dataTransfer: dt, bubbles: true, cancelable: true }));
    }, files['commas.csv']);
    await page.waitForFunction(() => document.getElementById('status').textContent.startsWith('commas.csv:2:'));
    assert(/decimal commas/.test(await page.textContent('#status')), await page.textContent('#status'));
  });

  await check('a millisecond clock plays in real time, and the unit can be set', async () => {
    const lines = ['"Timestamp";' + Array.from({ length: 12 }, (_, i) => `"ch ${i}"`).join(';')];
    for (let r = 0; r < 300; r++) lines.push(`${1715000000000 + 10 * r};${Array.from({ length: 12 }, (_, i) => (30 + 20 * Math.sin(r / 20 + i)).toFixed(2)).join(';')}`);
    await page.evaluate((text) => {
      const dt = new DataTransfer();
      dt.items.add(new File([text], 'clock.csv', { type: 'text/csv' }));
      window.dispatchEvent(new DragEvent('drop', { dataTransfer: dt, bubbles: true, cancelable: true }));
    }, lines.join('\n') + '\n');
    await page.waitForFunction(() => document.getElementById('session-name').textContent.startsWith('clock.csv'));
    const label = await page.textContent('#session-name');
    assert(/300 rows · 2\.99 s \(time column “Timestamp” in ms\)/.test(label), `session label: ${label}`);
    assert(/read as milliseconds/.test(await page.textContent('#status')), 'no note that the unit was detected');
    // 100 rows a second of the recording: after a second of playback the cursor is near row 100
    // (a clock taken for seconds would leave it on row 0).
    const played = await page.evaluate(async () => {
      const c = document.getElementById('cursor');
      c.value = '0';
      c.dispatchEvent(new Event('input'));
      const t0 = performance.now();
      document.getElementById('play').click();
      await new Promise((r) => setTimeout(r, 1000));
      const row = Number(c.value);
      const seconds = (performance.now() - t0) / 1000;
      document.getElementById('play').click();
      return { row, seconds };
    });
    assert(played.row / 100 > played.seconds * 0.5 && played.row / 100 < played.seconds + 0.1,
      `cursor at row ${played.row} after ${played.seconds.toFixed(2)} s at 100 rows/s`);
    const cursorLabel = await page.textContent('#cursor-label');
    assert(/^\d\.\d\d s · row/.test(cursorLabel), `cursor label ${cursorLabel}`);
    await page.selectOption('#time-unit', 's');
    await page.waitForFunction(() => /in s\)/.test(document.getElementById('session-name').textContent));
    assert(/2990\.00 s/.test(await page.textContent('#session-name')), await page.textContent('#session-name'));
    await page.selectOption('#time-unit', 'auto');
  });

  await check('the hand picker and the number boxes show their whole text', async () => {
    const clipped = await page.evaluate(async () => {
      const out = [];
      const select = document.getElementById('hand-select');
      const ctx = document.createElement('canvas').getContext('2d');
      const style = getComputedStyle(select);
      ctx.font = `${style.fontWeight} ${style.fontSize} ${style.fontFamily}`;
      const room = select.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight) - 20;
      for (const o of select.options) if (ctx.measureText(o.textContent).width > room) out.push(`picker: ${o.textContent}`);
      const api = await window.quilReady;
      for (const v of [-19.999, 119.995, 0.0017453292519943296, 1715000000123, -0.5]) {
        const box = document.getElementById('reading-value-4');
        box.value = '';
        // As the page writes a reading into its box.
        document.getElementById('reading-4').value = '0';
        box.dispatchEvent(new Event('focus'));
        box.value = String(v);
        box.dispatchEvent(new Event('change'));
        box.blur();
        if (box.scrollWidth > box.clientWidth) out.push(`box: ${box.value} (${box.scrollWidth} > ${box.clientWidth})`);
      }
      return out;
    });
    assert(clipped.length === 0, clipped.join('\n'));
  });

  await check('the site opened from disk, without a server, gives the same bits', async () => {
    const disk = await context.newPage();
    const diskProblems = [];
    disk.on('console', (m) => { if (m.type() === 'error') diskProblems.push(m.text()); });
    disk.on('pageerror', (e) => diskProblems.push(e.message));
    try {
      await disk.goto(pathToFileURL(join(args.site, 'index.html')).href);
      await disk.waitForSelector('body[data-ready="true"]', { timeout: 30000 });
      await disk.evaluate(PAGE_HELPERS);
      const name = nativeHands[nativeHands.length - 1].name;
      const got = await disk.evaluate(async ({ samplesB64, name }) => {
        const api = await window.quilReady;
        const h = api.open(name);
        const t = h.mapMany(window.__b64.toF64(samplesB64));
        h.close();
        return window.__b64.fromF64(t);
      }, { samplesB64: toBase64(samples), name });
      const d = firstDifference(fromBase64(got), nativeBytes(name, 'pass', 'f64'), `${name} from disk`);
      assert(!d, d);
      assert(diskProblems.length === 0, diskProblems.join('\n'));
    } finally {
      await disk.close();
    }
  });

  await check('still no console errors after all that', async () => {
    assert(problems.length === 0, problems.join('\n'));
  });

  // The picture for the README and for a person to look at.
  // A hand that holds a pinch in the middle of the session's index pinch, if one does.
  await page.click('#sample-session');
  const shot = await page.evaluate(async (names) => {
    const api = await window.quilReady;
    const ses = api.readSession('sample_session.csv', new TextEncoder().encode(window.QUIL_SAMPLE_SESSION));
    const row = 1050;
    for (const name of names) {
      const h = api.open(name);
      h.mapMany(ses.readings.subarray(0, 12 * (row + 1)));
      const latched = h.memory().pinchLatches.some(Boolean);
      h.close();
      if (latched) return { name, row };
    }
    return { name: names[0], row };
  }, nativeHands.filter((x) => x.keepsState).map((x) => x.name));
  await page.selectOption('#hand-select', shot.name);
  await page.evaluate((r) => { const c = document.getElementById('cursor'); c.value = String(r); c.dispatchEvent(new Event('input')); }, shot.row);
  await page.mouse.move(0, 0);
  await page.waitForTimeout(200);
  await page.screenshot({ path: join(out, 'explorer.png'), fullPage: true });
  console.log(`screenshot: ${join(out, 'explorer.png')}`);
} finally {
  await browser.close();
}

const failed = results.filter((r) => !r.ok);
console.log(`${results.length - failed.length} of ${results.length} browser checks passed`);
process.exit(failed.length ? 1 : 0);
