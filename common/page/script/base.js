'use strict';
// The page's data (see page_data.h), and the few tools that every view is made with. Whatever the
// data say becomes text and never markup: elements are made by el() alone.
const data = JSON.parse(document.getElementById('data').textContent);

const byId = (id) => document.getElementById(id);

// Children are elements or texts; what is null, undefined or empty is left out.
function el(tag, attributes, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes || {})) {
    if (value === false || value === undefined || value === null) continue;
    if (typeof value === 'function') node.addEventListener(name, value);
    else node.setAttribute(name, value === true ? '' : value);
  }
  node.append(...children.flat().filter((child) => child || child === 0));
  return node;
}

// A text of the data's, in its own direction.
const said = (tag, className, text) => el(tag, { class: className, dir: 'auto' }, text);

const kIcons = {
  people: 'M10 9.6a3.1 3.1 0 1 0 0-6.2 3.1 3.1 0 0 0 0 6.2ZM3.9 16.6c.6-2.9 3-4.5 6.1-4.5s5.5 1.6 6.1 4.5',
  calendar: 'M3.5 5h13v11.5h-13zM3.5 8.5h13M7 3v3.5M13 3v3.5',
  tasks: 'M3.5 3.5h13v13h-13zM6.7 10.2l2.3 2.3 4.4-4.9',
  messages: 'M3.5 4h13v9h-7.2L5.7 16.5V13H3.5z',
  calls: 'M6.4 3.4 4 5c-.3 3.1.8 6 3.2 8.4s5.3 3.5 8.4 3.2l1.6-2.4-3.3-2.3-1.7 1.3c-1.9-.9-3.3-2.3-4.2-4.2l1.3-1.7z',
  notes: 'M5 3.3h6.8l3.4 3.4v10H5zM11.8 3.3v3.4h3.4M7.5 10.2h5M7.5 13.2h5',
  storage: 'M3.5 4.5h13v4.5h-13zM3.5 11h13v4.5h-13zM6 6.75h1M6 13.25h1',
};

function icon(name) {
  const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
  svg.setAttribute('viewBox', '0 0 20 20');
  svg.setAttribute('aria-hidden', 'true');
  const path = document.createElementNS('http://www.w3.org/2000/svg', 'path');
  path.setAttribute('d', kIcons[name]);
  svg.append(path);
  return svg;
}

// Times are those of the handheld's zone: days since 1970 and seconds since then, by its clock.
const kDay = 86400;
const dayOf = (seconds) => Math.floor(seconds / kDay);
const today = dayOf(data.now);
const dateOf = (day) => new Date(day * kDay * 1000);

function dayWriter(options) {
  const format = new Intl.DateTimeFormat('en-GB', { timeZone: 'UTC', ...options });
  return (day) => format.format(dateOf(day)).replace(',', '');
}
const longDay = dayWriter({ weekday: 'long', day: 'numeric', month: 'long', year: 'numeric' });
const shortDay = dayWriter({ day: 'numeric', month: 'short', year: 'numeric' });
const dayInYear = dayWriter({ day: 'numeric', month: 'short' });
const weekdayName = dayWriter({ weekday: 'short' });
const monthName = dayWriter({ month: 'long', year: 'numeric' });
const isoDay = (day) => dateOf(day).toISOString().slice(0, 10);
const yearOf = (day) => dateOf(day).getUTCFullYear();

const two = (number) => String(number).padStart(2, '0');
const clock = (minute) => `${two(Math.floor(minute / 60) % 24)}:${two(minute % 60)}`;
const clockOf = (seconds) => clock(Math.floor((seconds - dayOf(seconds) * kDay) / 60));

// Short, as it stands in a list: the time today, the day in this year.
function moment(seconds) {
  if (seconds === null) return '';
  const day = dayOf(seconds);
  if (day === today) return clockOf(seconds);
  return yearOf(day) === yearOf(today) ? dayInYear(day) : shortDay(day);
}

const counted = (count, one, many) => `${count.toLocaleString('en-GB')} ${count === 1 ? one : many}`;

// As texts are searched: without marks above letters, and whatever their case.
const fold = (text) => text.normalize('NFD').replace(/\p{M}/gu, '').toLowerCase();

// Whether a folded text has every word of the query; anything has those of an empty one.
function matcher(query) {
  const words = fold(query).split(/\s+/).filter(Boolean);
  return words.length === 0 ? null : (folded) => words.every((word) => folded.includes(word));
}

// The text with what was searched for marked in it, where it can be found as it is written.
function marked(text, query) {
  const word = query.trim().toLowerCase();
  const lower = text.toLowerCase();
  if (!word || lower.length !== text.length) return [text];
  const parts = [];
  let at = 0;
  for (let found = lower.indexOf(word); found >= 0; found = lower.indexOf(word, at)) {
    parts.push(text.slice(at, found), el('mark', null, text.slice(found, found + word.length)));
    at = found + word.length;
  }
  parts.push(text.slice(at));
  return parts;
}

const say = (text) => { byId('status').textContent = text; };

const empty = (text) => el('p', { class: 'empty' }, text);

const chips = (names) => el('ul', { class: 'chips', 'aria-label': 'Categories' },
  (names || []).map((name) => el('li', null, said('span', 'chip', name))));

// A fact for each pair that has a value.
const facts = (pairs) => el('dl', { class: 'facts' }, pairs.filter(([, value]) => value)
  .map(([label, value]) => el('div', null, el('dt', null, label),
    typeof value === 'string' ? said('dd', null, value) : el('dd', { dir: 'auto' }, value))));

function openSheet(title, ...content) {
  const sheet = byId('sheet');
  const close = el('button', { class: 'close', type: 'button', 'aria-label': 'Close', click: () => sheet.close() }, '×');
  sheet.replaceChildren(close, el('h3', { id: 'sheet-heading', dir: 'auto' }, title), ...content.filter(Boolean));
  if (!sheet.open) sheet.showModal();
}
byId('sheet').addEventListener('click', (event) => {
  if (event.target === byId('sheet')) byId('sheet').close();
});
