// What the objects of items have alike: getters and setters, Save and Delete, the recurrence.
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/outlook/item_collection.h"
#include "handheld/outlook/series_item.h"
#include "handheld/outlook/session.h"
#include "handheld/store/item_row.h"
#include "platform/automation.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

// The handheld's local time, without fractions of a second, moved into the years that items' dates
// have; nothing when the clock cannot be read.
std::optional<local_seconds> ItemClock();

// COM methods in full, with their fault point `call`. What a failing getter leaves in its
// out-parameter is "none".
template <typename Kept, typename T>
HRESULT GetValue(const char* call, Kept kept, T* value) {
  if (!value) return E_POINTER;
  *value = std::is_same_v<T, DATE> ? static_cast<T>(kNoDate) : T{};
  return Guarded(call, [&] {
    *value = kept;
    return S_OK;
  });
}
inline HRESULT GetValue(const char* call, bool kept, VARIANT_BOOL* value) {
  return GetValue(call, kept ? VARIANT_TRUE : VARIANT_FALSE, value);
}
HRESULT GetStoredText(const char* call, std::string_view stored, BSTR* value);
HRESULT GetInk(const char* call, const std::vector<BYTE>& ink, DWORD* bytes, const BYTE** block);

// What an item keeps of a value that it is given. False, and nothing changed, for one that it
// cannot take.
inline bool TakeFlag(bool& kept, VARIANT_BOOL value) {
  kept = value != VARIANT_FALSE;
  return true;
}
template <typename T>
bool Take(T& kept, T value, bool valid = true) {
  if (valid) kept = value;
  return valid;
}

// The names of the calls that items share, for fault plans.
template <typename Interface>
struct ItemCalls;
#define CE_ITEM_CALLS(Interface)                                            \
  template <>                                                               \
  struct ItemCalls<Interface> {                                             \
    static constexpr char kGetInk[] = #Interface "::get_BodyInk";           \
    static constexpr char kPutInk[] = #Interface "::put_BodyInk";           \
    static constexpr char kGetOid[] = #Interface "::get_Oid";               \
    static constexpr char kSave[] = #Interface "::Save";                    \
    static constexpr char kDelete[] = #Interface "::Delete";                \
    static constexpr char kIsRecurring[] = #Interface "::get_IsRecurring";  \
    static constexpr char kPattern[] = #Interface "::GetRecurrencePattern"; \
    static constexpr char kClear[] = #Interface "::ClearRecurrencePattern"; \
  };
CE_ITEM_CALLS(IContact)
CE_ITEM_CALLS(IAppointment)
CE_ITEM_CALLS(ITask)
#undef CE_ITEM_CALLS

// The methods of a property. `take` is an expression of `fields` and the new `value` that answers
// whether the item takes it.
#define CE_ITEM_VALUE(Interface, Name, Type, member, take)                               \
  HRESULT get_##Name(Type* value) override {                                             \
    return GetValue(#Interface "::get_" #Name, this->fields_.member, value);             \
  }                                                                                      \
  HRESULT put_##Name(Type value) override {                                              \
    return this->Put(#Interface "::put_" #Name, [value](auto& fields) { return take; }); \
  }
#define CE_ITEM_TEXT(Interface, Enum, Name)                                \
  HRESULT get_##Name(BSTR* value) override {                               \
    return this->GetText(#Interface "::get_" #Name, Enum::k##Name, value); \
  }                                                                        \
  HRESULT put_##Name(BSTR value) override {                                \
    return this->PutText(#Interface "::put_" #Name, Enum::k##Name, value); \
  }

// An item or an occurrence: its fields, and whether they have changed since they were stored.
template <typename ItemInterface, typename ItemFields>
class ItemBase : public ComObject<ItemInterface> {
 public:
  using Interface = ItemInterface;
  using Fields = ItemFields;

  HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) override {
    return GetInk(ItemCalls<Interface>::kGetInk, fields_.ink, bytes, block);
  }
  HRESULT put_BodyInk(DWORD bytes, const BYTE* block) override {
    return Put(ItemCalls<Interface>::kPutInk, [=](Fields& fields) {
      if (bytes > 0 && !block) return false;
      fields.ink.assign(block, block + bytes);
      return true;
    });
  }

 protected:
  ItemBase(SessionPtr session, Fields fields)
      : session_(std::move(session)), fields_(std::move(fields)) {}
  ~ItemBase() override = default;

  // `take` answers whether the fields, which it changes, take the value.
  template <typename Taking>
  HRESULT Put(const char* call, Taking&& take) {
    return Guarded(call, [&] {
      if (!take(fields_)) return E_INVALIDARG;
      changed_ = true;
      return S_OK;
    });
  }

  template <typename Text>
  HRESULT GetText(const char* call, Text text, BSTR* value) {
    return GetStoredText(call, fields_.texts[text], value);
  }

  template <typename Text>
  HRESULT PutText(const char* call, Text text, BSTR value) {
    return Guarded(call, [&] {
      const auto index = static_cast<std::size_t>(text);
      const std::size_t length = SysStringLen(value);
      const TextKind kind = ItemTable<Fields>::kTexts[index].kind;
      if (length > LongestText(session_->limits(), kind)) return kTextTooLong;
      fields_.texts.Set(index, value ? std::u16string_view{value, length} : std::u16string_view{});
      changed_ = true;
      return S_OK;
    });
  }

  const SessionPtr session_;
  Fields fields_;
  bool changed_ = false;
};

