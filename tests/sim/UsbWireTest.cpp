// The USB 2.0 protocol on literal bytes.
#include "sim/UsbWire.h"

#include <gmock/gmock.h>

#include "UsbClient.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t kSend = UsbClient::kSend, kReceive = UsbClient::kReceive;

Bytes Packet(Bytes bytes) {
  bytes.resize(64);
  return bytes;
}

TEST(UsbWire, AnswersRequestsWithTheSecondReply) {
  struct Case {
    const char* what;
    std::vector<Bytes> before;
    Bytes request;
    Bytes reply;
  };
  const Case cases[] = {
      {"register, reset value", {}, {0x0C, 0x09}, {0x04, 0x19}},
      {"register, high byte first", {{0x04, 0x35, 0x12, 0x34}}, {0x0C, 0x35}, {0x12, 0x34}},
      {"register, one byte", {{0x04, 0x35, 0x12}}, {0x0C, 0x35}, {0x12, 0x00}},
      {"register, stored without effect", {{0x04, 0x5F, 0x00, 0x80}}, {0x0C, 0x5F}, {0x00, 0x80}},
      {"register after reset", {{0x04, 0x09, 0x00, 0x01}, {0x06}}, {0x0C, 0x09}, {0x04, 0x19}},
      {"boot header", {}, {0x21, 0x01}, {0xC1}},
      {"boot header, end", {}, {0x21, 0x04}, {0x02}},
      {"ROM stays over a reset", {{0x20, 0x08, 0x5A}, {0x06}}, {0x21, 0x08}, {0x5A}},
      {"FPGA, low byte first", {{0x25, 0x07, 0x34, 0x12}}, {0x26, 0x07}, {0x34, 0x12}},
      {"half clock on", {{0x23, 0x01}}, {0x24}, {0x01}},
      {"outputs come back as inputs", {{0x28, 0x20}}, {0x29}, {0x08}},
      {"both", {{0x28, 0x60}}, {0x29}, {0x18}},
  };
  for (const Case& c : cases) {
    const auto host = MakeHost(FastCamera());
    UsbClient client(*host);
    for (const Bytes& packet : c.before) EXPECT_TRUE(client.Command(packet)) << c.what;
    host->Sleep(10);
    EXPECT_TRUE(client.Command(c.request)) << c.what;
    Bytes reply(64, 0xEE);
    EXPECT_TRUE(client.Transfer(kReceive, 1, reply).ok) << c.what;
    EXPECT_EQ(reply, Packet({})) << c.what << ": stale";
    host->Sleep(30);
    EXPECT_TRUE(client.Transfer(kReceive, 1, reply).ok) << c.what;
    EXPECT_EQ(reply, Packet(c.reply)) << c.what;
    EXPECT_THAT(host->Camera({13, 0})->ProtocolErrors(), IsEmpty()) << c.what;
  }
}

