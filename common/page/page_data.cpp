#include "common/page/page_data.h"

#include <chrono>

#include "common/page/calendar.h"
#include "common/page/directory.h"
#include "common/page/json.h"
#include "common/page/people.h"
#include "common/page/telephone.h"

namespace page {
namespace {

template <typename Items, typename ToJson>
void AddItems(Json& page, const char* name, const Items& items, ToJson toJson) {
  Json list = Json::array();
  for (const auto& item : items) list.push_back(toJson(item));
  page[name] = std::move(list);
}

}  // namespace

std::string DataOf(const Contents& contents) {
  const phone::PhoneNumbers numbers(contents.country);
  const Directory directory(contents.people, numbers);
  const DayRange range =
      RangeOf(contents.appointments, std::chrono::floor<std::chrono::days>(contents.now));
  Json page = Json::object();
  AddText(page, "name", contents.name);
  AddText(page, "owner", contents.owner);
  AddText(page, "zone", contents.zone.name());
  page["now"] = contents.now.time_since_epoch().count();
  page["from"] = range.first.time_since_epoch().count();
  page["until"] = range.last.time_since_epoch().count();
  AddTexts(page, "remarks", contents.remarks);
  AddItems(page, "people", contents.people, PersonOf);
  page["events"] = EventsOf(contents.appointments, range);
  AddItems(page, "tasks", contents.tasks, TaskOf);
  page["threads"] = ThreadsOf(contents, directory);
  page["calls"] = CallsOf(contents, directory);
  AddItems(page, "notes", contents.notes, [](const Note& note) {
    return Json{{"path", Clean(note.path)}, {"text", Clean(note.text)}};
  });
  AddItems(page, "volumes", contents.volumes, [](const Volume& volume) {
    return Json{{"name", Clean(volume.name)}, {"total", volume.total}, {"free", volume.free}};
  });
  return page.dump();
}

}  // namespace page
