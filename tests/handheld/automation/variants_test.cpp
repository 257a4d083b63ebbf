#include <gtest/gtest.h>

#include <cstring>

#include "handheld/base/com_object.h"
#include "handheld/base/fault.h"
#include "platform/automation.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace ce {
namespace {

using host::FaultPlan;

class Thing final : public host::ComObject<IDispatch> {};

TEST(VariantInit, EmptiesWithoutFreeing) {
  const Bstr text(u"kept by its owner");
  VARIANT variant;
  variant.vt = VT_BSTR;
  variant.bstrVal = text.get();
  VariantInit(&variant);
  EXPECT_EQ(variant.vt, VT_EMPTY);
  EXPECT_EQ(variant.bstrVal, nullptr);
  EXPECT_EQ(text.view(), u"kept by its owner");
}

TEST(VariantClear, ReleasesOneReference) {
  auto* thing = new Thing();
  thing->AddRef();
  VARIANT variant;
  variant.vt = VT_UNKNOWN;
  variant.punkVal = thing;
  EXPECT_EQ(VariantClear(&variant), S_OK);
  EXPECT_EQ(variant.vt, VT_EMPTY);
  EXPECT_EQ(thing->Release(), 0u);
  EXPECT_EQ(host::LiveComObjects(), 0);
}

TEST(VariantClear, FreesStringsAndArrays) {  // the leak checker is the witness
  VARIANT text;
  text.vt = VT_BSTR;
  text.bstrVal = SysAllocString(u"x");
  EXPECT_EQ(VariantClear(&text), S_OK);
  EXPECT_EQ(text.bstrVal, nullptr);

  VARIANT array;
  array.vt = VT_ARRAY | VT_UI1;
  array.parray = SafeArrayCreateVector(VT_UI1, 0, 10);
  EXPECT_EQ(VariantClear(&array), S_OK);
  EXPECT_EQ(array.parray, nullptr);
}

TEST(VariantClear, TakesNullsInsideAndRefusesNull) {
  for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_BSTR, VT_ERROR, VT_UNKNOWN,
                             static_cast<VARTYPE>(VT_ARRAY | VT_UI1)}) {
    VARIANT variant;
    variant.vt = type;
    EXPECT_EQ(VariantClear(&variant), S_OK) << type;
    EXPECT_EQ(variant.vt, VT_EMPTY) << type;
  }
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
}

TEST(SafeArray, HoldsItsBytes) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 3);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(SafeArrayGetCount(array), 3u);
  void* data = nullptr;
  ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
  EXPECT_EQ(std::memcmp(data, "\0\0\0", 3), 0);
  std::memcpy(data, "abc", 3);
  EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
  ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
  EXPECT_EQ(std::memcmp(data, "abc", 3), 0);
  EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, MayBeEmpty) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 0);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(SafeArrayGetCount(array), 0u);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, HasNoOtherTypesOrBounds) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(SafeArrayCreateVector(VT_BSTR, 0, 1), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(SafeArrayCreateVector(VT_UI1, 1, 1), nullptr);
}

TEST(SafeArray, NullHasNoDataAndNoElements) {
  void* data = &data;
  EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetCount(nullptr), 0u);
}

TEST(SafeArray, FaultsGiveNullOrAFailure) {
  {
    const auto plan = FaultPlan::FailCalls("SafeArrayCreateVector", ERROR_NOT_ENOUGH_MEMORY);
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(SafeArrayCreateVector(VT_UI1, 0, 1), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  }
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 1);
  {
    const auto plan = FaultPlan::FailCalls("SafeArrayAccessData", ERROR_NOT_ENOUGH_MEMORY);
    void* data = &data;
    EXPECT_EQ(SafeArrayAccessData(array, &data), static_cast<HRESULT>(0x80070008));
    EXPECT_EQ(data, nullptr);
  }
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

}  // namespace
}  // namespace ce