// An item that has a row of its own. `Base` is an ItemBase.
template <typename Base>
class StoredItem : public Base {
 public:
  using Fields = typename Base::Fields;
  using Calls = ItemCalls<typename Base::Interface>;

  HRESULT get_Oid(LONG* oid) override {
    return GetValue(Calls::kGetOid, static_cast<LONG>(oid_), oid);
  }

  HRESULT Save() override {
    return Guarded(Calls::kSave, [&]() -> HRESULT {
      Store* store = this->session_->store();
      if (!store) return E_FAIL;
      std::optional<Series> series;
      if (!SeriesToSave(series)) return E_INVALIDARG;
      RETURN_IF_FAILED(oid_ == 0 ? StoreNew(*store, series) : StoreChanges(*store, series));
      this->changed_ = false;
      SeriesSaved(series);
      return S_OK;
    });
  }

  HRESULT Delete() override {
    return Guarded(Calls::kDelete, [&]() -> HRESULT {
      Store* store = this->session_->store();
      if (!store) return E_FAIL;
      if (oid_ == 0) return S_OK;
      if (const auto list = list_.lock()) return list->Delete(oid_);
      store->PrepareToDelete();
      return store->Write(nullptr, [&] { return DeleteItem<Fields>(*store, oid_); });
    });
  }

 protected:
  // 0 for one that was never saved.
  StoredItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid, Fields fields)
      : Base(std::move(session), std::move(fields)), list_(std::move(list)), oid_(oid) {}
  ~StoredItem() override = default;

  // The series as it is to be saved now; false when it cannot be.
  virtual bool SeriesToSave(std::optional<Series>&) const { return true; }
  virtual void SeriesSaved(const std::optional<Series>&) {}
  // What else changes with the row, in the same write.
  virtual HRESULT RowChanged(Store&, const std::optional<Series>&) { return S_OK; }

  std::uint32_t oid() const { return oid_; }

 private:
  HRESULT StoreNew(Store& store, const std::optional<Series>& series) {
    std::uint32_t oid = 0;
    RETURN_IF_FAILED(
        store.Write(nullptr, [&] { return InsertItem(store, this->fields_, series, oid); }));
    oid_ = oid;
    return S_OK;
  }

  HRESULT StoreChanges(Store& store, const std::optional<Series>& series) {
    bool found = false;
    const auto write = [&]() -> HRESULT {
      RETURN_IF_FAILED(UpdateItem(store, oid_, this->fields_, series, found));
      return RowChanged(store, series);
    };
    RETURN_IF_FAILED(this->changed_ ? store.Write(nullptr, write)
                                    : ItemExists<Fields>(store, oid_, found));
    return found ? S_OK : E_INVALIDARG;
  }

  const std::weak_ptr<ItemList> list_;
  std::uint32_t oid_;
};

// A stored item that can recur.
template <typename Base>
class RecurringItem : public StoredItem<Base>, public SeriesItem {
 public:
  using typename StoredItem<Base>::Calls;

  HRESULT get_IsRecurring(VARIANT_BOOL* value) override {
    return GetValue(Calls::kIsRecurring, recurring(), value);
  }
  HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) override {
    if (!pattern) return E_POINTER;
    *pattern = nullptr;
    return Guarded(Calls::kPattern, [&] { return HandOutPattern(this, pattern); });
  }
  HRESULT ClearRecurrencePattern() override {
    return Guarded(Calls::kClear, [&] {
      ClearSeries();
      return S_OK;
    });
  }
  void NoteChange() override { this->changed_ = true; }
  local_days SeriesDay() const override { return FirstDay(this->fields_, series()); }

 protected:
  RecurringItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid,
                ItemRow<typename Base::Fields> row)
      : StoredItem<Base>(std::move(session), std::move(list), oid, std::move(row.fields)),
        SeriesItem(row.series) {}
  ~RecurringItem() override = default;

 private:
  bool SeriesToSave(std::optional<Series>& series) const override { return FinishedSeries(series); }
  void SeriesSaved(const std::optional<Series>& series) override { KeepSeries(series); }
};

// ItemKind::load for objects of type Item.
template <typename Item>
HRESULT LoadItem(const SessionPtr& session, const std::shared_ptr<ItemList>& list,
                 std::uint32_t oid, IDispatch** item) {
  ItemRow<typename Item::Fields> row;
  bool found = false;
  Store& store = *session->store();
  RETURN_IF_FAILED(list ? ScanItem(store, list->scan(), oid, row, found)
                        : ReadItem(store, oid, row, found));
  // Another connection was quicker: what is left to delete is handed out without content.
  if (!found && !(list && list->HasDeleted())) return E_INVALIDARG;
  *item = new Item(session, list, oid, std::move(row));
  return S_OK;
}

}  // namespace ce::host
