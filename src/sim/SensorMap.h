#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

/// A sensor as data: where its registers hold what, and how it reads out. One constant per map in sensors/.
namespace zel {

/// Colour of the samples; the mosaics by the four at the top left, numbered like the library's Bayer modes.
enum class ColourFilter { Grbg, Bggr, Rggb, Gbrg, Mono };

/// A run of bits in a register and where it stands in the value that a field makes of it.
struct RegisterBits {
  std::uint16_t address = 0;
  std::uint8_t low = 0;
  std::uint8_t count = 0;  ///< 0: there are no such bits
  std::uint8_t shift = 0;
};

/// A setting, put together from the bits of up to three registers.
using RegisterField = std::array<RegisterBits, 3>;

struct RegisterValue {
  std::uint16_t address;
  std::uint32_t value;
};

/// The masked bits of a register that have the given value take every `factor`-th pixel pair.
struct SkipRule {
  std::uint16_t address;
  std::uint32_t mask;
  std::uint32_t value;
  int factor;
};

/// A state of a register's masked bits.
struct RegisterMatch {
  std::uint16_t address;
  std::uint32_t mask;
  std::uint32_t value;
};

/// Shutter and gain codes that a sensor has after its reset.
struct ResetExposure {
  std::uint32_t shutter;
  std::uint32_t gain;
};

/// Sector numbers on the volume of a SATA camera.
struct VolumeSectors {
  std::uint32_t command = 0;
  std::uint32_t areaA = 0, areaB = 0;  ///< image areas
};

struct SensorMap {
  int type = -1;                             ///< camera type
  const char16_t* family = u"";              ///< family word of the driver name
  int width = 0, height = 0;                 ///< pixels
  int bits = 8;                              ///< of a sample
  ColourFilter filter = ColourFilter::Grbg;  ///< at pixel (0, 0)

  int addressBytes = 1, valueBytes = 1;          ///< of a register on the sensor bus, high byte first
  std::optional<ResetExposure> reset{};          ///< where the reset also selects the whole sensor
  std::span<const RegisterValue> resetValues{};  ///< all other registers reset to 0

  RegisterField left, top;  ///< window start; the offsets below are that of pixel (0, 0)
  int leftOffset = 0, topOffset = 0;
  RegisterField columns, rows;  ///< size of the picture; the register holds so many fewer
  int columnsBias = 0, rowsBias = 0;
  RegisterField mirrorX{}, mirrorY{}, trigger{};
  RegisterField stream{}, standby{};            ///< where the sensor has to be told to send frames
  RegisterField halfClock{};                    ///< where the sensor divides its clock itself
  std::span<const SkipRule> skips{};            ///< the first that applies; none: every pixel
  RegisterField binX{}, binY{};                 ///< pairs of columns, of lines are summed
  std::optional<RegisterMatch> fieldReadout{};  ///< even and odd lines one after the other, unless binned
  RegisterField oddFieldFirst{};
  bool turned = false;  ///< the sensor stands on its side: it reads the picture's columns as its rows

  /// Where the registers of the FPGA between sensor and controller stand among those of the sensor, in
  /// cameras whose FPGA makes the sensor's timing.
  std::optional<std::uint16_t> fpgaRegisters{};

  RegisterField shutter;
  double (*shutterLines)(std::uint32_t code) = nullptr;  ///< none: the code is lines
  RegisterField gain;
  double (*gainFactor)(std::uint32_t code) = nullptr;
  /// Exposure of the chart's brightest light at reset values, as a part of full scale.
  double whiteLevel = 0.86;

  double pixelClock = 0;  ///< Hz
  int lineBlanking = 0;   ///< clocks after the columns of a line
  int shortestLine = 0;   ///< clocks
  int frameBlanking = 0;  ///< clocks after the lines of a frame

  std::uint16_t modelCode = 0;  ///< in the status sector of a disk-style camera
  VolumeSectors volume{};
  std::uint32_t lockMs = 0;  ///< until a converter has found its source again after a change of the window

  double fullWell = 20000;  ///< electrons at full scale and reset gain: sets the photon noise
  double readNoise = 12;    ///< electrons
};

/// The map of a camera type 0..98, null for other numbers.
const SensorMap* FindSensorMap(int type);

}  // namespace zel
