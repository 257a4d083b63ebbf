#include "platform/com.h"

#include <gtest/gtest.h>

#include "handheld/base/com_object.h"
#include "handheld/base/fault.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"
#include "platform/xml_dom.h"

namespace ce {
namespace {

TEST(CoCreateInstance, MakesADocument) {
  ComPtr<IXMLDOMDocument> document;
  EXPECT_EQ(CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER,
                             IXMLDOMDocument::kIid, document.put_void()),
            S_OK);
  EXPECT_TRUE(document);
  document.reset();
  EXPECT_EQ(host::LiveComObjects(), 0);
}

TEST(CoCreateInstance, RefusesOtherClasses) {
  void* out = &out;
  EXPECT_EQ(CoCreateInstance(IUnknown::kIid, nullptr, CLSCTX_INPROC_SERVER, IUnknown::kIid, &out),
            REGDB_E_CLASSNOTREG);
  EXPECT_EQ(out, nullptr);
}

TEST(CoCreateInstance, RefusesInterfacesThatTheClassLacks) {
  void* out = &out;
  EXPECT_EQ(
      CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER, IContact::kIid, &out),
      E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(host::LiveComObjects(), 0);
}

TEST(CoCreateInstance, FaultGivesNull) {
  const auto plan = host::FaultPlan::FailCalls("CoCreateInstance", 8);
  void* out = &out;
  EXPECT_EQ(CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER,
                             IXMLDOMDocument::kIid, &out),
            static_cast<HRESULT>(0x80070008));
  EXPECT_EQ(out, nullptr);
}

TEST(CoInitializeEx, SucceedsUnlessAFaultIsPlanned) {
  EXPECT_EQ(CoInitializeEx(nullptr, 0), S_OK);
  CoUninitialize();
  const auto plan = host::FaultPlan::FailCalls("CoInitializeEx", static_cast<DWORD>(E_FAIL));
  EXPECT_EQ(CoInitializeEx(nullptr, 0), E_FAIL);
}

}  // namespace
}  // namespace ce
