#include "sim/UsbWire.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "common/BytePacking.h"
#include "platform/Text.h"

namespace zel {
namespace {

constexpr std::uint32_t kSend = 0x222051, kReceive = 0x22204E;
constexpr std::uint32_t kSendLarge = 0x2220A9, kReceiveLarge = 0x2220A6;
constexpr std::uint32_t kDriverSetting = 0x2220A0, kPipeReset = 0x22203D;

constexpr std::uint32_t kCommandPipe = 0, kReplyPipe = 1, kImagePipe = 2;
constexpr std::uint8_t kFrameStart = 0x02, kReset = 0x06;
constexpr std::size_t kSettingsSize = 44, kMaxBlock = 60;
constexpr std::uint32_t kMaxTransferSize = 1u << 27;  // pixels; beyond any sensor
constexpr std::size_t kMaxReplies = 16;               // a host that reads none must not fill the memory

// Half of what drivers are to wait: they must not depend on their system's clock being finer than this.
constexpr std::uint32_t kRomByteMs = 5, kInputsMs = 15;

std::string Hex(std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%02X", value);
  return text;
}

}  // namespace

class UsbWire::Handle : public SimHandle {
 public:
  explicit Handle(std::shared_ptr<UsbWire> wire) : SimHandle(wire), wire_(std::move(wire)) {}

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out) override {
    return wire_->Control(code, in, out);
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t, std::span<const std::uint8_t>,
                                               std::span<std::uint8_t>, DriverError* error) override {
    *error = Unknown("overlapped control").error;
    return nullptr;
  }
  DriverResult Seek(std::uint64_t) override { return Unknown("seek"); }
  DriverResult Read(std::span<std::uint8_t>) override { return Unknown("read"); }
  DriverResult Write(std::span<const std::uint8_t>) override { return Unknown("write"); }

 private:
  DriverResult Unknown(const char* call) {
    return wire_->Refuse(DriverError::NotSupported,
                         std::string(call) + ": the driver only has control calls");
  }

  std::shared_ptr<UsbWire> wire_;
};

const UsbWire::Command UsbWire::kCommands[] = {
    {0x04, 64, &UsbWire::WriteRegister},  {0x06, 1, &UsbWire::ResetCamera},
    {0x09, 5, &UsbWire::SetTransferSize}, {0x0A, 2, &UsbWire::SetTransferMode},
    {0x0C, 3, &UsbWire::ReadRegister},    {0x20, 3, &UsbWire::WriteRom},
    {0x21, 2, &UsbWire::ReadRom},         {0x23, 2, &UsbWire::SetHalfClock},
    {0x24, 1, &UsbWire::ReadHalfClock},   {0x25, 4, &UsbWire::WriteFpga},
    {0x26, 2, &UsbWire::ReadFpga},        {0x27, 64, &UsbWire::WriteBlock},
    {0x28, 2, &UsbWire::SetOutputs},      {0x29, 1, &UsbWire::ReadInputs},
};

std::array<std::uint8_t, 256> UsbWire::BlankRom() {
  std::array<std::uint8_t, 256> rom;
  rom.fill(0xFF);
  // The USB controller's boot header: vendor 0x12C1, product 0x02C0.
  constexpr std::uint8_t kHeader[] = {0xC1, 0x12, 0xC0, 0x02};
  std::ranges::copy(kHeader, rom.begin() + 1);
  return rom;
}

std::u16string UsbWire::Path() const {
  return u"\\\\.\\" + SimDriverName(Camera().Map()) + u"-" + ToUtf16(std::to_string(Address().index));
}

std::unique_ptr<DriverHandle> UsbWire::Open(const OpenRequest& request, DriverError* error) {
  if (request.access != kAccessWrite || request.share != kShareWrite || request.flags != 0) {
    *error = Refuse(DriverError::AccessDenied, "open: access " + Hex(request.access) + ", share " +
                                                   Hex(request.share) + ", flags " + Hex(request.flags))
                 .error;
    return nullptr;
  }
  *error = DriverError::None;
  return std::make_unique<Handle>(std::static_pointer_cast<UsbWire>(shared_from_this()));
}

DriverResult UsbWire::Refuse(DriverError error, const std::string& what) {
  Camera().NoteProtocolError(what);
  return DriverResult::Failed(error);
}

