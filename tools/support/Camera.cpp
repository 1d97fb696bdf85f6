#include "tools/support/Camera.h"

#include <fmt/format.h>

#include "api/CZELCamera.h"
#include "device/CZELDeviceImpl.h"
#include "models/ModelTable.h"
#include "platform/Text.h"
#include "sim/SimDriverHost.h"
#include "tools/support/OpenWatch.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

/// Made on first use, which is when the library reads ZELCAM_SIM.
IZELBuilder& Builder() {
  static const ComPtr<IZELBuilder> builder = [] {
    IZELBuilder* made = nullptr;
    if (FAILED(ZELCreateBuilder(&made))) throw ToolError(kExitFailed, "the camera library can't be started");
    return ComPtr<IZELBuilder>::Adopt(made);
  }();
  return *builder.Get();
}

ComPtr<IZELCamera> CreateCamera(LONG type) {
  IZELCamera* made = nullptr;
  Builder().CreateCamera(type, &made);
  return ComPtr<IZELCamera>::Adopt(made);
}

struct IndexRange {
  LONG first;
  LONG last;
};

IndexRange IndexesOf(IZELCamera& camera) {
  LONG sata = 0;
  LONG count = 0;
  camera.IsSataCamera(&sata);
  camera.GetMaxCameraNum(&count);
  // A SATA camera's index is the character of its drive letter.
  const LONG first = sata != 0 ? 'A' : 0;
  return {first, first + count - 1};
}

bool Answers(IZELCamera& camera, CameraId id) {
  LONG valid = 0;
  const Family family = ModelOf(id.type).family;
  auto* const simulation = dynamic_cast<SimDriverHost*>(&CurrentDriverHost());
  const bool simulated = simulation != nullptr && simulation->Camera({id.type, id.index}) != nullptr;
  // A SATA camera never says that it is valid, and any volume can be opened: on a real system, where the next
  // letter may be the user's disk, such a camera has to be named.
  if (family == Family::Sata) return simulated && SUCCEEDED(camera.OpenCamera(id.index, &valid));
  if (FAILED(camera.IsCameraValid(id.index, &valid))) return false;
  // Nor does an FX3 controller tell which camera it serves; a simulation knows.
  if (family == Family::Usb3T2) return simulated || simulation == nullptr;
  if (family != Family::Usb30) return true;
  // To these types any disk looks like a camera; the catalogue asks the disk which one it is.
  LONG type = 0;
  Builder().GetUsb3CameraType(id.index, &type);
  return type == id.type;
}

CameraId ParseCameraId(std::string_view text) {
  const std::size_t at = text.find('@');
  const auto type = ParseNumber(text.substr(0, at));
  if (!type) throw ToolError(kExitUsage, fmt::format("camera '{}' is not TYPE or TYPE@INDEX", text));
  if (*type < 0 || *type >= kModelCount) {
    throw ToolError(kExitUsage,
                    fmt::format("unknown camera type {}: types are 0 to {}", *type, kModelCount - 1));
  }
  if (at == std::string_view::npos) {
    const auto camera = CreateCamera(*type);
    return {*type, camera ? IndexesOf(*camera.Get()).first : 0};
  }
  const auto index = ParseNumber(text.substr(at + 1));
  if (!index) throw ToolError(kExitUsage, fmt::format("camera '{}' is not TYPE or TYPE@INDEX", text));
  return {*type, *index};
}

}  // namespace

std::string ToText(CameraId id) {
  return fmt::format("{}@{}", id.type, id.index);
}

std::string CameraName(LONG type) {
  BSTR text = nullptr;
  if (FAILED(Builder().GetCameraName(type, &text))) return fmt::format("type {}", type);
  // A BSTR's units are wchar_t or char16_t by system, 16 bits in both.
  std::string name = ToUtf8(std::u16string(text, text + SysStringLen(text)));
  SysFreeString(text);
  return name;
}