TEST(UsbWire, RefusesWhatTheProtocolDoesNotHave) {
  struct Case {
    std::uint32_t code;
    Bytes in;
    Bytes data;
    const char* error;
  };
  const Bytes pipe0{0, 0, 0, 0}, pipe1{1, 0, 0, 0}, pipe2{2, 0, 0, 0};
  const Case cases[] = {
      {0x222055, pipe0, Packet({0x06}), "unknown control code 0x222055"},
      {kSend, {0}, Packet({0x06}), "pipe number of 1 bytes"},
      {kSend, pipe1, Packet({0x06}), "control code 0x222051 on pipe 1"},
      {UsbClient::kSendLarge, pipe0, Packet({0x06}), "control code 0x2220A9 on pipe 0"},
      {0x2220A6, pipe0, Packet({0x02}), "control code 0x2220A6 on pipe 0"},
      {kReceive, pipe2, Bytes(1000), "control code 0x22204E on pipe 2"},
      {kSend, pipe0, Bytes(63), "command of 63 bytes"},
      {kSend, pipe0, Packet({0x05}), "unknown command 0x05"},
      {kSend, pipe0, Packet({0x02}), "unknown command 0x02"},  // a frame start comes with the receive code
      {kReceive, pipe0, Packet({0x06}), "other than a frame start"},
      {kSend, pipe0, Packet({0x06, 1}), "command 0x06 is not zero after its data"},
      {kSend, pipe0, Packet({0x04, 1, 2, 3, 4}), "register write longer than the sensor's registers"},
      {kSend, pipe0, Packet({0x0C, 1, 2}), "register address of two bytes"},
      {kSend, pipe0, Packet({0x09}), "transfer size 0"},
      {kSend, pipe0, Packet({0x0A, 2}), "transfer mode 0x02"},
      {kSend, pipe0, Packet({0x23, 2}), "half clock 0x02"},
      {kSend, pipe0, Packet({0x27, 61}), "block of 61 bytes"},
      {kSend, pipe0, Packet({0x28, 0x0C}), "outputs 0x0C"},
      {kReceive, pipe1, Packet({}), "reply read without a request"},
      {kReceive, pipe1, Bytes(63), "reply of 63 bytes"},
      {kSend, pipe2, Bytes(1000), "frame read without a frame start"},
      {kSend, pipe2, Bytes(999), "frame read of 999 bytes with a transfer size of 1000"},
      {0x2220A0, {1, 0, 0, 0}, {}, "driver setting"},
      {0x22203D, pipe1, {}, "reset of a pipe"},
  };
  for (const Case& c : cases) {
    const auto host = MakeHost(FastCamera());
    UsbClient client(*host);
    client.SetTransfer(1000, 1);
    Bytes data = c.data;
    const DriverResult result = client.Handle().Control(c.code, c.in, data);
    EXPECT_FALSE(result.ok) << c.error;
    EXPECT_EQ(result.bytes, 0u);
    EXPECT_THAT(host->Camera({13, 0})->ProtocolErrors(), ElementsAre(HasSubstr(c.error)));
    EXPECT_EQ(data, c.data) << c.error;
  }
}

TEST(UsbWire, TheRomThePortAndTheRepliesTakeTheirTime) {
  const auto host = MakeHost(FastCamera());
  UsbClient client(*host);
  const auto reply = [&](std::uint32_t waitMs = 0) {
    Bytes packet(64, 0xEE);
    host->Sleep(waitMs);
    return client.Transfer(kReceive, 1, packet).ok ? packet[0] : -1;
  };
  client.Command({0x20, 8, 0x11});
  client.Command({0x20, 9, 0x22});  // lost
  for (const std::uint32_t waited : {0, 10}) {
    host->Sleep(waited);
    for (const std::uint8_t cell : {8, 9}) {
      client.Command({0x21, cell});
      reply();
      EXPECT_EQ(reply(), waited != 0 && cell == 8 ? 0x11 : 0xFF) << waited;
    }
  }
  client.Command({0x28, 0x20});
  for (const std::uint32_t waited : {0, 30}) {
    client.Command({0x29});
    reply();
    EXPECT_EQ(reply(waited), waited != 0 ? 0x08 : 0) << waited;
  }
  client.Command({0x21, 1});
  EXPECT_EQ(reply(), 0x08) << "of the query before";
  client.Command({0x21, 2});
  EXPECT_EQ(reply(), 0xC1) << "left unread";
  EXPECT_EQ(reply(), 0xC1) << "of the query before";
  EXPECT_EQ(reply(), 0x12);
  EXPECT_THAT(host->Camera({13, 0})->ProtocolErrors(),
              ElementsAre("serial-ROM write while another byte is programmed",
                          "reply read before it was there", "query while a reply is unread"));
}

