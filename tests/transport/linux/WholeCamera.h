#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "device/CZELDevice.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "property/CZELDeviceProperty.h"
#include "sim/FrameCode.h"
#include "sim/SimDriverHost.h"

/// What cameras do whose wire is the system's own, with a simulated camera at its far end.
namespace zel::test {

/// A simulated camera for the far end of a wire.
inline std::unique_ptr<SimDriverHost> FarEnd(SimCameraAddress address) {
  SimConfiguration computer;
  computer.cameras = {address};
  computer.framesPerSecond = 0;
  std::string error;
  auto host = SimDriverHost::Create(computer, &error);
  EXPECT_NE(host, nullptr) << error;
  return host;
}

/// Opens, plays, takes ten frames in their order, stops. The camera stays open.
inline std::unique_ptr<CZELDevice> RunSession(SimCameraAddress address, LONG mode, SimDriverHost& farEnd) {
  constexpr LONG kWidth = 640, kHeight = 400;
  std::unique_ptr<CZELDevice> camera(CreateDeviceForType(static_cast<std::uint32_t>(address.type)));
  camera->SetBufferSamples(mode);
  EXPECT_EQ(camera->OpenCamera(address.index), 1);
  CZELDeviceProperty& settings = *camera->GetProperty();
  settings.SetOutputFormat(0);
  settings.SetTimeout(60'000);
  settings.SetROI(0, 0, kWidth, kHeight);
  const bool twoBytes = ModelOf(address.type).family == Family::Usb3T2;  // more than one piece
  settings.SetTransMode(twoBytes);
  EXPECT_EQ(camera->Play(), 1);
  std::vector<std::uint8_t> picture(std::size_t{4} * kWidth * kHeight);
  std::uint32_t last = 0;
  for (int frames = 0; frames < 10; ++frames) {
    // The first frame that a process reads from a disk-style camera is not shown.
    if (camera->GetData(picture.data(), 0) != S_OK && camera->GetData(picture.data(), 0) != S_OK) {
      ADD_FAILURE() << "no frame after " << last;
      break;
    }
    const std::uint8_t* raw = mode == kDeliverOnDemand ? camera->GetImage()->GetBuffer() : picture.data();
    const int bytes = twoBytes ? 2 : 1;
    const std::uint32_t number = ReadFrameNumber(raw, kWidth, kHeight, kWidth * bytes, bytes).value_or(0);
    EXPECT_GT(number, last);
    last = number;
  }
  EXPECT_EQ(camera->Stop(), 1);
  EXPECT_EQ(farEnd.Camera(address)->ProtocolErrors(), std::vector<std::string>());
  return camera;
}

/// Whether a camera that plays and was unplugged has no more frames than may wait in its queue.
inline bool RunsDry(CZELDevice& camera) {
  camera.GetProperty()->SetTimeout(200);
  std::vector<std::uint8_t> picture(std::size_t{4} * 640 * 400);
  for (int n = 0; n < 5; ++n) {
    if (camera.GetData(picture.data(), 0) != S_OK) return true;
  }
  return false;
}

}  // namespace zel::test
