#include <gtest/gtest.h>

#include <stdexcept>

#include "transport/ScriptedDriverHost.h"
#include "transport/usb/CZELDeviceImplUSB.h"
#include "transport/usb/CZELDevicePropertyImplUSB.h"

namespace zel {
namespace {

using test::ScriptedDriverHost;

constexpr LONG kType = 98;  // of another family: no other test claims its entries
constexpr OLECHAR kName[] = {'Z', 'e', 'l', 'T', 'e', 's', 't', 0};

class TestProperty : public CZELDevicePropertyImplUSB {
 public:
  TestProperty() { Edit(kHalfClock) = {.maximum = 1, .supported = 1}; }
  LONG InitializeCamera() override { return ready; }
  using CZELDevicePropertyImpl::Edit;
  using PipeCameraProperty::GetWideRegister;
  using PipeCameraProperty::ReadRegisterBytes;
  using PipeCameraProperty::SetWideRegister;
  using PipeCameraProperty::WriteRegisterBytes;

  LONG ready = 1;
};

class TestCamera : public CZELDeviceImplUSB {
 public:
  ~TestCamera() override {
    Shutdown();
    CloseDevice(0);
  }
  LONG PrepareCapture() override {
    geometry_ = geometry;
    return prepared = CZELDeviceImplUSB::PrepareCapture();
  }
  LONG GetCameraType() override { return kType; }
  const OLECHAR* GetDriverName() override { return kName; }
  CZELDeviceProperty* GetProperty() override { return &property; }
  CZELDevicePropertyImpl& PropertyStore() override { return property; }
  using CZELDeviceImplUSB::frame_;

