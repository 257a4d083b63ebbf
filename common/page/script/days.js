// The calendar as weeks and as an agenda, and the view that holds them all.

// Events of one day side by side where they overlap: { event, from, to, column, columns }.
function placedOn(day) {
  const placed = (occurrences.single.get(day) || []).filter((event) => data.events[event].minute !== undefined)
    .map((event) => {
      const { minute, length } = data.events[event];
      return { event, from: minute, to: Math.min(1440, minute + Math.max(length, 30)) };
    });
  let group = [];
  let end = -1;
  const finish = () => { const columns = Math.max(0, ...group.map((each) => each.column + 1)); for (const each of group) each.columns = columns; group = []; };
  for (const each of placed) {
    if (each.from >= end) finish();
    const taken = new Set(group.filter((other) => other.to > each.from).map((other) => other.column));
    each.column = 0;
    while (taken.has(each.column)) ++each.column;
    group.push(each);
    end = Math.max(end, each.to);
  }
  finish();
  return placed;
}

function weekColumn(day) {
  const column = el('div', { class: 'hours', 'aria-current': day === today && 'date' });
  for (const { event, from, to, column: at, columns } of placedOn(day)) {
    const block = eventButton(event, day);
    block.classList.add('block');
    block.style.top = `${from / 14.4}%`;
    block.style.height = `${(to - from) / 14.4}%`;
    block.style.left = `${at / columns * 100}%`;
    block.style.width = `${100 / columns}%`;
    if (data.events[event].place) block.append(said('small', null, data.events[event].place));
    column.append(block);
  }
  return column;
}

function weekGrid(day) {
  const monday = mondayOf(day);
  const days = [0, 1, 2, 3, 4, 5, 6].map((at) => monday + at);
  const lanes = lanesOf(monday);
  const heads = days.map((each) => el('div', { class: 'head', 'aria-current': each === today && 'date' },
    weekdayName(each), ' ', el('b', null, dateOf(each).getUTCDate())));
  const whole = days.map((each, at) => {
    const bars = Array.from(lanes[at], (span) => (span ? spanBar(span, each, monday) : el('span', { class: 'gap' })));
    const singles = (occurrences.single.get(each) || []).filter((event) => data.events[event].minute === undefined);
    return el('div', { class: 'whole' }, bars, singles.map((event) => eventButton(event, each)));
  });
  const hours = el('div', { class: 'scale', 'aria-hidden': 'true' });
  for (let hour = 1; hour < 24; ++hour) {
    const mark = el('span', null, clock(hour * 60));
    mark.style.top = `${hour / 0.24}%`;
    hours.append(mark);
  }
  return el('div', { class: 'week', tabindex: '0', role: 'group', 'aria-label': `Week ${weekNumber(monday)}` },
    el('div', { class: 'heads' }, el('div', { class: 'number' }, `W${weekNumber(monday)}`), heads),
    el('div', { class: 'wholes' }, el('div', null), whole),
    el('div', { class: 'grid' }, hours, days.map(weekColumn)));
}

// The days with events as one long list, from a day on; more of it as it is scrolled.
function agendaList(from, fits) {
  const days = occurrences.days(fits);
  let first = days.findIndex((day) => day >= from);
  if (first < 0) first = fits ? 0 : days.length;
  let end = first;
  const step = 40;
  const node = el('div', { class: 'agenda', tabindex: '0', role: 'group', 'aria-label': 'Agenda' });
  const earlier = el('button', { class: 'button', type: 'button', click: showEarlier }, 'Earlier');
  const last = el('div', { class: 'end' });

  const entry = (day) => ({ event, span }) => {
    const item = data.events[event];
    const time = item.minute === undefined ? 'all day' : clock(item.minute);
    const until = item.length && item.minute !== undefined && !span ? `–${clock(item.minute + item.length)}` : '';
    return el('li', null, el('button', { class: 'line', type: 'button', click: () => openEvent(event, span ? span.first : day) },
      el('time', null, span && span.first !== day ? 'goes on' : time + until), said('b', null, subjectOf(item)),
      item.place && said('span', 'second', item.place), item.repeats && el('span', { class: 'second' }, item.repeats)));
  };
  const section = (day) => el('section', { class: 'day', 'data-day': day, 'aria-current': day === today && 'date' }, el('h3', null, longDay(day)),
    el('ul', { class: 'entries' }, occurrences.on(day).filter(({ event }) => !fits || fits(event)).map(entry(day))));

  function showMore() {
    const to = Math.min(days.length, end + step);
    last.before(...days.slice(end, to).map(section));
    end = to;
    last.textContent = end < days.length ? '' : days.length === 0 ? (fits ? 'Nothing is found.' : 'No appointments.') : 'That is all.';
  }
  function showEarlier() {
    const to = first;
    first = Math.max(0, first - step);
    const before = node.scrollHeight - node.scrollTop;
    earlier.after(...days.slice(first, to).map(section));
    node.scrollTop = node.scrollHeight - before;
    earlier.hidden = first === 0;
  }

  earlier.hidden = first === 0;
  node.append(earlier);
  if (occurrences.undated.length > 0 && !fits) {
    node.append(el('section', { class: 'day' }, el('h3', null, 'Without a day'),
      el('ul', { class: 'entries' }, occurrences.undated.map((event) => el('li', null, eventButton(event))))));
  }
  node.append(last);
  showMore();
  new IntersectionObserver(([mark]) => { if (mark.isIntersecting && end < days.length) showMore(); }, { root: node, rootMargin: '800px' }).observe(last);
  return node;
}

