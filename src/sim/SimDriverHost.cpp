#include "sim/SimDriverHost.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "imaging/PictureReader.h"
#include "platform/Text.h"
#include "sim/DiskWire.h"
#include "sim/Fx3Wire.h"
#include "sim/SataWire.h"
#include "sim/TestChart.h"
#include "sim/UsbWire.h"
#include "sim/WomWire.h"

namespace zel {
std::u16string SimDriverName(const SensorMap& map) {
  const auto letter = [](int digit) { return static_cast<char16_t>(u'A' + digit); };
  return std::u16string(u"Zel") + map.family + letter(map.type / 10) + letter(map.type % 10);
}

namespace {

template <class Wire>
std::shared_ptr<SimDevice> Make(SimCameraAddress address, const SensorMap& map,
                                std::shared_ptr<const Scene> scene, const SimConfiguration& configuration) {
  return std::make_shared<Wire>(address, map, std::move(scene), configuration);
}

/// The wires by the family word of the driver name.
constexpr struct {
  std::u16string_view family;
  decltype(&Make<UsbWire>) make;
} kWires[] = {
    {u"Disk", Make<DiskWire>}, {u"Fx", Make<Fx3Wire>},  {u"Sata", Make<SataWire>},
    {u"Usb", Make<UsbWire>},   {u"Wom", Make<WomWire>},
};

std::shared_ptr<SimDevice> MakeWire(SimCameraAddress address, const SensorMap& map,
                                    std::shared_ptr<const Scene> scene,
                                    const SimConfiguration& configuration) {
  for (const auto& wire : kWires) {
    if (wire.family == map.family) return wire.make(address, map, std::move(scene), configuration);
  }
  return nullptr;  // a sensor map of no family: the tests open every one
}

}  // namespace

std::unique_ptr<SimDriverHost> SimDriverHost::Create(const SimConfiguration& configuration,
                                                     std::string* error) {
  Picture picture;
  if (!configuration.scene.empty()) {
    std::string why;
    if (!ReadPicture(std::filesystem::path(ToUtf16(configuration.scene)), &picture, &why)) {
      *error = "ZELCAM_SCENE: " + why;
      return nullptr;
    }
  }
  std::vector<std::shared_ptr<SimDevice>> devices;
  for (const SimCameraAddress& address : configuration.cameras) {
    const SensorMap& map = *FindSensorMap(address.type);
    std::shared_ptr<const Scene> scene = configuration.scene.empty()
                                             ? MakeTestChart(map.width, map.height)
                                             : MakePhotoScene(picture, map.width, map.height);
    devices.push_back(MakeWire(address, map, std::move(scene), configuration));
  }
  return std::make_unique<SimDriverHost>(std::move(devices), configuration.clock);
}

SimDriverHost::~SimDriverHost() {
  for (const auto& device : devices_) device->Camera().Unplug();
}

std::unique_ptr<DriverHandle> SimDriverHost::Open(const OpenRequest& request, DriverError* error) {
  for (const auto& device : devices_) {
    if (device->Path() == request.path && !device->Camera().IsUnplugged())
      return device->Open(request, error);
  }
  *error = DriverError::FileNotFound;
  return nullptr;
}

std::optional<std::u16string> SimDriverHost::InterfacePath(const GUID& interfaceClass, std::uint32_t index) {
  for (const auto& device : devices_) {
    const std::optional<GUID> its = device->InterfaceClass();
    if (!its || std::memcmp(&*its, &interfaceClass, sizeof(GUID)) != 0 || device->Camera().IsUnplugged())
      continue;
    // The index that the user gave the camera, whatever others are there.
    if (static_cast<std::uint32_t>(device->Address().index) == index) return device->Path();
  }
  return {};
}

void SimDriverHost::Sleep(std::uint32_t milliseconds) {
  clock_->Sleep(milliseconds);
}

std::uint64_t SimDriverHost::Milliseconds() {
  return clock_->Milliseconds();
}

void SimDriverHost::ShowMessage(std::u16string_view text) {
  std::fprintf(stderr, "%s\n", ToUtf8(text).c_str());
}

VirtualCamera* SimDriverHost::Camera(SimCameraAddress address) {
  const auto found = std::ranges::find(devices_, address, &SimDevice::Address);
  return found == devices_.end() ? nullptr : &(*found)->Camera();
}

int SimDriverHost::Handles(SimCameraAddress address) const {
  const auto found = std::ranges::find(devices_, address, &SimDevice::Address);
  return found == devices_.end() ? 0 : (*found)->Handles();
}

}  // namespace zel
