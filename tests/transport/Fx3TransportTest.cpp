#include <gtest/gtest.h>

#include <stdexcept>

#include "transport/Fx3DriverHost.h"
#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"
#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

namespace zel {
namespace {

using test::Fx3DriverHost;
using Bytes = std::vector<std::uint8_t>;

constexpr LONG kType = 97;  // no other test of this program claims its entries
constexpr OLECHAR kName[] = {'Z', 'e', 'l', 'T', 'e', 's', 't', 0};
constexpr LONG kBufferBytes = 0x102000;
constexpr Fx3DriverHost::Fault kFaults[] = {Fx3DriverHost::Fails, Fx3DriverHost::Short, Fx3DriverHost::Long};

class TestProperty : public CZELPropertyImplUSB3T2 {
 public:
  LONG InitializeCamera() override { return ready; }
  using CZELPropertyImplUSB3T2::GetSensorRegister;
  using CZELPropertyImplUSB3T2::SetSensorRegister;

  LONG ready = 1;
};

class TestCamera : public CZELDeviceImplUSB3T2 {
 public:
  ~TestCamera() override {
    Shutdown();
    CloseDevice(0);
  }
  LONG PrepareCapture() override {
    SetFrame({.frameBytes = kBufferBytes});
    geometry_ = {.width = 0x104, .height = 0x203, .sourceWidth = 0x104, .sourceHeight = 0x203};
    return prepared = CZELDeviceImplUSB3T2::PrepareCapture();
  }
  LONG GetCameraType() override { return kType; }
  const OLECHAR* GetDriverName() override { return kName; }
  CZELDeviceProperty* GetProperty() override { return &property; }
  CZELDevicePropertyImpl& PropertyStore() override { return property; }

  TestProperty property;
  LONG prepared = -1;
};

class Fx3Transport : public testing::Test {
 protected:
  Fx3Transport() {
    EXPECT_EQ(camera.OpenCamera(3), 1);
    opening = host.TakeLog();
  }
  LONG Prepare() {
    camera.SetBufferSamples(kDeliverOnDemand);
    camera.Stop();
    camera.Play();
    return camera.prepared;
  }

