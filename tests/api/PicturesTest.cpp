// Arrays in VARIANTs: what is taken, what is refused, and that nothing is read or written beyond them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numeric>

#include "TemporaryFolder.h"
#include "api/FakeCamera.h"
#include "api/VariantPixels.h"
#include "imaging/COrvaneImageImpl32.h"
#include "imaging/kernels/Resample.h"

namespace zel::test {
namespace {

class SaveImage : public testing::Test {
 protected:
  HRESULT Save(const VARIANT& bits, LONG width, LONG height, LONG bitCount, LONG stride, bool named = true,
               LONG format = 0, LONG gray = 0) {
    const std::u16string path = path_.u16string();
    BSTR name = SysAllocString(reinterpret_cast<const OLECHAR*>(path.c_str()));
    const HRESULT result =
        camera_->SaveImage(named ? name : nullptr, bits, width, height, bitCount, stride, format, gray);
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

TEST_F(SaveImage, InTheFormatAsked) {
  ArrayVariant array(5 * 3 * 4);
  EXPECT_EQ(Save(array.variant, 5, 3, 32, 0, true, 0, 1), S_OK);
  EXPECT_EQ(std::filesystem::file_size(path_), 1078u + 15) << "grey";
  EXPECT_EQ(Save(array.variant, 5, 3, 32, 0, true, 1, 0), S_OK);
  std::ifstream file(path_, std::ios::binary);
  EXPECT_EQ(file.get() << 8 | file.get(), 0xFFD8) << "JPEG";
}

// In a constant expression an overflow is an error.
constexpr bool Holds(std::uint64_t size, std::int64_t rows, std::int64_t stride, std::int64_t rowBytes) {
  std::uint8_t byte = 0;
  return PixelMemory{&byte, size}.HoldsRows(rows, stride, rowBytes);
}
constexpr std::int64_t kMost = 2147483647;
static_assert(Holds(55, 3, 20, 15) && !Holds(54, 3, 20, 15) && !Holds(14, 1, 20, 15));
static_assert(!Holds(1u << 31, kMost, 4 * kMost, 4 * kMost) && !Holds(1u << 31, kMost, kMost, 1));
static_assert(!Holds(64, -1, 4, 4) && !Holds(64, 4, 4, -4));

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
      {64, 16, 4, 4, 2, 2, true},
      {63, 16, 4, 4, 2, 2, false},
      {64, 15, 4, 4, 2, 2, false},
      {64, 16, 1, 4, 2, 2, false},
      {64, 16, 4, 4, -2, 2, false},
      {64, 16, 4, 4, 0, 2, false},
      {64, 16, -4, -4, 2, 2, false},
      {64, 16, 65536, 65536, 2, 2, false},
      {64, 16, 4, 4, 2147483647, 2147483647, false},
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

TEST(Resample, TakesEachSizeForWhatItIs) {
  ArrayVariant source(5 * 2 * 4), destination(3 * 4 * 4);
  std::iota(source.Data(), source.Data() + 40, std::uint8_t{0});
  std::vector<std::uint8_t> expected(48);
  ResampleBilinear(source.Data(), 5, 2, expected.data(), 3, 4);
  NewObject<CZELCamera>()->Resample(source.variant, 5, 2, destination.variant, 3, 4, 0);
  EXPECT_EQ(std::vector<std::uint8_t>(destination.Data(), destination.Data() + 48), expected);
}

}  // namespace
}  // namespace zel::test
