// A recorded session: reading it with the tool's own reader, mapping it through the hand, the
// cursor and playback, and exporting the targets.
(function () {
  'use strict';

  const X = window.QuilExplorer;
  const { $, el, shown, setStatus, CHECKPOINT_ROWS, S } = X;

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
    X.renderPlot();
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
      X.drawPlot();
      return;
    }
    const readings = Array.from(ses.data.readings.subarray(12 * r, 12 * r + 12));
    S.readings = readings.slice();
    X.showReadings(readings);
    X.showTargets(ses.targets.subarray(24 * r, 24 * r + 24));
    X.showMemory(probeAfterRow(r).memory());
    X.drawPlot();
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

  function readFile(file) {
    const reader = new FileReader();
    reader.onload = () => loadSession(file.name, new Uint8Array(reader.result));
    reader.onerror = () => setStatus(`cannot read ${file.name}`, 'error');
    reader.readAsArrayBuffer(file);
  }

  const sampleBytes = () => new TextEncoder().encode(window.QUIL_SAMPLE_SESSION);

  Object.assign(X, { readSession, sessionSummary, loadSession, remapSession, probeAfterRow, showCursor, setCursor, updateMode, startPlayback, stopPlayback, exportCsv, readFile, sampleBytes });
})();
