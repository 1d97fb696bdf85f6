#include <gtest/gtest.h>

#include "imaging/COrvaneImage.h"
#include "transport/ScriptedDriverHost.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"
#include "transport/usb3/CZELDevicePropertyImplUSB3.h"

namespace zel {
namespace {

using test::ScriptedDriverHost;

constexpr LONG kType = 83;
constexpr OLECHAR kName[] = {'Z', 0};

class TestProperty : public CZELDevicePropertyImplUSB3 {
 public:
  LONG InitializeCamera() override { return ready; }
  HRESULT SetDigitalGlobalGain(LONG gain) override { return SetRegister(0x305E, gain); }
  HRESULT SetShutter(LONG lines) override { return SetRegister(0x0202, lines); }
  using CZELDevicePropertyImpl::Edit;

  LONG ready = 1;
};

class TestCamera : public CZELDeviceImplUSB3 {
 public:
  ~TestCamera() override {
    Shutdown();
    CloseDevice(0);
  }
  LONG PrepareCapture() override { return prepared = CZELDeviceImplUSB3::PrepareCapture(); }
  LONG GetCameraType() override { return kType; }
  const OLECHAR* GetDriverName() override { return kName; }
  CZELDeviceProperty* GetProperty() override { return &property; }
  CZELDevicePropertyImpl& PropertyStore() override { return property; }

