// Tasks, calls, notes and storage.

function tasksView() {
  let query = '';
  const node = el('div', { class: 'page', tabindex: '0', role: 'group', 'aria-label': 'Tasks' });
  const kGroups = [
    ['Overdue', (task) => !task.done && task.due < today],
    ['Due within a week', (task) => !task.done && task.due >= today && task.due <= today + 7],
    ['Later', (task) => !task.done && task.due > today + 7],
    ['Without a day', (task) => !task.done && task.due === undefined],
    ['Done', (task) => task.done],
  ];

  function row(task) {
    const words = [task.due !== undefined && `due ${shortDay(task.due)}`, task.start !== undefined && task.start !== task.due && `from ${shortDay(task.start)}`,
      task.repeats, task.completed !== undefined && `done ${shortDay(task.completed)}`, task.private && 'private',
      task.reminder !== undefined && `reminder ${moment(task.reminder)}`].filter(Boolean);
    const late = !task.done && task.due < today;
    return el('li', { class: `task${task.done ? ' done' : ''}${late ? ' late' : ''}` },
      el('span', { class: 'box', role: 'img', 'aria-label': task.done ? 'Done' : 'Open' }),
      el('div', { class: 'two' },
        el('div', { class: 'first' }, said('span', null, subjectOf(task)),
          task.importance === 2 && el('span', { class: 'mark high' }, 'High'), task.importance === 0 && el('span', { class: 'mark' }, 'Low')),
        words.length > 0 && el('div', { class: 'second' }, words.join(' · ')),
        task.note && said('p', 'prose', task.note), task.categories && chips(task.categories)));
  }

  function update() {
    const fits = matcher(query);
    const shown = data.tasks.filter((task) => !fits || fits(fold([task.subject, task.note, ...(task.categories || [])].filter(Boolean).join('\n'))));
    const byDay = (a, b) => (a.due ?? Infinity) - (b.due ?? Infinity) || b.importance - a.importance;
    const groups = kGroups.map(([title, has]) => [title, shown.filter(has).sort((a, b) => byDay(a, b) || 0)]).filter(([, tasks]) => tasks.length > 0);
    node.replaceChildren(...groups.map(([title, tasks]) => el('section', { class: 'group' },
      el('h3', null, title, ' ', el('small', null, tasks.length)), el('ul', { class: 'tasks' }, tasks.map(row)))));
    if (shown.length === 0) node.append(empty(query ? 'Nothing is found.' : 'No tasks.'));
    say(counted(shown.length, 'task', 'tasks'));
  }

  return { node, search(text) { query = text; update(); }, start: update, print: () => [...node.cloneNode(true).children] };
}

function callsView() {
  const kKinds = [['Missed', '↙'], ['Incoming', '↙'], ['Outgoing', '↗']];
  let query = '';
  let shown = [];
  const list = new List({ label: 'Calls', rowHeight: 56, fill, open });
  const node = el('div', { class: 'page wide' }, list.node);

  const nameOf = ([, , , number, name, person]) => (person >= 0 ? data.people[person].name : name || number || 'Unknown');

  function lengthWords(seconds) {
    if (!seconds) return '';
    const hours = Math.floor(seconds / 3600);
    const minutes = Math.floor(seconds / 60) % 60;
    return hours > 0 ? `${hours} h ${two(minutes)} min` : minutes > 0 ? `${minutes} min ${two(seconds % 60)} s` : `${seconds} s`;
  }

  function cells(call) {
    const [time, length, kind, number, , , note] = call;
    const [word, sign] = kKinds[kind];
    const name = nameOf(call);
    return [el('span', { class: `sign kind${kind}`, 'aria-hidden': 'true' }, sign),
      el('span', { class: 'two' }, said('span', `first kind${kind}`, name),
        el('span', { class: 'second' }, word, name !== number && number && [' · ', said('bdi', null, number)], note && [' · ', said('bdi', null, note)])),
      el('span', { class: 'aside' }, el('time', null, time === null ? 'Without a time' : `${shortDay(dayOf(time))}, ${clockOf(time)}`), el('span', null, lengthWords(length)))];
  }

  function fill(row, call) { row.append(...cells(call)); }
  function open(call) { if (call[5] >= 0) location.hash = `#people/${call[5]}`; }

  function update() {
    const fits = matcher(query);
    shown = data.calls.filter((call) => !fits || fits(fold([nameOf(call), call[4], call[3], call[3].replace(/[^\d+]/g, ''), kKinds[call[2]][0], call[6]].join('\n'))));
    list.show(shown, query ? 'Nothing is found.' : 'No calls.');
    say(counted(shown.length, 'call', 'calls'));
  }

  return { node, search(text) { query = text; update(); }, focus: list.node, start: update, print: () => shown.map((call) => el('div', { class: 'row' }, cells(call))) };
}

function notesView() {
  let query = '';
  let current;
  const list = new List({ label: 'Notes', rowHeight: 60, fill, open });
  const { node, detail } = pair(list, null, 'Note');
  const nameOf = (note) => note.path.slice(note.path.lastIndexOf('\\') + 1);

  function fill(row, note) {
    row.append(el('span', { class: 'two' }, said('span', 'first', nameOf(note)), said('span', 'second', note.text.trim().slice(0, 200))));
  }
  const card = (note) => el('article', { class: 'card' }, said('h3', null, nameOf(note)), said('p', 'subtitle', note.path), said('p', 'prose', note.text));
  function open(note) {
    node.classList.add('opened');
    current = note;
    route('notes', data.notes.indexOf(note));
    detail.replaceChildren(card(note));
  }
  function update() {
    const fits = matcher(query);
    const shown = data.notes.filter((note) => !fits || fits(fold(`${note.path}\n${note.text}`)));
    list.show(shown, query ? 'Nothing is found.' : 'No notes.');
    current = undefined;
    detail.replaceChildren(empty(shown.length ? 'Choose a note.' : ''));
    say(counted(shown.length, 'note', 'notes'));
  }
  return {
    node,
    show([place]) { if (place !== undefined && data.notes[place] !== current) list.choose(list.items.indexOf(data.notes[place])); },
    search(text) { query = text; update(); },
    focus: list.node,
    start: update,
    print: () => (current ? [current] : list.items).map(card),
  };
}

function storageView() {
  const kUnits = ['bytes', 'KB', 'MB', 'GB', 'TB'];
  function size(bytes) {
    let unit = 0;
    let value = bytes;
    for (; value >= 1024 && unit < kUnits.length - 1; ++unit) value /= 1024;
    return `${unit === 0 || value >= 100 ? Math.round(value) : value.toFixed(1)} ${kUnits[unit]}`;
  }
  const bars = data.volumes.map(({ name, total, free }) => {
    const part = total > 0 ? (total - free) / total : 0;
    const filled = el('span');
    filled.style.width = `${part * 100}%`;
    return el('section', { class: 'volume' }, said('h3', null, name),
      el('div', { class: 'meter', role: 'meter', 'aria-label': `${name}, used`, 'aria-valuemin': 0, 'aria-valuemax': 100, 'aria-valuenow': Math.round(part * 100) }, filled),
      el('p', { class: 'second' }, `${size(total - free)} used of ${size(total)}, ${size(free)} free`));
  });
  const node = el('div', { class: 'page', tabindex: '0', role: 'group', 'aria-label': 'Storage' }, bars);
  return { node, print: () => [...node.cloneNode(true).children] };
}
