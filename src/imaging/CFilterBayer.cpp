#include "imaging/CFilterBayer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "imaging/kernels/GradientDemosaic.h"
#include "imaging/kernels/PaddedFrame.h"

namespace zel {
namespace {

constexpr LONG kMarginRows = 2;       // above the image, and as many below
constexpr LONG kMarginColumns = 5;    // bytes left of the image
constexpr LONG kRowExtra = 11;        // bytes of a work row beyond the even width
constexpr LONG kGammaTooLarge = 120;  // what a gamma above the last table counts as
constexpr LONG kMaxGain = 1 << 14;    // 128 times unity: any light sample is white long before

std::int32_t PlaneGain(LONG gain) {
  return std::clamp<LONG>(gain, 0, kMaxGain) * (1 << (PlaneGains::kShift - 7));
}

}  // namespace

bool CFilterBayer::Allocate(LONG width, LONG height) {
  if (work_.Data() && width == width_ && height == height_) return true;
  work_.Free();
  width_ = height_ = workStride_ = 0;
  if (width < 1 || height < 1 || width > INT32_MAX - 1 - kRowExtra) return false;

  const LONG stride = width + (width & 1) + kRowExtra;
  const std::size_t bytes =
      std::size_t(stride) * (std::size_t(std::max(height, kMaxBand)) + 2 * kMarginRows) + kRowSlack;
  if (!work_.Reserve(bytes) || !writer_.Allocate(width)) return false;
  // Margins that are never filled read as black. Larger frames fill what they read, and memory that is not
  // touched here costs nothing when a camera starts.
  if (!IsContinued(width, height)) std::memset(work_.Data(), 0, bytes);
  width_ = width;
  height_ = height;
  workStride_ = stride;
  // Without its statistics the white balance falls back to grey world.
  static_cast<void>(whiteBalance_.Allocate(width, height));
  return true;
}

std::uint8_t* CFilterBayer::ImageOrigin() const {
  return work_.Data() ? work_.Data() + std::ptrdiff_t{kMarginRows} * workStride_ + kMarginColumns : nullptr;
}

void CFilterBayer::PrepareFrame(const unsigned char* frame, LONG pitch, std::size_t frameBytes) {
  std::uint8_t* image = ImageOrigin();
  if (!image || !frame || pitch < 0) return;
  const LONG sourcePitch = pitch == 0 ? width_ : pitch;
  for (LONG row = 0; row < height_; ++row) {
    CopyRow({frame, sourcePitch, frameBytes}, row, image + std::ptrdiff_t{row} * workStride_);
  }
  FillMargins(image, workStride_, width_, height_);
}

void CFilterBayer::SetGammaTable(LONG gamma) {
  if (gamma < 1) return;
  const LONG value = gamma > 200 ? kGammaTooLarge : gamma;
  GammaTable& table = gammaTables_[static_cast<std::size_t>(value)];
  if (table.built) return;
  for (int i = 0; i < 256; ++i) {
    table.entries[static_cast<std::size_t>(i)] =
        static_cast<std::uint8_t>(std::floor(255.0 * std::pow(i / 255.0, value / 100.0) + 0.5));
  }
  table.built = true;
}

void CFilterBayer::SelectGamma(LONG gamma) {
  SetGammaTable(gamma);
  const LONG value = gamma > 200 ? kGammaTooLarge : gamma;
  gamma_ = value < 1 ? nullptr : gammaTables_[static_cast<std::size_t>(value)].entries.data();
}

void CFilterBayer::BeginFrame(LONG gamma) {
  SelectGamma(gamma);
  frameMatrix_ = matrix_.Product();
}

void CFilterBayer::SetGains(LONG r, LONG g, LONG b) {
  gains_ = {PlaneGain(r), PlaneGain(g), PlaneGain(b)};
}

void CFilterBayer::ComputeGains(LONG modeIndex, LONG bayerMode, ColorGains& gains) {
  if (!work_.Data()) return;
  LONG r = gains.r, g = gains.g, b = gains.b;
  whiteBalance_.ComputeGains(modeIndex, WorkImage(), workStride_, bayerMode, width_, height_, &r, &g, &b);
  gains = {r, g, b};
}

PixelTones CFilterBayer::Tones() const {
  return {gains_, frameMatrix_.active ? &frameMatrix_ : nullptr, gamma_};
}

void CFilterBayer::DemosaicColor(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode) {
  Demosaic(frame, {out, std::ptrdiff_t{width} * 4, width, height_, 4, false}, Tones(), bayerMode);
}

void CFilterBayer::DemosaicColor24(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode,
                                   const PlaneGains& gains) {
  Demosaic(frame, {out, std::ptrdiff_t{width} * 3, width, height_, 3, false}, {.gains = gains}, bayerMode);
}

void CFilterBayer::DemosaicMono(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode) {
  Demosaic(frame, {out, std::ptrdiff_t{width} * 4, width, height_, 4, true}, {}, bayerMode);
}

void CFilterBayer::DemosaicMono24(const unsigned char* frame, unsigned char* out, LONG width,
                                  LONG bayerMode) {
  Demosaic(frame, {out, std::ptrdiff_t{width} * 3, width, height_, 3, true}, {}, bayerMode);
}

void CFilterBayer::Demosaic(const unsigned char* frame, const PictureTarget& target, const PixelTones& tones,
                            LONG bayerMode) {
  if (!work_.Data() || frame != WorkImage() || !target.pixels) return;
  PictureTarget inside = target;
  inside.width = std::min<LONG>(target.width, width_);
  writer_.Begin(inside, tones, 0);
  DemosaicRows(height_, PhaseOfMode(bayerMode));
}

void CFilterBayer::CopyRow(const SampleFrame& frame, LONG row, std::uint8_t* to) const {
  const auto rowBytes = static_cast<std::size_t>(width_);
  const bool exists = row >= 0 && row < height_ && frame.bytes >= rowBytes &&
                      std::size_t(row) * std::size_t(frame.pitch) <= frame.bytes - rowBytes;
  if (exists) {
    std::memcpy(to, frame.Row(row), rowBytes);
  } else {
    std::memset(to, 0, rowBytes);
  }
}

void CFilterBayer::DemosaicBand(const SampleFrame& frame, LONG firstRow, LONG endRow, LONG bayerMode) {
  std::uint8_t* image = ImageOrigin();
  for (LONG row = firstRow - kMarginRows; row < endRow + kMarginRows; ++row) {
    std::uint8_t* to = image + std::ptrdiff_t{row - firstRow} * workStride_;
    CopyRow(frame, RowBehind(row, width_, height_), to);
    FillSides(to, width_, height_);
  }
  DemosaicRows(endRow - firstRow, PhaseAt(PhaseOfMode(bayerMode), firstRow, 0));
}

void CFilterBayer::DemosaicRows(LONG rows, BayerPhase phase) {
  for (LONG row = 0; row < rows; ++row) {
    GradientRow(WorkImage() + std::ptrdiff_t{row} * workStride_, workStride_, width_, PhaseAt(phase, row, 0),
                writer_.NextRow());
    writer_.FinishRow();
  }
}

}  // namespace zel
