// Arrays in VARIANTs: what is taken, what is refused, and that nothing is read or written beyond them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "TemporaryFolder.h"
#include "api/FakeCamera.h"
#include "imaging/COrvaneImageImpl32.h"

namespace zel::test {
namespace {

using testing::Each;

/// The same array as elements that own something.
VARIANT AsVariantArray(ArrayVariant& array) {
  constexpr USHORT kVariantElements = 0x0800;
  array.variant.parray->fFeatures |= kVariantElements;
  return array.variant;
}

VARIANT Plain(VARTYPE type, void* address) {
  VARIANT variant;
  VariantInit(&variant);
  variant.vt = type;
  variant.byref = address;
  return variant;
}

class GetData : public testing::Test {
 protected:
  static constexpr std::size_t kFrame = 8 * 4 * 4;  ///< 8 x 4 pixels of 4 bytes

  GetData() {
    image_.SetOutputFormat(5);
    image_.SetWidth(8);
    image_.SetHeight(4);
    image_.SetSourceWidth(8);
    image_.SetSourceHeight(4);
    image_.AllocateBuffers();
    with_.device->image = &image_;
    with_.device->frame.assign(kFrame, 0xAB);
  }

  HRESULT Take(const VARIANT& variant) {
    written_ = kUntouched;
    with_.device->lastVariantType = 0;
    return with_.camera->GetData(variant, &written_);
  }

  COrvaneImageImpl32 image_{0};
  CameraWithDevice with_;
  LONG written_ = kUntouched;
};

TEST_F(GetData, IntoArraysAndAddresses) {
  ArrayVariant exact(kFrame);
  VARIANT variable = exact.variant;
  std::vector<unsigned char> raw(kFrame);
  struct Row {
    VARIANT argument;
    const unsigned char* destination;
    LONG kind;
  };
  const Row rows[] = {
      {exact.variant, exact.Data(), VT_ARRAY},
      {exact.Reference(), exact.Data(), VT_ARRAY},
      {Plain(VT_BYREF | VT_VARIANT, &variable), exact.Data(), VT_ARRAY},  // a script's variable
      {Plain(VT_BYREF | VT_UI1, raw.data()), raw.data(), VT_BYREF},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.argument.vt);
    std::fill_n(const_cast<unsigned char*>(row.destination), kFrame, 0);
    EXPECT_EQ(Take(row.argument), S_OK);
    EXPECT_EQ(written_, S_OK);
    EXPECT_EQ(with_.device->lastVariantType, row.kind);
    EXPECT_THAT(std::vector<unsigned char>(row.destination, row.destination + kFrame), Each(0xAB));
  }
  with_.device->dataResult = static_cast<HRESULT>(0x8000401E);
  EXPECT_EQ(Take(exact.variant), static_cast<HRESULT>(0x8000401E));
  EXPECT_EQ(written_, static_cast<LONG>(0x8000401E));
}

TEST_F(GetData, RefusesWithoutAskingTheDevice) {
  ArrayVariant small(kFrame - 1), owning(kFrame);
  struct Row {
    VARIANT argument;
    LONG written;
  };
  const Row rows[] = {
      {Plain(VT_I4, nullptr), kUntouched},
      {Plain(VT_EMPTY, nullptr), kUntouched},
      {Plain(VT_ARRAY | VT_UI1, nullptr), E_FAIL},
      {Plain(VT_BYREF | VT_UI1, nullptr), E_FAIL},
      {Plain(VT_BYREF | VT_ARRAY | VT_UI1, nullptr), E_FAIL},
      {small.variant, E_FAIL},
      {small.Reference(), E_FAIL},
      {AsVariantArray(owning), E_FAIL},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.argument.vt);
    EXPECT_EQ(Take(row.argument), E_FAIL);
    EXPECT_EQ(written_, row.written);
    EXPECT_EQ(with_.device->lastVariantType, 0);
  }
  owning.variant.parray->fFeatures &= static_cast<USHORT>(~0x0800);
}

TEST_F(GetData, MakesTheArrayForAVariableThatHoldsNothing) {
  VARIANT variable = Plain(VT_NULL, nullptr);
  const VARIANT reference = Plain(VT_BYREF | VT_VARIANT, &variable);
  with_.device->dataResult = E_FAIL;
  EXPECT_EQ(Take(reference), E_FAIL);
  EXPECT_EQ(written_, E_FAIL);
  EXPECT_EQ(variable.vt, VT_NULL);
  with_.device->dataResult = S_OK;
  EXPECT_EQ(Take(reference), S_OK);
  ASSERT_EQ(variable.vt, VT_ARRAY | VT_UI1);
  ASSERT_EQ(variable.parray->rgsabound[0].cElements, kFrame);
  const auto* const data = static_cast<const unsigned char*>(variable.parray->pvData);
  EXPECT_THAT(std::vector<unsigned char>(data, data + kFrame), Each(0xAB));
  VariantClear(&variable);
  with_.device->image = nullptr;  // not playing: no size
  EXPECT_EQ(Take(reference), E_FAIL);
  EXPECT_EQ(with_.device->lastVariantType, 0);
  EXPECT_EQ(variable.vt, VT_EMPTY);
  with_.device->bufferSamples = kDeliverOnDemand;  // nothing is copied
  EXPECT_EQ(Take(reference), S_OK);
  EXPECT_EQ(variable.vt, VT_EMPTY);
}

