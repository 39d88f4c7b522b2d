// The plot of a session: the readings and the targets over time, with the cursor and a
// highlighted target drawn over a picture of the whole session.
(function () {
  'use strict';

  const X = window.QuilExplorer;
  const { $, el, seriesColours, groupOf, shown, GROUPS, GROUP_COLOURS, S } = X;

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

    const readingColours = seriesColours(S.channelFinger).map((c, i) => (S.dropped[i] ? '#d5dae0' : c));
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
    const present = new Set(S.info.slotRoles.map(groupOf).concat(S.channelFinger));
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
    X.stopPlayback();
    X.setCursor(lo > 0 && Math.abs(times[lo - 1] - t) < Math.abs(times[lo] - t) ? lo - 1 : lo);
  }

  Object.assign(X, { plotGeometry, niceStep, finiteRange, drawSeries, renderPlot, drawPlot, buildLegend, plotPointer, PLOT });
})();
