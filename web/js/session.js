// Recorded glove sessions in and mapped sessions out, as CSV text, in the same shapes the
// command-line tool reads and writes: an optional header line, 12 readings per row or 13 with
// a leading time column, fields separated by commas, semicolons or tabs, `nan`/`inf` accepted,
// blank lines and `#` lines ignored; out, `[time,]out0..out23` in the shortest form that reads
// back to the same double, sign of zero included.
(function (root) {
  'use strict';

  const NUMBER = /^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$/;

  function parseNumber(text) {
    const t = text.trim();
    if (NUMBER.test(t)) return Number(t);
    const word = t.toLowerCase().replace(/^\+/, '');
    if (word === 'nan' || word === '-nan') return NaN;
    if (word === 'inf' || word === 'infinity') return Infinity;
    if (word === '-inf' || word === '-infinity') return -Infinity;
    return undefined;
  }

  // Parses a session. Rows that cannot be read are skipped and listed in `bad` (line numbers
  // from 1) so the page can say what it left out.
  function parseSession(text) {
    const lines = text.split(/\r\n|\n|\r/);
    let sep = null;
    let header = null;
    let withTime = null;
    const times = [];
    const readings = [];
    const bad = [];
    let sawData = false;
    for (let k = 0; k < lines.length; k++) {
      const line = lines[k];
      if (line.trim() === '' || line.trimStart().startsWith('#')) continue;
      if (sep === null) sep = [',', ';', '\t'].find((s) => line.includes(s)) || ',';
      const fields = line.split(sep);
      const values = fields.map(parseNumber);
      if (!sawData && header === null && values.every((v) => v === undefined)) {
        header = fields.map((f) => f.trim());
        continue;
      }
      sawData = true;
      if (fields.length !== 12 && fields.length !== 13) {
        bad.push({ line: k + 1, why: `${fields.length} fields, not 12 or 13` });
        continue;
      }
      const column = values.findIndex((v) => v === undefined);
      if (column >= 0) {
        bad.push({ line: k + 1, why: `column ${column + 1} is not a number` });
        continue;
      }
      const rowTime = fields.length === 13;
      if (withTime === null) withTime = rowTime;
      if (rowTime !== withTime) {
        bad.push({ line: k + 1, why: `${fields.length} fields where earlier rows have ${withTime ? 13 : 12}` });
        continue;
      }
      if (rowTime) times.push({ text: fields[0].trim(), value: values[0] });
      for (let i = rowTime ? 1 : 0; i < fields.length; i++) readings.push(values[i]);
    }
    const n = readings.length / 12;
    return {
      rows: n,
      readings: Float64Array.from(readings),
      times: withTime ? times : null,
      timeHeader: withTime && header && header.length === 13 ? header[0] : 'time',
      bad,
    };
  }

  function formatNumber(v) {
    if (Number.isNaN(v)) return 'nan';
    if (v === Infinity) return 'inf';
    if (v === -Infinity) return '-inf';
    if (v === 0) return Object.is(v, -0) ? '-0' : '0';
    return String(v);
  }

  // The mapped session as CSV: one row of 24 targets per input row, the time column copied.
  function targetsToCsv(session, targets) {
    const parts = [];
    const head = [];
    if (session.times) head.push(session.timeHeader);
    for (let s = 0; s < 24; s++) head.push('out' + s);
    parts.push(head.join(',') + '\n');
    let chunk = [];
    for (let r = 0; r < session.rows; r++) {
      const row = [];
      if (session.times) row.push(session.times[r].text);
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

  // Seconds at each row: the time column when it holds finite numbers, else 100 samples/s.
  function rowTimes(session) {
    const t = new Float64Array(session.rows);
    const usable = session.times && session.times.every((x) => Number.isFinite(x.value));
    for (let r = 0; r < session.rows; r++) t[r] = usable ? session.times[r].value : r / 100;
    return t;
  }

  root.QuilSession = { parseSession, targetsToCsv, formatNumber, rowTimes, parseNumber };
})(typeof window !== 'undefined' ? window : globalThis);
