#pragma once

#include <cstdint>
#include <map>

#include "sim/SensorMap.h"

namespace zel {

/// Which pixels of the sensor a picture shows, in which order.
struct ReadoutWindow {
  enum class Fields { None, EvenFirst, OddFirst };

  int left = 0, top = 0;      ///< sensor pixels; may lie outside the sensor
  int columns = 0, rows = 0;  ///< of the picture
  int skipX = 1, skipY = 1;   ///< every skip-th pair of columns, of rows
  bool mirrorX = false, mirrorY = false;
  Fields fields = Fields::None;  ///< the order in which the rows leave the sensor

  bool operator==(const ReadoutWindow&) const = default;

  /// The sensor column or row (it may lie outside) that picture column or row `n` shows. Mirrored, the sensor
  /// reads from the window's far end.
  int SensorColumn(int n) const {
    return left + (mirrorX ? columns * skipX - 1 - Step(n, skipX) : Step(n, skipX));
  }
  int SensorRow(int n) const { return top + (mirrorY ? rows * skipY - 1 - Step(n, skipY) : Step(n, skipY)); }

  /// The picture row that leaves the sensor as the n-th.
  int PictureRow(int n) const {
    if (fields == Fields::None) return n;
    const int first = fields == Fields::OddFirst ? 1 : 0;
    const int firstRows = (rows + 1 - first) / 2;
    return n < firstRows ? 2 * n + first : 2 * (n - firstRows) + 1 - first;
  }

 private:
  static int Step(int n, int skip) { return n / 2 * 2 * skip + n % 2; }
};

/// What the registers mean together.
struct Readout {
  ReadoutWindow window;
  double exposure = 1;      ///< shutter x gain, as a multiple of their reset values
  double gain = 1;          ///< the gain's part of it
  double frameSeconds = 0;  ///< exposure or read-out, whichever takes longer
  bool triggered = false;   ///< waits for the external trigger
  bool streams = true;      ///< brings frames at all
};

/// The registers of a sensor. Not thread-safe.
class Sensor {
 public:
  explicit Sensor(const SensorMap& map) : map_(&map) { Reset(); }

  void Reset();
  void ResetExposure();  ///< shutter and gain alone
  void Write(std::uint32_t address, std::uint32_t value) { registers_[address] = value; }
  std::uint32_t Read(std::uint32_t address) const;

  /// The registers' meaning; `clockDivider` is 2 when the camera runs the sensor at half clock.
  Readout Decode(int clockDivider) const;

 private:
  std::uint32_t Value(const RegisterField& field) const;
  void Store(const RegisterField& field, std::uint32_t value);
  double ShutterLines() const;

  const SensorMap* map_;
  std::map<std::uint32_t, std::uint32_t> registers_;
};

}  // namespace zel