DriverResult UsbWire::Control(std::uint32_t code, std::span<const std::uint8_t> in,
                              std::span<std::uint8_t> out) {
  if (Camera().IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
  if (code == kDriverSetting) return SetDriver(in, out);
  if (code == kPipeReset) return ResetImagePipe(in, out);

  const bool send = code == kSend || code == kSendLarge;
  if (!send && code != kReceive && code != kReceiveLarge)
    return Refuse(DriverError::InvalidParameter, "unknown control code " + Hex(code));
  if (in.size() != 4)
    return Refuse(DriverError::InvalidParameter, "pipe number of " + std::to_string(in.size()) + " bytes");

  const std::uint32_t pipe = LoadLittle32(in.data());
  if (pipe == kCommandPipe && code == kSend) return TakeCommand(out);
  if (pipe == kCommandPipe && code == kReceive) return StartFrame(out);
  if (pipe == kReplyPipe && !send) return GiveReply(out);
  if (pipe == kImagePipe && send) return GiveImage(out, code == kSendLarge);
  return Refuse(DriverError::InvalidParameter,
                "control code " + Hex(code) + " on pipe " + std::to_string(pipe));
}

DriverResult UsbWire::SetDriver(std::span<const std::uint8_t> in, std::span<const std::uint8_t> out) {
  constexpr std::uint32_t kTimeoutKind = 1;
  if (in.size() != kSettingsSize || !out.empty() || LoadLittle32(in.data()) != kTimeoutKind)
    return Refuse(DriverError::InvalidParameter, "driver setting of " + std::to_string(in.size()) + " bytes");
  const std::lock_guard lock(mutex_);
  timeout_ = LoadLittle32(in.data() + 4);
  return DriverResult::Done(0);
}

DriverResult UsbWire::ResetImagePipe(std::span<const std::uint8_t> in, std::span<const std::uint8_t> out) {
  if (in.size() != 4 || LoadLittle32(in.data()) != kImagePipe || !out.empty())
    return Refuse(DriverError::InvalidParameter, "reset of a pipe that has none");
  const std::lock_guard lock(mutex_);
  frameStarted_ = false;
  return DriverResult::Done(0);
}

DriverResult UsbWire::TakeCommand(std::span<const std::uint8_t> data) {
  Packet packet;
  if (data.size() != packet.size())
    return Refuse(DriverError::InvalidParameter, "command of " + std::to_string(data.size()) + " bytes");
  std::ranges::copy(data, packet.begin());
  const std::optional<std::size_t> length = CommandLength(packet[0]);
  if (!length) return Refuse(DriverError::GeneralFailure, "unknown command " + Hex(packet[0]));
  if (std::any_of(packet.begin() + static_cast<std::ptrdiff_t>(*length), packet.end(),
                  [](std::uint8_t byte) { return byte != 0; }))
    return Refuse(DriverError::GeneralFailure, "command " + Hex(packet[0]) + " is not zero after its data");
  const std::lock_guard lock(mutex_);
  if (!isAwake_ && packet[0] != kReset)
    return Refuse(DriverError::GeneralFailure, "command " + Hex(packet[0]) + " to a camera that sleeps");
  return (this->*std::ranges::find(kCommands, packet[0], &Command::code)->run)(packet);
}

std::optional<std::size_t> UsbWire::CommandLength(std::uint8_t code) const {
  const auto* const command = std::ranges::find(kCommands, code, &Command::code);
  if (command == std::end(kCommands)) return {};
  return command->length;
}

DriverResult UsbWire::StartFrame(std::span<const std::uint8_t> data) {
  if (data.size() != sizeof(Packet) || data[0] != kFrameStart ||
      std::any_of(data.begin() + 1, data.end(), [](std::uint8_t byte) { return byte != 0; }))
    return Refuse(DriverError::InvalidParameter,
                  "the receive code brings pipe 0 something other than a frame start");
  const std::lock_guard lock(mutex_);
  if (!isAwake_) return Refuse(DriverError::GeneralFailure, "frame start to a camera that sleeps");
  frameStarted_ = true;
  return Accept();
}

DriverResult UsbWire::GiveReply(std::span<std::uint8_t> data) {
  if (data.size() != sizeof(Packet))
    return Refuse(DriverError::InvalidParameter, "reply of " + std::to_string(data.size()) + " bytes");
  const std::lock_guard lock(mutex_);
  if (replies_.empty()) return Refuse(DriverError::GeneralFailure, "reply read without a request");
  const QueuedReply& reply = replies_.front();
  const bool early = reply.settling.IsRunning();
  if (early) Camera().NoteProtocolError("reply read before it was there");
  std::ranges::copy(early ? reply.unsettled : reply.packet, data.begin());
  replies_.pop_front();
  return Accept();
}

DriverResult UsbWire::GiveImage(std::span<std::uint8_t> data, bool large) {
  std::uint32_t timeout = 0;
  int bytesPerSample = 1;
  {
    const std::lock_guard lock(mutex_);
    if (transferSize_ == 0) return Refuse(DriverError::GeneralFailure, "frame read before a transfer size");
    if (data.size() != transferSize_ && data.size() != std::size_t{2} * transferSize_)
      return Refuse(DriverError::InvalidParameter, "frame read of " + std::to_string(data.size()) +
                                                       " bytes with a transfer size of " +
                                                       std::to_string(transferSize_));
    if (!frameStarted_) return Refuse(DriverError::GeneralFailure, "frame read without a frame start");
    if (const char* problem = ImageProblem(large)) return Refuse(DriverError::GeneralFailure, problem);
    frameStarted_ = false;
    timeout = timeout_;
    bytesPerSample = bytesPerSample_;
  }
  VirtualCamera::Frame frame;
  const DriverError error = Camera().AwaitFrame(timeout, &frame);
  if (error != DriverError::None) return DriverResult::Failed(error);
  Camera().Expose(frame, bytesPerSample, data);
  const bool cut = frame.fault == SimFault::Kind::Short;
  return DriverResult::Done(static_cast<std::uint32_t>(cut ? data.size() / 2 : data.size()));
}

DriverResult UsbWire::Reply(const Packet& reply, const Packet& unsettled, std::uint32_t settleMs) {
  if (!replies_.empty()) Camera().NoteProtocolError("query while a reply is unread");
  if (replies_.size() >= kMaxReplies)
    return Refuse(DriverError::GeneralFailure, "query that nobody reads the replies of");
  // The endpoint is buffered twice: what the host reads first was filled before the request.
  replies_.push_back({lastReply_, lastReply_, SimTimer(Clock())});
  replies_.push_back({reply, unsettled, SimTimer(Clock())});
  replies_.back().settling.Start(settleMs);
  lastReply_ = reply;
  return Accept();
}

void UsbWire::OnIdle() {
  const std::lock_guard lock(mutex_);
  if (Handles() == 0) isAwake_ = false;
}

std::uint32_t UsbWire::RegisterAddress(const Packet& packet) const {
  return Camera().Map().addressBytes == 1 ? packet[1] : FromBytes16(packet[2], packet[1]);
}

DriverResult UsbWire::WriteRegister(const Packet& packet) {
  const SensorMap& map = Camera().Map();
  const auto dataEnd = packet.begin() + 1 + map.addressBytes + map.valueBytes;
  if (std::any_of(dataEnd, packet.end(), [](std::uint8_t byte) { return byte != 0; }))
    return Refuse(DriverError::GeneralFailure, "register write longer than the sensor's registers");
  std::uint32_t value = 0;
  for (auto byte = packet.begin() + 1 + map.addressBytes; byte != dataEnd; ++byte) value = value << 8 | *byte;
  Camera().WriteRegister(RegisterAddress(packet), value);
  return Accept();
}

DriverResult UsbWire::ReadRegister(const Packet& packet) {
  const SensorMap& map = Camera().Map();
  if (map.addressBytes == 1 && packet[2] != 0)
    return Refuse(DriverError::GeneralFailure, "register address of two bytes");
  const std::uint32_t value = Camera().ReadRegister(RegisterAddress(packet));
  Packet reply{};
  for (int n = 0; n < map.valueBytes; ++n)
    reply[static_cast<std::size_t>(n)] = ByteOf(value, static_cast<unsigned>(map.valueBytes - 1 - n));
  return Reply(reply);
}

DriverResult UsbWire::ResetCamera(const Packet&) {
  Camera().ResetSensor();
  Camera().RestartStream();
  transferSize_ = 0;
  bytesPerSample_ = 1;
  frameStarted_ = false;
  isAwake_ = true;
  replies_.clear();
  outputs_ = 0;
  ResetController();
  return Accept();
}

void UsbWire::ResetController() {
  fpga_.fill(0);
}

bool UsbWire::TakeTransferSize(std::uint32_t pixels) {
  if (pixels == 0 || pixels > kMaxTransferSize) return false;
  transferSize_ = pixels;
  Camera().RestartStream();
  return true;
}

DriverResult UsbWire::SetTransferSize(const Packet& packet) {
  const std::uint32_t size = LoadLittle32(&packet[1]);
  if (!TakeTransferSize(size))
    return Refuse(DriverError::GeneralFailure, "transfer size " + std::to_string(size));
  return Accept();
}

DriverResult UsbWire::SetTransferMode(const Packet& packet) {
  if (packet[1] > 1) return Refuse(DriverError::GeneralFailure, "transfer mode " + Hex(packet[1]));
  bytesPerSample_ = packet[1] + 1;
  return Accept();
}

void UsbWire::FinishRomByte() {
  if (romByte_.cell == nullptr || romProgramming_.IsRunning()) return;
  *std::exchange(romByte_.cell, nullptr) = romByte_.value;
}

DriverResult UsbWire::ProgramRom(std::uint8_t* cell, std::uint8_t value) {
  FinishRomByte();
  if (romByte_.cell != nullptr) {
    // The command itself has arrived: nothing tells the host.
    Camera().NoteProtocolError("serial-ROM write while another byte is programmed");
    return Accept();
  }
  romByte_ = {cell, value};
  romProgramming_.Start(kRomByteMs);
  return Accept();
}

std::uint8_t UsbWire::RomByte(const std::uint8_t& cell) {
  FinishRomByte();
  return cell;
}

DriverResult UsbWire::WriteRom(const Packet& packet) {
  return ProgramRom(&rom_[packet[1]], packet[2]);
}

DriverResult UsbWire::ReadRom(const Packet& packet) {
  return Reply({RomByte(rom_[packet[1]])});
}

DriverResult UsbWire::SetHalfClock(const Packet& packet) {
  if (packet[1] > 1) return Refuse(DriverError::GeneralFailure, "half clock " + Hex(packet[1]));
  Camera().SetHalfClock(packet[1] == 1);
  return Accept();
}

DriverResult UsbWire::ReadHalfClock(const Packet&) {
  return Reply({static_cast<std::uint8_t>(Camera().HalfClock() ? 1 : 0)});
}

DriverResult UsbWire::WriteFpga(const Packet& packet) {
  fpga_[packet[1]] = FromBytes16(packet[2], packet[3]);
  if (const auto first = Camera().Map().fpgaRegisters)
    Camera().WriteRegister(static_cast<std::uint32_t>(*first) + packet[1], fpga_[packet[1]]);
  return Accept();
}

DriverResult UsbWire::ReadFpga(const Packet& packet) {
  return Reply({ByteOf(fpga_[packet[1]], 0), ByteOf(fpga_[packet[1]], 1)});
}

DriverResult UsbWire::WriteBlock(const Packet& packet) {
  if (packet[1] > kMaxBlock)
    return Refuse(DriverError::GeneralFailure, "block of " + std::to_string(packet[1]) + " bytes");
  return Accept();
}

DriverResult UsbWire::SetOutputs(const Packet& packet) {
  constexpr std::uint8_t kOutputPins = 0x60;
  if ((packet[1] & ~kOutputPins) != 0)
    return Refuse(DriverError::GeneralFailure,
                  "outputs " + Hex(packet[1]) + ": there are two, in bits 5 and 6");
  outputs_ = packet[1];
  return Accept();
}

DriverResult UsbWire::ReadInputs(const Packet&) {
  // The plug in the simulated socket connects the two outputs to the two inputs, bits 3 and 4.
  const Packet before = std::exchange(inputs_, Packet{static_cast<std::uint8_t>(outputs_ >> 2)});
  return Reply(inputs_, before, kInputsMs);
}

}  // namespace zel
