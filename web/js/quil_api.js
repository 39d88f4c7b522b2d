// The hand API of the WebAssembly library, for the page, for tests and for power users:
//
//   const api = await window.quilReady;
//   api.hands()                    -> [{name, version, keepsState, persistentBuffer, slotRoles, slots}]
//                                     slots[s]: {role, meaning, kind, follows, relation, departs,
//                                     value, sign, range: [min, max], movedBy, negativeZero}
//   api.readings()                 -> [{name, finger, motion, unit, meaning, hands}] for x0..x11
//   const hand = api.open('RUIYAN_RY_H15');
//   hand.map([x0, ..., x11])       -> 24 targets (an Array of numbers)
//   hand.mapMany(rows)             -> Float64Array of n*24 targets for n*12 readings, in order
//   hand.setDropout('hold')        // or 'pass' (api.DROPOUT_PASS / api.DROPOUT_HOLD)
//   hand.memory()                  -> {pinchLatches, thumbReferences, heldReadings, dropout}
//   hand.state() -> bytes (Uint8Array), hand.restore(bytes), hand.reset(), hand.close()
//   api.readSession(name, bytes, {timeUnit}) -> a recorded session, read by quil-retarget's own
//                                  reader: {rows, readings, times (s), timeUnit, error, ...}
//   api.parseNumber(text)          -> the number quil-retarget reads in `text`, or undefined
//   api.checkProfile(profile)      -> null, or {field, problem} for a wiring profile object
//
// Every call goes straight to quil_linear/hand.h compiled from the library's own sources, so a
// handle gives the native library's results bit for bit.
(function () {
  'use strict';

  const READINGS = 12;
  const TARGETS = 24;

  // The public structs of quil_linear/hand.h as laid out on wasm32 (pointers and ints 4 bytes,
  // doubles 8 and 8-aligned); web/struct_layout.cpp checks every offset against the compiler.
  // quil_hand_info: name, version, keeps_state, persistent_buffer, slot_roles[24].
  const INFO_NAME = 0;
  const INFO_VERSION = 4;
  const INFO_KEEPS_STATE = 8;
  const INFO_PERSISTENT = 12;
  const INFO_ROLES = 16;

  // quil_slot_info.
  const SLOT = { role: 0, meaning: 4, kind: 8, follows: 12, relation: 20, departs: 24, value: 32, sign: 40,
    rangeMin: 48, rangeMax: 56, movedBy: 64, negativeZero: 68 };
  const KINDS = ['joint', 'follower', 'fixed', 'unused', 'terminator', 'gesture_code'];
  // quil_reading_info: name, finger, motion, unit, meaning, hands.
  const READING = { name: 0, finger: 4, motion: 8, unit: 12, meaning: 16, hands: 20 };
  // quil_hand_memory: pinch_latches[4], thumb_references[2], held_readings[12], dropout.
  const MEMORY = { pinchLatches: 0, thumbReferences: 16, heldReadings: 32, dropout: 128, size: 136 };

  function makeApi(M) {
    const str = (ptr) => (ptr ? M.UTF8ToString(ptr) : null);
    const u32 = (ptr) => M.HEAPU32[ptr >>> 2];
    const i32 = (ptr) => M.HEAP32[ptr >>> 2];

    const f64 = (ptr) => M.HEAPF64[ptr >>> 3];

    function slotAt(info, s) {
      const p = M._quil_hand_slot(info, s);
      const movedBy = [];
      for (let r = 0; r < READINGS; r++) if ((u32(p + SLOT.movedBy) >>> r) & 1) movedBy.push(r);
      return {
        role: str(u32(p + SLOT.role)),
        meaning: str(u32(p + SLOT.meaning)),
        kind: KINDS[i32(p + SLOT.kind)],
        follows: [i32(p + SLOT.follows), i32(p + SLOT.follows + 4)].filter((f) => f >= 0),
        relation: str(u32(p + SLOT.relation)),
        departs: str(u32(p + SLOT.departs)),
        value: f64(p + SLOT.value),
        sign: i32(p + SLOT.sign),
        range: [f64(p + SLOT.rangeMin), f64(p + SLOT.rangeMax)],
        movedBy,
        negativeZero: i32(p + SLOT.negativeZero) !== 0,
      };
    }

    function infoAt(ptr) {
      const slotRoles = [];
      const slots = [];
      for (let s = 0; s < TARGETS; s++) {
        slotRoles.push(str(u32(ptr + INFO_ROLES + 4 * s)));
        slots.push(slotAt(ptr, s));
      }
      return {
        name: str(u32(ptr + INFO_NAME)),
        version: str(u32(ptr + INFO_VERSION)),
        keepsState: i32(ptr + INFO_KEEPS_STATE) !== 0,
        persistentBuffer: i32(ptr + INFO_PERSISTENT) !== 0,
        slotRoles,
        slots,
      };
    }

    const readingInfos = [];
    for (let r = 0; r < READINGS; r++) {
      const p = M._quil_reading(r);
      readingInfos.push({
        name: str(u32(p + READING.name)), finger: str(u32(p + READING.finger)), motion: str(u32(p + READING.motion)),
        unit: str(u32(p + READING.unit)), meaning: str(u32(p + READING.meaning)), hands: u32(p + READING.hands),
      });
    }

    const catalogue = [];
    for (let i = 0, n = M._quil_hand_count(); i < n; i++) {
      const ptr = M._quil_hand_at(i);
      const info = infoAt(ptr);
      catalogue.push(info);
    }
    const copyInfo = (info) => Object.assign({}, info, {
      slotRoles: info.slotRoles.slice(),
      slots: info.slots.map((s) => Object.assign({}, s, { follows: s.follows.slice(), range: s.range.slice(), movedBy: s.movedBy.slice() })),
    });

    const stateSize = M._quil_hand_state_size();
    const dropoutName = (policy) => str(M._quil_dropout_name(policy));

    // Writes a JS string into the wasm heap for the length of `use`.
    function withCString(s, use) {
      const bytes = new TextEncoder().encode(String(s));
      const ptr = M._malloc(bytes.length + 1);
      M.HEAPU8.set(bytes, ptr);
      M.HEAPU8[ptr + bytes.length] = 0;
      try {
        return use(ptr);
      } finally {
        M._free(ptr);
      }
    }

    function suggest(name, count) {
      const out = M._malloc(4 * count);
      try {
        const n = withCString(name, (p) => M._quil_hand_suggest(p, out, count));
        const names = [];
        for (let i = 0; i < n; i++) names.push(str(u32(u32(out + 4 * i) + INFO_NAME)));
        return names;
      } finally {
        M._free(out);
      }
    }

    // A policy's code from its name (any case) or its code; the names are the library's.
    function policyCode(policy) {
      const code = typeof policy === 'number' ? policy
        : withCString(String(policy).toLowerCase(), (p) => M._quil_dropout_from_name(p));
      if (dropoutName(code) === null)
        throw new RangeError(`unknown dropout policy ${policy}: '${dropoutName(0)}' or '${dropoutName(1)}'`);
      return code;
    }

    // Handles not closed by their owner are released when they are garbage collected.
    const reaper = typeof FinalizationRegistry === 'function'
      ? new FinalizationRegistry(({ handle, scratch }) => { M._quil_hand_close(handle); M._free(scratch); })
      : null;

    class Hand {
      constructor(info, handle) {
        this.info = copyInfo(info);
        this.name = info.name;
        this._handle = handle;
        // One scratch area per handle: 12 readings, then 24 targets, then a saved state or its
        // memory.
        this._scratch = M._malloc(8 * (READINGS + TARGETS) + Math.max(stateSize, MEMORY.size));
        if (reaper) reaper.register(this, { handle, scratch: this._scratch }, this);
      }

      _live() {
        if (!this._handle) throw new Error(`the ${this.name} hand is closed`);
        return this._handle;
      }

      // 12 readings in (any array-like of numbers; anything else reads as NaN), 24 targets out.
      map(readings) {
        const h = this._live();
        if (!readings || readings.length !== READINGS)
          throw new TypeError(`map takes ${READINGS} readings, got ${readings ? readings.length : readings}`);
        const at = this._scratch >>> 3;
        const heap = M.HEAPF64;
        for (let i = 0; i < READINGS; i++) heap[at + i] = Number(readings[i]);
        M._quil_hand_map(h, this._scratch, this._scratch + 8 * READINGS);
        return Array.from(M.HEAPF64.subarray(at + READINGS, at + READINGS + TARGETS));
      }

      // n samples in order: a flat array-like of n*12 readings (a Float64Array keeps NaN bits)
      // or an array of rows; returns a Float64Array of n*24 targets.
      mapMany(readings) {
        const h = this._live();
        let flat = readings;
        if (readings.length && typeof readings[0] === 'object') flat = [].concat(...readings.map((r) => Array.from(r)));
        if (flat.length % READINGS !== 0) throw new TypeError(`mapMany takes rows of ${READINGS} readings`);
        const n = flat.length / READINGS;
        if (n === 0) return new Float64Array(0);
        const input = M._malloc(8 * READINGS * n);
        const output = M._malloc(8 * TARGETS * n);
        try {
          M.HEAPF64.set(flat instanceof Float64Array ? flat : Float64Array.from(flat, Number), input >>> 3);
          M._quil_hand_map_n(h, n, input, output);
          return M.HEAPF64.slice(output >>> 3, (output >>> 3) + TARGETS * n);
        } finally {
          M._free(input);
          M._free(output);
        }
      }

      // Back to the start-up state: latches open, references and held readings 0. The dropout
      // policy is kept.
      reset() {
        M._quil_hand_reset(this._live());
      }

      setDropout(policy) {
        M._quil_hand_set_dropout(this._live(), policyCode(policy));
      }

      get dropout() {
        return dropoutName(M._quil_hand_dropout(this._live()));
      }

      // What the handle remembers between samples (quil_hand_memory), to show it: the pinch
      // latches (index pinch, middle pinch, two no hand uses), the two thumb references, the last
      // finite reading of each channel and the dropout policy.
      memory() {
        const at = this._scratch + 8 * (READINGS + TARGETS);
        M._quil_hand_memory_of(this._live(), at);
        const f64s = (offset, n) => Array.from(M.HEAPF64.subarray((at + offset) >>> 3, ((at + offset) >>> 3) + n));
        return {
          pinchLatches: [0, 1, 2, 3].map((i) => i32(at + MEMORY.pinchLatches + 4 * i) !== 0),
          thumbReferences: f64s(MEMORY.thumbReferences, 2),
          heldReadings: f64s(MEMORY.heldReadings, READINGS),
          dropout: dropoutName(i32(at + MEMORY.dropout)),
        };
      }

      // The handle's memory as a portable saved state (Uint8Array), for restore().
      state() {
        const at = this._scratch + 8 * (READINGS + TARGETS);
        const n = M._quil_hand_save_state(this._live(), at, stateSize);
        return M.HEAPU8.slice(at, at + n);
      }

      restore(bytes) {
        const h = this._live();
        const data = bytes instanceof Uint8Array ? bytes : new Uint8Array(bytes);
        const at = M._malloc(Math.max(1, data.length));
        try {
          M.HEAPU8.set(data, at);
          const rc = M._quil_hand_load_state(h, at, data.length);
          if (rc !== 0) throw new Error(str(M._quil_error_text(rc)));
        } finally {
          M._free(at);
        }
      }

      // The older names of state() and restore(), for pages written against them.
      saveState() {
        return this.state();
      }

      loadState(bytes) {
        this.restore(bytes);
      }

      close() {
        if (!this._handle) return;
        if (reaper) reaper.unregister(this);
        M._quil_hand_close(this._handle);
        M._free(this._scratch);
        this._handle = 0;
        this._scratch = 0;
      }
    }

    const FORMATS = { csv: 0, f64: 1, npy: 2 };
    const UNITS = { s: 0, ms: 1, us: 2 };

    // A recorded session (the bytes of a .csv/.tsv/.txt, .npy or .f64 file) read by the tool's
    // reader compiled into this module: the same files accepted, the same messages, the same
    // time unit. `error` is "" or the tool's message (file:line:column or a byte offset); the
    // rows before a fault are kept. Times are in seconds (null without a time column).
    function readSession(name, bytes, options = {}) {
      const data = bytes instanceof Uint8Array ? bytes : new Uint8Array(bytes);
      const format = options.format in FORMATS ? FORMATS[options.format] : -1;
      const unit = options.timeUnit in UNITS ? UNITS[options.timeUnit] : -1;
      const at = M._malloc(Math.max(1, data.length));
      let s = 0;
      try {
        M.HEAPU8.set(data, at);
        s = withCString(name, (p) => M._quil_session_read(p, at, data.length, format, unit));
      } finally {
        M._free(at);
      }
      try {
        const rows = M._quil_session_rows(s);
        const f64 = (ptr, n) => (ptr ? M.HEAPF64.slice(ptr >>> 3, (ptr >>> 3) + n) : null);
        const times = f64(M._quil_session_seconds(s), rows);
        const fileTimes = f64(M._quil_session_times(s), rows);
        const format = str(M._quil_session_format(s));
        let timeText = null;
        if (times && format === 'csv') {
          timeText = new Array(rows);
          for (let r = 0; r < rows; r++) timeText[r] = str(M._quil_session_time_text(s, r));
        }
        const notes = [];
        for (let i = 0, n = M._quil_session_note_count(s); i < n; i++) notes.push(str(M._quil_session_note(s, i)));
        const names = [];
        for (let i = 0; i < READINGS; i++) names.push(str(M._quil_session_input_name(s, i)));
        return {
          name,
          format,
          rows,
          readings: f64(M._quil_session_readings(s), READINGS * rows) || new Float64Array(0),
          times,
          fileTimes,
          timeText,
          timeName: times ? str(M._quil_session_time_name(s)) : null,
          timeUnit: times ? str(M._quil_session_time_unit(s)) : null,
          names,
          notes,
          error: str(M._quil_session_error(s)),
        };
      } finally {
        M._quil_session_free(s);
      }
    }

    function parseNumber(text) {
      const out = M._malloc(8);
      try {
        return withCString(String(text).trim(), (p) => M._quil_session_parse_number(p, out)) ? M.HEAPF64[out >>> 3] : undefined;
      } finally {
        M._free(out);
      }
    }

    // A wiring profile object (as its JSON file holds it): its shape checked here, its values
    // by the library's quil_profile_check, written into the module's memory at the offsets
    // web/struct_layout.cpp checks. null when good, else {field, problem}.
    const OUTPUT_FIELDS = ['name', 'slot', 'scale', 'offset', 'min', 'max', 'safe', 'smoothing', 'reject_above', 'max_rate'];
    const REQUIRED = ['name', 'slot', 'scale', 'offset', 'min', 'max'];
    const SMOOTHING = { none: [0, []], ema: [1, ['alpha']], one_euro: [2, ['min_cutoff', 'beta', 'd_cutoff']] };
    // An output's slot: its number, or the one slot of the hand with that role; else what is
    // wrong, as a string.
    function slotOf(hand, slot) {
      if (typeof slot === 'string') {
        const ptr = withCString(hand, (h) => M._quil_hand_find(h));
        const roles = ptr ? infoAt(ptr).slotRoles : [];
        const matches = roles.map((r, i) => (r === slot ? i : -1)).filter((i) => i >= 0);
        if (matches.length === 1) return matches[0];
        return matches.length ? `"${slot}" names ${matches.length} slots of the hand; give the slot number`
          : `"${slot}" is not a slot role of the hand`;
      }
      return Number.isInteger(slot) && slot >= 0 && slot <= 23 ? slot : 'is not a slot of the hand (0..23)';
    }

    function checkProfile(p) {
      const fault = (field, problem) => ({ field, problem });
      const isObject = (v) => v !== null && typeof v === 'object' && !Array.isArray(v);
      const num = (v) => typeof v === 'number' && Number.isFinite(v);
      if (!isObject(p)) return fault('(file)', 'must be a JSON object');
      for (const k of Object.keys(p))
        if (!['hand', 'comment', 'hold_after', 'safe_after', 'outputs'].includes(k)) return fault(k, 'is not a known field');
      if (typeof p.hand !== 'string') return fault('hand', p.hand === undefined ? 'is missing' : "must be a hand's name");
      if (p.comment !== undefined && typeof p.comment !== 'string') return fault('comment', 'must be a string');
      for (const k of ['hold_after', 'safe_after'])
        if (p[k] !== undefined && !num(p[k])) return fault(k, 'must be a finite number');
      if (!Array.isArray(p.outputs)) return fault('outputs', p.outputs === undefined ? 'is missing' : 'must be a list of outputs');
      const strings = [];
      const at = M._malloc(32 + 104 * Math.max(1, p.outputs.length) + 12);
      const outs = at + 32, faultAt = outs + 104 * Math.max(1, p.outputs.length);
      const f64 = (ptr, v) => { M.HEAPF64[ptr >>> 3] = v; };
      const put = (ptr, v) => { M.HEAP32[ptr >>> 2] = v; };
      const cstr = (s) => {
        const bytes = new TextEncoder().encode(s);
        const ptr = M._malloc(bytes.length + 1);
        M.HEAPU8.set(bytes, ptr);
        M.HEAPU8[ptr + bytes.length] = 0;
        strings.push(ptr);
        return ptr;
      };
      try {
        M.HEAPU8.fill(0, at, faultAt + 12);
        for (let i = 0; i < p.outputs.length; i++) {
          const o = p.outputs[i];
          const where = `outputs[${i}]`;
          if (!isObject(o)) return fault(where, 'must be a JSON object');
          for (const k of Object.keys(o)) if (!OUTPUT_FIELDS.includes(k)) return fault(`${where}.${k}`, 'is not a known field');
          for (const k of REQUIRED) if (o[k] === undefined) return fault(`${where}.${k}`, 'is missing');
          if (typeof o.name !== 'string') return fault(`${where}.name`, 'must be a string');
          const slot = slotOf(p.hand, o.slot);
          if (typeof slot === 'string') return fault(`${where}.slot`, slot);
          for (const k of ['scale', 'offset', 'min', 'max', 'safe', 'reject_above', 'max_rate'])
            if (o[k] !== undefined && !num(o[k])) return fault(`${where}.${k}`, 'must be a finite number');
          const q = outs + 104 * i;
          put(q, cstr(o.name));
          put(q + 4, slot);
          f64(q + 8, o.scale); f64(q + 16, o.offset); f64(q + 24, o.min); f64(q + 32, o.max);
          f64(q + 40, o.safe === undefined ? NaN : o.safe);
          f64(q + 56, 1); f64(q + 64, 1); f64(q + 72, 0); f64(q + 80, 1);
          if (o.smoothing !== undefined) {
            const s = o.smoothing;
            if (!isObject(s)) return fault(`${where}.smoothing`, 'must be a JSON object');
            const kind = SMOOTHING[s.kind];
            if (!kind) return fault(`${where}.smoothing.kind`, s.kind === undefined ? 'is missing' : 'must be "none", "ema" or "one_euro"');
            for (const k of Object.keys(s)) if (k !== 'kind' && !kind[1].includes(k)) return fault(`${where}.smoothing.${k}`, 'is not a known field');
            for (const k of kind[1]) if (!num(s[k])) return fault(`${where}.smoothing.${k}`, s[k] === undefined ? 'is missing' : 'must be a finite number');
            put(q + 48, kind[0]);
            if (s.alpha !== undefined) f64(q + 56, s.alpha);
            if (s.min_cutoff !== undefined) { f64(q + 64, s.min_cutoff); f64(q + 72, s.beta); f64(q + 80, s.d_cutoff); }
          }
          f64(q + 88, o.reject_above === undefined ? Infinity : o.reject_above);
          f64(q + 96, o.max_rate === undefined ? Infinity : o.max_rate);
        }
        put(at, cstr(p.hand));
        f64(at + 8, p.hold_after === undefined ? Infinity : p.hold_after);
        f64(at + 16, p.safe_after === undefined ? Infinity : p.safe_after);
        put(at + 24, p.outputs.length);
        put(at + 28, outs);
        if (M._quil_profile_check(at, faultAt) === 0) return null;
        const output = i32(faultAt);
        const field = str(u32(faultAt + 4));
        return fault(output >= 0 ? `outputs[${output}].${field}` : field, str(u32(faultAt + 8)));
      } finally {
        for (const ptr of strings) M._free(ptr);
        M._free(at);
      }
    }

    return Object.freeze({
      version: str(M._quil_linear_version()),
      readSession,
      parseNumber,
      checkProfile,
      slotOf,
      READINGS,
      TARGETS,
      versionNumber: M._quil_linear_version_number(),
      DROPOUT_PASS: dropoutName(0),
      DROPOUT_HOLD: dropoutName(1),
      hands: () => catalogue.map(copyInfo),
      readings: () => readingInfos.map((r) => Object.assign({}, r)),
      hand: (name) => {
        const ptr = withCString(name, (p) => M._quil_hand_find(p));
        return ptr ? infoAt(ptr) : null;
      },
      suggest: (name, count = 3) => suggest(name, count),
      open(name) {
        const handle = withCString(name, (p) => M._quil_hand_open(p));
        if (!handle) {
          const close = suggest(name, 3);
          throw new Error(`no hand named ${name}; closest: ${close.join(', ')}`);
        }
        return new Hand(infoAt(M._quil_hand_about(handle)), handle);
      },
      stateHand(bytes) {
        const data = bytes instanceof Uint8Array ? bytes : new Uint8Array(bytes);
        const at = M._malloc(Math.max(1, data.length));
        try {
          M.HEAPU8.set(data, at);
          const ptr = M._quil_state_hand(at, data.length);
          return ptr ? str(u32(ptr + INFO_NAME)) : null;
        } finally {
          M._free(at);
        }
      },
    });
  }

  // Served over HTTP the module fetches quil_wasm.wasm next to it. A page opened from disk may
  // not fetch, so there the module's bytes come from a script holding them.
  function loadModule() {
    if (location.protocol !== 'file:') return createQuilModule();
    return new Promise((resolve, reject) => {
      const script = document.createElement('script');
      script.src = 'quil_wasm_binary.js';
      script.onload = () => {
        const text = atob(window.QUIL_WASM_BASE64);
        const bytes = new Uint8Array(text.length);
        for (let i = 0; i < text.length; i++) bytes[i] = text.charCodeAt(i);
        resolve(createQuilModule({ wasmBinary: bytes }));
      };
      script.onerror = () => reject(new Error('quil_wasm_binary.js did not load'));
      document.head.append(script);
    });
  }

  window.quilReady = loadModule().then(makeApi);
})();
