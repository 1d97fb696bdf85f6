#include "sim/Scene.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "imaging/PictureReader.h"

namespace zel {
namespace {

/// The source pixels that one target pixel is made of, and their weights (sum 1): along one axis.
struct Footprint {
  int first = 0;
  std::vector<float> weights;
};

/// A tent as wide as the larger of the two pixels: bilinear when enlarging, a weighted area mean when
/// reducing.
std::vector<Footprint> Footprints(int source, int target, double scale) {
  const double support = std::max(scale, 1.0);
  const double offset = (source - target * scale) / 2;  // what the cut takes off at the start
  std::vector<Footprint> footprints(static_cast<std::size_t>(target));
  for (int n = 0; n < target; ++n) {
    const double centre = offset + (n + 0.5) * scale;
    const int begin = std::clamp(static_cast<int>(std::floor(centre - support)), 0, source - 1);
    const int end = std::clamp(static_cast<int>(std::ceil(centre + support)), begin + 1, source);
    Footprint& footprint = footprints[static_cast<std::size_t>(n)];
    footprint.first = begin;
    float sum = 0;
    for (int i = begin; i < end; ++i) {
      const double distance = std::abs(i + 0.5 - centre) / support;
      // The floor keeps a pixel at the picture's edge from having no light at all.
      footprint.weights.push_back(static_cast<float>(std::max(1 - distance, 1e-6)));
      sum += footprint.weights.back();
    }
    for (float& weight : footprint.weights) weight /= sum;
  }
  return footprints;
}

class PhotoScene : public Scene {
 public:
  PhotoScene(const Picture& picture, int width, int height)
      : Scene(width, height), sourceWidth_(static_cast<std::size_t>(picture.width)), rgb_(picture.rgb) {
    const double scale =
        std::min(static_cast<double>(picture.width) / width, static_cast<double>(picture.height) / height);
    columns_ = Footprints(picture.width, width, scale);
    rows_ = Footprints(picture.height, height, scale);
  }

  void RenderRow(int y, LinearRgb* row) const override {
    const Footprint& vertical = rows_[static_cast<std::size_t>(y)];
    std::vector<float> mixed(sourceWidth_ * 3, 0.0f);
    const std::uint8_t* source = &rgb_[static_cast<std::size_t>(vertical.first) * sourceWidth_ * 3];
    for (const float weight : vertical.weights) {
      for (float& value : mixed) value += weight * LightOfCode(*source++);
    }
    for (const Footprint& horizontal : columns_) {
      std::array<float, 3> sum{};
      const float* value = &mixed[static_cast<std::size_t>(horizontal.first) * 3];
      for (const float weight : horizontal.weights) {
        for (float& channel : sum) channel += weight * *value++;
      }
      const auto level = [](float light) {
        return static_cast<std::uint16_t>(std::min(light + 0.5f, 65535.0f));
      };
      *row++ = {level(sum[0]), level(sum[1]), level(sum[2])};
    }
  }

  std::optional<double> WhiteLevel() const override { return 1; }

 private:
  std::size_t sourceWidth_;
  std::vector<std::uint8_t> rgb_;
  std::vector<Footprint> columns_, rows_;
};

/// A scene's rows, from the top to the bottom, as a lens shows them: with a blur of a pixel (standard
/// deviation), which leaves hardly anything of what the mosaic would turn into colours.
class Lens {
 public:
  explicit Lens(const Scene& scene) : scene_(scene) {
    for (auto& row : rows_) row.resize(static_cast<std::size_t>(scene.Width()));
  }

  /// The next row.
  void RenderRow(LinearRgb* row) {
    while (rendered_ <= std::min(next_ + kReach, scene_.Height() - 1)) RenderAcross(rendered_++);
    const LinearRgb* taps[kTaps];
    for (int n = 0; n < kTaps; ++n)
      taps[n] = Kept(std::clamp(next_ + n - kReach, 0, scene_.Height() - 1)).data();
    for (int x = 0; x < scene_.Width(); ++x) row[x] = Mixed([&](int n) { return taps[n][x]; });
    ++next_;
  }

 private:
  static constexpr int kTaps = 5, kReach = 2;
  static constexpr std::uint32_t kWeights[kTaps] = {1, 4, 6, 4, 1};

