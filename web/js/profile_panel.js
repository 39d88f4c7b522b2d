// The wiring profile panel: load a profile (JSON) for the hand on show, see each of its outputs
// by name beside the slot it follows, with the command the current targets give, and download
// the profile again. The command shown is the instantaneous one, scale * target + offset
// clipped to [min, max]; smoothing, jump rejection, rate limits and the stall act over a
// session's time in the library (quil-retarget map --profile, quil-retarget live).
(function () {
  'use strict';

  const $ = (id) => document.getElementById(id);
  const P = { profile: null, file: 'profile.json', targets: null, hand: null, api: null };

  // The library's clip, std::min(std::max(y, min), max), to the bit (-0.0 included).
  const cmax = (a, b) => (a < b ? b : a);
  const cmin = (a, b) => (b < a ? b : a);

  function command(o, targets) {
    const y = o.scale * targets[P.api.slotOf(P.profile.hand, o.slot)] + o.offset;
    return Number.isFinite(y) ? cmin(cmax(y, o.min), o.max) : null;
  }

  function shown(v) {
    if (v === null) return 'held';
    return Math.abs(v) >= 1000 ? v.toFixed(0) : Math.abs(v) >= 10 ? v.toFixed(2) : v.toFixed(4);
  }

  function render() {
    const box = $('profile-outputs');
    box.innerHTML = '';
    const p = P.profile;
    $('profile-download').disabled = !p;
    if (!p) {
      $('profile-summary').textContent = 'No profile: the hand gives its 24 targets.';
      return;
    }
    const stall = [p.hold_after !== undefined ? `held after ${p.hold_after} s` : null,
      p.safe_after !== undefined ? `to safe after ${p.safe_after} s` : null].filter(Boolean).join(', ');
    $('profile-summary').textContent = `${P.file}: ${p.outputs.length} outputs for ${p.hand}${stall ? `; ${stall}` : ''}. ${p.comment || ''}`;
    const roles = P.api && P.api.hand(p.hand) ? P.api.hand(p.hand).slotRoles : [];
    const table = document.createElement('table');
    table.className = 'commands';
    table.innerHTML = '<thead><tr><th>output</th><th>slot</th><th>command</th><th>range</th><th>stage</th></tr></thead>';
    const body = document.createElement('tbody');
    p.outputs.forEach((o) => {
      const stage = [o.smoothing && o.smoothing.kind !== 'none' ? o.smoothing.kind.replace('_', '-') : null,
        o.reject_above !== undefined ? `jumps > ${o.reject_above}` : null,
        o.max_rate !== undefined ? `≤ ${o.max_rate}/s` : null].filter(Boolean).join(', ');
      const tr = document.createElement('tr');
      tr.dataset.output = o.name;
      const slot = P.api.slotOf(p.hand, o.slot);
      const cells = [o.name, `${slot} ${roles[slot] || ''}`, '–', `[${o.min}, ${o.max}]`, stage || '–'];
      cells.forEach((text, i) => {
        const td = document.createElement('td');
        td.textContent = text;
        if (i === 2) td.className = 'command';
        tr.append(td);
      });
      body.append(tr);
    });
    table.append(body);
    box.append(table);
    update();
  }

  function update() {
    const p = P.profile;
    if (!p || !P.targets) return;
    const rows = document.querySelectorAll('#profile-outputs tr[data-output]');
    if (rows.length !== p.outputs.length) return;  // the table is being rebuilt
    p.outputs.forEach((o, i) => {
      const v = command(o, P.targets);
      const cell = rows[i].querySelector('.command');
      cell.textContent = shown(v);
      rows[i].dataset.value = v === null ? 'held' : String(v);
    });
  }

  function status(text, bad) {
    const s = $('profile-status');
    s.textContent = text;
    s.classList.toggle('error', !!bad);
  }

  function load(name, text) {
    let data;
    try {
      data = JSON.parse(text);
    } catch (e) {
      status(`${name}: not JSON: ${e.message}`, true);
      return false;
    }
    const fault = P.api.checkProfile(data);
    if (fault) {
      status(`${name}: ${fault.field} ${fault.problem}`, true);
      return false;
    }
    P.profile = data;
    P.file = name;
    status(`${name} loaded`, false);
    // Show the profile's hand.
    const select = $('hand-select');
    const info = P.api.hand(data.hand);
    if (info && select.value !== info.name) {
      select.value = info.name;
      select.dispatchEvent(new Event('change'));
    }
    render();
    return true;
  }

  function download() {
    if (!P.profile) return;
    const blob = new Blob([JSON.stringify(P.profile, null, 2) + '\n'], { type: 'application/json' });
    const a = document.createElement('a');
    a.href = URL.createObjectURL(blob);
    a.download = P.file;
    document.body.append(a);
    a.click();
    setTimeout(() => { URL.revokeObjectURL(a.href); a.remove(); }, 0);
  }

  document.addEventListener('quil:targets', (ev) => {
    P.targets = ev.detail.targets;
    if (P.profile && ev.detail.hand && P.api.hand(P.profile.hand).name !== ev.detail.hand) {
      P.profile = null;
      status('the profile was for another hand: unloaded', false);
      render();
    }
    update();
  });

  window.quilReady.then((api) => {
    P.api = api;
    $('profile-file').addEventListener('change', (ev) => {
      const f = ev.target.files[0];
      if (f) f.text().then((t) => load(f.name, t));
      ev.target.value = '';
    });
    $('profile-download').addEventListener('click', download);
    render();
  });

  // For scripts and tests: load a profile from its text, read the commands on show.
  window.quilProfile = {
    load: (name, text) => load(name, text),
    commands: () => (P.profile && P.targets ? P.profile.outputs.map((o) => command(o, P.targets)) : null),
    profile: () => P.profile,
  };
})();
