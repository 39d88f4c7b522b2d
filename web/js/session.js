// Mapped sessions out as CSV, in the shape the command-line tool writes: a heading
// `[time,]out0..out23`, the time column as the file wrote it, then every target in the shortest
// text that reads back to the same double, sign of zero included. Sessions are read by the
// tool's own reader in the WebAssembly module (api.readSession in quil_api.js), not here.
(function (root) {
  'use strict';

  function formatNumber(v) {
    if (Number.isNaN(v)) return 'nan';
    if (v === Infinity) return 'inf';
    if (v === -Infinity) return '-inf';
    if (v === 0) return Object.is(v, -0) ? '-0' : '0';
    return String(v);
  }

  // A CSV field in quotes when a reader would otherwise split or trim it.
  function csvField(s) {
    if (!/[,"\r\n]/.test(s) && s.trim() === s) return s;
    return '"' + s.replace(/"/g, '""') + '"';
  }

  // The mapped session as CSV: one row of 24 targets per input row, the time column copied.
  function targetsToCsv(session, targets) {
    const parts = [];
    const head = [];
    const timed = !!session.times;
    if (timed) head.push(csvField(session.timeName));
    for (let s = 0; s < 24; s++) head.push('out' + s);
    parts.push(head.join(',') + '\n');
    let chunk = [];
    for (let r = 0; r < session.rows; r++) {
      const row = [];
      if (timed) row.push(session.timeText ? csvField(session.timeText[r]) : formatNumber(session.fileTimes[r]));
      for (let s = 0; s < 24; s++) row.push(formatNumber(targets[24 * r + s]));
      chunk.push(row.join(','));
      if (chunk.length === 4096) {
        parts.push(chunk.join('\n') + '\n');
        chunk = [];
      }
    }
    if (chunk.length) parts.push(chunk.join('\n') + '\n');
    return parts;
  }

  // Seconds from the first row at each row: by the time column (already in seconds) when it
  // holds finite numbers, so a recorder's clock since 1970 plays and reads as elapsed time;
  // else 100 samples a second.
  function rowTimes(session) {
    const usable = session.times && session.times.every((x) => Number.isFinite(x));
    const t = new Float64Array(session.rows);
    for (let r = 0; r < session.rows; r++) t[r] = usable ? session.times[r] - session.times[0] : r / 100;
    return t;
  }

  root.QuilSession = { targetsToCsv, formatNumber, rowTimes };
})(typeof window !== 'undefined' ? window : globalThis);