  template <class Tap>
  static LinearRgb Mixed(Tap tap) {
    std::uint32_t r = 8, g = 8, b = 8;
    for (int n = 0; n < kTaps; ++n) {
      const LinearRgb light = tap(n);
      r += kWeights[n] * light.r;
      g += kWeights[n] * light.g;
      b += kWeights[n] * light.b;
    }
    return {static_cast<std::uint16_t>(r / 16), static_cast<std::uint16_t>(g / 16),
            static_cast<std::uint16_t>(b / 16)};
  }

  std::vector<LinearRgb>& Kept(int y) { return rows_[static_cast<std::size_t>(y % kTaps)]; }

  void RenderAcross(int y) {
    const int width = scene_.Width();
    sharp_.resize(static_cast<std::size_t>(width));
    scene_.RenderRow(y, sharp_.data());
    for (int x = 0; x < width; ++x) {
      Kept(y)[static_cast<std::size_t>(x)] = Mixed(
          [&](int n) { return sharp_[static_cast<std::size_t>(std::clamp(x + n - kReach, 0, width - 1))]; });
    }
  }

  const Scene& scene_;
  std::array<std::vector<LinearRgb>, kTaps> rows_;  ///< blurred across already
  std::vector<LinearRgb> sharp_;
  int rendered_ = 0, next_ = 0;
};

/// A sliding mean over 2 x radius + 1 samples of one line, `stride` samples apart; the line's end samples
/// continue beyond it. A radius between two whole ones weighs the outermost samples by the rest.
void BlurLine(const std::uint16_t* in, std::uint16_t* out, int length, int stride, double radius) {
  const int whole = static_cast<int>(radius);
  const double rest = radius - whole;
  const double norm = 1 / (2 * radius + 1);
  for (int phase = 0; phase < stride; ++phase) {
    const int count = (length - phase + stride - 1) / stride;
    const auto at = [&](int n) { return in[phase + std::clamp(n, 0, count - 1) * stride]; };
    std::uint64_t sum = 0;
    for (int n = -whole; n <= whole; ++n) sum += at(n);
    for (int n = 0; n < count; ++n) {
      const double outer = rest * (at(n - whole - 1) + at(n + whole + 1));
      out[phase + n * stride] =
          static_cast<std::uint16_t>(std::lround((static_cast<double>(sum) + outer) * norm));
      sum += at(n + whole + 1);
      sum -= at(n - whole);
    }
  }
}

void BlurRowsAndTranspose(const std::vector<std::uint16_t>& in, std::vector<std::uint16_t>& out, int width,
                          int height, int stride, double radius) {
  std::vector<std::uint16_t> line(static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) {
    BlurLine(&in[static_cast<std::size_t>(y) * line.size()], line.data(), width, stride, radius);
    for (std::size_t x = 0; x < line.size(); ++x)
      out[x * static_cast<std::size_t>(height) + static_cast<std::size_t>(y)] = line[x];
  }
}

}  // namespace

std::unique_ptr<Scene> MakePhotoScene(const Picture& picture, int width, int height) {
  return std::make_unique<PhotoScene>(picture, width, height);
}

std::vector<std::uint16_t> FilteredScene(const Scene& scene, ColourFilter filter, double blurRadius) {
  const int width = scene.Width(), height = scene.Height();
  std::vector<LinearRgb> row(static_cast<std::size_t>(width));
  std::vector<std::uint16_t> samples;
  samples.reserve(row.size() * static_cast<std::size_t>(height));
  Lens lens(scene);
  for (int y = 0; y < height; ++y) {
    if (scene.HasHardEdges()) {
      lens.RenderRow(row.data());
    } else {
      scene.RenderRow(y, row.data());
    }
    for (int x = 0; x < width; ++x)
      samples.push_back(FilteredLight(row[static_cast<std::size_t>(x)], filter, x, y));
  }
  if (blurRadius > 0) {
    // Two passes of a box make a tent. In a mosaic, samples of one colour stand two apart.
    const int stride = filter == ColourFilter::Mono ? 1 : 2;
    const double radius = blurRadius / (2 * stride);
    std::vector<std::uint16_t> turned(samples.size());
    for (int pass = 0; pass < 2; ++pass) {
      BlurRowsAndTranspose(samples, turned, width, height, stride, radius);
      BlurRowsAndTranspose(turned, samples, height, width, stride, radius);
    }
  }
  return samples;
}

}  // namespace zel
