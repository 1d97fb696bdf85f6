#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "platform/ComponentTypes.h"

// The same expectations for the Windows runtime and for the library's own one on other systems.
namespace zel {
namespace {

TEST(ComponentText, CarriesItsLengthAndEndsWithZero) {
  const OLECHAR text[] = {'c', 'a', 'm', 'e', 'r', 'a', 0};
  for (const auto& [made, length, first] : {std::tuple<BSTR, UINT, OLECHAR>{SysAllocString(text), 6, 'c'},
                                            {SysAllocStringLen(text, 3), 3, 'c'},
                                            {SysAllocString(text + 6), 0, 0},
                                            {SysAllocStringLen(text + 4, 3), 3, 'r'}}) {
    ASSERT_NE(made, nullptr);
    std::uint32_t stored;
    std::memcpy(&stored, reinterpret_cast<const char*>(made) - 4, 4);
    EXPECT_EQ(std::tuple(stored, SysStringLen(made), SysStringByteLen(made)),
              std::tuple(2 * length, length, 2 * length));
    EXPECT_EQ(made[0], first);
    EXPECT_EQ(made[length], 0);
    SysFreeString(made);
  }
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFu), nullptr);
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  SysFreeString(nullptr);
}

TEST(ComponentArray, AnswersForEveryElementTypeAndCountsItsLocks) {
  for (const auto& [type, bytes] :
       {std::pair<VARTYPE, UINT>{VT_UI1, 1}, {VT_I2, 2}, {VT_I4, 4}, {VT_UI4, 4}, {VT_R4, 4}, {VT_R8, 8}}) {
    SAFEARRAY* const array = SafeArrayCreateVector(type, -2, 5);
    ASSERT_NE(array, nullptr) << type;
    LONG lowest = 0, highest = 0;
    VARTYPE answered = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 1, &lowest), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &highest), S_OK);
    EXPECT_EQ(SafeArrayGetVartype(array, &answered), S_OK);
    EXPECT_EQ(std::tuple(SafeArrayGetDim(array), SafeArrayGetElemsize(array), lowest, highest, answered),
              std::tuple(1u, bytes, -2, 2, type));
    EXPECT_NE(SafeArrayGetUBound(array, 0, &highest), S_OK);
    EXPECT_NE(SafeArrayGetLBound(array, 2, &lowest), S_OK);

    void *data = nullptr, *again = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    ASSERT_EQ(SafeArrayAccessData(array, &again), S_OK);
    EXPECT_EQ(data, again);
    EXPECT_EQ(std::string(static_cast<char*>(data), 5 * bytes), std::string(5 * bytes, '\0'));
    std::memset(data, 0xFF, 5 * bytes);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  }
  EXPECT_EQ(SafeArrayCreateVector(VT_EMPTY, 0, 1), nullptr);
}

/// Counts its references and is never freed.
struct CountedObject final : IUnknown {
  ULONG count = 1;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++count; }
  ULONG STDMETHODCALLTYPE Release() override { return --count; }
};

TEST(ComponentVariant, ClearsWhatItOwnsAndNothingElse) {
  CountedObject object;
  const OLECHAR text[] = {'x', 0};
  for (const auto& [type, pointer, countAfter] :
       {std::tuple<int, void*, ULONG>{VT_UNKNOWN, &object, 0},
        {VT_UNKNOWN | VT_BYREF, &object, 1},
        {VT_UNKNOWN, nullptr, 1},
        {VT_BSTR, SysAllocString(text), 1},
        {VT_ARRAY | VT_UI1, SafeArrayCreateVector(VT_UI1, 0, 9), 1}}) {
    object.count = 1;
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = static_cast<VARTYPE>(type);
    variant.byref = pointer;
    EXPECT_EQ(VariantClear(&variant), S_OK) << type;
    EXPECT_EQ(variant.vt, VT_EMPTY) << type;
    EXPECT_EQ(object.count, countAfter) << type;
  }
}

}  // namespace
}  // namespace zel