function calendarView() {
  const kForms = { month: 'Month', week: 'Week', agenda: 'Agenda' };
  let form = 'month';
  let day = today;
  let query = '';
  const body = el('div', { class: 'calendar' });
  const range = el('p', { class: 'remark' }, `Series are shown from ${shortDay(data.from)} to ${shortDay(data.until)}.`);
  const node = el('div', { class: 'fill' }, body, range);

  const forms = Object.entries(kForms).map(([name, label]) => el('button', {
    type: 'button', 'data-form': name, title: `${label} (${label[0].toLowerCase()})`, click: () => go(name, day),
  }, label));
  const period = el('h3', { class: 'period', 'aria-live': 'polite' });
  const steps = [
    el('button', { type: 'button', 'aria-label': 'Previous', title: 'Previous (←)', click: () => move(-1) }, '‹'),
    el('button', { type: 'button', title: 'Today (t)', click: () => go(form, today) }, 'Today'),
    el('button', { type: 'button', 'aria-label': 'Next', title: 'Next (→)', click: () => move(1) }, '›'),
  ];
  const tools = [period, el('div', { class: 'segments', role: 'group', 'aria-label': 'Days' }, steps),
    el('div', { class: 'segments', role: 'group', 'aria-label': 'Form' }, forms)];

  function periodName() {
    if (form === 'week') return `${dayInYear(mondayOf(day))} – ${shortDay(mondayOf(day) + 6)}`;
    return form === 'month' ? monthName(day) : 'Agenda';
  }

  function draw() {
    occurrences.prepare();
    const fits = matcher(query);
    const words = (event) => fold([event.subject, event.place, event.note, ...(event.categories || [])].filter(Boolean).join('\n'));
    const found = fits && new Set(data.events.flatMap((event, place) => (fits(words(event)) ? [place] : [])));
    const shown = found ? 'agenda' : form;
    for (const button of forms) button.setAttribute('aria-pressed', String(button.dataset.form === shown));
    period.textContent = found ? 'Found' : periodName();
    if (shown === 'month') body.replaceChildren(monthTable(day));
    if (shown === 'week') body.replaceChildren(weekGrid(day));
    if (shown === 'agenda') body.replaceChildren(agendaList(found ? today : day, found && ((event) => found.has(event))));
    if (shown === 'week') body.firstChild.scrollTop = body.firstChild.scrollHeight * 7 / 24;
    if (found) say(counted(found.size, 'appointment', 'appointments'));
  }

  function go(newForm, newDay) {
    form = newForm in kForms ? newForm : 'month';
    day = Number.isFinite(newDay) ? Math.max(-25567, Math.min(376199, newDay)) : today;
    route('calendar', form, isoDay(day));
    draw();
  }

  function move(count) {
    go(form, form === 'month' ? monthsFrom(day, count) : day + count * (form === 'week' ? 7 : 28));
  }

  const kKeys = {
    ArrowLeft: () => move(-1), PageUp: () => move(-1), ArrowRight: () => move(1), PageDown: () => move(1),
    t: () => go(form, today), m: () => go('month', day), w: () => go('week', day), a: () => go('agenda', day),
  };

  return {
    node,
    tools,
    show([newForm, newDay]) {
      const asked = /^\d{4}-\d\d-\d\d$/.test(newDay || '') ? dayOf(Date.parse(newDay) / 1000) : day;
      form = newForm in kForms ? newForm : form;
      day = Number.isFinite(asked) ? asked : today;
      draw();
    },
    search(text) { query = text; draw(); },
    key(event) {
      if (!(event.key in kKeys)) return false;
      kKeys[event.key]();
      return true;
    },
    print: () => [el('h3', null, period.textContent), body.firstChild.cloneNode(true)],
  };
}
