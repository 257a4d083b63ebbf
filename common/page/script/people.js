// People: all of them, by name, word or category.
function peopleView() {
  const order = data.people.map((person, place) => ({ person, place }));
  const sorter = new Intl.Collator('en', { numeric: true });
  for (const each of order) each.sort = each.person.sort || each.person.name;
  order.sort((a, b) => sorter.compare(a.sort, b.sort));
  let query = '';
  let category = '';
  let shown = [];

  const list = new List({ label: 'People', rowHeight: 60, fill, open });
  const filter = el('div', { class: 'filter', role: 'group', 'aria-label': 'Categories' });
  const { node, detail } = pair(list, filter, 'Person');

  const counts = new Map();
  for (const { categories } of data.people) for (const name of categories || []) counts.set(name, (counts.get(name) || 0) + 1);
  for (const name of [...counts.keys()].sort(sorter.compare)) {
    filter.append(el('button', {
      class: 'chip', type: 'button', 'aria-pressed': 'false', 'data-category': name,
      click: () => choose(category === name ? '' : name),
    }, said('span', null, name), ' ', el('small', null, counts.get(name))));
  }

  function choose(name) {
    category = name;
    for (const button of filter.children) button.setAttribute('aria-pressed', String(button.dataset.category === name));
    update();
  }

  function folded(each) {
    if (each.folded === undefined) {
      const { person } = each;
      const labelled = [...(person.numbers || []), ...(person.emails || []), ...(person.addresses || []), ...(person.more || [])];
      const values = labelled.map((pairOfTexts) => pairOfTexts[1]);
      const digits = (person.numbers || []).map(([, number]) => number.replace(/[^\d+]/g, ''));
      each.folded = fold([person.name, person.sort, person.line, person.note, person.web,
        ...(person.categories || []), ...values, ...digits].filter(Boolean).join('\n'));
    }
    return each.folded;
  }

  function update() {
    const fits = matcher(query);
    shown = order.filter((each) => (!fits || fits(folded(each)))
      && (!category || (each.person.categories || []).includes(category)));
    list.show(shown, query || category ? 'Nobody is found.' : 'No people.');
    detail.replaceChildren(empty(shown.length ? 'Choose a person.' : ''));
    say(counted(shown.length, 'person', 'people'));
  }

  const letterOf = (each) => (each.sort[0] || '').normalize('NFD')[0]?.toUpperCase() || '';

  function fill(row, each, place) {
    const letter = letterOf(each);
    const first = place === 0 || letterOf(shown[place - 1]) !== letter;
    const [numbers] = each.person.numbers || [];
    const [mail] = each.person.emails || [];
    row.append(el('span', { class: 'letter', 'aria-hidden': 'true' }, first ? letter : ''),
      el('span', { class: 'two' }, said('span', 'first', each.person.name),
        said('span', 'second', each.person.line || (numbers || mail || ['', ''])[1])));
  }

  function open(each) {
    route('people', each.place);
    node.classList.add('opened');
    detail.replaceChildren(card(each.person, each.place));
    detail.scrollTop = 0;
  }

  function thread(place) {
    const found = data.threads.findIndex((each) => each.people?.length === 1 && each.people[0] === place);
    if (found < 0) return null;
    const { length } = data.threads[found].messages;
    return el('a', { class: 'button', href: `#messages/${found}` }, counted(length, 'message', 'messages'));
  }

  const link = (href, text) => el('a', { href, dir: 'auto', rel: 'noreferrer' }, text);
  const numberLink = (number) => link(`tel:${encodeURIComponent(number.replace(/[^\d+*#]/g, ''))}`, number);
  const webLink = (address) => (/^https?:\/\//i.test(address) ? link(address, address) : address);

  function card(person, place) {
    return el('article', { class: 'card' },
      said('h3', null, person.name),
      person.line && said('p', 'subtitle', person.line),
      person.categories && chips(person.categories),
      place !== undefined && thread(place),
      facts((person.numbers || []).map(([label, value]) => [label, numberLink(value)])),
      facts([...(person.emails || []).map(([label, value]) => [label, link(`mailto:${encodeURIComponent(value).replace('%40', '@')}`, value)]),
        ['Web', person.web && webLink(person.web)]]),
      facts(person.addresses || []),
      facts(person.more || []),
      person.note && el('div', { class: 'facts' }, el('h4', null, 'Note'), said('p', 'prose', person.note)));
  }

  return {
    node,
    show([place]) {
      if (query || category) choose('');
      const found = place === undefined ? -1 : shown.findIndex((each) => each.place === Number(place));
      if (found >= 0) list.choose(found);
    },
    search(text) { query = text; update(); },
    focus: list.node,
    print: () => shown.map((each) => card(each.person)),
    start: update,
  };
}
