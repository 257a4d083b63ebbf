// A list of any length: only the rows that can be seen are there.
class List {
  // `fill(row, item, place)` makes a row's content; `open(item, place)` is what choosing it does.
  constructor({ label, rowHeight, fill, open }) {
    this.rowHeight = rowHeight;
    this.fill = fill;
    this.open = open;
    this.items = [];
    this.rows = new Map();
    this.chosen = -1;
    this.id = `list${List.count = (List.count || 0) + 1}`;
    this.space = el('div', { class: 'space', role: 'presentation' });
    this.node = el('div', {
      class: 'list', role: 'listbox', tabindex: '0', 'aria-label': label,
      scroll: () => this.draw(), keydown: (event) => this.key(event),
    }, this.space);
    new ResizeObserver(() => this.draw()).observe(this.node);
  }

  show(items, emptyText) {
    this.items = items;
    this.chosen = -1;
    this.rows.clear();
    this.space.replaceChildren();
    this.space.style.height = `${items.length * this.rowHeight}px`;
    if (items.length === 0) this.space.append(empty(emptyText));
    this.node.scrollTop = 0;
    this.node.removeAttribute('aria-activedescendant');
    this.draw();
  }

  draw() {
    const extra = 8;
    const height = this.node.clientHeight || 800;
    const first = Math.max(0, Math.floor(this.node.scrollTop / this.rowHeight) - extra);
    const end = Math.min(this.items.length, Math.ceil((this.node.scrollTop + height) / this.rowHeight) + extra);
    for (const [place, row] of this.rows) {
      if (place >= first && place < end) continue;
      row.remove();
      this.rows.delete(place);
    }
    for (let place = first; place < end; ++place) if (!this.rows.has(place)) this.add(place);
  }

  add(place) {
    const row = el('div', {
      class: 'row', role: 'option', id: `${this.id}-${place}`, 'aria-posinset': place + 1,
      'aria-setsize': this.items.length, 'aria-selected': String(place === this.chosen),
      click: () => { this.choose(place); this.node.focus({ preventScroll: true }); },
    });
    row.style.top = `${place * this.rowHeight}px`;
    row.style.height = `${this.rowHeight}px`;
    this.fill(row, this.items[place], place);
    this.rows.set(place, row);
    this.space.append(row);
  }

  // Marks a row, brings it into sight, and opens it unless that is done already.
  choose(place, opened) {
    if (place < 0 || place >= this.items.length) return;
    const before = this.rows.get(this.chosen);
    if (before) before.setAttribute('aria-selected', 'false');
    this.chosen = place;
    const top = place * this.rowHeight;
    const room = this.node.clientHeight;
    if (top < this.node.scrollTop) this.node.scrollTop = top;
    else if (room && top + this.rowHeight > this.node.scrollTop + room) this.node.scrollTop = top + this.rowHeight - room;
    this.draw();
    const row = this.rows.get(place);
    if (row) row.setAttribute('aria-selected', 'true');
    this.node.setAttribute('aria-activedescendant', `${this.id}-${place}`);
    if (!opened) this.open(this.items[place], place);
  }

  key(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const page = Math.max(1, Math.floor(this.node.clientHeight / this.rowHeight) - 1);
    const last = this.items.length - 1;
    const moves = {
      ArrowDown: this.chosen + 1, ArrowUp: Math.max(0, this.chosen - 1), PageDown: this.chosen + page,
      PageUp: this.chosen - page, Home: 0, End: last, Enter: this.chosen,
    };
    if (!(event.key in moves)) return;
    event.preventDefault();
    event.stopPropagation();
    this.choose(Math.max(0, Math.min(last, moves[event.key])));
  }
}

// A list beside what is chosen in it; on a narrow screen one of the two.
function pair(list, above, detailLabel) {
  const detail = el('section', { class: 'detail', tabindex: '0', 'aria-label': detailLabel });
  const back = el('button', { class: 'back', type: 'button', click: () => node.classList.remove('opened') }, '‹ Back');
  const side = el('div', { class: 'pane' }, back, detail);
  const node = el('div', { class: 'pair' }, el('div', { class: 'index' }, above, list.node), side);
  return { node, detail };
}
