// The hand explorer: pick a hand, move the glove's fingers, watch the joint targets and the
// hand's memory, play a recorded session through it and export what it made of it.
(function () {
  'use strict';

  const $ = (id) => document.getElementById(id);

  function el(tag, props, ...children) {
    const node = document.createElement(tag);
    for (const [k, v] of Object.entries(props || {})) {
      if (k === 'class') node.className = v;
      else if (k === 'dataset') Object.assign(node.dataset, v);
      else if (k.startsWith('on')) node.addEventListener(k.slice(2), v);
      else if (v !== undefined && v !== null) node.setAttribute(k, v);
    }
    for (const c of children) if (c !== null && c !== undefined) node.append(c);
    return node;
  }

  // The readings' names, in the order the hands expect them (quil_reading); filled in when the
  // library has loaded.
  let CHANNELS = [];
  const POSES = {
    Open: [8, 6, 5, 4, 14, 5, 3, 10, 4, 4, 12, 5],
    Fist: [48, 52, 62, 86, 3, 96, 88, 2, 98, 92, 3, 90],
    'Index pinch': [42, 36, 30, 46, 6, 52, 12, 8, 14, 10, 10, 10],
    'Middle pinch': [56, 42, 36, 16, 4, 18, 50, 5, 56, 18, 9, 14],
  };
  const GROUPS = ['thumb', 'index', 'middle', 'ring', 'little', 'other'];
  // Hue, saturation and lightness of each finger; the slots of one finger vary in lightness.
  const GROUP_HSL = {
    thumb: [12, 74, 54], index: [38, 80, 46], middle: [152, 58, 38], ring: [211, 70, 50], little: [278, 45, 48], other: [212, 12, 50],
  };
  const hsl = ([h, s, l], dl = 0) => `hsl(${h} ${s}% ${Math.max(20, Math.min(78, l + dl))}%)`;
  const GROUP_COLOURS = Object.fromEntries(GROUPS.map((g) => [g, hsl(GROUP_HSL[g])]));
  // The finger each reading belongs to (quil_reading), filled in with CHANNELS.
  let CHANNEL_FINGER = [];

  // A colour per series, by finger, lighter and darker within a finger.
  function seriesColours(groups) {
    const count = {};
    const seen = {};
    for (const g of groups) count[g] = (count[g] || 0) + 1;
    return groups.map((g) => {
      const k = (seen[g] = (seen[g] || 0) + 1) - 1;
      const spread = count[g] > 1 ? (k / (count[g] - 1)) * 2 - 1 : 0;
      return hsl(GROUP_HSL[g], spread * Math.min(16, 4 * count[g]));
    });
  }
  const BAR_RANGE = 120;      // degrees either side of zero on a target bar
  const CHECKPOINT_ROWS = 256; // a saved state every this many session rows
  const PREFERRED_HAND = 'INSPIRE_ROBOTS_RH56F1_E4';

  // A slot's finger: the first word of its role when that names a finger, else "other".
  function groupOf(role) {
    const first = String(role || '').split(/[_\s]/)[0].toLowerCase();
    return GROUPS.includes(first) ? first : 'other';
  }

  function shown(v, digits = 2) {
    if (Number.isNaN(v)) return 'NaN';
    if (v === Infinity) return '+∞';
    if (v === -Infinity) return '−∞';
    if (Math.abs(v) >= 1e5) return v.toExponential(2).replace('e+', 'e').replace('-', '−');
    const s = v.toFixed(digits);
    return (Object.is(v, -0) || v < 0 ? '−' + s.replace('-', '') : s);
  }

  const S = {
    api: null,
    hands: [],
    info: null,
    hand: null,       // the live handle, driven by the sliders
    probe: null,      // a second handle of the same hand, to replay the session up to the cursor
    readings: POSES.Open.slice(),
    dropped: new Array(12).fill(false),
    policy: 'pass',
    mode: 'session',  // 'session': the display follows the cursor; 'live': the sliders
    session: null,    // {name, data, times, input, targets, checkpoints}
    cursor: 0,
    playing: false,
    bars: [],
    sliders: [],
    plot: null,
    animation: 0,
    highlight: -1,
    targetColours: [],
  };

  // ---- Hand picker -----------------------------------------------------------------------

  function buildHandPicker() {
    const select = $('hand-select');
    for (const h of S.hands) {
      // The name alone fits the closed picker; version and memory are in the facts below it.
      select.append(el('option', { value: h.name, title: `${h.version}${h.keepsState ? ' · keeps state' : ''}` }, h.name));
    }
    select.addEventListener('change', () => selectHand(select.value));
  }

  function selectHand(name) {
    if (S.hand) S.hand.close();
    if (S.probe) S.probe.close();
    S.hand = S.api.open(name);
    S.probe = S.api.open(name);
    S.hand.setDropout(S.policy);
    S.info = S.hand.info;
    $('hand-select').value = S.info.name;
    $('hand-version').textContent = S.info.version;
    $('hand-keeps-state').innerHTML = '';
    $('hand-keeps-state').append(S.info.keepsState
      ? el('span', { class: 'badge on' }, 'keeps state')
      : el('span', { class: 'badge' }, 'stateless'));
    $('hand-buffer').textContent = S.info.persistentBuffer ? 'persistent (never freed)' : 'per call (FreeMemory)';
    if (history.replaceState) history.replaceState(null, '', '#hand=' + encodeURIComponent(S.info.name));
    buildBars();
    buildMemory();
    remapSession();
    if (S.mode === 'live') {
      if (S.session) S.hand.restore(probeAfterRow(S.cursor).state());
      mapLive();
    } else {
      showCursor();
    }
  }

  // ---- Sliders ---------------------------------------------------------------------------

  function buildSliders() {
    const box = $('sliders');
    for (let i = 0; i < 12; i++) {
      const range = el('input', {
        type: 'range', id: `reading-${i}`, min: -20, max: 120, step: 0.1, value: S.readings[i],
        'aria-label': `x${i} ${CHANNELS[i]}`, dataset: { channel: i },
      });
      const number = el('input', {
        type: 'number', id: `reading-value-${i}`, step: 0.1, value: S.readings[i],
        'aria-label': `x${i} value`, class: 'reading-value',
      });
      const drop = el('input', { type: 'checkbox', id: `dropout-${i}`, 'aria-label': `drop x${i}` });
      const row = el('div', { class: 'slider-row', dataset: { channel: i } },
        el('label', { for: `reading-${i}`, class: 'channel', style: `--finger:${GROUP_COLOURS[CHANNEL_FINGER[i]]}`,
          title: `x${i} ${S.readingInfo[i].name}, in ${S.readingInfo[i].unit}: ${S.readingInfo[i].meaning}` },
          el('span', { class: 'channel-id' }, `x${i}`),
          el('span', { class: 'channel-name' }, CHANNELS[i])),
        range, number,
        el('label', { class: 'drop', title: 'Channel drops out: reads NaN' }, drop, el('span', {}, 'drop')));
      range.addEventListener('input', () => setReading(i, Number(range.value)));
      number.addEventListener('change', () => {
        const v = S.api.parseNumber(number.value);
        if (v !== undefined && !Number.isNaN(v)) setReading(i, v);
      });
      drop.addEventListener('change', () => {
        S.dropped[i] = drop.checked;
        row.classList.toggle('dropped', drop.checked);
        remapSession();
        if (S.mode === 'live') mapLive();
        else showCursor();
      });
      S.sliders.push({ range, number, drop, row });
      box.append(row);
    }
    for (const name of Object.keys(POSES)) {
      $('poses').append(el('button', { type: 'button', class: 'chip', onclick: () => glideTo(POSES[name]) }, name));
    }
  }

  function showReadings(values) {
    for (let i = 0; i < 12; i++) {
      const v = values[i];
      const s = S.sliders[i];
      s.range.value = Number.isFinite(v) ? v : 120;
      if (document.activeElement !== s.number) {
        // Rounded to fit the box (a recorded reading may carry seventeen digits); exact in its tooltip.
        const a = Math.abs(v);
        s.number.value = Number.isNaN(v) ? '' : a < 1e5 ? String(+v.toFixed(a >= 1000 ? 1 : a >= 100 ? 2 : 3)) : v.toExponential(2);
        s.number.title = QuilSession.formatNumber(v);
      }
      s.row.classList.toggle('nan-reading', Number.isNaN(v) && !S.dropped[i]);
    }
  }

  function setReading(i, v) {
    stopPlayback();
    cancelAnimationFrame(S.animation);
    enterLive();
    S.readings[i] = v;
    mapLive();
  }

  // Moves all fingers to a pose over a few hundred milliseconds, one sample per frame, so a
  // hand with memory sees the motion as a glove would send it.
  function glideTo(pose) {
    stopPlayback();
    cancelAnimationFrame(S.animation);
    enterLive();
    const from = S.readings.map((v) => (Number.isFinite(v) ? v : 0));
    const start = performance.now();
    const step = (now) => {
      const u = Math.min(1, (now - start) / 450);
      const w = 0.5 - 0.5 * Math.cos(Math.PI * u);
      S.readings = from.map((a, i) => a + (pose[i] - a) * w);
      mapLive();
      if (u < 1) S.animation = requestAnimationFrame(step);
    };
    S.animation = requestAnimationFrame(step);
  }

  function liveInput() {
    return S.readings.map((v, i) => (S.dropped[i] ? NaN : v));
  }

  function enterLive() {
    if (S.mode === 'live') return;
    S.mode = 'live';
    // The glove carries on from the moment under the cursor, with the hand's memory of it.
    if (S.session && S.session.data.rows) {
      S.hand.restore(probeAfterRow(S.cursor).state());
      S.hand.setDropout(S.policy);
    }
    updateMode();
  }

  function mapLive() {
    const input = liveInput();
    const targets = S.hand.map(input);
    showReadings(S.readings);
    showTargets(targets);
    showMemory(S.hand.memory());
    drawPlot();
  }

  function setPolicy(policy) {
    S.policy = policy;
    for (const b of document.querySelectorAll('#dropout-policy button')) {
      b.setAttribute('aria-checked', String(b.dataset.policy === policy));
      b.classList.toggle('active', b.dataset.policy === policy);
    }
    if (S.hand) S.hand.setDropout(policy);
    remapSession();
    if (S.mode === 'live') mapLive();
    else showCursor();
  }

  // ---- Target bars -------------------------------------------------------------------------

  function buildBars() {
    const box = $('groups');
    box.innerHTML = '';
    S.bars = [];
    const groups = S.info.slotRoles.map(groupOf);
    const colours = seriesColours(groups);
    S.targetColours = colours;
    for (const g of GROUPS) {
      const slots = groups.map((group, slot) => ({ group, slot, role: S.info.slotRoles[slot] })).filter((s) => s.group === g);
      if (!slots.length) continue;
      const rows = el('div', { class: 'rows' });
      const card = el('div', { class: `group group-${g}${slots.length > 8 ? ' wide' : ''}`, style: `--group:${GROUP_COLOURS[g]}` },
        el('h3', {}, el('span', { class: 'group-name' }, g), el('span', { class: 'muted' }, ` ${slots.length} slot${slots.length > 1 ? 's' : ''}`)),
        rows);
      for (const s of slots) {
        const facts = S.info.slots[s.slot];
        const fill = el('div', { class: 'fill', style: `background:${colours[s.slot]}` });
        const value = el('span', { class: 'value' }, '–');
        const row = el('div', { class: 'target', dataset: { slot: s.slot, role: s.role, kind: facts.kind }, title: slotTooltip(s.slot, facts) },
          el('span', { class: 'slot' }, String(s.slot)),
          el('span', { class: 'role' }, String(s.role).replace(/_/g, ' ')),
          el('div', { class: 'track' }, rangeBand(facts), el('div', { class: 'zero' }), fill),
          value);
        row.addEventListener('mouseenter', () => { S.highlight = s.slot; drawPlot(); });
        row.addEventListener('mouseleave', () => { S.highlight = -1; drawPlot(); });
        S.bars[s.slot] = { fill, value, row };
        rows.append(row);
      }
      box.append(card);
    }
  }

  // What the library says of a slot, as the bar's tooltip.
  function slotTooltip(slot, f) {
    const lines = [`slot ${slot}: ${f.role} (${f.kind.replace('_', ' ')})`, f.meaning];
    if (f.kind === 'follower') lines.push(`= ${f.relation}${f.departs ? ` (not ${f.departs})` : ''}`);
    else if (Number.isFinite(f.value)) lines.push(`held at ${QuilSession.formatNumber(f.value)}`);
    lines.push(`range ${QuilSession.formatNumber(f.range[0])} … ${QuilSession.formatNumber(f.range[1])}` +
      (f.sign ? `, ${f.sign < 0 ? 'more negative' : 'more positive'} as its finger bends` : ''));
    if (f.movedBy.length) lines.push(`moved by ${f.movedBy.map((r) => `x${r} ${CHANNELS[r]}`).join(', ')}`);
    return lines.join('\n');
  }

  // The slot's range over the library's sweep, as a faint band behind its bar.
  function rangeBand(f) {
    const at = (v) => 50 + (Math.max(-BAR_RANGE, Math.min(BAR_RANGE, v)) / BAR_RANGE) * 50;
    const lo = at(f.range[0]), hi = at(f.range[1]);
    return el('div', { class: 'range', style: `left:${lo}%;width:${Math.max(0.6, hi - lo)}%` });
  }

  function showTargets(targets) {
    for (let s = 0; s < 24; s++) {
      const b = S.bars[s];
      const v = targets[s];
      const finite = Number.isFinite(v);
      const clipped = finite ? Math.max(-BAR_RANGE, Math.min(BAR_RANGE, v)) : 0;
      const half = (Math.abs(clipped) / BAR_RANGE) * 50;
      b.fill.style.left = `${clipped < 0 ? 50 - half : 50}%`;
      b.fill.style.width = `${half}%`;
      b.row.classList.toggle('off-scale', !finite || Math.abs(v) > BAR_RANGE);
      b.value.textContent = shown(v);
      b.value.title = QuilSession.formatNumber(v);
      b.row.dataset.value = QuilSession.formatNumber(v);
    }
    document.dispatchEvent(new CustomEvent('quil:targets', { detail: { targets, hand: S.info.name } }));
  }

  // ---- Memory ------------------------------------------------------------------------------

  function buildMemory() {
    const box = $('memory');
    box.innerHTML = '';
    const parts = {};
    if (S.info.keepsState) {
      parts.latches = [0, 1, 2, 3].map((i) => el('span', { class: 'latch', id: `latch-${i}` },
        el('span', { class: 'dot' }), i === 0 ? 'index pinch' : i === 1 ? 'middle pinch' : `latch ${i}`));
      parts.thumb1 = el('span', { class: 'mono', id: 'thumb1-ref' }, '–');
      parts.thumb2 = el('span', { class: 'mono', id: 'thumb2-ref' }, '–');
      box.append(
        el('div', { class: 'memory-block' }, el('h4', {}, 'Pinch latches'), el('div', { class: 'latches' }, ...parts.latches)),
        el('div', { class: 'memory-block refs' }, el('h4', {}, 'Thumb references'),
          el('div', {}, el('span', { class: 'muted' }, 'ref 1 '), parts.thumb1),
          el('div', {}, el('span', { class: 'muted' }, 'ref 2 '), parts.thumb2)));
    } else {
      box.append(el('p', { class: 'muted' }, 'This hand keeps no pinch memory: every sample maps on its own.'));
    }
    parts.held = [];
    const grid = el('div', { class: 'held' });
    for (let i = 0; i < 12; i++) {
      const v = el('span', { class: 'mono' }, '–');
      const cell = el('div', { class: 'held-cell', id: `held-${i}` }, el('span', { class: 'muted' }, `x${i}`), v);
      parts.held.push({ cell, v });
      grid.append(cell);
    }
    box.append(el('div', { class: 'memory-block' },
      el('h4', {}, 'Last finite reading per channel ', el('span', { class: 'muted' }, '(what “hold last” sends)')), grid));
    S.memory = parts;
  }

  // A handle's memory (Hand.memory()) in the panel.
  function showMemory(memory) {
    const m = S.memory;
    if (m.latches) {
      memory.pinchLatches.forEach((on, i) => m.latches[i].classList.toggle('on', on));
      [m.thumb1, m.thumb2].forEach((cell, i) => {
        cell.textContent = shown(memory.thumbReferences[i]);
        cell.dataset.value = QuilSession.formatNumber(memory.thumbReferences[i]);
      });
    }
    memory.heldReadings.forEach((v, i) => {
      m.held[i].v.textContent = shown(v, 1);
      m.held[i].v.dataset.value = QuilSession.formatNumber(v);
      m.held[i].cell.classList.toggle('dropped', S.dropped[i]);
    });
  }

  // ---- The session -------------------------------------------------------------------------

  // Reads a session file's bytes with the tool's own reader (in the WebAssembly module): what
  // the tool refuses is refused here with its message, and the time column's unit is the
  // one the tool would take (the unit selector overrides it).
  function readSession(name, bytes) {
    const unit = $('time-unit').value;
    return S.api.readSession(name, bytes, { timeUnit: unit === 'auto' ? undefined : unit });
  }

  function sessionSummary(ses) {
    const data = ses.data;
    const span = ses.times[data.rows - 1] - ses.times[0];
    const clock = data.times
      ? ` · ${shown(span, 2)} s (time column “${data.timeName}” in ${data.timeUnit})`
      : ` · no time column, shown at 100 samples/s`;
    return `${ses.name} · ${data.rows} rows${clock}`;
  }

  function loadSession(name, bytes) {
    const data = readSession(name, bytes);
    if (data.error) {
      setStatus(data.error, 'error');
      return;
    }
    stopPlayback();
    S.session = { name, bytes, data, times: QuilSession.rowTimes(data) };
    $('session-name').textContent = sessionSummary(S.session);
    $('cursor').max = String(data.rows - 1);
    S.cursor = 0;
    remapSession();
    S.mode = 'session';
    updateMode();
    showCursor();
    const notes = data.notes.map((n) => (/time column/.test(n) ? `${n} (the time unit beside “Open session…” says otherwise)` : n));
    if (notes.length) setStatus(`${name}: ${notes.join('; ')}`, 'warn');
    else setStatus(`${S.hands.length} hands`, 'ok');
  }

  // Maps the whole session through a fresh handle, with the dropped channels and the policy of
  // the page, keeping a saved state every CHECKPOINT_ROWS rows for the memory at the cursor.
  function remapSession() {
    const ses = S.session;
    if (!ses || !S.probe) return;
    const n = ses.data.rows;
    const input = Float64Array.from(ses.data.readings);
    for (let r = 0; r < n; r++) for (let i = 0; i < 12; i++) if (S.dropped[i]) input[12 * r + i] = NaN;
    const targets = new Float64Array(24 * n);
    const checkpoints = [];
    S.probe.reset();
    S.probe.setDropout(S.policy);
    for (let r = 0; r < n; r += CHECKPOINT_ROWS) {
      checkpoints.push(S.probe.state());
      const end = Math.min(n, r + CHECKPOINT_ROWS);
      targets.set(S.probe.mapMany(input.subarray(12 * r, 12 * end)), 24 * r);
    }
    Object.assign(ses, { input, targets, checkpoints });
    renderPlot();
  }

  // The probe handle, brought to the memory of a hand that has seen rows 0..row of the session.
  function probeAfterRow(row) {
    const ses = S.session;
    const c = Math.min(Math.floor((row + 1) / CHECKPOINT_ROWS), ses.checkpoints.length - 1);
    const from = c * CHECKPOINT_ROWS;
    S.probe.restore(ses.checkpoints[c]);
    if (row + 1 > from) S.probe.mapMany(ses.input.subarray(12 * from, 12 * (row + 1)));
    return S.probe;
  }

  function showCursor() {
    const ses = S.session;
    if (!ses) return;
    const r = S.cursor;
    $('cursor').value = String(r);
    $('cursor-label').textContent = `${shown(ses.times[r], 2)} s · row ${r + 1} of ${ses.data.rows}`;
    if (S.mode !== 'session') {
      drawPlot();
      return;
    }
    const readings = Array.from(ses.data.readings.subarray(12 * r, 12 * r + 12));
    S.readings = readings.slice();
    showReadings(readings);
    showTargets(ses.targets.subarray(24 * r, 24 * r + 24));
    showMemory(probeAfterRow(r).memory());
    drawPlot();
  }

  function setCursor(r) {
    if (!S.session) return;
    S.cursor = Math.max(0, Math.min(S.session.data.rows - 1, Math.round(r)));
    if (S.mode !== 'session') {
      S.mode = 'session';
      updateMode();
    }
    showCursor();
  }

  function updateMode() {
    const m = $('mode');
    m.textContent = S.mode === 'live' ? 'live from the sliders' : 'session at the cursor';
    m.classList.toggle('live', S.mode === 'live');
  }

  // ---- Playback ----------------------------------------------------------------------------

  function startPlayback() {
    if (!S.session) return;
    if (S.cursor >= S.session.data.rows - 1) S.cursor = 0;
    cancelAnimationFrame(S.animation);
    S.playing = true;
    $('play').textContent = '❚❚';
    $('play').setAttribute('aria-label', 'Pause');
    const times = S.session.times;
    let last = performance.now();
    let t = times[S.cursor];
    const tick = (now) => {
      if (!S.playing) return;
      t += ((now - last) / 1000) * Number($('speed').value);
      last = now;
      let r = S.cursor;
      while (r < times.length - 1 && times[r + 1] <= t) r++;
      setCursor(r);
      if (r >= times.length - 1) stopPlayback();
      else S.animation = requestAnimationFrame(tick);
    };
    S.mode = 'session';
    updateMode();
    S.animation = requestAnimationFrame(tick);
  }

  function stopPlayback() {
    if (!S.playing) return;
    S.playing = false;
    cancelAnimationFrame(S.animation);
    $('play').textContent = '▶';
    $('play').setAttribute('aria-label', 'Play');
  }

  // ---- The plot ----------------------------------------------------------------------------

  const PLOT = { left: 46, right: 12, top: 22, gap: 40, bottom: 24, readingsShare: 0.34 };

  function plotGeometry(canvas) {
    const w = canvas.clientWidth;
    const h = canvas.clientHeight;
    const inner = h - PLOT.top - PLOT.gap - PLOT.bottom;
    const rh = Math.round(inner * PLOT.readingsShare);
    return {
      w, h,
      x0: PLOT.left, x1: w - PLOT.right,
      readings: { top: PLOT.top, bottom: PLOT.top + rh },
      targets: { top: PLOT.top + rh + PLOT.gap, bottom: h - PLOT.bottom },
    };
  }

  function niceStep(span, count) {
    const raw = span / count;
    const p = Math.pow(10, Math.floor(Math.log10(raw)));
    for (const m of [1, 2, 5, 10]) if (m * p >= raw) return m * p;
    return 10 * p;
  }

  // The range of the finite values, leaving out the wild ones (a NaN reading can send a target
  // to -2e8): those are drawn clipped at the edge.
  function finiteRange(values, limit) {
    let lo = Infinity;
    let hi = -Infinity;
    for (const v of values) {
      if (!Number.isFinite(v) || Math.abs(v) > limit) continue;
      if (v < lo) lo = v;
      if (v > hi) hi = v;
    }
    if (lo > hi) return [-1, 1];
    if (lo === hi) return [lo - 1, hi + 1];
    const pad = (hi - lo) * 0.06;
    return [lo - pad, hi + pad];
  }

  // One series of a panel: a line, or for long sessions the range each pixel column covers.
  function drawSeries(ctx, p, panel, s) {
    const { values, stride, yOf } = panel;
    const times = S.session.times;
    const n = S.session.data.rows;
    const columns = Math.max(1, Math.round(p.g.x1 - p.g.x0));
    ctx.beginPath();
    if (n <= columns * 2) {
      let pen = false;
      for (let r = 0; r < n; r++) {
        const v = values[stride * r + s];
        if (Number.isNaN(v)) { pen = false; continue; }
        const x = p.xOf(times[r]);
        const y = yOf(v);
        if (pen) ctx.lineTo(x, y); else ctx.moveTo(x, y);
        pen = true;
      }
    } else {
      for (let c = 0; c < columns; c++) {
        const a = Math.floor((c * n) / columns);
        const b = Math.max(a + 1, Math.floor(((c + 1) * n) / columns));
        let lo = Infinity;
        let hi = -Infinity;
        for (let r = a; r < b; r++) {
          const v = values[stride * r + s];
          if (v < lo) lo = v;
          if (v > hi) hi = v;
        }
        if (lo > hi) continue;
        const x = p.g.x0 + c + 0.5;
        ctx.moveTo(x, yOf(lo) + 0.5);
        ctx.lineTo(x, yOf(hi) - 0.5);
      }
    }
    ctx.stroke();
  }

  // Draws the readings and the targets of the whole session once into an offscreen canvas;
  // the cursor and a highlighted target are drawn over a copy of it.
  function renderPlot() {
    const canvas = $('plot');
    const ses = S.session;
    if (!ses || !canvas.clientWidth) return;
    const dpr = window.devicePixelRatio || 1;
    const g = plotGeometry(canvas);
    const base = document.createElement('canvas');
    base.width = Math.round(g.w * dpr);
    base.height = Math.round(g.h * dpr);
    const ctx = base.getContext('2d');
    ctx.scale(dpr, dpr);
    const times = ses.times;
    const n = ses.data.rows;
    const t0 = times[0];
    const t1 = n > 1 && times[n - 1] > t0 ? times[n - 1] : t0 + 1;
    const xOf = (t) => g.x0 + ((t - t0) / (t1 - t0)) * (g.x1 - g.x0);
    const p = { base, g, xOf, t0, t1, panels: {} };

    const panel = (key, box, values, stride, colours, title) => {
      const [lo, hi] = finiteRange(values, 1e4);
      const yOf = (v) => box.bottom - ((Math.max(lo, Math.min(hi, v)) - lo) / (hi - lo)) * (box.bottom - box.top);
      const info = { box, values, stride, yOf, colours };
      p.panels[key] = info;
      ctx.fillStyle = '#fbfcfd';
      ctx.fillRect(g.x0, box.top, g.x1 - g.x0, box.bottom - box.top);
      ctx.strokeStyle = '#e6eaef';
      ctx.fillStyle = '#6b7785';
      ctx.lineWidth = 1;
      ctx.font = '11px system-ui, sans-serif';
      ctx.textAlign = 'right';
      ctx.textBaseline = 'middle';
      const step = niceStep(hi - lo, 4);
      for (let v = Math.ceil(lo / step) * step; v <= hi; v += step) {
        const y = Math.round(yOf(v)) + 0.5;
        ctx.strokeStyle = Math.abs(v) < 1e-9 ? '#c9d1da' : '#e6eaef';
        ctx.beginPath();
        ctx.moveTo(g.x0, y);
        ctx.lineTo(g.x1, y);
        ctx.stroke();
        ctx.fillText(shown(Math.abs(v) < 1e-9 ? 0 : v, step < 1 ? 1 : 0), g.x0 - 6, y);
      }
      ctx.save();
      ctx.beginPath();
      ctx.rect(g.x0, box.top - 1, g.x1 - g.x0, box.bottom - box.top + 2);
      ctx.clip();
      ctx.lineWidth = 1.3;
      ctx.lineJoin = 'round';
      ctx.globalAlpha = 0.8;
      for (let s = 0; s < colours.length; s++) {
        ctx.strokeStyle = colours[s];
        drawSeries(ctx, p, info, s);
      }
      ctx.restore();
      ctx.fillStyle = '#3d4854';
      ctx.font = '600 11px system-ui, sans-serif';
      ctx.textAlign = 'left';
      ctx.textBaseline = 'bottom';
      ctx.fillText(title, g.x0, box.top - 5);
    };

    const readingColours = seriesColours(CHANNEL_FINGER).map((c, i) => (S.dropped[i] ? '#d5dae0' : c));
    panel('readings', g.readings, ses.data.readings, 12, readingColours, 'Glove readings (degrees)');
    panel('targets', g.targets, ses.targets, 24, S.targetColours, `Joint targets of ${S.info.name}`);

    ctx.fillStyle = '#6b7785';
    ctx.font = '11px system-ui, sans-serif';
    ctx.textAlign = 'center';
    ctx.textBaseline = 'top';
    const tstep = niceStep(t1 - t0, Math.max(2, Math.floor((g.x1 - g.x0) / 90)));
    for (let t = Math.ceil(t0 / tstep) * tstep; t <= t1 + 1e-9; t += tstep) {
      ctx.fillText(`${+t.toFixed(6)} s`, xOf(t), g.targets.bottom + 6);
    }
    S.plot = p;
    buildLegend();
    drawPlot();
  }

  function drawPlot() {
    const canvas = $('plot');
    const p = S.plot;
    if (!p || !S.session) return;
    const dpr = window.devicePixelRatio || 1;
    if (canvas.width !== p.base.width || canvas.height !== p.base.height) {
      canvas.width = p.base.width;
      canvas.height = p.base.height;
    }
    const ctx = canvas.getContext('2d');
    ctx.setTransform(1, 0, 0, 1, 0, 0);
    ctx.clearRect(0, 0, canvas.width, canvas.height);
    ctx.drawImage(p.base, 0, 0);
    ctx.scale(dpr, dpr);
    if (S.highlight >= 0 && p.panels.targets) {
      const t = p.panels.targets;
      ctx.save();
      ctx.fillStyle = 'rgba(255,255,255,0.72)';
      ctx.fillRect(p.g.x0, t.box.top, p.g.x1 - p.g.x0, t.box.bottom - t.box.top);
      ctx.beginPath();
      ctx.rect(p.g.x0, t.box.top - 1, p.g.x1 - p.g.x0, t.box.bottom - t.box.top + 2);
      ctx.clip();
      ctx.lineWidth = 2.2;
      ctx.strokeStyle = t.colours[S.highlight];
      drawSeries(ctx, p, t, S.highlight);
      ctx.restore();
    }
    const x = Math.round(p.xOf(S.session.times[S.cursor])) + 0.5;
    ctx.strokeStyle = S.mode === 'live' ? '#aab4c0' : '#1d2733';
    ctx.lineWidth = 1.5;
    ctx.setLineDash(S.mode === 'live' ? [4, 3] : []);
    for (const box of [p.g.readings, p.g.targets]) {
      ctx.beginPath();
      ctx.moveTo(x, box.top);
      ctx.lineTo(x, box.bottom);
      ctx.stroke();
    }
  }

  function buildLegend() {
    const box = $('legend');
    box.innerHTML = '';
    const present = new Set(S.info.slotRoles.map(groupOf).concat(CHANNEL_FINGER));
    for (const g of GROUPS) {
      if (present.has(g)) box.append(el('span', { class: 'key' }, el('i', { style: `background:${GROUP_COLOURS[g]}` }), g));
    }
    box.append(el('span', { class: 'muted' }, 'Hover a target to pick out its line.'));
  }

  function plotPointer(ev) {
    const p = S.plot;
    if (!p) return;
    const rect = $('plot').getBoundingClientRect();
    const x = ev.clientX - rect.left;
    const t = p.t0 + ((x - p.g.x0) / (p.g.x1 - p.g.x0)) * (p.t1 - p.t0);
    const times = S.session.times;
    let lo = 0;
    let hi = times.length - 1;
    while (lo < hi) {
      const mid = (lo + hi) >> 1;
      if (times[mid] < t) lo = mid + 1; else hi = mid;
    }
    stopPlayback();
    setCursor(lo > 0 && Math.abs(times[lo - 1] - t) < Math.abs(times[lo] - t) ? lo - 1 : lo);
  }

  // ---- Export ------------------------------------------------------------------------------

  function exportCsv() {
    const ses = S.session;
    if (!ses) return;
    const blob = new Blob(QuilSession.targetsToCsv(ses.data, ses.targets), { type: 'text/csv' });
    const base = ses.name.replace(/\.[^.]*$/, '');
    const a = el('a', { href: URL.createObjectURL(blob), download: `${base}.${S.info.name}.csv` });
    document.body.append(a);
    a.click();
    a.remove();
    setTimeout(() => URL.revokeObjectURL(a.href), 10000);
  }

  // ---- Wiring ------------------------------------------------------------------------------

  function setStatus(text, kind) {
    const s = $('status');
    s.textContent = text;
    s.className = `status ${kind || ''}`;
  }

  function readFile(file) {
    const reader = new FileReader();
    reader.onload = () => loadSession(file.name, new Uint8Array(reader.result));
    reader.onerror = () => setStatus(`cannot read ${file.name}`, 'error');
    reader.readAsArrayBuffer(file);
  }

  const sampleBytes = () => new TextEncoder().encode(window.QUIL_SAMPLE_SESSION);

  function wire() {
    $('reset').addEventListener('click', () => {
      stopPlayback();
      cancelAnimationFrame(S.animation);
      S.mode = 'live';
      updateMode();
      S.hand.reset();
      mapLive();
    });
    for (const b of document.querySelectorAll('#dropout-policy button')) b.addEventListener('click', () => setPolicy(b.dataset.policy));
    $('play').addEventListener('click', () => (S.playing ? stopPlayback() : startPlayback()));
    $('cursor').addEventListener('input', () => { stopPlayback(); setCursor(Number($('cursor').value)); });
    $('export').addEventListener('click', exportCsv);
    $('sample-session').addEventListener('click', () => loadSession('sample_session.csv', sampleBytes()));
    $('time-unit').addEventListener('change', () => { if (S.session) loadSession(S.session.name, S.session.bytes); });
    $('session-file').addEventListener('change', (ev) => { if (ev.target.files[0]) readFile(ev.target.files[0]); ev.target.value = ''; });

    const canvas = $('plot');
    let dragging = false;
    canvas.addEventListener('pointerdown', (ev) => { dragging = true; canvas.setPointerCapture(ev.pointerId); plotPointer(ev); });
    canvas.addEventListener('pointermove', (ev) => { if (dragging) plotPointer(ev); });
    canvas.addEventListener('pointerup', () => { dragging = false; });

    const overlay = $('drop-overlay');
    let depth = 0;
    const hasFiles = (ev) => ev.dataTransfer && Array.from(ev.dataTransfer.types || []).includes('Files');
    window.addEventListener('dragenter', (ev) => { if (hasFiles(ev)) { depth++; overlay.hidden = false; } });
    window.addEventListener('dragleave', () => { depth = Math.max(0, depth - 1); if (!depth) overlay.hidden = true; });
    window.addEventListener('dragover', (ev) => { if (hasFiles(ev)) ev.preventDefault(); });
    window.addEventListener('drop', (ev) => {
      ev.preventDefault();
      depth = 0;
      overlay.hidden = true;
      const file = ev.dataTransfer && ev.dataTransfer.files[0];
      if (file) readFile(file);
    });

    let resizeTimer = 0;
    window.addEventListener('resize', () => { clearTimeout(resizeTimer); resizeTimer = setTimeout(renderPlot, 100); });
    window.addEventListener('keydown', (ev) => {
      if (ev.key === ' ' && ev.target === document.body) {
        ev.preventDefault();
        if (S.playing) stopPlayback(); else startPlayback();
      }
    });
  }

  window.quilReady.then((api) => {
    S.api = api;
    S.hands = api.hands();
    S.readingInfo = api.readings();
    CHANNELS = S.readingInfo.map((r) => r.name.replace(/_/g, ' '));
    CHANNEL_FINGER = S.readingInfo.map((r) => r.finger);
    $('lib-version').textContent = api.version;
    buildHandPicker();
    buildSliders();
    wire();
    setPolicy('pass');
    const wanted = decodeURIComponent((location.hash.match(/hand=([^&]+)/) || [])[1] || '');
    const first = S.hands.find((h) => h.name === wanted) || S.hands.find((h) => h.name === PREFERRED_HAND) || S.hands[0];
    if (window.QUIL_SAMPLE_SESSION) {
      const bytes = sampleBytes();
      const data = readSession('sample_session.csv', bytes);
      S.session = { name: 'sample_session.csv', bytes, data, times: QuilSession.rowTimes(data) };
      $('cursor').max = String(data.rows - 1);
      $('session-name').textContent = sessionSummary(S.session);
    }
    selectHand(first.name);
    updateMode();
    setStatus(`${S.hands.length} hands`, 'ok');
    document.body.dataset.ready = 'true';
  }, (err) => {
    setStatus(`the library did not load: ${err && err.message ? err.message : err}`, 'error');
  });
})();
