#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "sim/SensorMap.h"

namespace zel {

struct Picture;

/// Linear light, 65535 = the brightest that a scene has. A sensor answers in proportion to it, and the
/// library by default hands that to the screen without a curve: what shall look like the code of a screen
/// there, shines in proportion to the code.
struct LinearRgb {
  std::uint16_t r = 0, g = 0, b = 0;

  bool operator==(const LinearRgb&) const = default;
};

/// Light of a screen's code 0..255.
constexpr std::uint16_t LightOfCode(std::uint8_t code) {
  return static_cast<std::uint16_t>(code * 257);
}

/// What stands in front of a sensor, seen at its pixels. Constant after construction, so any thread may look.
class Scene {
 public:
  /// A disc that moves over the scene from frame to frame; scene pixels.
  struct Marker {
    double x = 0, y = 0, radius = 0;
    LinearRgb colour;
  };

  Scene(int width, int height) : width_(width), height_(height) {}
  virtual ~Scene() = default;

  int Width() const { return width_; }
  int Height() const { return height_; }

  /// Fills `row` with the `Width()` pixels of row `y`.
  virtual void RenderRow(int y, LinearRgb* row) const = 0;
  virtual std::optional<Marker> MarkerAt(std::uint32_t /*frame*/) const { return {}; }
  /// Whether the camera prints the frame number on pictures of it (sim/FrameCode.h).
  virtual bool CarriesFrameCode() const { return false; }
  /// Whether its edges are sharper than a lens shows any.
  virtual bool HasHardEdges() const { return false; }
  /// Exposure of its brightest light at reset values, as a part of full scale; empty: the sensor's own.
  virtual std::optional<double> WhiteLevel() const { return {}; }

 private:
  int width_, height_;
};

/// A picture, cut and scaled so that it covers width x height pixels, exposed so that its codes come back.
/// The picture must not be empty.
std::unique_ptr<Scene> MakePhotoScene(const Picture& picture, int width, int height);

/// The scene through the lens and the sensor's colour filter: width x height samples, rows without gaps.
/// `blurRadius`, in pixels, defocuses it; 0 leaves it as sharp as the lens is.
std::vector<std::uint16_t> FilteredScene(const Scene& scene, ColourFilter filter, double blurRadius);

/// What a red, a green and a blue filter let through of red, green and blue light, in 1/65536. Filters
/// overlap; the default colour matrix of the cameras undoes just this.
constexpr std::uint32_t kFilterResponse[3][3] = {
    {50307, 9155, 5981}, {9545, 49507, 6384}, {5415, 11484, 47889}};

/// The light that a sample at sensor pixel (x, y) sees of a colour.
inline std::uint16_t FilteredLight(const LinearRgb& light, ColourFilter filter, int x, int y) {
  if (filter == ColourFilter::Mono) return static_cast<std::uint16_t>((light.r + 2u * light.g + light.b) / 4);
  const auto phase = static_cast<unsigned>(filter);
  const unsigned column = (static_cast<unsigned>(x) ^ (phase >> 1)) & 1;
  const unsigned row = (static_cast<unsigned>(y) ^ phase) & 1;
  const auto& response = kFilterResponse[column == row ? 1 : column != 0 ? 0 : 2];
  return static_cast<std::uint16_t>(
      (response[0] * light.r + response[1] * light.g + response[2] * light.b + 0x8000u) >> 16);
}

}  // namespace zel
