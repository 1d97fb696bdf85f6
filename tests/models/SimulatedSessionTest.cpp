// Whole sessions with cameras that forgive nothing: a step that is left out, a wait that is missing, a reply
// that stays unread or a piece of another size shows in their pictures, their settings or their complaints.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "models/OpenedCamera.h"
#include "sim/FrameCode.h"
#include "sim/VirtualCamera.h"

namespace zel {
namespace {

using test::OpenedCamera;

/// Handles of a camera at rest: those of its device and of its settings.
int HandlesOf(Family family) {
  return family == Family::Usb3T2 ? 0 : family == Family::Sata ? 1 : 2;
}

/// Numbers of the next frames, 0 for what is none.
std::vector<std::uint32_t> Numbers(OpenedCamera& camera, LONG width, LONG height, int bytesPerSample) {
  std::vector<std::uint32_t> numbers;
  while (numbers.size() < 3) {
    numbers.push_back(0);
    if (camera.Device().GetData(nullptr, 0) != S_OK) continue;
    const std::uint8_t* raw = camera.Device().GetImage()->GetBuffer();
    numbers.back() = ReadFrameNumber(raw, width, height, width * bytesPerSample, bytesPerSample).value_or(0);
  }
  return numbers;
}

/// What the sensor does with its registers.
Readout ReadoutOf(OpenedCamera& camera) {
  VirtualCamera::Frame frame;
  EXPECT_EQ(camera.Sensor().AwaitFrame(10'000, &frame), DriverError::None);
  return frame.picture.readout;
}

class SimulatedSession : public testing::TestWithParam<LONG> {};

TEST_P(SimulatedSession, NothingOfItCanBeLeftOut) {
  const LONG type = GetParam();
  const Family family = ModelOf(type).family;
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE(round);
    OpenedCamera camera(type);
    CZELDevicePropertyImpl& property = camera.Property();
    EXPECT_EQ(camera.Handles(), HandlesOf(family));
    property.SetOutputFormat(0);
    // More than one piece of 512 KiB, which is no number of them.
    const LONG width = ModelOf(type).full.width & ~7,
               height = std::min<LONG>(ModelOf(type).full.height, 960) & ~7;
    property.SetROI(0, 0, width, height);
    const bool twoBytes = round != 0 && family != Family::Usb30;
    property.SetTransMode(twoBytes);
    // What was set before it was opened reaches the camera, too.
    camera.Device().CloseDevice(camera.Device().GetCameraIndex());
    EXPECT_EQ(camera.Handles(), 0);
    ASSERT_EQ(camera.Device().OpenDevice(), 1);
    const PropertyRecord &shutter = property.Record(kShutter), &gain = property.Record(kDigitalGlobalGain);
    const bool exposes = shutter.supported != 0;
    if (exposes) {
      EXPECT_EQ(property.SetShutter(std::min(shutter.current + 200, shutter.maximum)), S_OK);
      EXPECT_EQ(property.SetDigitalGlobalGain(gain.minimum + (gain.maximum - gain.minimum) / 4), S_OK);
    }
    ASSERT_TRUE(camera.Plays());
    // The first frame that a process reads from a disk-style camera is not shown.
    if (family == Family::Usb30) camera.Device().GetData(nullptr, 0);
    const auto first = Numbers(camera, width, height, twoBytes ? 2 : 1);
    EXPECT_THAT(first, testing::ElementsAre(testing::Gt(0u), first[0] + 1, first[0] + 2));
    EXPECT_EQ(camera.Handles(), HandlesOf(family));
    if (exposes) {
      const Readout before = ReadoutOf(camera);
      EXPECT_NE(before.gain, 1);
      EXPECT_NE(before.exposure / before.gain, 1);
      // While it plays; the frame after a change may be one that is not shown.
      EXPECT_EQ(property.SetDigitalGlobalGain(gain.minimum + (gain.maximum - gain.minimum) / 2), S_OK);
      EXPECT_TRUE(camera.Device().GetData(nullptr, 0) == S_OK || camera.Device().GetData(nullptr, 0) == S_OK);
      EXPECT_NE(ReadoutOf(camera).gain, before.gain);
    }
    EXPECT_EQ(camera.Device().Stop(), 1);
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  }
}

INSTANTIATE_TEST_SUITE_P(Types, SimulatedSession,
                         testing::Values(1, 5, 8, 13, 21, 39, 41, 45, 61, 67, 72, 79, 94, 98),
                         testing::PrintToStringParamName());

TEST(SimulatedSessions, WhatIsWrittenToTheRomAndThePortCanBeReadBack) {
  for (const LONG type : {21, 67}) {
    SCOPED_TRACE(type);
    OpenedCamera camera(type);
    unsigned char number[9] = "AB-00042", found[9] = {};
    EXPECT_EQ(camera.Property().SetSerialNum(number), S_OK);
    EXPECT_EQ(camera.Property().GetSerialNum(found), S_OK);
    EXPECT_STREQ(reinterpret_cast<const char*>(found), "AB-00042");
    for (const LONG output : {4, 8, 12, 0}) {
      LONG input = -1;
      EXPECT_EQ(camera.Property().SetIO(output), S_OK);
      EXPECT_EQ(camera.Property().GetIO(&input), S_OK);
      EXPECT_EQ(input, output >> 2);
    }
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  }
}

}  // namespace
}  // namespace zel
