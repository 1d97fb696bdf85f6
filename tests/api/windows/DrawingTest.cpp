#include <gtest/gtest.h>

#include "api/FakeCamera.h"

namespace zel::test {
namespace {

/// A device context that draws into memory, 32-bit, top row first.
class MemoryContext {
 public:
  MemoryContext(LONG width, LONG height) : width_(width) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    bitmap_ =
        CreateDIBSection(context_, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&pixels_), nullptr, 0);
    SelectObject(context_, bitmap_);
  }
  ~MemoryContext() {
    DeleteDC(context_);
    DeleteObject(bitmap_);
  }
  MemoryContext(const MemoryContext&) = delete;
  MemoryContext& operator=(const MemoryContext&) = delete;

  LONG Handle() const { return HandleToLong(context_); }
  DWORD Pixel(LONG x, LONG y) const {
    GdiFlush();
    return pixels_[y * width_ + x] & 0xFFFFFF;
  }

 private:
  LONG width_;
  HDC context_ = CreateCompatibleDC(nullptr);
  HBITMAP bitmap_ = nullptr;
  DWORD* pixels_ = nullptr;
};

/// 2 x 3 pixels with values 1..6.
class Drawing : public testing::Test {
 protected:
  Drawing() {
    for (unsigned char n = 0; n < 6; ++n) array_.Data()[4 * n] = static_cast<unsigned char>(n + 1);
  }
  ComPtr<CZELCamera> camera_ = NewObject<CZELCamera>();
  ArrayVariant array_{24};
};

TEST_F(Drawing, UnscaledWithTheFirstRowOnTop) {
  const MemoryContext context(4, 6);
  EXPECT_EQ(camera_->SetDIBits(context.Handle(), 2, 3, array_.variant), S_OK);
  for (LONG y = 0; y < 6; ++y) {
    for (LONG x = 0; x < 4; ++x) {
      EXPECT_EQ(context.Pixel(x, y), x < 2 && y < 3 ? static_cast<DWORD>(2 * y + x + 1) : 0) << x << "," << y;
    }
  }
}

TEST_F(Drawing, StretchedWithTheFirstRowAtTheBottom) {
  const MemoryContext context(4, 6);
  EXPECT_EQ(camera_->StretchDIBits(context.Handle(), 2, 3, array_.variant), S_OK);
  for (LONG y = 0; y < 6; ++y) {
    for (LONG x = 0; x < 4; ++x) {
      EXPECT_EQ(context.Pixel(x, y), static_cast<DWORD>(2 * (2 - y / 2) + x / 2 + 1)) << x << "," << y;
    }
  }
}

TEST_F(Drawing, NothingFromTooSmallAnArray) {
  const MemoryContext context(4, 6);
  EXPECT_EQ(camera_->SetDIBits(context.Handle(), 2, 4, array_.variant), S_OK);
  EXPECT_EQ(camera_->StretchDIBits(context.Handle(), 3, 3, array_.variant), S_OK);
  EXPECT_EQ(camera_->SetDIBits(context.Handle(), -2, -3, array_.variant), S_OK);
  EXPECT_EQ(context.Pixel(0, 0), 0u);
}

}  // namespace
}  // namespace zel::test
