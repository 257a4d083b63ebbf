// The page as a whole: its views, the way between them, search, keys and print.
const kViews = [
  { name: 'people', title: 'People', count: data.people.length, make: peopleView },
  { name: 'calendar', title: 'Calendar', count: data.events.length, make: calendarView },
  { name: 'tasks', title: 'Tasks', count: data.tasks.filter((task) => !task.done).length, make: tasksView },
  { name: 'messages', title: 'Messages', count: data.threads.reduce((sum, thread) => sum + thread.messages.length, 0), make: messagesView },
  { name: 'calls', title: 'Calls', count: data.calls.length, make: callsView },
  // A folder of the desk has neither.
  { name: 'notes', title: 'Notes', count: data.notes.length, make: notesView, absent: data.notes.length + data.volumes.length === 0 },
  { name: 'storage', title: 'Storage', make: storageView, absent: data.volumes.length === 0, still: true },
].filter((view) => !view.absent);
let view = null;

// Where the page stands, without going there.
function route(...words) {
  history.replaceState(null, '', `#${words.join('/')}`);
}

function goTo(name, words) {
  const chosen = kViews.find((each) => each.name === name) || kViews[0];
  const fresh = !chosen.made;
  chosen.made = chosen.made || chosen.make();
  if (view !== chosen) {
    const searched = !fresh && byId('search').value !== '';
    if (searched && view && !view.still) view.made.search('');
    view = chosen;
    byId('search').value = '';
    for (const link of byId('views').querySelectorAll('a')) link.toggleAttribute('aria-current', link.hash === `#${view.name}`);
    for (const link of byId('views').querySelectorAll('a[aria-current]')) link.setAttribute('aria-current', 'page');
    byId('heading').textContent = view.title;
    byId('tools').replaceChildren(...(view.made.tools || []));
    byId('search').parentNode.hidden = Boolean(view.still);
    byId('search').placeholder = `Search ${view.title.toLowerCase()}`;
    byId('view').replaceChildren(view.made.node);
    if (fresh && view.made.start) view.made.start();
  }
  if (view.made.show) view.made.show(words);
}

function goByHash() {
  const [name, ...words] = decodeURIComponent(location.hash.slice(1)).split('/');
  goTo(name, words);
}

function search() {
  if (view.made.search) view.made.search(byId('search').value);
}

const kHelp = [['1 – 7', 'The views'], ['/', 'Search'], ['Esc', 'Ends the search'], ['↑ ↓', 'Through a list'],
  ['← →', 'Earlier and later in the calendar'], ['t', 'Today'], ['m, w, a', 'Month, week, agenda'], ['?', 'These keys']];

function key(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || byId('sheet').open) return;
  if (event.target === byId('search')) {
    if (event.key === 'Escape') { byId('search').value = ''; search(); byId('search').blur(); }
    if (event.key === 'Enter' || event.key === 'ArrowDown') { (view.made.focus || byId('view').firstChild).focus(); event.preventDefault(); }
    return;
  }
  const place = Number(event.key) - 1;
  if (event.key === '/') byId('search').focus();
  else if (event.key === '?') openSheet('Keys', facts(kHelp));
  else if (event.key === 'Escape') byId('view').querySelector('.opened')?.classList.remove('opened');
  else if (kViews[place]) location.hash = `#${kViews[place].name}`;
  else if (!view.made.key || !view.made.key(event)) return;
  event.preventDefault();
}

function start() {
  byId('name').textContent = data.name || 'Handheld';
  byId('owner').textContent = data.owner || '';
  byId('as-of').append('As of ', el('time', null, `${shortDay(today)}, ${clockOf(data.now)}`), el('br'), data.zone || '');
  for (const remark of data.remarks || []) byId('as-of').append(said('span', 'remark', remark));
  byId('views').append(...kViews.map(({ name, title, count }, place) => el('li', null,
    el('a', { href: `#${name}`, 'aria-keyshortcuts': place + 1 }, icon(name), el('span', null, title),
      count !== undefined && el('small', null, count.toLocaleString('en-GB'))))));
  byId('skip').addEventListener('click', (event) => { event.preventDefault(); byId('main').focus(); });
  byId('search').addEventListener('input', search);
  document.addEventListener('keydown', key);
  window.addEventListener('hashchange', goByHash);
  window.addEventListener('beforeprint', () => byId('print').replaceChildren(el('h2', null, view.title), ...view.made.print()));
  window.addEventListener('afterprint', () => byId('print').replaceChildren());
  goByHash();
}

start();
