#include "platform/posix/UsbCameraHost.h"

#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/posix/UsbCameras.h"
#include "platform/posix/UsbContext.h"
#include "platform/posix/UsbHandles.h"

namespace zel {
namespace {

constexpr const char* kMappingVariable = "ZELCAM_USB";
constexpr const char* kFx3IdsVariable = "ZELCAM_FX3_IDS";

std::vector<UsbId> WantedFx3Ids(std::string* problem) {
  const char* const text = std::getenv(kFx3IdsVariable);
  if (text == nullptr) return {Fx3CameraIds().begin(), Fx3CameraIds().end()};
  UsbIdList list = ParseUsbIds(text);
  if (!list.problem.empty()) *problem = std::string(kFx3IdsVariable) + ": " + list.problem;
  return std::move(list.ids);
}

/// The device at a place; null with the reason in `error`.
std::shared_ptr<UsbDevice> OpenAt(UsbContext& usb, const UsbLocation& location, std::span<const UsbId> ids,
                                  DriverError* error, std::string* problem) {
  std::shared_ptr<UsbDevice> device = usb.Open(location, ids, error);
  if (!device && *error == DriverError::AccessDenied)
    *problem = "USB device " + ToText(location) +
               ": no right to open it; 70-zelcam.rules gives it to who sits at the screen";
  return device;
}

}  // namespace

bool IsUsbCameraPath(std::u16string_view path) {
  return IsPipeCameraPath(path) || ParseUsbInterfacePath(path);
}

std::unique_ptr<DriverHandle> OpenUsbCamera(std::u16string_view path, DriverError* error,
                                            std::string* problem) {
  *error = DriverError::FileNotFound;
  const std::shared_ptr<UsbContext> usb = UsbContext::Get();
  if (!usb) return nullptr;

  if (const auto location = ParseUsbInterfacePath(path)) {
    auto device = OpenAt(*usb, *location, WantedFx3Ids(problem), error, problem);
    return device ? MakeUsbFx3Handle(std::move(device)) : nullptr;
  }
  const UsbLookup camera = FindPipeCamera(path, std::getenv(kMappingVariable), usb->Find(PipeCameraIds()));
  if (!camera.problem.empty()) {
    *problem = std::string(kMappingVariable) + ": " + camera.problem;
    *error = DriverError::InvalidParameter;
  }
  if (!camera.location) return nullptr;
  auto device = OpenAt(*usb, *camera.location, PipeCameraIds(), error, problem);
  if (!device) return nullptr;
  auto handle = MakeUsbPipeHandle(std::move(device));
  if (!handle) *error = DriverError::NotSupported;
  return handle;
}

std::optional<std::u16string> FindUsbInterface(const GUID& interfaceClass, std::uint32_t index,
                                               std::string* problem) {
  if (interfaceClass != kFx3InterfaceClass) return {};
  const std::shared_ptr<UsbContext> usb = UsbContext::Get();
  if (!usb) return {};
  const std::vector<UsbLocation> present = usb->Find(WantedFx3Ids(problem));
  if (index >= present.size()) return {};
  return UsbInterfacePath(present[index]);
}

}  // namespace zel
