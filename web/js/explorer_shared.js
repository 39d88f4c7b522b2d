// What the explorer's panels share: the page's state, element helpers, number display and the
// colours of the fingers.
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
    readingInfo: [],  // the twelve readings (quil_reading), once the library has loaded
    channels: [],     // their names, in the order the hands expect them
    channelFinger: [], // the finger each belongs to
  };

  function setStatus(text, kind) {
    const s = $('status');
    s.textContent = text;
    s.className = `status ${kind || ''}`;
  }

  window.QuilExplorer = { $, el, seriesColours, groupOf, shown, setStatus, POSES, GROUPS, GROUP_COLOURS, BAR_RANGE, CHECKPOINT_ROWS, PREFERRED_HAND, S };
})();
