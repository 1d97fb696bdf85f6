#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "sim/FrameCode.h"
#include "sim/Scene.h"
#include "sim/Sensor.h"

namespace zel {

/// Exposes a scene on a sensor: frames as the analogue-digital converter delivers them. What does not change
/// from frame to frame is kept. Not thread-safe.
class FrameRenderer {
 public:
  struct Frame {
    Readout readout;
    std::uint32_t number = 0;  ///< what the frame code shows
    std::uint64_t noise = 0;   ///< which noise; the same number gives the same
    double blur = 0;           ///< defocus in pixels
  };

  /// `noise` multiplies the sensor's own noise.
  FrameRenderer(const SensorMap& map, std::shared_ptr<const Scene> scene, double noise);

  /// Writes the picture from its top row, rows without gaps or, with a pitch, that many bytes apart and zero
  /// between: per sample the highest 8 bits, or 2 bytes with the whole sample, little-endian. What does not
  /// fit into `out` or the pitch is cut off. Returns the bytes written.
  std::size_t Render(const Frame& frame, int bytesPerSample, std::span<std::uint8_t> out,
                     std::size_t pitch = 0);

 private:
  std::size_t RenderUpright(const Frame& frame, int bytesPerSample, std::span<std::uint8_t> out,
                            std::size_t pitch);

  /// What light makes of a sample, in 65536ths of full scale.
  struct Exposed {
    std::uint16_t mean = 0;
    std::uint16_t noise = 0;  ///< standard deviation
  };

  void SelectBlur(double radius);
  void SelectWindow(const ReadoutWindow& window);
  void SelectExposure(double exposure, double gain);
  void ExposeRow(const std::uint16_t* light, std::uint64_t noiseSeed);
  /// The row's light with the marker in it, or the row as it is.
  const std::uint16_t* LightOfRow(const std::optional<Scene::Marker>& marker, int y);

  const SensorMap* map_;
  std::shared_ptr<const Scene> scene_;
  double noise_;
  double blur_ = 0;

  std::vector<std::uint16_t> sensorLight_;  // of the whole sensor; empty: to be made
  ReadoutWindow window_;
  std::vector<std::uint16_t> windowLight_;  // as the picture shows it; empty: to be made
  std::vector<int> columns_, rows_;         // the sensor column or row of each picture column or row
  double exposure_ = -1, gain_ = -1;
  std::vector<Exposed> exposed_;          // by light
  std::vector<std::int16_t> noiseTable_;  // in 256ths of the standard deviation
  std::vector<std::uint16_t> markedRow_;
  std::vector<std::uint8_t> upright_;  // the frame of a turned sensor
  std::vector<std::uint16_t> row_;     // samples in 65536ths of full scale
};

}  // namespace zel
