// The memory panel: what the hand remembers between samples (Hand.memory()), its pinch latches,
// thumb references and the last finite reading of each channel.
(function () {
  'use strict';

  const X = window.QuilExplorer;
  const { $, el, shown, S } = X;

  function buildMemory() {
    const box = $('memory');
    box.innerHTML = '';
    const parts = {};
    if (S.info.keepsState) {
      parts.latches = [0, 1, 2, 3].map((i) => el('span', { class: 'latch', id: `latch-${i}` },
        el('span', { class: 'dot' }), i === 0 ? 'index pinch' : i === 1 ? 'middle pinch' : `latch ${i}`));
      parts.thumb1 = el('span', { class: 'mono', id: 'thumb1-ref' }, '–');
      parts.thumb2 = el('span', { class: 'mono', id: 'thumb2-ref' }, '–');
      box.append(
        el('div', { class: 'memory-block' }, el('h4', {}, 'Pinch latches'), el('div', { class: 'latches' }, ...parts.latches)),
        el('div', { class: 'memory-block refs' }, el('h4', {}, 'Thumb references'),
          el('div', {}, el('span', { class: 'muted' }, 'ref 1 '), parts.thumb1),
          el('div', {}, el('span', { class: 'muted' }, 'ref 2 '), parts.thumb2)));
    } else {
      box.append(el('p', { class: 'muted' }, 'This hand keeps no pinch memory: every sample maps on its own.'));
    }
    parts.held = [];
    const grid = el('div', { class: 'held' });
    for (let i = 0; i < 12; i++) {
      const v = el('span', { class: 'mono' }, '–');
      const cell = el('div', { class: 'held-cell', id: `held-${i}` }, el('span', { class: 'muted' }, `x${i}`), v);
      parts.held.push({ cell, v });
      grid.append(cell);
    }
    box.append(el('div', { class: 'memory-block' },
      el('h4', {}, 'Last finite reading per channel ', el('span', { class: 'muted' }, '(what “hold last” sends)')), grid));
    S.memory = parts;
  }

  // A handle's memory (Hand.memory()) in the panel.
  function showMemory(memory) {
    const m = S.memory;
    if (m.latches) {
      memory.pinchLatches.forEach((on, i) => m.latches[i].classList.toggle('on', on));
      [m.thumb1, m.thumb2].forEach((cell, i) => {
        cell.textContent = shown(memory.thumbReferences[i]);
        cell.dataset.value = QuilSession.formatNumber(memory.thumbReferences[i]);
      });
    }
    memory.heldReadings.forEach((v, i) => {
      m.held[i].v.textContent = shown(v, 1);
      m.held[i].v.dataset.value = QuilSession.formatNumber(v);
      m.held[i].cell.classList.toggle('dropped', S.dropped[i]);
    });
  }

  Object.assign(X, { buildMemory, showMemory });
})();
