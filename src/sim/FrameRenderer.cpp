#include "sim/FrameRenderer.h"

#include <algorithm>
#include <cmath>

#include "common/BytePacking.h"

namespace zel {
namespace {

constexpr int kLightShift = 4;                 // light has 16 bits, the table of exposures 12
constexpr std::size_t kNoiseStarts = 1 << 15;  // places in the noise table where a row may start
constexpr double kMarkerEdge = 3;              // pixels from out to in, as soft as the lens makes edges
constexpr LinearRgb kCodeWhite{60000, 60000, 60000}, kCodeBlack{1000, 1000, 1000};  // at any exposure

/// The splitmix64 generator's step: any 64 bits to well-mixed ones.
std::uint64_t Mix(std::uint64_t value) {
  value += 0x9E3779B97F4A7C15u;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
  return value ^ (value >> 31);
}

/// Nearly normal: the sum of four uniform 16-bit numbers, scaled to a standard deviation of 256.
std::int16_t NormalNoise(std::uint64_t bits) {
  std::int64_t sum = -2 * 65535;
  for (int n = 0; n < 4; ++n) sum += bits >> (16 * n) & 0xFFFF;
  return static_cast<std::int16_t>(sum * 256 / 37837);  // 37837: the sum's standard deviation
}

}  // namespace

FrameRenderer::FrameRenderer(const SensorMap& map, std::shared_ptr<const Scene> scene, double noise)
    : map_(&map), scene_(std::move(scene)), noise_(noise) {}

void FrameRenderer::SelectBlur(double radius) {
  if (radius == blur_) return;
  blur_ = radius;
  sensorLight_.clear();
  windowLight_.clear();
}

void FrameRenderer::SelectWindow(const ReadoutWindow& window) {
  if (sensorLight_.empty()) sensorLight_ = FilteredScene(*scene_, map_->filter, blur_);
  if (window == window_ && !windowLight_.empty()) return;
  window_ = window;

  const auto clip = [](int place, int size) { return std::clamp(place, 0, size - 1); };
  columns_.clear();
  rows_.clear();
  for (int x = 0; x < window.columns; ++x) columns_.push_back(clip(window.SensorColumn(x), map_->width));
  for (int y = 0; y < window.rows; ++y)
    rows_.push_back(clip(window.SensorRow(window.PictureRow(y)), map_->height));

  const auto width = static_cast<std::size_t>(window.columns);
  windowLight_.clear();
  windowLight_.reserve(width * rows_.size());
  for (const int row : rows_) {
    const std::uint16_t* const light =
        &sensorLight_[static_cast<std::size_t>(row) * static_cast<std::size_t>(map_->width)];
    for (const int column : columns_) windowLight_.push_back(light[column]);
  }
  markedRow_.resize(width);
  row_.resize(width);
  noiseTable_.resize(kNoiseStarts + width);
  for (std::size_t n = 0; n < noiseTable_.size(); ++n) noiseTable_[n] = NormalNoise(Mix(n));
}

void FrameRenderer::SelectExposure(double exposure, double gain) {
  if (exposure == exposure_ && gain == gain_) return;
  exposure_ = exposure;
  gain_ = gain;
  exposed_.resize(65536 >> kLightShift);
  // Noise arises in electrons, before the gain: the photons' own and that of reading out.
  const double white = scene_->WhiteLevel().value_or(map_->whiteLevel);
  const double unitsPerElectron = 65535 / map_->fullWell * gain;
  for (std::size_t n = 0; n < exposed_.size(); ++n) {
    const double light = static_cast<double>(n) / static_cast<double>(exposed_.size() - 1);
    const double mean = light * white * exposure * 65535;
    const double deviation =
        noise_ * std::sqrt(mean * unitsPerElectron + std::pow(map_->readNoise * unitsPerElectron, 2));
    // A sample far beyond full scale shows no noise any more.
    const bool saturated = mean - 4 * deviation > 65535;
    exposed_[n] = {static_cast<std::uint16_t>(std::min(mean, 65535.0)),
                   static_cast<std::uint16_t>(saturated ? 0 : std::min(deviation, 65535.0))};
  }
}

const std::uint16_t* FrameRenderer::LightOfRow(const std::optional<Scene::Marker>& marker, int y) {
  const std::size_t width = columns_.size();
  const std::uint16_t* const light = &windowLight_[static_cast<std::size_t>(y) * width];
  const int sensorRow = rows_[static_cast<std::size_t>(y)];
  if (!marker || std::abs(sensorRow + 0.5 - marker->y) > marker->radius + kMarkerEdge) return light;

  std::copy_n(light, width, markedRow_.begin());
  for (std::size_t x = 0; x < width; ++x) {
    const double distance = std::hypot(columns_[x] + 0.5 - marker->x, sensorRow + 0.5 - marker->y);
    const double coverage = std::clamp((marker->radius - distance) / kMarkerEdge + 0.5, 0.0, 1.0);
    if (coverage <= 0) continue;
    const std::uint16_t over = FilteredLight(marker->colour, map_->filter, columns_[x], sensorRow);
    markedRow_[x] = static_cast<std::uint16_t>(markedRow_[x] + (over - markedRow_[x]) * coverage);
  }
  return markedRow_.data();
}

void FrameRenderer::ExposeRow(const std::uint16_t* light, std::uint64_t noiseSeed) {
  const std::uint64_t start = Mix(noiseSeed) % kNoiseStarts;
  const std::int16_t* const noise = &noiseTable_[start];
  const Exposed* const exposed = exposed_.data();
  std::uint16_t* const row = row_.data();
  for (std::size_t x = 0, width = row_.size(); x < width; ++x) {
    const Exposed sample = exposed[light[x] >> kLightShift];
    const int value = sample.mean + (noise[x] * sample.noise >> 8);
    row[x] = static_cast<std::uint16_t>(std::clamp(value, 0, 65535));
  }
}

std::size_t FrameRenderer::Render(const Frame& frame, int bytesPerSample, std::span<std::uint8_t> out,
                                  std::size_t pitch) {
  if (!map_->turned) return RenderUpright(frame, bytesPerSample, out, pitch);
  const auto width = static_cast<std::size_t>(frame.readout.window.columns);
  const auto height = static_cast<std::size_t>(frame.readout.window.rows);
  const auto sampleBytes = static_cast<std::size_t>(bytesPerSample);
  upright_.resize(width * height * sampleBytes);
  RenderUpright(frame, bytesPerSample, upright_, 0);
  const std::size_t samples = std::min(width * height, out.size() / sampleBytes);
  for (std::size_t n = 0; n < samples; ++n) {
    const std::size_t from = n % height * width + n / height;
    std::copy_n(&upright_[from * sampleBytes], sampleBytes, &out[n * sampleBytes]);
  }
  return samples * sampleBytes;
}

std::size_t FrameRenderer::RenderUpright(const Frame& frame, int bytesPerSample, std::span<std::uint8_t> out,
                                         std::size_t pitch) {
  SelectBlur(frame.blur);
  SelectWindow(frame.readout.window);
  SelectExposure(frame.readout.exposure, frame.readout.gain);

  const int width = window_.columns, height = window_.rows;
  const int codeRows = scene_->CarriesFrameCode() ? FrameCodeHeight(width, height) : 0;
  const auto marker = scene_->MarkerAt(frame.number);
  const FrameCodeCells cells = EncodeFrameNumber(frame.number);
  const std::size_t pictureBytes = row_.size() * static_cast<std::size_t>(bytesPerSample);
  if (pitch == 0) pitch = pictureBytes;
  const std::size_t rowBytes = std::min(pictureBytes, pitch);
  const int spareBits = 16 - map_->bits;

  std::size_t written = 0;
  for (int y = 0; y < height && written < out.size(); ++y) {
    const int pictureRow = window_.PictureRow(y);
    if (pictureRow < codeRows || pictureRow >= height - codeRows) {
      for (int x = 0; x < width; ++x) {
        const std::size_t column = static_cast<std::size_t>(x);
        const bool white = cells[static_cast<std::size_t>(FrameCodeCell(x, width))];
        row_[column] = FilteredLight(white ? kCodeWhite : kCodeBlack, map_->filter, columns_[column],
                                     rows_[static_cast<std::size_t>(y)]);
      }
    } else {
      ExposeRow(LightOfRow(marker, y), frame.noise + Mix(static_cast<std::uint64_t>(y)));
    }
    const std::span<std::uint8_t> target = out.subspan(written, std::min(rowBytes, out.size() - written));
    if (bytesPerSample == 1) {
      for (std::size_t n = 0; n < target.size(); ++n) target[n] = ByteOf(row_[n], 1);
    } else {
      for (std::size_t n = 0; n < target.size() / 2; ++n) {
        const unsigned sample = static_cast<unsigned>(row_[n]) >> spareBits;
        target[2 * n] = ByteOf(sample, 0);
        target[2 * n + 1] = ByteOf(sample, 1);
      }
      if (target.size() % 2 != 0) target.back() = ByteOf(row_[target.size() / 2] >> spareBits, 0);
    }
    written += target.size();
    const std::size_t gap = std::min(pitch - rowBytes, out.size() - written);
    std::ranges::fill(out.subspan(written, gap), std::uint8_t{0});
    written += gap;
  }
  return written;
}

}  // namespace zel