Camera::Camera(CameraId id) : id_(id), camera_(CreateCamera(id.type)), label_(CameraName(id.type)) {
  if (!camera_)
    throw ToolError(kExitUsage, fmt::format("camera type {} ({}) is not supported yet", id.type, label_));
  const auto [first, last] = IndexesOf(*camera_.Get());
  if (id.index < first || id.index > last) {
    throw ToolError(kExitUsage, fmt::format("camera index {} is out of range: {} has indexes {} to {}",
                                            id.index, label_, first, last));
  }
  if (id.index != first) label_ += fmt::format("@{}", id.index);
  static_cast<CZELDeviceImpl&>(Device()).Trouble().LeaveTellingToProgram();
}

CZELDevice& Camera::Device() {
  return *DeviceOf(camera_.Get());
}
CZELDeviceProperty& Camera::Properties() {
  return *Device().GetProperty();
}

void Camera::Open() {
  std::optional<ToolError> error;
  TryOpen(&error);
  if (error) throw *error;
}

HRESULT Camera::TryOpen(std::optional<ToolError>* error) {
  OpenWatch watch;
  const ScopedDriverHost scope(watch);
  LONG ignored = 0;
  const HRESULT result = camera_->OpenCamera(id_.index, &ignored);
  if (FAILED(result)) {
    *error = Trouble();
    if (!*error) *error = OpenError(watch.LastError());
  }
  return result;
}

std::optional<ToolError> Camera::Trouble() {
  const auto [kind, words] = static_cast<CZELDeviceImpl&>(Device()).Trouble().Now();
  switch (kind) {
    case CameraTrouble::Kind::None:
      return std::nullopt;
    case CameraTrouble::Kind::WriteRefused:
      return ToolError(kExitInUse, fmt::format("{} can't be set: {}", label_, words));
    case CameraTrouble::Kind::NoAcknowledgement:
      break;
  }
  return ToolError(
      kExitTimeout, words,
      fmt::format("index {} is drive {}:; is that the camera's?", id_.index, static_cast<char>(id_.index)));
}

ToolError Camera::OpenError(DriverError reason) const {
  const std::string why = fmt::format("{} can't be opened: {}", label_, DriverErrorText(reason));
  switch (reason) {
    case DriverError::None:
      return {kExitFailed, label_ + " can't be opened: it does not answer its commands"};
    case DriverError::AccessDenied:
      return {kExitInUse, why, "this user may not open the device"};
    case DriverError::SharingViolation:
      return {kExitInUse, why, "another program has it open"};
    default:
      return {kExitNoCamera, why, "`zelcam list` shows the cameras that answer"};
  }
}

void Camera::Play() {
  LONG result = 0;
  if (FAILED(camera_->Play(&result))) throw ToolError(kExitFailed, label_ + " does not start capturing");
  const std::optional<ToolError> trouble = Trouble();
  if (!trouble) return;
  Stop();
  throw *trouble;
}

void Camera::Stop() {
  LONG result = 0;
  camera_->Stop(&result);
}

bool Camera::IsConnected() {
  LONG connected = 0;
  camera_->IsCameraConnected(&connected);
  return connected != 0;
}

std::vector<CameraId> AnsweringCameras() {
  std::vector<CameraId> found;
  for (LONG type = 0; type < kModelCount; ++type) {
    const auto camera = CreateCamera(type);
    if (!camera) continue;
    const auto [first, last] = IndexesOf(*camera.Get());
    for (LONG index = first; index <= last; ++index) {
      if (Answers(*camera.Get(), {type, index})) found.push_back({type, index});
    }
  }
  return found;
}

CameraId SelectCamera(std::string_view text) {
  Builder();
  if (!text.empty()) return ParseCameraId(text);
  const std::vector<CameraId> found = AnsweringCameras();
  if (found.empty()) throw ToolError(kExitNoCamera, "no camera answers", "--sim 13 gives a simulated one");
  if (found.size() == 1) return found.front();
  std::string list;
  for (const CameraId id : found) list += fmt::format("\n  -c {:<6} {}", ToText(id), CameraName(id.type));
  throw ToolError(kExitUsage, fmt::format("{} cameras answer; choose one of them:{}", found.size(), list));
}

}  // namespace zel::tool
