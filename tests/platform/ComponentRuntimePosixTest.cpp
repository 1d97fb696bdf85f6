#include <gtest/gtest.h>

#include "platform/ComponentTypes.h"

namespace zel {
namespace {

TEST(ComponentRuntimePosix, RefusesNullAndWhatDoesNotFit32Bits) {
  EXPECT_EQ(SafeArrayCreateVector(VT_R8, 0, 0x7FFFFFFF), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_UI1, 0x7FFFFFFF, 2), nullptr) << "a last index beyond 32 bits";
  SAFEARRAY* const last = SafeArrayCreateVector(VT_UI1, 0x7FFFFFFF, 1);
  LONG index = 0;
  EXPECT_EQ(SafeArrayGetUBound(last, 1, &index), S_OK);
  EXPECT_EQ(index, 0x7FFFFFFF);
  EXPECT_EQ(SafeArrayGetUBound(last, 1, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayAccessData(last, nullptr), E_INVALIDARG);
  VARIANT variant;
  variant.vt = VT_ARRAY | VT_UI1;
  variant.parray = last;
  last->cLocks = 1;
  EXPECT_EQ(VariantClear(&variant), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(variant.parray, last) << "still its owner";
  last->cLocks = 0;
  EXPECT_EQ(VariantClear(&variant), S_OK);
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetVartype(nullptr, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace zel