  Fx3DriverHost host;
  ScopedDriverHost installed{host};
  TestCamera camera;
  TestProperty& property = camera.property;
  std::string opening;
  Bytes buffer = Bytes(kBufferBytes);
};

TEST_F(Fx3Transport, TransferHeadersByteForByte) {
  // clang-format off
  Bytes request{0x40, 0x30, 3, 0, 0x40, 0, 102, 0, 0xB8, 0x0B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                0, 0, 0, 0, 0, 0, 0, 0, 38, 0, 0, 0, 64, 0, 0, 0, 0x6C, 0, 1};
  Bytes bulk{0x80, 0x33, 0, 0, 0, 0, 0x26, 0, 0xB8, 0x0B, 0, 0, 0, 0x81, 0, 0, 0, 0, 0, 0, 0, 0,
             0, 0, 0, 0, 0, 0, 0, 0, 38, 0, 0, 0, 0, 0, 8, 0};
  const Bytes direct{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x81, 0, 0, 0, 0, 0, 0, 0, 0,
                     0, 0, 0, 0, 0, 0, 0, 0, 38, 0, 0, 0, 0, 0, 0, 0};
  // clang-format on
  property.SetFpgaRegister(0x6C, 1);
  request.resize(102);
  EXPECT_EQ(host.lastIn, request);

  CFx3Api api;
  ASSERT_TRUE(api.Open(0));
  std::uint32_t received = 0;
  for (int n = 0; n < 2; ++n) EXPECT_TRUE(api.BulkRead({buffer.data(), 0x80000}, 0x81, &received));
  bulk.resize(128);
  EXPECT_EQ(host.lastIn, bulk) << "with nothing of the read before";
  EXPECT_NE(api.StartDirectRead(buffer, 0x81), nullptr);
  EXPECT_EQ(host.lastIn, direct);
}

TEST_F(Fx3Transport, EveryRegisterAccessOpensSendsItsBytesAndCloses) {
  // clang-format off
  const struct {
    const char* log;
    int transfers;
    LONG value;  ///< that a getter finds
    bool mindsShort;
    HRESULT (*run)(TestProperty&, LONG*);
  } rows[] = {
      {"( w40:3C0002 )",                   1, 0, false, [](auto& p, LONG*) { return p.SetFpgaRegister(0x13C, 0x302); }},
      {"( w40:3C r41: )",                  2, 0x42, false, [](auto& p, LONG* v) { return p.GetFpgaRegister(0x3C, v); }},
      {"( w40:070055 )",                   1, 0, false, [](auto& p, LONG*) { return p.SetIO(0x55); }},
      {"( w40:07 r41: )",                  2, 0x17, false, [](auto& p, LONG* v) { return p.GetIO(v); }},
      {"( w40:7800FF )",                   1, 0, false, [](auto& p, LONG*) { return p.SetProperty(kFocusPosition, 255); }},
      {"( wBA:30120456 ) write 3012=456",  1, 0, false, [](auto& p, LONG*) { return p.SetSensorRegister(0x3012, 0x456); }},
      {"( wBA:001E rBB: ) read 1E=ABCD",   2, 0xABCD, true, [](auto& p, LONG* v) { return p.GetSensorRegister(0x1E, v); }},
  };
  // clang-format on
  host.present = [](std::uint32_t index) { return index == 3; };
  for (const auto& row : rows) {
    host.fpga = {{0x3C, 0x42}, {7, 0x17}};
    host.registers = {{0x1E, 0xABCD}};
    LONG value = 0;
    EXPECT_EQ(row.run(property, &value), S_OK) << row.log;
    EXPECT_EQ(value, row.value) << row.log;
    EXPECT_EQ(host.TakeLog(), row.log);
    for (int n = 0; n < 3 * row.transfers; ++n) {
      host.fault = kFaults[n % 3];
      host.faultAt = n / 3;
      value = 0;
      // A short reply stays unread; only where its bits go back to the camera is that a failure.
      const bool fails = host.fault != Fx3DriverHost::Short || (row.mindsShort && n / 3 == 1);
      EXPECT_EQ(row.run(property, &value), fails ? E_FAIL : S_OK) << row.log << n;
      EXPECT_EQ(value, fails || n / 3 + 1 == row.transfers ? 0 : row.value) << row.log << n;
    }
    host.TakeLog();
  }
  LONG untouched = 77;
  EXPECT_EQ(property.SetProperty(kFocusPosition, 256), E_INVALIDARG);
  EXPECT_EQ(property.SetTransMode(-1), E_INVALIDARG);
  EXPECT_EQ(property.GetRegister(1, &untouched), E_NOTIMPL);
  EXPECT_EQ(property.GetRegisterB(1, &untouched) | property.SetTimeout(5), S_OK);
  EXPECT_EQ(untouched, 77);
  EXPECT_EQ(property.Settings().timeoutMs, 3000);
  camera.CloseDevice(3);
  EXPECT_EQ(property.SetProperty(kFocusPosition, 1), E_FAIL) << "no device";
  EXPECT_EQ(property.Record(kFocusPosition).current, 255);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(Fx3Transport, OpeningResetsTheCameraAndHoldsNoHandle) {
  EXPECT_EQ(opening, "( ( w40:6C0001 ) ( w40:6C0000 ) 220030: 40C0: )");
  EXPECT_EQ(camera.DevicePath(), u"\\\\.\\ZelTest-3");
  TestCamera other;
  LONG valid = 7;
  EXPECT_EQ(other.IsCameraValid(3, &valid), 0);
  EXPECT_EQ(valid, 0);
  EXPECT_EQ(other.OpenCamera(3), 0);
  other.CloseDevice(3);
  EXPECT_FALSE(IsDeviceFree(kType, 3));
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(camera.IsCameraConnected(&valid), 1);
  EXPECT_EQ(other.IsCameraValid(6, nullptr), 1);
  EXPECT_EQ(host.TakeLog(), "( ) ( )");
  for (const LONG index : {-1, 32, 0x7FFFFFFF}) EXPECT_EQ(other.IsCameraValid(index, nullptr), 0);
  for (int n = 0; n < 4; ++n) {  // what the reset sends may get lost
    host.faultAt = n;
    EXPECT_EQ(camera.OpenCamera(n), 1);
  }
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(Fx3Transport, AFailedOpenLeavesNothingBehind) {
  property.ready = 0;
  EXPECT_EQ(camera.OpenCamera(1), 0);
  host.present = [](std::uint32_t) { return false; };
  EXPECT_EQ(camera.OpenCamera(2), 0);
  EXPECT_TRUE(IsDeviceFree(kType, 1) && IsDeviceFree(kType, 2) && !property.IsAttached());
  host.TakeLog();
  host.present = [](std::uint32_t) -> bool { throw std::runtime_error("driver"); };
  EXPECT_EQ(camera.OpenCamera(3), 1);
  EXPECT_EQ(host.TakeLog(),
            "message Send Reset Command to USB Device failed!\nCOrvaneUSBCaptureImpl::ResetCamera");
  EXPECT_FALSE(IsDeviceFree(kType, 3));
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(Fx3Transport, PreparationProgramsModeSizeAndLanes) {
  EXPECT_EQ(Prepare(), 1);
  EXPECT_EQ(host.TakeLog(),
            "( w40:3C0001 ) ( w40:440004 ) ( w40:450001 ) ( w40:400003 ) ( w40:410002 ) ( w40:480022 ) "
            "( w40:490022 ) ( w40:4C0022 ) ( w40:4D0022 ) ( w40:480000 ) ( w40:490000 ) ( w40:4C0000 ) "
            "( w40:4D0000 )");
  for (const auto& [mode, bytes] : {std::pair(1, '2'), std::pair(2, '1')}) {
    property.SetTransMode(mode);
    EXPECT_EQ(Prepare(), 1);
    EXPECT_EQ(host.TakeLog()[11], bytes) << mode;
  }
  for (int n = 0; n < 13; ++n) {
    EXPECT_EQ(Prepare(), 1);
    host.faultAt = n;
    EXPECT_EQ(Prepare(), 0) << n;
    host.TakeLog();
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST_F(Fx3Transport, FramesComeInPieces) {
  ASSERT_EQ(Prepare(), 1);
  const struct {
    std::uint32_t bytes;
    LONG result;
    const char* pieces;
  } rows[] = {{0, 1, ""},
              {1, 1, "b1 "},
              {0x7FFFF, 1, "b7FFFF "},
              {0x80000, 1, "b80000 "},
              {0x80001, 1, "b80000 b1 "},
              {0x102000, 1, "b80000 b80000 b2000 "},
              {0x102001, 0, ""},
              {0xFFFFFFFF, 0, ""}};
  for (const auto& row : rows) {
    const auto kind = static_cast<std::uint8_t>(row.bytes % 3);
    host.SetImage(row.bytes, kind);
    host.TakeLog();
    std::ranges::fill(buffer, std::uint8_t{0xEE});
    EXPECT_EQ(camera.ReadFrame(buffer.data()), row.result) << row.bytes;
    EXPECT_EQ(host.TakeLog(), std::string("( 42C2: b40 ") + row.pieces + ")");
    const std::size_t filled = row.result == 1 ? row.bytes : 0;
    std::size_t wrong = 0;
    for (std::size_t n = 0; n < buffer.size(); ++n)
      wrong += buffer[n] != (n < filled ? Fx3DriverHost::Pattern(n) : 0xEE);
    EXPECT_EQ(wrong, 0u) << row.bytes;
    EXPECT_EQ(FrameEventOf(LastFrameKind()), kind == 0 ? 1 : kind == 1 ? 4 : 0);
  }
}

TEST_F(Fx3Transport, ABrokenTransferFailsTheFrameAndTheNextOneComes) {
  ASSERT_EQ(Prepare(), 1);
  host.SetImage(kBufferBytes);
  for (int n = 0; n < 15; ++n) {
    host.fault = kFaults[n % 3];
    host.faultAt = n / 3;
    const bool harmless = n == 1;  // a start that comes back short had no data to miss
    EXPECT_EQ(camera.ReadFrame(buffer.data()), harmless) << n;
    EXPECT_EQ(host.openHandles, 0);
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 1);
  }
  host.SetImage(1);
  host.TakeLog();
  host.stalls = 1;
  EXPECT_EQ(camera.ReadFrame(buffer.data()), 1) << "it came after all";
  EXPECT_EQ(host.TakeLog(), "( 42C2: b40 !3000 220044:81 b1 )");
  host.stalls = 2;
  EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
  EXPECT_EQ(host.TakeLog(), "( 42C2: b40 !3000 220044:81 !50 )");
}

TEST(CFx3Api, RefusesWhatCantTravel) {
  Fx3DriverHost host;
  const ScopedDriverHost installed(host);
  CFx3Api api;
  Bytes data(65);
  std::uint32_t count = 9;
  EXPECT_FALSE(api.Close() || api.SetGuid(nullptr) || api.Open(-1));
  EXPECT_FALSE(api.BulkRead(data, 0x81, &count) || api.StartFrame() || api.GetSpeed(&count)) << "closed";
  EXPECT_EQ(api.StartDirectRead(data, 0x81), nullptr);
  ASSERT_TRUE(api.Open(0));
  EXPECT_FALSE(api.BusWrite(0x40, data) || api.BusRead(0x40, data) || api.BlockWrite(1, data));
  EXPECT_FALSE(api.BulkRead({}, 0x81, &count) || api.BulkRead({data.data(), 0x4000001}, 0x81, &count));
  EXPECT_FALSE(api.BulkReadAt(data, 60, 6, 0x81, &count));
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(host.TakeLog(), "(");
  EXPECT_TRUE(api.ResetPipe(0x81) && api.CyclePort() && api.GetSpeed(&count) &&
              api.BlockWrite(9, Bytes{1, 2}));
  EXPECT_EQ(host.TakeLog(), "22002C:81 220028: 22004C:00000000 4037:0102");
  const GUID another{};
  EXPECT_TRUE(api.SetGuid(&another));
  EXPECT_FALSE(api.Open(0));
  EXPECT_EQ(host.openHandles, 0);
}

TEST(CFx3Api, ADirectReadNeedsBothStatusFieldsClear) {
  Fx3DriverHost host;
  const ScopedDriverHost installed(host);
  CFx3Api api;
  ASSERT_TRUE(api.Open(0));
  Bytes data(100);
  for (const auto& [status, fault] :
       {std::pair(0u, kFaults[1]), {0u, kFaults[2]}, {0xC0000001u, kFaults[1]}}) {
    host.usbStatus = status;
    host.fault = fault;
    host.faultAt = 0;
    const auto read = api.StartDirectRead(data, 0x81);
    host.stalls = 1;
    EXPECT_TRUE(!read->Wait(7) && read->Wait(7));
    std::uint32_t received = 0;
    EXPECT_EQ(read->Finish(&received), status == 0 && fault == Fx3DriverHost::Short);
    EXPECT_EQ(received, fault == Fx3DriverHost::Short ? 99u : 0u);
  }
}

}  // namespace
}  // namespace zel
