// The glove's controls: the hand picker, a slider, a number box and a dropout switch per
// reading, and the poses the fingers glide to.
(function () {
  'use strict';

  const X = window.QuilExplorer;
  const { $, el, POSES, GROUP_COLOURS, S } = X;

  // ---- Hand picker -----------------------------------------------------------------------

  function buildHandPicker() {
    const select = $('hand-select');
    for (const h of S.hands) {
      // The name alone fits the closed picker; version and memory are in the facts below it.
      select.append(el('option', { value: h.name, title: `${h.version}${h.keepsState ? ' · keeps state' : ''}` }, h.name));
    }
    select.addEventListener('change', () => X.selectHand(select.value));
  }

  // ---- Sliders ---------------------------------------------------------------------------

  function buildSliders() {
    const box = $('sliders');
    for (let i = 0; i < 12; i++) {
      const range = el('input', {
        type: 'range', id: `reading-${i}`, min: -20, max: 120, step: 0.1, value: S.readings[i],
        'aria-label': `x${i} ${S.channels[i]}`, dataset: { channel: i },
      });
      const number = el('input', {
        type: 'number', id: `reading-value-${i}`, step: 0.1, value: S.readings[i],
        'aria-label': `x${i} value`, class: 'reading-value',
      });
      const drop = el('input', { type: 'checkbox', id: `dropout-${i}`, 'aria-label': `drop x${i}` });
      const row = el('div', { class: 'slider-row', dataset: { channel: i } },
        el('label', { for: `reading-${i}`, class: 'channel', style: `--finger:${GROUP_COLOURS[S.channelFinger[i]]}`,
          title: `x${i} ${S.readingInfo[i].name}, in ${S.readingInfo[i].unit}: ${S.readingInfo[i].meaning}` },
          el('span', { class: 'channel-id' }, `x${i}`),
          el('span', { class: 'channel-name' }, S.channels[i])),
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
        X.remapSession();
        if (S.mode === 'live') X.mapLive();
        else X.showCursor();
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
    X.stopPlayback();
    cancelAnimationFrame(S.animation);
    X.enterLive();
    S.readings[i] = v;
    X.mapLive();
  }

  // Moves all fingers to a pose over a few hundred milliseconds, one sample per frame, so a
  // hand with memory sees the motion as a glove would send it.
  function glideTo(pose) {
    X.stopPlayback();
    cancelAnimationFrame(S.animation);
    X.enterLive();
    const from = S.readings.map((v) => (Number.isFinite(v) ? v : 0));
    const start = performance.now();
    const step = (now) => {
      const u = Math.min(1, (now - start) / 450);
      const w = 0.5 - 0.5 * Math.cos(Math.PI * u);
      S.readings = from.map((a, i) => a + (pose[i] - a) * w);
      X.mapLive();
      if (u < 1) S.animation = requestAnimationFrame(step);
    };
    S.animation = requestAnimationFrame(step);
  }

  Object.assign(X, { buildHandPicker, buildSliders, showReadings, setReading, glideTo });
})();
