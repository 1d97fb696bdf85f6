#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "api/ComPtr.h"
#include "api/ZELCam.h"
#include "tools/support/ToolError.h"

namespace zel {
class CZELDevice;
class CZELDeviceProperty;
enum class DriverError : std::uint32_t;
}  // namespace zel

namespace zel::tool {

struct CameraId {
  LONG type = 0;
  LONG index = 0;

  bool operator==(const CameraId&) const = default;
};

/// "13@2".
std::string ToText(CameraId id);

/// One camera as an application has it, and the device behind it for settings without an automation method.
class Camera {
 public:
  /// A closed camera. Throws a usage error for an unknown type or an index that the family does not have.
  explicit Camera(CameraId id);

  IZELCamera& Api() { return *camera_.Get(); }
  CZELDevice& Device();
  CZELDeviceProperty& Properties();

  CameraId Id() const { return id_; }
  /// "ZEL USB 2.0 1280x1024 #13", with "@2" behind it for an index that is not the first one.
  const std::string& Label() const { return label_; }

  /// Throws when that fails: no such camera, in use or no permission, or it answered wrongly.
  void Open();
  /// The library's answer, and for a failure the error that `Open` would throw.
  HRESULT TryOpen(std::optional<ToolError>* error);
  /// Throws when the device refuses, and when what it plays is no camera's picture.
  void Play();
  void Stop();
  bool IsConnected();
  /// What the library found wrong with the camera, if anything. The log is not told, so the user has to be.
  std::optional<ToolError> Trouble();

 private:
  ToolError OpenError(DriverError reason) const;

  CameraId id_;
  ComPtr<IZELCamera> camera_;
  std::string label_;
};

/// Every free camera that answers now, by type and index.
std::vector<CameraId> AnsweringCameras();

/// "TYPE" (its first index) or "TYPE@INDEX"; empty: the only camera that answers. Throws when the text is
/// wrong, or when none or several answer. The library has started afterwards.
CameraId SelectCamera(std::string_view text);

/// Display name of a type 0..98.
std::string CameraName(LONG type);

}  // namespace zel::tool
