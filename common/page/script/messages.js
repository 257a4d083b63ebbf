// Messages: a thread a person, as bubbles by day. Of a long one only a part is there at a time.

const kMessageType = { received: 1, sent: 2, draft: 3, onItsWay: 4, failed: 5 };
const kStateWords = { 3: 'Draft', 4: 'On its way', 5: 'Not sent' };
const kUsualFolders = ['/Inbox', '/Outbox', '/Sent Items', '/Drafts'];

function threadName(thread) {
  const names = [...(thread.people || []).map((place) => data.people[place].name), ...(thread.names || [])];
  return names.join(', ') || 'Unknown';
}

const initials = (name) => {
  const words = name.split(/[\s,.+\d()-]+/u).filter((word) => /^\p{L}/u.test(word));
  const letters = words.length > 1 ? [words[0], words[words.length - 1]] : words;
  return letters.map((word) => [...word][0]).join('').toUpperCase() || '#';
};
const avatar = (name) => el('span', { class: 'avatar', 'aria-hidden': 'true' }, initials(name));

function bubble([time, type, text, bits, folder], query) {
  const mine = type !== kMessageType.received;
  const notes = [kStateWords[type], bits & 1 && 'Unread', bits & 2 && 'With an attachment',
    !kUsualFolders.includes(folder) && folder].filter(Boolean);
  return el('li', { class: `bubble ${mine ? 'mine' : 'theirs'}${type in kStateWords ? ' waits' : ''}` },
    el('span', { class: 'unseen' }, mine ? 'I wrote:' : 'They wrote:'),
    el('p', { dir: 'auto' }, marked(text, query)),
    el('small', { dir: 'auto' }, [time !== null && clockOf(time), ...notes].filter(Boolean).join(' · ')));
}

// `messages` in sections, a day each.
function bubblesByDay(messages, query) {
  const sections = [];
  let last;
  for (const message of messages) {
    const day = message[0] === null ? null : dayOf(message[0]);
    if (sections.length === 0 || day !== last) {
      sections.push(el('section', { class: 'talk' }, el('h4', null, day === null ? 'Without a time' : longDay(day)), el('ol')));
    }
    last = day;
    sections[sections.length - 1].lastChild.append(bubble(message, query));
  }
  return sections;
}

// Shows the part of a thread that is looked at, and more of it where its ends come near.
class Talk {
  constructor() {
    this.above = el('div', { class: 'edge' });
    this.below = el('div', { class: 'edge' });
    this.node = el('div', { class: 'talks', tabindex: '0', role: 'group', 'aria-label': 'Messages' });
    const watcher = new IntersectionObserver((marks) => {
      for (const mark of marks) if (mark.isIntersecting) this.grow(mark.target === this.above);
    }, { root: this.node, rootMargin: '600px' });
    this.watch = () => { for (const edge of [this.above, this.below]) { watcher.unobserve(edge); watcher.observe(edge); } };
    this.messages = [];
  }

  // From the newest message on upwards, or from the oldest on.
  show(messages, query, oldest) {
    this.messages = messages;
    this.query = query;
    this.first = this.end = oldest ? 0 : messages.length;
    this.node.replaceChildren(this.above, this.below);
    this.grow(!oldest);
    this.node.scrollTop = oldest ? 0 : this.node.scrollHeight;
  }

  grow(upwards) {
    const step = 120;
    if (upwards && this.first > 0) {
      const from = Math.max(0, this.first - step);
      const fromBottom = this.node.scrollHeight - this.node.scrollTop;
      this.above.after(...bubblesByDay(this.messages.slice(from, this.first), this.query));
      this.node.scrollTop = this.node.scrollHeight - fromBottom;
      this.first = from;
    } else if (!upwards && this.end < this.messages.length) {
      const to = Math.min(this.messages.length, this.end + step);
      this.below.before(...bubblesByDay(this.messages.slice(this.end, to), this.query));
      this.end = to;
    } else {
      return;
    }
    // An edge that is still near is told of again.
    this.watch();
  }
}

function messagesView() {
  let query = '';
  let current = -1;
  let shown = [];
  const talk = new Talk();
  const list = new List({ label: 'Conversations', rowHeight: 68, fill, open });
  const { node, detail } = pair(list, null, 'Conversation');

  const newest = (thread) => thread.messages[thread.messages.length - 1];
  const texts = (thread) => {
    thread.folded = thread.folded || thread.messages.map((message) => fold(message[2]));
    return thread.folded;
  };

  // The messages of a thread that are shown: those that have the words, all where its name does.
  function messagesOf(thread) {
    const fits = matcher(query);
    if (!fits || fits(fold(threadName(thread)))) return thread.messages;
    return thread.messages.filter((message, place) => fits(texts(thread)[place]));
  }

  function update() {
    shown = data.threads.map((thread, place) => ({ thread, place, messages: messagesOf(thread) })).filter(({ messages }) => messages.length > 0);
    list.show(shown, query ? 'Nothing is found.' : 'No messages.');
    current = -1;
    detail.replaceChildren(empty(shown.length ? 'Choose a conversation.' : ''));
    say(counted(shown.length, 'conversation', 'conversations'));
  }

  function fill(row, { thread, messages }) {
    const name = threadName(thread);
    const last = messages[messages.length - 1];
    const unread = thread.messages.filter((message) => message[3] & 1).length;
    row.append(avatar(name), el('span', { class: 'two' }, said('span', 'first', name), said('span', 'second', last[2].slice(0, 200))),
      el('span', { class: 'aside' }, el('time', null, moment(last[0])),
        unread > 0 && el('span', { class: 'dot' }, unread, el('span', { class: 'unseen' }, ' unread'))));
  }

  function open({ thread, place, messages }) {
    route('messages', place);
    node.classList.add('opened');
    current = place;
    const name = threadName(thread);
    const ends = messages.length > 120 && el('span', { class: 'segments' },
      el('button', { type: 'button', click: () => talk.show(messages, query, true) }, 'Oldest'),
      el('button', { type: 'button', click: () => talk.show(messages, query, false) }, 'Newest'));
    const of = messages.length < thread.messages.length ? ` of ${thread.messages.length.toLocaleString('en-GB')}` : '';
    const person = thread.people?.length === 1 && el('a', { class: 'button', href: `#people/${thread.people[0]}` }, 'Contact');
    detail.replaceChildren(el('div', { class: 'with' }, avatar(name), el('div', { class: 'two' }, said('h3', null, name),
      el('span', { class: 'second' }, messages.length.toLocaleString('en-GB'), of, ' messages')), ends, person), talk.node);
    talk.show(messages, query);
  }

  return {
    node,
    show([place]) {
      if (place === undefined || Number(place) === current) return;
      list.choose(shown.findIndex((each) => each.place === Number(place)));
    },
    search(text) { query = text; update(); },
    focus: list.node,
    print: () => (current < 0 ? shown.map(({ thread }) => el('p', null, said('b', null, threadName(thread)), ` ${moment(newest(thread)[0])}`))
      : [said('h3', null, threadName(data.threads[current])), ...bubblesByDay(messagesOf(data.threads[current]), '')]),
    start: update,
  };
}
