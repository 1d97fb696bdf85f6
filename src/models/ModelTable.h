#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/ComponentTypes.h"

/// The data sheet of all camera types: what each sensor measures and which ranges its settings have.
namespace zel {

constexpr LONG kModelCount = 99;  ///< types 0..98

enum class Family { Sata, Usb20, Usb30, Wom, Usb3T2 };

struct SensorSize {
  LONG width;  ///< pixels
  LONG height;
};

/// Range of a setting in the sensor's own units. Unsupported: the setting exists but can't be changed.
struct SettingRange {
  LONG minimum;
  LONG maximum;
  LONG defaultValue;
  bool supported = true;
  bool hasDefault = true;  ///< false: the sensor names none, the value is where the setting starts
};

/// One camera type. An empty field is one that the type leaves as its family has it.
struct ModelRow {
  LONG type;
  Family family;
  /// Settings whose registers the camera's documentation gives: (s)hutter, (g)ain, (a)nalogue gain,
  /// (h)orizontal and (v)ertical mirror, (t)rigger, half (c)lock, (f)lash output, automatic threshold (x),
  /// (w)indow, su(b)-sampling. The registers of all else that the type offers were chosen here.
  std::string_view documented;
  SensorSize full;
  std::optional<SensorSize> smallest;  ///< least window
  std::optional<SettingRange> gain;
  std::optional<SettingRange> shutter;
  std::optional<LONG> subSampling;            ///< highest code; code k divides by 2 to the power k
  std::optional<SensorSize> defaultRoi = {};  ///< where it is not the full size
  bool fixedRoi = false;                      ///< the window can't be changed
};

/// All rows, in order of their type.
std::span<const ModelRow> AllModels();

/// The row of a type 0..98; throws std::out_of_range for any other.
const ModelRow& ModelOf(LONG type);

/// Whether the registers of a setting are documented for a type; see `ModelRow::documented`.
bool IsDocumented(LONG type, LONG id);
/// "SATA", "USB 2.0", "USB 3.0", "WOM", "USB3T2".
const char* FamilyName(Family family);

/// "ZEL USB 2.0 1280x1024 #13"; plain ASCII.
std::string DisplayName(LONG type);
std::u16string DisplayNameUtf16(LONG type);

/// Word by which the driver names the devices of a type: "Zel", the family, the type number in letters (A is
/// 0). Lives as long as the program.
const OLECHAR* DriverName(LONG type);

}  // namespace zel
