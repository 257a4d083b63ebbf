// Edits of one item within a file's bytes.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/folder/desk_reader.h"
#include "desktop/folder/edit_text.h"
#include "tests/desktop/folder/folder_support.h"

namespace desktop::testing {

// 2027-01-15T08:00:00Z
inline constexpr std::chrono::sys_seconds kEditTime{std::chrono::seconds(1800000000)};

struct EditResult {
  std::string bytes;
  std::vector<std::string> losses;
  Item now;  // the item that was edited
};

// The item at `index` of the file, edited. `name` says by its extension what the bytes are.
template <typename Kind>
EditResult EditItem(const std::string& name, const std::string& bytes, std::size_t index,
                    const std::function<void(Kind&)>& edit) {
  const DeskReading before = ReadDeskBytes(name, bytes, Berlin());
  EditResult result;
  if (index >= before.items.size()) {
    ADD_FAILURE() << "no such item";
    return result;
  }
  const DeskItem& item = before.items[index];
  Item to = item.item;
  edit(std::get<Kind>(to));
  TextEdit text(bytes, Berlin(), kEditTime);
  TextChange change = text.Change(item.line, item.item, to);
  EXPECT_TRUE(change.done);
  result.bytes = text.bytes();
  result.losses = std::move(change.losses);
  const DeskReading after = ReadDeskBytes(name, result.bytes, Berlin());
  if (after.items.size() == before.items.size()) result.now = after.items[index].item;
  return result;
}

inline EditResult EditContact(const std::string& bytes,
                              const std::function<void(formats::Contact&)>& edit) {
  return EditItem<formats::Contact>("a.vcf", bytes, 0, edit);
}

inline EditResult EditEvent(const std::string& bytes,
                            const std::function<void(formats::Appointment&)>& edit,
                            std::size_t index = 0) {
  return EditItem<formats::Appointment>("a.ics", bytes, index, edit);
}

inline EditResult EditTask(const std::string& bytes,
                           const std::function<void(formats::Task&)>& edit) {
  return EditItem<formats::Task>("a.ics", bytes, 0, edit);
}

inline std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

}  // namespace desktop::testing
