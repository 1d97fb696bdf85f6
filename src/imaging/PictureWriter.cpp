#include "imaging/PictureWriter.h"

#include <algorithm>
#include <cstring>

#include "imaging/kernels/Pixels.h"
#include "imaging/kernels/Sharpness.h"

namespace zel {
namespace {

// From this size on a picture would push everything else out of the cache before anyone reads it.
constexpr std::size_t kStreamingBytes = std::size_t{8} << 20;

constexpr std::size_t kPlanes = 3;

}  // namespace

bool PictureWriter::Allocate(int width) {
  pitch_ = (static_cast<std::size_t>(width) + 63) / 64 * 64 + 2 * kRowSlack;
  const std::size_t planes = (kRows + 1) * kPlanes * pitch_;
  const std::size_t sums = SharpenScratchWords(width) * sizeof(std::int16_t);
  if (!planes_.Reserve(planes) || !sums_.Reserve(sums)) return false;
  // What lies in the slack takes no part in a result, but is read.
  std::memset(planes_.Data(), 0, planes);
  std::memset(sums_.Data(), 0, sums);
  return true;
}

PlaneRow PictureWriter::Row(int index) const {
  std::uint8_t* first = planes_.Data() + static_cast<std::size_t>(index) * kPlanes * pitch_ + kRowSlack;
  if (target_.grey) return {first, first, first};
  return {first, first + pitch_, first + 2 * pitch_};
}

void PictureWriter::Begin(const PictureTarget& target, const PixelTones& tones, int sharpness) {
  target_ = target;
  tones_ = tones;
  sharpness_ = target.width >= 4 && target.height >= 4 ? sharpness : 0;
  const std::size_t bytes = static_cast<std::size_t>(target.stride) * static_cast<std::size_t>(target.height);
  streaming_ = target.pixelBytes == 4 && bytes >= kStreamingBytes &&
               reinterpret_cast<std::uintptr_t>(target.pixels) % 4 == 0 && target.stride % 4 == 0;
  row_ = 0;
}

void PictureWriter::FinishRow() {
  const PlaneRow row = NextRow();
  if (!target_.grey) ApplyTones(row, target_.width, tones_);
  if (sharpness_ == 0) {
    Store(row_, row);
  } else {
    // A row is sharpened when the one below it is there.
    if (row_ < 2) Store(row_, row);
    if (row_ >= 3) Sharpen(row_ - 1);
    if (row_ == target_.height - 1) Sharpen(row_);
  }
  ++row_;
  if (streaming_ && row_ == target_.height) FinishStreaming();
}

void PictureWriter::Sharpen(int row) {
  const PlaneRow sharpened = Row(kRows), plain = Row(row % kRows);
  auto* const sums = reinterpret_cast<std::int16_t*>(sums_.Data());
  for (std::uint8_t* PlaneRow::*plane : {&PlaneRow::red, &PlaneRow::green, &PlaneRow::blue}) {
    const std::uint8_t* const block[kRows] = {Row(0).*plane, Row(1).*plane, Row(2).*plane, Row(3).*plane};
    SharpenRow(block, plain.*plane, target_.width, sharpness_, sums, sharpened.*plane);
    if (target_.grey) break;
  }
  Store(row, sharpened);
}

void PictureWriter::Store(int row, const PlaneRow& colors) {
  StorePixels(colors, target_.width, target_.pixelBytes, streaming_, target_.pixels + row * target_.stride);
}

}  // namespace zel
