// The calendar: which events lie on which days. Events with several days stand on each of them.
const occurrences = {
  // Made when the calendar is looked at for the first time.
  prepare() {
    if (this.single) return;
    this.single = new Map();
    this.spans = [];
    this.undated = [];
    data.events.forEach((event, place) => {
      const span = spanOf(event);
      let day = 0;
      if (event.days.length === 0 && !event.repeats) this.undated.push(place);
      for (const step of event.days) {
        day += step;
        if (span > 1) this.spans.push({ first: day, last: day + span - 1, event: place });
        else if (this.single.has(day)) this.single.get(day).push(place);
        else this.single.set(day, [place]);
      }
    });
    this.spans.sort((a, b) => a.first - b.first || b.last - a.last);
    const byTime = (a, b) => (data.events[a].minute ?? -1) - (data.events[b].minute ?? -1);
    for (const events of this.single.values()) events.sort(byTime);
  },

  spansIn(first, last) {
    return this.spans.filter((span) => span.first <= last && span.last >= first);
  },

  // The events of a day, those of several days first: { event, span }.
  on(day) {
    return [...this.spansIn(day, day).map((span) => ({ event: span.event, span })),
      ...(this.single.get(day) || []).map((event) => ({ event }))];
  },

  // Every day with an event, or with one of those that are let through, in order.
  days(fits) {
    const days = new Set();
    for (const [day, events] of this.single) if (!fits || events.some(fits)) days.add(day);
    for (const span of this.spans) {
      if (fits && !fits(span.event)) continue;
      // One that takes longer than a year stands on its first days.
      for (let day = span.first; day <= Math.min(span.last, span.first + 366); ++day) days.add(day);
    }
    return [...days].sort((a, b) => a - b);
  },
};

// How many days an event takes.
function spanOf(event) {
  if (event.minute === undefined) return event.length || 1;
  return Math.max(1, Math.ceil((event.minute + event.length) / 1440));
}

const mondayOf = (day) => day - ((day + 3) % 7 + 7) % 7;
const firstOfMonth = (day) => day - dateOf(day).getUTCDate() + 1;
function monthsFrom(day, count) {
  const date = dateOf(day);
  return Math.floor(Date.UTC(date.getUTCFullYear(), date.getUTCMonth() + count, 1) / 1000 / kDay);
}
function weekNumber(monday) {
  const thursday = monday + 3;
  const newYear = Math.floor(Date.UTC(yearOf(thursday), 0, 1) / 1000 / kDay);
  return Math.floor((thursday - newYear) / 7) + 1;
}

function timesOf(event, day) {
  if (event.minute === undefined) {
    const last = day + (event.length || 1) - 1;
    return last > day ? `${longDay(day)} to ${longDay(last)}` : `${longDay(day)}, all day`;
  }
  const end = event.minute + event.length;
  const later = Math.floor(end / 1440);
  const from = `${longDay(day)}, ${clock(event.minute)}`;
  if (event.length === 0) return from;
  return later > 0 && end !== 1440 ? `${from} to ${longDay(day + later)}, ${clock(end)}` : `${from}–${clock(end)}`;
}

const kBusyWords = ['Free', 'Tentative', 'Busy', 'Out of office'];
const subjectOf = (item) => item.subject || 'Untitled';

function reminderWords(minutes) {
  if (minutes === undefined) return '';
  if (minutes <= 0) return minutes === 0 ? 'At the start' : `${-minutes} minutes after the start`;
  if (minutes % 1440 === 0) return counted(minutes / 1440, 'day before', 'days before');
  return minutes % 60 === 0 ? counted(minutes / 60, 'hour before', 'hours before') : counted(minutes, 'minute before', 'minutes before');
}

function eventFacts(event, day) {
  return facts([
    ['When', day === undefined ? 'Without a day' : timesOf(event, day)],
    ['Where', event.place],
    ['Repeats', event.repeats],
    ['Instead of', event.instead !== undefined && longDay(event.instead)],
    ['Not shown', event.earlier && counted(event.earlier, 'earlier day of the series', 'earlier days of the series')],
    ['Shown as', kBusyWords[event.busy] || String(event.busy)],
    ['Reminder', reminderWords(event.reminder)],
    ['Private', event.private && 'Yes'],
  ]);
}

