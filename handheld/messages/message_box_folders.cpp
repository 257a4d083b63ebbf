#include <algorithm>
#include <map>

#include "common/text/unicode.h"
#include "handheld/messages/entry_id.h"
#include "handheld/messages/message_box_frame.h"
#include "platform/mapi.h"

namespace ce::host {
namespace {

// The names of a path; nothing for one that does not name a folder.
std::optional<std::vector<std::u16string_view>> SplitPath(std::u16string_view path) {
  std::vector<std::u16string_view> names;
  if (path.empty() || path.front() != u'/') return std::nullopt;
  if (path.size() == 1) return names;
  for (std::size_t begin = 1; begin <= path.size();) {
    const std::size_t end = std::min(path.find(u'/', begin), path.size());
    const std::u16string_view name = path.substr(begin, end - begin);
    if (name.empty() || name.find(u'\0') != name.npos) return std::nullopt;
    names.push_back(name);
    begin = end + 1;
  }
  if (names.size() > MessageBox::kDeepestFolder) return std::nullopt;
  return names;
}

constexpr char kFindTop[] = "SELECT id FROM message_folders WHERE store = ?1 AND parent IS NULL";

}  // namespace

HRESULT MessageBox::ListFolders(std::int64_t store, std::vector<MessageFolderInfo>& folders) {
  // A folder is younger than the one that it is in.
  static constexpr char kSql[] =
      "SELECT id, parent, display_name FROM message_folders WHERE store = ?1 ORDER BY id";
  folders.clear();
  return Call("MessageBox::ListFolders", [&]() -> HRESULT {
    Statement list;
    if (const HRESULT status = store_->Prepare(kSql, list); Failed(status)) return status;
    list.BindInteger(1, store);
    std::map<std::int64_t, std::u16string> prefixes;
    for (;;) {
      bool row = false;
      if (const HRESULT status = list.Step(kMessageStep, row); Failed(status)) return status;
      if (!row) return S_OK;
      MessageFolderInfo folder{list.Integer(0), list.Integer(1), text::FromWtf8(list.Text(2)),
                               u"/"};
      if (folder.parent != 0) folder.path = prefixes[folder.parent] + u"/" + folder.name;
      prefixes[folder.id] = folder.parent == 0 ? u"" : folder.path;
      folders.push_back(std::move(folder));
    }
  });
}

HRESULT MessageBox::EnsureFolder(std::int64_t store, std::u16string_view path,
                                 std::int64_t& folder) {
  std::optional<std::vector<std::u16string_view>> names;
  bool found = true;
  const HRESULT status = Call("MessageBox::EnsureFolder", [&] {
    names = SplitPath(path);
    return names ? FindFolder(store, *names, folder, found) : E_INVALIDARG;
  });
  if (Failed(status) || found) return status;
  return Change("MessageBox::EnsureFolder",
                [&] { return FindOrInsertFolder(store, *names, folder); });
}

HRESULT MessageBox::FindFolder(std::int64_t store, const std::vector<std::u16string_view>& names,
                               std::int64_t& folder, bool& found) {
  found = true;
  HRESULT status = RequireRow(kFindTop, store, &folder);
  for (std::size_t i = 0; i < names.size() && found && Succeeded(status); ++i) {
    status = FindChild(folder, names[i], folder, found);
  }
  return status;
}

HRESULT MessageBox::FindOrInsertFolder(std::int64_t store,
                                       const std::vector<std::u16string_view>& names,
                                       std::int64_t& folder) {
  if (const HRESULT status = RequireRow(kFindTop, store, &folder); Failed(status)) return status;
  for (const std::u16string_view name : names) {
    const std::int64_t parent = folder;
    bool found = false;
    HRESULT status = FindChild(parent, name, folder, found);
    EntryIdBytes made;
    if (Succeeded(status) && !found) status = InsertFolder(store, parent, name, made, folder);
    if (Failed(status)) return status;
  }
  return S_OK;
}

HRESULT MessageBox::FindChild(std::int64_t parent, std::u16string_view name, std::int64_t& folder,
                              bool& found) {
  static constexpr char kSql[] =
      "SELECT id FROM message_folders WHERE parent = ?1 AND display_name = ?2 ORDER BY id LIMIT 1";
  const std::string stored = Stored(name);
  Statement find;
  if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
  find.BindInteger(1, parent);
  find.BindText(2, stored);
  const HRESULT status = find.Step(kMessageStep, found);
  if (found) folder = find.Integer(0);
  return status;
}

HRESULT MessageBox::InsertFolder(std::int64_t store, std::optional<std::int64_t> parent,
                                 std::u16string_view name, EntryIdBytes& entryId,
                                 std::int64_t& folder) {
  static constexpr char kSql[] =
      "INSERT INTO message_folders (id, store, parent, entry_id, display_name)"
      " VALUES (?1, ?2, ?3, ?4, ?5)";
  if (const HRESULT status = TakeId(folder); Failed(status)) return status;
  const EntryId made = MakeEntryId(MAPI_FOLDER, store, folder);
  entryId.assign(made.begin(), made.end());
  const std::string stored = Stored(name);
  Statement insert;
  if (const HRESULT status = store_->Prepare(kSql, insert); Failed(status)) return status;
  insert.BindInteger(1, folder);
  insert.BindInteger(2, store);
  if (parent) {
    insert.BindInteger(3, *parent);
  } else {
    insert.BindNull(3);
  }
  insert.BindBlob(4, entryId.data(), entryId.size());
  insert.BindText(5, stored);
  return insert.Run(kMessageStep);
}

HRESULT MessageBox::FolderEntryId(std::int64_t folder, EntryIdBytes& entryId) {
  static constexpr char kSql[] = "SELECT entry_id FROM message_folders WHERE id = ?1";
  return Call("MessageBox::FolderEntryId", [&] {
    Statement find;
    if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
    find.BindInteger(1, folder);
    bool row = false;
    if (const HRESULT status = find.Step(kMessageStep, row); Failed(status)) return status;
    if (!row) return E_INVALIDARG;
    entryId = BytesOf(find, 0);
    return S_OK;
  });
}

HRESULT MessageBox::DeleteFolder(std::int64_t folder) {
  static constexpr char kSql[] = "DELETE FROM message_folders WHERE id = ?1 AND parent IS NOT NULL";
  return Change("MessageBox::DeleteFolder", [&] {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    remove.BindInteger(1, folder);
    const HRESULT status = remove.Run(kMessageStep);
    return Succeeded(status) && store_->Changes() == 0 ? E_INVALIDARG : status;
  });
}

}  // namespace ce::host
