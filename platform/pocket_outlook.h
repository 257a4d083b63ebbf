// The Pocket Outlook object model: application, folders, item collections, contacts.
//
// Text out-parameters are owned by the caller (SysFreeString); text in-parameters are borrowed.
// Dates are local; kNoDate stands for "none". An item read from the store is a copy: setters change
// the copy, Save writes it in one durable step, Delete removes the stored item, unless they are
// part of a transaction. Objects belong to the thread that made them.
#pragma once

#include "platform/automation.h"
#include "platform/com.h"

namespace ce {

inline constexpr GUID CLSID_Application{
    0x05F6F1E0, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};

inline constexpr INT olFolderCalendar = 9;
inline constexpr INT olFolderContacts = 10;
inline constexpr INT olFolderTasks = 13;
inline constexpr INT olAppointmentItem = 1;
inline constexpr INT olContactItem = 2;
inline constexpr INT olTaskItem = 3;

inline constexpr GUID IID_IAppointment{
    0x05F6F1E4, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
inline constexpr GUID IID_ITask{
    0x05F6F1E5, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};

// A setter's answer to a text beyond the property's length; nothing is stored.
inline constexpr HRESULT kTextTooLong = static_cast<HRESULT>(0x80040066);

#define CE_POOM_PROPERTY(Type, Name)           \
  virtual HRESULT get_##Name(Type* value) = 0; \
  virtual HRESULT put_##Name(Type value) = 0;

struct IContact : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1E3, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  CE_POOM_PROPERTY(DATE, Birthday)
  CE_POOM_PROPERTY(DATE, Anniversary)
  CE_POOM_PROPERTY(BSTR, BusinessAddressStreet)
  CE_POOM_PROPERTY(BSTR, BusinessAddressCity)
  CE_POOM_PROPERTY(BSTR, BusinessAddressState)
  CE_POOM_PROPERTY(BSTR, BusinessAddressPostalCode)
  CE_POOM_PROPERTY(BSTR, BusinessAddressCountry)
  CE_POOM_PROPERTY(BSTR, BusinessFaxNumber)
  CE_POOM_PROPERTY(BSTR, BusinessTelephoneNumber)
  CE_POOM_PROPERTY(BSTR, CompanyName)
  CE_POOM_PROPERTY(BSTR, Department)
  CE_POOM_PROPERTY(BSTR, Email1Address)
  CE_POOM_PROPERTY(BSTR, MobileTelephoneNumber)
  CE_POOM_PROPERTY(BSTR, OfficeLocation)
  CE_POOM_PROPERTY(BSTR, PagerNumber)
  CE_POOM_PROPERTY(BSTR, JobTitle)
  CE_POOM_PROPERTY(BSTR, HomeTelephoneNumber)
  CE_POOM_PROPERTY(BSTR, Email2Address)
  CE_POOM_PROPERTY(BSTR, Spouse)
  CE_POOM_PROPERTY(BSTR, Email3Address)
  CE_POOM_PROPERTY(BSTR, Home2TelephoneNumber)
  CE_POOM_PROPERTY(BSTR, HomeFaxNumber)
  CE_POOM_PROPERTY(BSTR, CarTelephoneNumber)
  CE_POOM_PROPERTY(BSTR, AssistantName)
  CE_POOM_PROPERTY(BSTR, AssistantTelephoneNumber)
  CE_POOM_PROPERTY(BSTR, Children)
  CE_POOM_PROPERTY(BSTR, Categories)
  CE_POOM_PROPERTY(BSTR, WebPage)
  CE_POOM_PROPERTY(BSTR, Business2TelephoneNumber)
  CE_POOM_PROPERTY(BSTR, Title)
  CE_POOM_PROPERTY(BSTR, FirstName)
  CE_POOM_PROPERTY(BSTR, MiddleName)
  CE_POOM_PROPERTY(BSTR, LastName)
  CE_POOM_PROPERTY(BSTR, Suffix)
  CE_POOM_PROPERTY(BSTR, HomeAddressStreet)
  CE_POOM_PROPERTY(BSTR, HomeAddressCity)
  CE_POOM_PROPERTY(BSTR, HomeAddressState)
  CE_POOM_PROPERTY(BSTR, HomeAddressPostalCode)
  CE_POOM_PROPERTY(BSTR, HomeAddressCountry)
  CE_POOM_PROPERTY(BSTR, OtherAddressStreet)
  CE_POOM_PROPERTY(BSTR, OtherAddressCity)
  CE_POOM_PROPERTY(BSTR, OtherAddressState)
  CE_POOM_PROPERTY(BSTR, OtherAddressPostalCode)
  CE_POOM_PROPERTY(BSTR, OtherAddressCountry)
  CE_POOM_PROPERTY(BSTR, RadioTelephoneNumber)
  // While FileAs was never set: "Last, First", or the company when both are empty.
  CE_POOM_PROPERTY(BSTR, FileAs)
  CE_POOM_PROPERTY(BSTR, Body)
  // E_NOTIMPL on a handheld that has no Yomi fields.
  CE_POOM_PROPERTY(BSTR, YomiCompanyName)
  CE_POOM_PROPERTY(BSTR, YomiFirstName)
  CE_POOM_PROPERTY(BSTR, YomiLastName)
  // The block belongs to the item and lives as long as it; E_NOTIMPL when the item has none.
  virtual HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) = 0;
  virtual HRESULT put_BodyInk(DWORD bytes, const BYTE* block) = 0;
  // 0 for an item that was never saved.
  virtual HRESULT get_Oid(LONG* oid) = 0;
  virtual HRESULT Save() = 0;
  virtual HRESULT Delete() = 0;

