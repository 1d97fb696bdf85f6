#pragma once

#include "models/ModelProperty.h"
#include "transport/sata/CZELDeviceImplSATA.h"
#include "transport/sata/CZELDevicePropertyImplSATA.h"

namespace zel {

// The volumes. Each image area has room for the largest frame at two bytes per sample.
constexpr SataSectors kCameraVolume{.command = 0x100, .areaA = 0x1000, .areaB = 0x9000};      // 16 MiB
constexpr SataSectors kConverterVolume{.command = 0x100, .areaA = 0x1000, .areaB = 0x41000};  // 128 MiB

/// A window as the sensors have it: from an even column and row on and of even size, so that its first pixel
/// always has the same colour.
struct SensorWindow {
  LONG column = 0;
  LONG row = 0;
  LONG lastColumn = 0;  ///< size - 1
  LONG lastRow = 0;
};

/// Where a sensor keeps its window.
struct WindowRegisters {
  LONG rowStart, columnStart;
  LONG rowSize, columnSize;
  LONG firstRow = 0, firstColumn = 0;  ///< of the picture on the sensor, behind the dark ones
  LONG sizeOffset = 0;                 ///< what the size registers hold more than size - 1
};

/// Base of the SATA models' property classes: the window rule, and 16-bit register access in steps of which a
/// model's apply operations are made. All cameras can be triggered, as their controller takes part in it.
class SataModelProperty : public ModelProperty<CZELDevicePropertyImplSATA> {
 public:
  /// The stored window is what was asked for, moved into the sensor. One below the smallest changes nothing.
  /// Acts from the next `Play` on.
  HRESULT SetROI(LONG x, LONG y, LONG width, LONG height) override;

  /// The sensor's window begins with the same colour whatever the stored one does; mirrors exchange it.
  LONG UpdateDerivedSizes() override;

 protected:
  explicit SataModelProperty(LONG type, const SataSectors& volume = kCameraVolume);

  const SensorWindow& Window() const { return window_; }
  /// `GetROI` of models whose pictures have the sensor's even window, divided by 2 to the power of the codes.
  HRESULT GetSensorRoi(LONG* x, LONG* y, LONG* width, LONG* height, LONG codeX = 0, LONG codeY = 0) const;

  LONG Current(LONG id) const { return Record(id).current; }
  bool IsOn(LONG id) const { return Current(id) != 0; }

  // Access to a stopped camera's registers of 16 bits; false when it fails.
  bool Write(LONG address, LONG value);
  bool Read(LONG address, LONG* value);

  // Steps of the apply operations; 1, or E_FAIL where a failure counts.
  void WriteAndSettle(LONG address, LONG value);
  void WriteWindow(const WindowRegisters& registers);
  /// For sensors whose window is part of the exposure's timing: only while a capture is prepared.
  void WriteWindowAhead(const WindowRegisters& registers);
  LONG ApplyTriggerBit(LONG address, LONG bit);
  LONG ApplyMirrorBit(LONG address, LONG bit, LONG id);

  static constexpr LONG WithBits(LONG value, LONG bits, bool on) { return on ? value | bits : value & ~bits; }

  /// `WriteSettings` of models whose controller cuts the window out of the sensor's picture.
  bool WriteSettingsWithWindow(SataRun run);

 private:
  SensorWindow window_;
  SensorWindow windowSent_;  ///< of the capture that was prepared last
};

}  // namespace zel