  TestProperty property;
  FrameGeometry geometry;
  LONG prepared = -1;
};

class UsbTransport : public testing::Test {
 protected:
  void Open(LONG index = 0) {
    ASSERT_EQ(camera.OpenCamera(index), 1);
    host.TakeLog();
  }
  LONG Prepare() {
    camera.SetBufferSamples(kDeliverOnDemand);
    camera.Stop();
    camera.Play();
    return camera.prepared;
  }

  ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  TestCamera camera;
  TestProperty& property = camera.property;
};

// clang-format off
const struct WireCase {
  const char* log;
  int transfers;  ///< that the result depends on
  std::vector<std::uint8_t> reply;
  LONG value;     ///< that a getter finds
  HRESULT (*run)(TestProperty&, LONG*);
} kWireCases[] = {
    {"> 04 09 12 34; write 9=1234",        1, {}, 0, [](auto& p, LONG*) { return p.SetRegister(0x09, 0x1234); }},
    {"> 04 35 FF FE; write 35=FFFE",       1, {}, 0, [](auto& p, LONG*) { return p.SetRegister(0x135, 0x7FFFE); }},
    {"> 0C 1E; <; <; read 1E=ABCD",        3, {0xAB, 0xCD}, 0xABCD, [](auto& p, LONG* v) { return p.GetRegister(0x1E, v); }},
    {"> 04 9E 3F; write 9E=3F",            1, {}, 0, [](auto& p, LONG*) { return p.SetRegisterB(0x9E, 0x3F); }},
    {"> 0C 9E; <; <; read 9E=AB",          3, {0xAB, 0xCD}, 0xAB, [](auto& p, LONG* v) { return p.GetRegisterB(0x9E, v); }},
    {"> 04 30 12 04 56; write 3012=456",   1, {}, 0, [](auto& p, LONG*) { return p.SetWideRegister(0x3012, 0x0456); }},
    {"> 0C 30 5E; <; <; read 305E=1080",   3, {0x10, 0x80}, 0x1080, [](auto& p, LONG* v) { return p.GetWideRegister(0x305E, v); }},
    {"> 28 60",                            1, {}, 0, [](auto& p, LONG*) { return p.SetIO(0xFFFF); }},
    {"> 29; <; sleep 30; <",               3, {0xF7}, 2, [](auto& p, LONG* v) { return p.GetIO(v); }},
    {"> 20 12 34",                         1, {}, 0, [](auto& p, LONG*) { return p.SetSROMRegister(0x12, 0x34); }},
    {"> 21 12; <; <",                      3, {0x99}, 0x99, [](auto& p, LONG* v) { return p.GetSROMRegister(0x12, v); }},
    {"> 20 0F 55",                         1, {}, 0, [](auto& p, LONG*) { return p.SetSROMID(7, 0x55); }},
    {"> 21 08; <; <",                      3, {0x56}, 0x56, [](auto& p, LONG* v) { return p.GetSROMID(0, v); }},
    {"> 25 0E 34 12",                      1, {}, 0, [](auto& p, LONG*) { return p.SetFpgaRegister(0x0E, 0x1234) == 1 ? S_OK : E_FAIL; }},
    {"> 26 80; <; <",                      3, {0x34, 0x12}, 0x1234, [](auto& p, LONG* v) { return p.GetFpgaRegister(0x80, v); }},
    {"> 23 01; > 0A",                      1, {}, 0, [](auto& p, LONG*) { return p.SetHalfClock(1); }},
    {"> 24; <; <",                         3, {0x80}, 1, [](auto& p, LONG* v) { return p.GetHalfClock(v); }},
    {"> 0A 01",                            1, {}, 0, [](auto& p, LONG*) { return p.SetTransMode(5); }},
    {"> 27 02 07 08",                      1, {}, 0, [](auto& p, LONG*) { const unsigned char data[] = {7, 8}; return p.SetModelOption(data, 2); }},
};
// clang-format on

TEST_F(UsbTransport, EveryOperationSendsItsBytesAndFailsWithAnyOfItsTransfers) {
  for (const WireCase& row : kWireCases) {
    camera.OpenDevice();
    host.TakeLog();
    host.reply = row.reply;
    LONG value = 0;
    EXPECT_EQ(row.run(property, &value), S_OK) << row.log;
    EXPECT_EQ(value, row.value) << row.log;
    EXPECT_EQ(host.TakeLog(), row.log);
    for (const auto fault :
         {ScriptedDriverHost::Fails, ScriptedDriverHost::Short, ScriptedDriverHost::Long}) {
      for (int n = 0; n < row.transfers; ++n) {
        property.Edit(kHalfClock).current = 7;
        host.fault = fault;
        host.faultAt = n;
        value = 0;
        EXPECT_EQ(row.run(property, &value), E_FAIL) << row.log << ", transfer " << n << ", fault " << fault;
        EXPECT_EQ(value, 0) << row.log;
        EXPECT_EQ(property.Record(kHalfClock).current, 7) << row.log;
      }
    }
  }
}

TEST_F(UsbTransport, WithoutADeviceNothingIsSent) {
  LONG value = 77;
  EXPECT_EQ(property.SetRegister(1, 2), E_FAIL);
  EXPECT_EQ(property.SetRegisterB(1, 2), E_FAIL);
  EXPECT_EQ(property.GetRegisterB(1, &value), E_FAIL);
  EXPECT_EQ(property.SetHalfClock(1), E_FAIL);
  EXPECT_EQ(property.GetHalfClock(&value), E_FAIL);
  EXPECT_EQ(property.SetTimeout(1234), E_FAIL);
  EXPECT_EQ(property.Settings().timeoutMs, 1234);
  EXPECT_EQ(property.SetTransMode(3), S_OK);
  EXPECT_EQ(property.Settings().transferMode, 3);
  EXPECT_EQ(value, 77);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST_F(UsbTransport, ArgumentEdges) {
  Open();
  LONG value = 77;
  const unsigned char data[61] = {};
  EXPECT_EQ(property.SetSROMID(8, 1), S_OK);
  EXPECT_EQ(property.SetSROMID(-1, 1), S_OK);
  EXPECT_EQ(property.GetSROMID(8, &value), S_OK);
  EXPECT_EQ(property.SetModelOption(data, 61), E_INVALIDARG);
  EXPECT_EQ(property.SetModelOption(data, -1), E_INVALIDARG);
  EXPECT_EQ(property.SetModelOption(nullptr, 4), E_INVALIDARG);
  EXPECT_EQ(property.SetTransMode(-1), E_INVALIDARG);
  EXPECT_FALSE(property.WriteRegisterBytes({}));
  property.Edit(kHalfClock).supported = 0;
  EXPECT_EQ(property.SetHalfClock(1), S_OK);
  EXPECT_EQ(value, 77);
  EXPECT_EQ(property.GetHalfClock(&value), S_OK);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST_F(UsbTransport, PacketsAreClippedAndBlocksLeaveTheRestAlone) {
  Open();
  std::vector<std::uint8_t> bytes(100, 0x5A);
  EXPECT_TRUE(property.WriteRegisterBytes(bytes));
  EXPECT_EQ(host.TakeLog().size(), std::string("> 04").size() + 63 * std::string(" 5A").size());
  host.reply = std::vector<std::uint8_t>(64, 0xA5);
  EXPECT_TRUE(property.ReadRegisterBytes(1, bytes));
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0xA5), 64);
  property.SetRegister(0x11, 0x2233);
  host.TakeLog();
  property.SetModelOption(bytes.data(), 1);
  EXPECT_EQ(host.TakeLog(), "> 27 01 A5 33");
}

TEST_F(UsbTransport, TimeoutBlock) {
  Open();
  EXPECT_EQ(property.SetTimeout(0x12345678), S_OK);
  EXPECT_EQ(host.TakeLog(), "2220A0 01 00 00 00 78 56 34 12 -> 0");
  host.faultAt = 0;
  EXPECT_EQ(property.SetTimeout(5), E_FAIL);
}

TEST_F(UsbTransport, IdentityChangesOnlyBehindTheRightBootHeader) {
  Open();
  const std::map<std::uint8_t, std::uint16_t> header{{1, 0xC100}, {2, 0x1200}, {3, 0xC000}, {4, 0x0200}};
  host.registers = header;
  EXPECT_EQ(property.ChangePIDtoDS(), S_OK);
  EXPECT_EQ(host.TakeLog(), "> 21 01; <; <; > 21 02; <; <; > 21 03; <; <; > 21 04; <; <; > 20 03 48");
  for (const auto& [address, value] : header) {
    host.registers = header;
    host.registers[address] = value == 0xC000 ? 0x4800 : 0;
    EXPECT_EQ(property.ChangePIDtoDS(), E_FAIL);
    EXPECT_EQ(host.TakeLog().find("> 20"), std::string::npos);
  }
}

TEST_F(UsbTransport, OpenedIndexesBelongToOneObject) {
  EXPECT_EQ(camera.OpenCamera(5), 1);
  EXPECT_EQ(host.TakeLog(), "open \\\\.\\ZelTest-5 40000000 2; > 06; open \\\\.\\ZelTest-5 40000000 2");
  TestCamera other;
  LONG valid = 7;
  EXPECT_EQ(other.IsCameraValid(5, &valid), 0);
  EXPECT_EQ(valid, 0);
  EXPECT_EQ(other.OpenCamera(5), 0);
  other.CloseDevice(5);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_FALSE(IsDeviceFree(kType, 5));
  EXPECT_EQ(camera.OpenCamera(6), 1);
  EXPECT_EQ(host.openHandles, 2);
  EXPECT_EQ(other.IsCameraValid(5, &valid), 1);
  EXPECT_EQ(valid, 1);
  EXPECT_EQ(other.OpenDevice(), 1);
  host.TakeLog();
  for (const LONG index : {-1, 32, 0x7FFFFFFF}) {
    EXPECT_EQ(camera.IsCameraValid(index, nullptr), 0);
    EXPECT_EQ(camera.OpenCamera(index), 0);
    EXPECT_EQ(camera.IsCameraConnected(nullptr), 0);
  }
  EXPECT_EQ(host.TakeLog(), "");
}

TEST_F(UsbTransport, AFailedOpenLeavesNothingBehind) {
  property.ready = 0;
  EXPECT_EQ(camera.OpenCamera(1), 0);
  host.present = [](const auto&) { return false; };
  EXPECT_EQ(camera.OpenCamera(2), 0);
  EXPECT_EQ(camera.IsCameraConnected(nullptr), 0);
  EXPECT_TRUE(IsDeviceFree(kType, 1));
  EXPECT_TRUE(IsDeviceFree(kType, 2));
  EXPECT_FALSE(property.IsAttached());
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(UsbTransport, AThrowingStepIsShownAndReportsSuccess) {
  host.present = [](const auto&) -> bool { throw std::runtime_error("driver"); };
  EXPECT_EQ(camera.OpenCamera(1), 1);
  EXPECT_TRUE(
      host.TakeLog().ends_with("; message Send Reset Command to USB Device failed!\n"
                               "COrvaneUSBCaptureImpl::ResetCamera"));
  EXPECT_FALSE(IsDeviceFree(kType, 1));
}

TEST_F(UsbTransport, PreparationSendsModeAndSize) {
  Open();
  EXPECT_EQ(Prepare(), 0) << "no geometry yet";
  camera.geometry = {.transferPixels = 0x10203, .width = 4, .height = 4, .sourceWidth = 4, .sourceHeight = 4};
  property.SetTransMode(1);
  host.TakeLog();
  EXPECT_EQ(Prepare(), 1);
  EXPECT_EQ(host.TakeLog(), "> 0A 01; > 09 03 02 01");
  for (const int n : {0, 1}) {
    host.faultAt = n;
    EXPECT_EQ(Prepare(), 0);
  }
}

TEST_F(UsbTransport, AFrameIsStartedWithTheReceiveAndReadWithTheSendCode) {
  Open();
  std::vector<std::uint8_t> buffer(2048);
  EXPECT_EQ(camera.ReadFrame(buffer.data()), 0) << "nothing prepared";
  camera.geometry = {.transferPixels = 1024, .width = 4, .height = 4, .sourceWidth = 4, .sourceHeight = 4};
  const struct {
    LONG mode;
    bool alternative;
    const char* log;
  } rows[] = {{0, false, "22204E : 02 -> 64; 222051 02 -> 1024"},
              {0, true, "22204E : 02 -> 64; 2220A9 02 -> 1024"},
              {1, true, "22204E : 02 -> 64; 2220A9 02 -> 2048"}};
  for (const auto& row : rows) {
    property.SetTransMode(row.mode);
    camera.frame_.useAltRead = row.alternative;
    EXPECT_EQ(Prepare(), 1);
    host.TakeLog();
    EXPECT_EQ(camera.ReadFrame(nullptr), 0);
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 1);
    EXPECT_EQ(host.TakeLog(), row.log);
  }
  for (const auto fault : {ScriptedDriverHost::Fails, ScriptedDriverHost::Short, ScriptedDriverHost::Long}) {
    for (const int n : {0, 1}) {
      host.fault = fault;
      host.faultAt = n;
      EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
    }
  }
}

TEST(CUsbDevice, RefusesWhatCantMoveAndResetsThePipe) {
  ScriptedDriverHost host;
  const ScopedDriverHost installed(host);
  CUsbDevice device;
  std::uint8_t data[8] = {};
  std::uint32_t moved = 9;
  EXPECT_FALSE(device.BulkTransfer(UsbTransferKind::Plain, UsbPipe::Image, data, &moved, false)) << "closed";
  EXPECT_EQ(moved, 0u);
  ASSERT_TRUE(device.Open(u"x"));
  host.TakeLog();
  EXPECT_FALSE(device.BulkTransfer(UsbTransferKind::Plain, UsbPipe::Image, {}, &moved, false));
  EXPECT_TRUE(device.BulkTransfer(UsbTransferKind::Alternative, UsbPipe::Image, data, &moved, false));
  EXPECT_EQ(host.TakeLog(), "2220A6 02 -> 8");
  EXPECT_EQ(moved, 8u);
  host.faultAt = 0;
  host.fault = ScriptedDriverHost::Long;
  EXPECT_FALSE(device.BulkTransfer(UsbTransferKind::Plain, UsbPipe::Image, data, &moved, false)) << "a liar";
  host.TakeLog();
  device.ResetImagePipe();
  EXPECT_EQ(host.TakeLog(), "22203D 02 -> 0");
  device.Close();
  device.Close();
  EXPECT_EQ(host.openHandles, 0);
}

}  // namespace
}  // namespace zel