 protected:
  ~IContact() = default;
};

#undef CE_POOM_PROPERTY

// Holds identifiers, not items, and reads one snapshot of the folder, taken at the first get_Count
// or Item. Positions are 1-based.
struct IPOutlookItemCollection : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1E6, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  // A new item of the folder's kind; it is stored when it is saved.
  virtual HRESULT Add(IDispatch** item) = 0;
  virtual HRESULT get_Count(INT* count) = 0;
  // E_INVALIDARG outside 1 to the count.
  virtual HRESULT Item(INT index, IDispatch** item) = 0;
  virtual HRESULT Remove(INT index) = 0;

 protected:
  ~IPOutlookItemCollection() = default;
};

// The same collection, extended.
struct IPOutlookItemCollection2 : IPOutlookItemCollection {
  static constexpr GUID kIid{
      0x05F6F1E7, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};

 protected:
  ~IPOutlookItemCollection2() = default;
};

struct IFolder : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1E2, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  virtual HRESULT get_Items(IPOutlookItemCollection** items) = 0;

 protected:
  ~IFolder() = default;
};

struct IPOutlookApp : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1E1, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  // S_FALSE when already logged on. The other calls fail with E_FAIL before it.
  virtual HRESULT Logon(LONG window) = 0;
  virtual HRESULT Logoff() = 0;  // S_FALSE when not logged on
  virtual HRESULT GetDefaultFolder(INT folder, IFolder** result) = 0;
  // Unknown identifier: E_INVALIDARG and null.
  virtual HRESULT GetItemFromOid(LONG oid, IDispatch** item) = 0;

 protected:
  ~IPOutlookApp() = default;
};

// The same application, whose changes can be stored together. In a transaction Save and Delete are
// steps of one change: it is seen, and kept, as a whole or not at all. A step that fails has
// changed nothing. From its first step on, others wait to write. Logoff undoes one that was not
// committed.
struct IPOutlookTransactions : IPOutlookApp {
  static constexpr GUID kIid{
      0x05F6F1E9, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  // E_FAIL while there is one.
  virtual HRESULT BeginTransaction() = 0;
  // Success: all of it is on the disk. Otherwise none of it is stored. It is over either way.
  virtual HRESULT CommitTransaction() = 0;

 protected:
  ~IPOutlookTransactions() = default;
};

}  // namespace ce
