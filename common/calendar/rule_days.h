// The days of a recurrence rule, block by block, as libical tells them.
//
// libical's iterator ends in 2582 and may look through all years until then for the next day. A
// block is so short that neither matters, and the calendar's cycle of 400 years brings every block
// to a year that libical knows.
#pragma once

#include <libical/ical.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "common/calendar/pattern.h"

namespace calendar {

// What RuleDays wants for a pattern, whatever the pattern's end.
icalrecurrencetype EndlessRule(Pattern pattern);

// Immutable; may be used from several threads.
class RuleDays {
 public:
  // How many days a block of a daily rule has whose interval is a pattern's.
  static constexpr int kDailyDays = 16;

  // `rule` has no end, takes nothing from the start but where its intervals begin, and is of days
  // or longer.
  RuleDays(const icalrecurrencetype& rule, local_days start);

  // Blocks count from 0. One of a daily rule is some of its days, else it is one week, month or
  // year of the rule.
  std::int64_t BlockOf(local_days day) const;  // the last that begins by `day`, which is >= start
  local_days FirstDayOf(std::int64_t block) const;
  // Ascending; those of block 0 that lie before the start are among them.
  std::vector<local_days> DaysOf(std::int64_t block) const;

 private:
  icalrecurrencetype rule_;
  std::int64_t interval_;  // days, weeks, months or years between the blocks' first days
  local_days anchor_;      // the first day of block 0
};

// Walks the days of a rule from the start to kLastDay, ascending.
class RuleWalk {
 public:
  RuleWalk(const icalrecurrencetype& rule, local_days start) : rule_(rule, start), start_(start) {}

  // Nothing when there is none left, or none in so many blocks that no pattern gives such a rule.
  std::optional<local_days> Next();

 private:
  bool Fill();

  RuleDays rule_;
  local_days start_;
  std::int64_t block_ = 0;  // the one to be taken next
  std::vector<local_days> days_;
  std::size_t place_ = 0;
};

}  // namespace calendar