  TestProperty property;
  LONG prepared = -1;
};

class DiskTransport : public testing::Test {
 protected:
  DiskTransport() {
    status.assign(512, 0);
    std::copy_n("ORVANE", 6, status.begin());
    status[26] = 0x30;
    status[27] = 7;
    status[28] = 0x34;
    status[29] = 0x12;
    SetWindow(640, 480);
  }
  void SetWindow(LONG width, LONG height) {
    camera.property.Edit(kRoiWidth).current = width;
    camera.property.Edit(kRoiHeight).current = height;
  }
  LONG Prepare() {
    camera.SetBufferSamples(kDeliverOnDemand);
    camera.Stop();
    camera.Play();
    return camera.prepared;
  }
  void Open() {
    ASSERT_EQ(camera.OpenCamera(3), 1);
    host.TakeLog();
  }

  ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  std::vector<std::uint8_t>& status = host.sectors[0x20000];
  TestCamera camera;
  TestProperty& property = camera.property;
  std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(307200);
};

const struct WireCase {
  const char* log;
  int calls;  ///< seeks, reads and writes
  LONG value;
  HRESULT (*run)(TestProperty&, LONG*);
} kWireCases[] = {
    {"@20200: 20 20 04 11; @20200: 20 20 05 65; write 2004=1165", 4, 0,
     [](auto& p, LONG*) { return p.SetRegister(0x2004, 0x31165); }},
    {"@20200: 20 00 FF 12; @20200: 20 01 00 34; write FF=1234", 4, 0,
     [](auto& p, LONG*) { return p.SetRegister(0xFF, 0x1234); }},
    {"@20200: 21 30 5E; @20000 512; @20200: 21 30 5F; @20000 512; read 305E=5E5F", 8, 0x5E5F,
     [](auto& p, LONG* v) { return p.GetRegister(0x305E, v); }},
};

TEST_F(DiskTransport, RegistersTravelAsTwoBytesAndFailWithAnyCall) {
  LONG value = 7;
  for (const WireCase& row : kWireCases) EXPECT_EQ(row.run(property, &value), E_HANDLE);
  EXPECT_EQ(host.TakeLog(), "");
  host.takeWrite = [this](auto, const auto& data) { status[257] = data[2]; };  // of a read: the low address
  Open();
  for (const WireCase& row : kWireCases) {
    value = 0;
    EXPECT_EQ(row.run(property, &value), S_OK);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(host.TakeLog(), row.log);
    for (int n = 0; n < 3 * row.calls; ++n) {
      host.fault = static_cast<ScriptedDriverHost::Fault>(n / row.calls);
      if (host.fault != ScriptedDriverHost::Fails && n % 2 == 0) continue;  // a seek moves no bytes
      host.faultAt = n % row.calls;
      value = 0;
      EXPECT_EQ(row.run(property, &value), E_FAIL) << row.log << " call " << n;
      EXPECT_EQ(value, 0);
    }
    host.TakeLog();
  }
}

TEST_F(DiskTransport, OpensOnlyACameraOfItsType) {
  const struct {
    std::size_t at;
    std::uint8_t byte;
    LONG ready, opened;
  } rows[] = {{5, 'X', 1, 0}, {26, 0x31, 1, 0}, {27, 6, 1, 0}, {26, 0x30, 0, 0}, {27, 7, 1, 1}};
  LONG index = 0;
  for (const auto& row : rows) {
    const std::uint8_t before = std::exchange(status[row.at], row.byte);
    property.ready = row.ready;
    EXPECT_EQ(camera.OpenCamera(++index), row.opened);
    EXPECT_EQ(host.openHandles, 2 * row.opened);
    EXPECT_EQ(IsDeviceFree(kType, index), row.opened == 0);
    status[row.at] = before;
  }
  EXPECT_TRUE(host.TakeLog().starts_with("open \\\\.\\PhysicalDrive1 C0000000 3; @20000 512"));
  EXPECT_EQ(camera.GetCameraID(), 0x1234);
  EXPECT_EQ(camera.GetCameraIndex(), 5);
  TestCamera other;
  EXPECT_EQ(other.IsCameraValid(5, nullptr), 0);
  EXPECT_EQ(other.OpenCamera(5), 0);
  EXPECT_EQ(host.TakeLog(), "");
  LONG valid = 0;
  EXPECT_EQ(other.IsCameraValid(2, &valid), 1);
  EXPECT_EQ(valid, 1);
  EXPECT_EQ(camera.IsCameraConnected(nullptr), 1);
  EXPECT_EQ(host.TakeLog(), "open \\\\.\\PhysicalDrive2 C0000000 3; open \\\\.\\PhysicalDrive5 C0000000 3");
  EXPECT_EQ(other.IsCameraValid(32, nullptr), 0);
  EXPECT_EQ(host.openHandles, 2);
  for (const int n : {0, 1}) {  // of the status sector
    host.faultAt = n;
    EXPECT_EQ(camera.OpenCamera(6 + n), 0);
    EXPECT_EQ(host.openHandles, 0);
  }
}

TEST_F(DiskTransport, PreparationSendsTheCommandAndTheSettings) {
  property.Edit(kDigitalGlobalGain).current = 100;
  property.Edit(kShutter).current = 0x4321;
  EXPECT_EQ(property.ApplyColorMatrix(), E_HANDLE);
  Open();
  EXPECT_EQ(Prepare(), 1);
  EXPECT_EQ(host.TakeLog(),
            "@20200: 10; sleep 8; @20200: 20 30 5E; @20200: 20 30 5F 64; write 305E=64; "
            "@20200: 20 02 02 43; @20200: 20 02 03 21; write 202=4321");
  for (const int n : {0, 1}) {
    host.faultAt = n;
    EXPECT_EQ(Prepare(), 0);
    host.TakeLog();
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST_F(DiskTransport, FramesAreWholeSectors) {
  Open();
  status[256] = 1;
  const struct {
    LONG width, height, bytes;  ///< 0: can't be read
  } rows[] = {{1000, 1000, 1000448}, {512, 1, 512}, {513, 1, 1024},   {4896, 3264, 15980544},
              {0, 480, 0},           {640, -1, 0},  {65536, 65536, 0}};
  for (const auto& row : rows) {
    SetWindow(row.width, row.height);
    EXPECT_EQ(Prepare(), row.bytes != 0) << row.width;
    buffer.resize(static_cast<std::size_t>(row.bytes) + 1);
    host.sectors[0x20400].assign(buffer.size(), 1);
    host.TakeLog();
    EXPECT_EQ(camera.ReadFrame(buffer.data()), row.bytes != 0) << row.width;
    EXPECT_EQ(host.TakeLog(), row.bytes == 0 ? "" : "@20000 512; @20400 " + std::to_string(row.bytes));
  }
}

TEST_F(DiskTransport, AFrameMustBeReadyAndWhole) {
  Open();
  ASSERT_EQ(Prepare(), 1);
  host.sectors[0x20400].resize(307200);
  for (const std::uint8_t flag : {0, 2, 0xFF}) {
    status[256] = flag;
    host.TakeLog();
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
    EXPECT_EQ(host.TakeLog(), "@20000 512");
  }
  status[256] = 1;
  for (int n = 0; n < 12; ++n) {
    host.fault = static_cast<ScriptedDriverHost::Fault>(n / 4);
    if (host.fault != ScriptedDriverHost::Fails && n % 2 == 0) continue;
    host.faultAt = n % 4;
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 0) << n;
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 1) << n;
  }
  EXPECT_EQ(camera.ReadFrame(nullptr), 0);
}

TEST_F(DiskTransport, PicturesHaveOneByteInEitherTransferMode) {
  Open();
  status[256] = 1;
  host.sectors[0x20400].assign(307200, 99);
  property.SetTransMode(1);
  property.SetOutputFormat(0);
  ASSERT_EQ(Prepare(), 1);
  EXPECT_EQ(camera.GetData(nullptr, 0), S_OK);
  EXPECT_EQ(camera.Statistics().framesProcessed, 1u);
  EXPECT_EQ(camera.GetImage()->GetBuffer()[307199], 99);
}

/// What the cameras held since they were plugged in is thrown away, once in a process: before all tests.
class FirstFrame : public testing::Environment {
 public:
  void SetUp() override {
    class Reader : public DiskTransport {
     public:
      void TestBody() override {
        Open();
        ASSERT_EQ(Prepare(), 1);
        status[256] = 1;
        EXPECT_EQ(camera.ReadFrame(buffer.data()), 0) << "no image came";
        host.sectors[0x20400].resize(307200);
        EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
        EXPECT_EQ(camera.ReadFrame(buffer.data()), 1);
        TestCamera other;
        EXPECT_EQ(other.OpenCamera(0), 1);
      }
    };
    Reader().TestBody();
  }
};

const auto* const kFirstFrame = testing::AddGlobalTestEnvironment(new FirstFrame);

}  // namespace
}  // namespace zel
