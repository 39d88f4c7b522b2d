// The hand explorer: pick a hand, move the glove's fingers, watch the joint targets and the
// hand's memory, play a recorded session through it and export what it made of it. This file
// ties the panels together: the hand in use, live mapping from the sliders, the dropout policy,
// the page's controls and the start-up.
(function () {
  'use strict';

  const X = window.QuilExplorer;
  const { $, el, setStatus, PREFERRED_HAND, S } = X;

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
    X.buildBars();
    X.buildMemory();
    X.remapSession();
    if (S.mode === 'live') {
      if (S.session) S.hand.restore(X.probeAfterRow(S.cursor).state());
      mapLive();
    } else {
      X.showCursor();
    }
  }

  function liveInput() {
    return S.readings.map((v, i) => (S.dropped[i] ? NaN : v));
  }

  function enterLive() {
    if (S.mode === 'live') return;
    S.mode = 'live';
    // The glove carries on from the moment under the cursor, with the hand's memory of it.
    if (S.session && S.session.data.rows) {
      S.hand.restore(X.probeAfterRow(S.cursor).state());
      S.hand.setDropout(S.policy);
    }
    X.updateMode();
  }

  function mapLive() {
    const input = liveInput();
    const targets = S.hand.map(input);
    X.showReadings(S.readings);
    X.showTargets(targets);
    X.showMemory(S.hand.memory());
    X.drawPlot();
  }

  function setPolicy(policy) {
    S.policy = policy;
    for (const b of document.querySelectorAll('#dropout-policy button')) {
      b.setAttribute('aria-checked', String(b.dataset.policy === policy));
      b.classList.toggle('active', b.dataset.policy === policy);
    }
    if (S.hand) S.hand.setDropout(policy);
    X.remapSession();
    if (S.mode === 'live') mapLive();
    else X.showCursor();
  }

  function wire() {
    $('reset').addEventListener('click', () => {
      X.stopPlayback();
      cancelAnimationFrame(S.animation);
      S.mode = 'live';
      X.updateMode();
      S.hand.reset();
      mapLive();
    });
    for (const b of document.querySelectorAll('#dropout-policy button')) b.addEventListener('click', () => setPolicy(b.dataset.policy));
    $('play').addEventListener('click', () => (S.playing ? X.stopPlayback() : X.startPlayback()));
    $('cursor').addEventListener('input', () => { X.stopPlayback(); X.setCursor(Number($('cursor').value)); });
    $('export').addEventListener('click', X.exportCsv);
    $('sample-session').addEventListener('click', () => X.loadSession('sample_session.csv', X.sampleBytes()));
    $('time-unit').addEventListener('change', () => { if (S.session) X.loadSession(S.session.name, S.session.bytes); });
    $('session-file').addEventListener('change', (ev) => { if (ev.target.files[0]) X.readFile(ev.target.files[0]); ev.target.value = ''; });

    const canvas = $('plot');
    let dragging = false;
    canvas.addEventListener('pointerdown', (ev) => { dragging = true; canvas.setPointerCapture(ev.pointerId); X.plotPointer(ev); });
    canvas.addEventListener('pointermove', (ev) => { if (dragging) X.plotPointer(ev); });
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
      if (file) X.readFile(file);
    });

    let resizeTimer = 0;
    window.addEventListener('resize', () => { clearTimeout(resizeTimer); resizeTimer = setTimeout(X.renderPlot, 100); });
    window.addEventListener('keydown', (ev) => {
      if (ev.key === ' ' && ev.target === document.body) {
        ev.preventDefault();
        if (S.playing) X.stopPlayback(); else X.startPlayback();
      }
    });
  }

  Object.assign(X, { selectHand, enterLive, mapLive });

  window.quilReady.then((api) => {
    S.api = api;
    S.hands = api.hands();
    S.readingInfo = api.readings();
    S.channels = S.readingInfo.map((r) => r.name.replace(/_/g, ' '));
    S.channelFinger = S.readingInfo.map((r) => r.finger);
    $('lib-version').textContent = api.version;
    X.buildHandPicker();
    X.buildSliders();
    wire();
    setPolicy('pass');
    const wanted = decodeURIComponent((location.hash.match(/hand=([^&]+)/) || [])[1] || '');
    const first = S.hands.find((h) => h.name === wanted) || S.hands.find((h) => h.name === PREFERRED_HAND) || S.hands[0];
    if (window.QUIL_SAMPLE_SESSION) {
      const bytes = X.sampleBytes();
      const data = X.readSession('sample_session.csv', bytes);
      S.session = { name: 'sample_session.csv', bytes, data, times: QuilSession.rowTimes(data) };
      $('cursor').max = String(data.rows - 1);
      $('session-name').textContent = X.sessionSummary(S.session);
    }
    selectHand(first.name);
    X.updateMode();
    setStatus(`${S.hands.length} hands`, 'ok');
    document.body.dataset.ready = 'true';
  }, (err) => {
    setStatus(`the library did not load: ${err && err.message ? err.message : err}`, 'error');
  });
})();
