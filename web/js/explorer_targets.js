// The joint targets: a bar per slot, grouped by finger, over the slot's range and with what the
// library says of the slot as its tooltip.
(function () {
  'use strict';

  const X = window.QuilExplorer;
  const { $, el, seriesColours, groupOf, shown, GROUPS, GROUP_COLOURS, BAR_RANGE, S } = X;

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
        row.addEventListener('mouseenter', () => { S.highlight = s.slot; X.drawPlot(); });
        row.addEventListener('mouseleave', () => { S.highlight = -1; X.drawPlot(); });
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
    if (f.movedBy.length) lines.push(`moved by ${f.movedBy.map((r) => `x${r} ${S.channels[r]}`).join(', ')}`);
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

  Object.assign(X, { buildBars, slotTooltip, rangeBand, showTargets });
})();