/// The mode that is set may not be the one that runs: a device that copies after all must find no address.
TEST_F(GetData, OnDemandBringsNoAddressOfTooSmallAnArray) {
  with_.device->bufferSamples = kDeliverOnDemand;
  ArrayVariant small(kFrame - 1);
  EXPECT_EQ(Take(small.variant), S_OK);
  EXPECT_EQ(with_.device->lastDestination, nullptr);
}

class SaveImage : public testing::Test {
 protected:
  HRESULT Save(const VARIANT& bits, LONG width, LONG height, LONG bitCount, LONG stride, bool named = true) {
    const std::u16string path = path_.u16string();
    BSTR name = SysAllocString(reinterpret_cast<const OLECHAR*>(path.c_str()));
    const HRESULT result =
        camera_->SaveImage(named ? name : nullptr, bits, width, height, bitCount, stride, 0, 0);
    SysFreeString(name);
    return result;
  }
  ComPtr<CZELCamera> camera_ = NewObject<CZELCamera>();
  test::TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "picture.bmp";
};

TEST_F(SaveImage, NeedsAllBytesOfThePicture) {
  struct Row {
    LONG width, height, bitCount, stride;
    std::size_t bytes;  ///< the least that will do
    std::uintmax_t fileSize;
  };
  const Row rows[] = {
      {5, 3, 32, 0, 60, 54 + 60},
      {5, 3, 24, 0, 16 + 16 + 15, 54 + 48},  // rows end at a multiple of four, the last one need not
      {5, 3, 24, 20, 20 + 20 + 15, 54 + 48},
      {5, 3, 16, -1, 60, 54 + 60},  // anything but 24 is 32
      {5, 1, 32, 1000000, 20, 54 + 20},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.bitCount << " bits, stride " << row.stride);
    ArrayVariant enough(row.bytes), small(row.bytes - 1);
    EXPECT_EQ(Save(small.variant, row.width, row.height, row.bitCount, row.stride), E_FAIL);
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(Save(enough.Reference(), row.width, row.height, row.bitCount, row.stride), S_OK);
    EXPECT_EQ(std::filesystem::file_size(path_), row.fileSize);
    std::filesystem::remove(path_);
  }
}

TEST_F(SaveImage, RefusesBadArguments) {
  ArrayVariant array(64);
  EXPECT_EQ(Save(array.variant, 0, 4, 32, 0), E_FAIL);
  EXPECT_EQ(Save(array.variant, 4, -4, 32, 0), E_FAIL);
  EXPECT_EQ(Save(array.variant, 4, 4, 32, 0, false), E_FAIL);
  EXPECT_EQ(Save(array.variant, 2147483647, 2147483647, 32, 2147483647), E_FAIL);
  EXPECT_EQ(Save(Plain(VT_BYREF | VT_UI1, array.Data()), 4, 4, 32, 0), E_FAIL);
  EXPECT_EQ(Save(Plain(VT_I4, nullptr), 4, 4, 32, 0), E_FAIL);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST(Resample, WorksOnlyInsideBothArrays) {
  const auto camera = NewObject<CZELCamera>();
  struct Row {
    std::size_t sourceBytes, destinationBytes;
    LONG sourceWidth, sourceHeight, width, height;
    bool done;
  };
  const Row rows[] = {
      {64, 16, 4, 4, 2, 2, true},    {63, 16, 4, 4, 2, 2, false},         {64, 15, 4, 4, 2, 2, false},
      {64, 16, 1, 4, 2, 2, false},   {64, 16, 4, 4, -2, 2, false},        {64, 16, 4, 4, 0, 2, false},
      {64, 16, -4, -4, 2, 2, false}, {64, 16, 65536, 65536, 2, 2, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.sourceBytes << " to " << row.destinationBytes);
    ArrayVariant source(row.sourceBytes), destination(row.destinationBytes);
    std::fill_n(source.Data(), row.sourceBytes, 0x77);
    EXPECT_EQ(camera->Resample(source.variant, row.sourceWidth, row.sourceHeight, destination.variant,
                               row.width, row.height, 99),
              S_OK);
    EXPECT_EQ(destination.Data()[0], row.done ? 0x77 : 0);
  }
}

}  // namespace
}  // namespace zel::test
