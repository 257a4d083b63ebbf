// The contents of a page as the one JSON object that its script shows.
#pragma once

#include <string>

#include "common/page/contents.h"

namespace page {

// On one line. Days count from 1970-01-01, times are seconds from there by the clock of the
// handheld's zone, minutes are of a day. What is empty, false or nothing is not written.
//
//   name, owner, zone, now, from, until (the days of series), remarks
//   people   name, sort, line, categories, numbers, emails, addresses, more (pairs of label and
//            text), web, note
//   events   subject, place, note, categories, private, reminder, busy, repeats, instead (the day
//            that it had in its series), minute (nothing for all day), length (minutes; days for
//            all day), days (the first, and the distance to each next one), earlier (how many days
//            of the series before those are left out)
//   tasks    subject, note, categories, private, start, due, done, completed, importance, reminder,
//            repeats
//   threads  people (their places above), names, messages ([time or null, MessageType, text, bits,
//            folder]; bits: 1 not read, 2 with an attachment), newest thread last message first
//   calls    [time or null, seconds or null, CallKind, number, name, place of the person or -1,
//            note], newest first
//   notes    path, text
//   volumes  name, total, free
std::string DataOf(const Contents& contents);

}  // namespace page