function openEvent(place, day) {
  const event = data.events[place];
  openSheet(subjectOf(event), event.categories && chips(event.categories), eventFacts(event, day),
    event.note && said('p', 'prose', event.note));
}

// As it stands in a month or a week. `first` is the day on which it began.
function eventButton(place, first, label) {
  const event = data.events[place];
  const time = event.minute === undefined ? '' : clock(event.minute);
  return el('button', {
    class: `event busy${event.busy in kBusyWords ? event.busy : 2}`, type: 'button', click: () => openEvent(place, first),
  }, time && el('time', null, time), ' ', said('span', null, label || subjectOf(event)));
}

function openDay(day) {
  openSheet(longDay(day), el('ul', { class: 'entries' }, occurrences.on(day)
    .map(({ event, span }) => el('li', null, eventButton(event, span ? span.first : day)))));
}

const kLanes = 4;  // events that a day of the month has room for

// Where the spans of a week stand, so that each is a bar: the lanes of each of its days.
function lanesOf(monday) {
  const lanes = Array.from({ length: 7 }, () => []);
  for (const span of occurrences.spansIn(monday, monday + 6)) {
    const from = Math.max(0, span.first - monday);
    const to = Math.min(6, span.last - monday);
    let lane = 0;
    while (lanes.slice(from, to + 1).some((day) => day[lane])) ++lane;
    for (let day = from; day <= to; ++day) lanes[day][lane] = span;
  }
  return lanes;
}

function spanBar(span, day, monday) {
  const starts = span.first === day;
  const label = starts || day === monday;
  const bar = eventButton(span.event, span.first);
  bar.classList.add('bar-part');
  bar.classList.toggle('goes-on', !starts);
  bar.classList.toggle('goes-further', span.last !== day);
  if (!label) { bar.classList.add('quiet'); bar.tabIndex = -1; bar.setAttribute('aria-hidden', 'true'); }
  return bar;
}

function dayCell(day, month, spans, monday) {
  const singles = occurrences.single.get(day) || [];
  const rows = spans.slice(0, kLanes).map((span) => el('li', null, span ? spanBar(span, day, monday) : el('span', { class: 'gap' })));
  const hidden = spans.slice(kLanes).filter(Boolean).length;
  const free = [...rows.keys()].filter((lane) => !spans[lane]);
  const rest = [];
  for (const event of singles) {
    const entry = el('li', null, eventButton(event, day));
    const lane = free.shift();
    if (lane !== undefined) rows[lane] = entry;
    else if (rows.length < kLanes) rows.push(entry);
    else rest.push(event);
  }
  const left = hidden + rest.length;
  if (left > 0) rows.push(el('li', null, el('button', { class: 'more', type: 'button', click: () => openDay(day) }, `${left} more`)));
  const number = el('time', { datetime: isoDay(day), 'aria-label': longDay(day) }, dateOf(day).getUTCDate());
  const other = dateOf(day).getUTCMonth() !== month;
  return el('td', { class: other ? 'other' : '', 'aria-current': day === today && 'date' }, number, rows.length > 0 && el('ul', null, rows));
}

function monthTable(day) {
  const first = firstOfMonth(day);
  const month = dateOf(first).getUTCMonth();
  const end = monthsFrom(first, 1);
  const weeks = [];
  for (let monday = mondayOf(first); monday < end; monday += 7) {
    const lanes = lanesOf(monday);
    weeks.push(el('tr', null, el('th', { scope: 'row', title: 'Week' }, weekNumber(monday)),
      lanes.map((spans, at) => dayCell(monday + at, month, Array.from(spans), monday))));
  }
  const head = el('tr', null, el('th', { scope: 'col' }, el('span', { class: 'unseen' }, 'Week')),
    [0, 1, 2, 3, 4, 5, 6].map((at) => el('th', { scope: 'col' }, weekdayName(mondayOf(first) + at))));
  return el('table', { class: 'month' }, el('caption', { class: 'unseen' }, monthName(first)), el('thead', null, head), el('tbody', null, weeks));
}
