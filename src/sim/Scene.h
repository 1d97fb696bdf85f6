#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "sim/SensorMap.h"

namespace zel {

struct Picture;

/// Linear light, 65535 = the brightest that a scene has.
struct LinearRgb {
  std::uint16_t r = 0, g = 0, b = 0;

  bool operator==(const LinearRgb&) const = default;
};

/// Linear light of an sRGB code 0..255.
std::uint16_t LinearOfSrgb(std::uint8_t code);

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

 private:
  int width_, height_;
};

/// A picture, cut and scaled so that it covers width x height pixels. The picture must not be empty.
std::unique_ptr<Scene> MakePhotoScene(const Picture& picture, int width, int height);

/// The scene through the sensor's colour filter: width x height samples, rows without gaps. `blurRadius`, in
/// pixels, defocuses it; 0 leaves it sharp.
std::vector<std::uint16_t> FilteredScene(const Scene& scene, ColourFilter filter, double blurRadius);

/// The light that a sample at sensor pixel (x, y) sees of a colour.
inline std::uint16_t FilteredLight(const LinearRgb& light, ColourFilter filter, int x, int y) {
  if (filter == ColourFilter::Mono) return static_cast<std::uint16_t>((light.r + 2u * light.g + light.b) / 4);
  const auto phase = static_cast<unsigned>(filter);
  const unsigned column = (static_cast<unsigned>(x) ^ (phase >> 1)) & 1;
  const unsigned row = (static_cast<unsigned>(y) ^ phase) & 1;
  if (column == row) return light.g;
  return column != 0 ? light.r : light.b;
}

}  // namespace zel
