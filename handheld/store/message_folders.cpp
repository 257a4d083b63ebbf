#include <algorithm>
#include <map>

#include "common/text/unicode.h"
#include "handheld/store/message_stores.h"
#include "handheld/store/store_error.h"
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
  if (names.size() > kDeepestFolder) return std::nullopt;
  return names;
}

constexpr char kFindTop[] = "SELECT id FROM message_folders WHERE store = ?1 AND parent IS NULL";

}  // namespace

HRESULT CheckFolderDepth(Store& store, std::int64_t folder) {
  // Each folder above, up to one more than may be there.
  static constexpr char kSql[] =
      "WITH RECURSIVE above (id, steps) AS (SELECT ?1, 0 UNION ALL"
      " SELECT parent, steps + 1 FROM above JOIN message_folders USING (id)"
      " WHERE parent IS NOT NULL AND steps <= ?2) SELECT max(steps) FROM above";
  Statement find;
  bool row = false;
  RETURN_IF_FAILED(store.Find(kSql, "sqlite3_step:read", find, row, folder, kDeepestFolder));
  return find.Integer(0) > kDeepestFolder ? kStoreDamaged : S_OK;
}

HRESULT MessageStores::ListFolders(std::int64_t id, std::vector<MessageFolderInfo>& folders) {
  // A folder is younger than the one that it is in.
  static constexpr char kSql[] =
      "SELECT id, parent, display_name FROM message_folders WHERE store = ?1 ORDER BY id";
  struct Place {
    std::u16string prefix;  // of the paths below
    int depth = 0;
  };
  folders.clear();
  return Guarded("MessageStores::ListFolders", [&]() -> HRESULT {
    Statement list;
    RETURN_IF_FAILED(store().Prepare(kSql, list, id));
    std::map<std::int64_t, Place> places;
    bool damaged = false;
    RETURN_IF_FAILED(list.ForEachRow(kStep, [&] {
      MessageFolderInfo folder{list.Integer(0), list.Integer(1), text::FromWtf8(list.Text(2)),
                               u"/"};
      Place place;
      if (folder.parent != 0) {
        const auto parent = places.find(folder.parent);
        if (parent == places.end() || parent->second.depth == kDeepestFolder) {
          damaged = true;
          return;
        }
        folder.path = parent->second.prefix + u"/" + folder.name;
        place = {folder.path, parent->second.depth + 1};
      }
      places.emplace(folder.id, std::move(place));
      folders.push_back(std::move(folder));
    }));
    return damaged ? kStoreDamaged : S_OK;
  });
}

HRESULT MessageStores::EnsureFolder(std::int64_t id, std::u16string_view path,
                                    std::int64_t& folder) {
  std::optional<std::vector<std::u16string_view>> names;
  bool found = true;
  const HRESULT status = Guarded("MessageStores::EnsureFolder", [&] {
    names = SplitPath(path);
    return names ? FindFolder(id, *names, folder, found) : E_INVALIDARG;
  });
  if (Failed(status) || found) return status;
  return Change("MessageStores::EnsureFolder",
                [&] { return FindOrInsertFolder(id, *names, folder); });
}

HRESULT MessageStores::FindFolder(std::int64_t id, const std::vector<std::u16string_view>& names,
                                  std::int64_t& folder, bool& found) {
  found = true;
  HRESULT status = RequireRow(kFindTop, id, &folder);
  for (std::size_t i = 0; i < names.size() && found && Succeeded(status); ++i) {
    status = FindChild(folder, names[i], folder, found);
  }
  return status;
}

HRESULT MessageStores::FindOrInsertFolder(std::int64_t id,
                                          const std::vector<std::u16string_view>& names,
                                          std::int64_t& folder) {
  RETURN_IF_FAILED(RequireRow(kFindTop, id, &folder));
  for (const std::u16string_view name : names) {
    const std::int64_t parent = folder;
    bool found = false;
    RETURN_IF_FAILED(FindChild(parent, name, folder, found));
    EntryIdBytes made;
    if (!found) RETURN_IF_FAILED(InsertFolder(id, parent, name, made, folder));
  }
  return S_OK;
}

HRESULT MessageStores::FindChild(std::int64_t parent, std::u16string_view name,
                                 std::int64_t& folder, bool& found) {
  static constexpr char kSql[] =
      "SELECT id FROM message_folders WHERE parent = ?1 AND display_name = ?2 ORDER BY id LIMIT 1";
  Statement find;
  RETURN_IF_FAILED(store().Find(kSql, kStep, find, found, parent, name));
  if (found) folder = find.Integer(0);
  return S_OK;
}

HRESULT MessageStores::InsertFolder(std::int64_t id, std::optional<std::int64_t> parent,
                                    std::u16string_view name, EntryIdBytes& entryId,
                                    std::int64_t& folder) {
  static constexpr char kSql[] =
      "INSERT INTO message_folders (id, store, parent, entry_id, display_name)"
      " VALUES (?1, ?2, ?3, ?4, ?5)";
  RETURN_IF_FAILED(TakeId(folder));
  const EntryId made = MakeEntryId(MAPI_FOLDER, id, folder);
  entryId.assign(made.begin(), made.end());
  return store().Run(kSql, kStep, folder, id, parent, entryId, name);
}

HRESULT MessageStores::FolderEntryId(std::int64_t folder, EntryIdBytes& entryId) {
  static constexpr char kSql[] = "SELECT entry_id FROM message_folders WHERE id = ?1";
  return Guarded("MessageStores::FolderEntryId", [&]() -> HRESULT {
    Statement find;
    bool row = false;
    RETURN_IF_FAILED(store().Find(kSql, kStep, find, row, folder));
    if (!row) return E_INVALIDARG;
    find.Load(0, entryId);
    return S_OK;
  });
}

HRESULT MessageStores::DeleteFolder(std::int64_t folder) {
  static constexpr char kSql[] = "DELETE FROM message_folders WHERE id = ?1 AND parent IS NOT NULL";
  return Change("MessageStores::DeleteFolder", [&] { return ChangeRow(kSql, folder); });
}

}  // namespace ce::host
