#include "imaging/DirectPicture.h"

#include <algorithm>
#include <cstring>

#include "imaging/kernels/DirectDemosaic.h"

namespace zel {
namespace {

constexpr int kBorder = 2;                  // rows and columns on each side that are not computed
constexpr std::ptrdiff_t kSlackBefore = 2;  // bytes that the kernel reads before a row

}  // namespace

bool DirectPicture::Allocate(int width) {
  pitch_ = (static_cast<std::size_t>(width) + 63) / 64 * 64 + 2 * kRowSlack;
  if (!rows_.Reserve(kRows * pitch_)) return false;
  std::memset(rows_.Data(), 0, kRows * pitch_);
  return true;
}

void DirectPicture::Begin(const MosaicFrame& frame, const ColorGains& gains) {
  frame_ = frame;
  gains_ = gains;
  next_ = 0;
}

const std::uint8_t* DirectPicture::Row(int row) {
  const std::ptrdiff_t before = row * frame_.pitch, behind = (frame_.height - 1 - row) * frame_.pitch;
  const std::uint8_t* samples = frame_.samples + before;
  if (before >= kSlackBefore && behind >= static_cast<std::ptrdiff_t>(kRowSlack)) return samples;
  std::uint8_t* copy = rows_.Data() + static_cast<std::size_t>(row % kRows) * pitch_ + kRowSlack;
  std::memcpy(copy, samples, static_cast<std::size_t>(frame_.width));
  return copy;
}

void DirectPicture::WriteRows(int endRow, PictureWriter& writer) {
  if (!Exists(frame_.width, frame_.height)) return;
  for (endRow = std::min(endRow, frame_.height); next_ < endRow; ++next_) {
    const int row = std::clamp(next_, kBorder, frame_.height - kBorder - 1);
    const PlaneRow colors = writer.NextRow();
    DirectRow({Row(row - 2), Row(row - 1), Row(row), Row(row + 1)}, frame_.width,
              PhaseAt(frame_.phase, row, 0), gains_, colors);
    const int last = frame_.width - kBorder - 1;
    for (std::uint8_t* plane : {colors.red, colors.green, colors.blue}) {
      std::memset(plane, plane[kBorder], kBorder);
      std::memset(plane + last + 1, plane[last], kBorder);
    }
    writer.FinishRow();
  }
}

}  // namespace zel