TEST(UsbWire, SleepsUntilItsResetAndAfterItsLastHandle) {
  const auto host = MakeHost(FastCamera());
  OpenRequest request{u"\\\\.\\ZelUsbBD-0", kAccessWrite, kShareWrite, 0};
  DriverError error{};
  auto asleep = host->Open(request, &error);
  const auto send = [&](std::uint8_t code) {
    Bytes packet = Packet({code});
    return asleep->Control(kSend, Bytes{0, 0, 0, 0}, packet).ok;
  };
  EXPECT_FALSE(send(0x24));
  EXPECT_TRUE(send(0x06) && send(0x24));
  host->Open(request, &error).reset();
  EXPECT_TRUE(send(0x24)) << "another handle is open";
  asleep.reset();
  asleep = host->Open(request, &error);
  EXPECT_FALSE(send(0x24));
  EXPECT_EQ(host->Handles({13, 0}), 1);
}

TEST(UsbWire, PacksThePictureAtTheStartOfATransfer) {
  struct Case {
    std::uint32_t transfer;
    int mode;          // bytes per sample as command 0x0A sets them
    std::size_t read;  // bytes
    std::size_t filled;
  };
  const Case cases[] = {{1024, 1, 1024, 600},  {1024, 1, 2048, 600}, {1024, 2, 2048, 1200},
                        {1024, 2, 1024, 1024}, {512, 1, 512, 512},   {601, 1, 601, 600}};
  const auto host = MakeHost(FastCamera());
  UsbClient client(*host);
  client.SetWindow(0, 0, 30, 20);  // background of the chart: no sample is black
  client.WriteRegister(0x35, 127);
  for (const Case& c : cases) {
    client.SetTransfer(c.transfer, c.mode);
    Bytes frame(c.read, 0xEE);
    const DriverResult result = client.ReadFrame(frame);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.bytes, c.read);
    EXPECT_EQ(std::ranges::count(frame, 0), static_cast<std::ptrdiff_t>(c.read - c.filled));
    EXPECT_EQ(std::ranges::find(frame, 0) - frame.begin(), static_cast<std::ptrdiff_t>(c.filled));
    const Bytes saturated = c.mode == 1 ? Bytes{0xFF, 0xFF} : Bytes{0xFF, 0x03};
    EXPECT_EQ(Bytes(frame.begin(), frame.begin() + 2), saturated);
  }
  EXPECT_THAT(host->Camera({13, 0})->ProtocolErrors(), IsEmpty());
}

TEST(UsbWire, OpensByNameAndForWritingOnly) {
  const std::pair<OpenRequest, DriverError> cases[] = {
      {{u"\\\\.\\ZelUsbBD-0", 0x40000000, 2, 0}, DriverError::None},
      {{u"\\\\.\\ZelUsbBD-1", 0x40000000, 2, 0}, DriverError::None},
      {{u"\\\\.\\ZelUsbBD-2", 0x40000000, 2, 0}, DriverError::FileNotFound},
      {{u"ZelUsbBD-0", 0x40000000, 2, 0}, DriverError::FileNotFound},
      {{u"\\\\.\\ZelUsbBD-0", 0xC0000000, 2, 0}, DriverError::AccessDenied},
      {{u"\\\\.\\ZelUsbBD-0", 0x40000000, 3, 0}, DriverError::AccessDenied},
      {{u"\\\\.\\ZelUsbBD-0", 0x40000000, 2, 0x40000000}, DriverError::AccessDenied},
  };
  SimConfiguration configuration = FastCamera();
  configuration.cameras = {{13, 0}, {13, 1}};
  const auto host = MakeHost(configuration);
  for (const auto& [request, expected] : cases) {
    DriverError error = DriverError::Pending;
    EXPECT_EQ(host->Open(request, &error) != nullptr, expected == DriverError::None);
    EXPECT_EQ(error, expected) << request.access;
  }
  UsbClient one(*host, 0), same(*host, 0), other(*host, 1);
  one.WriteRegister(0x35, 99);
  EXPECT_EQ(same.ReadRegister(0x35), 99u) << "two handles, one camera";
  EXPECT_EQ(other.ReadRegister(0x35), 14u);
}

}  // namespace
}  // namespace zel
