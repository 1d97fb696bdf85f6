#include "sim/Fx3Wire.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "common/BytePacking.h"
#include "platform/Text.h"

namespace zel {
namespace {

constexpr GUID kInterfaceClass = {
    0x328184C5, 0x93E6, 0x49B7, {0x94, 0xB8, 0x2A, 0xDA, 0x13, 0xAA, 0xBB, 0x39}};

constexpr std::uint32_t kControlTransfer = 0x220020, kBulkTransfer = 0x220024, kDirectTransfer = 0x22004B;
constexpr std::uint32_t kCyclePort = 0x220028, kResetParentPort = 0x220030;
constexpr std::uint32_t kResetPipe = 0x22002C, kAbortPipe = 0x220044;
constexpr std::uint32_t kGetSpeed = 0x22004C, kSuperSpeed = 3;

constexpr std::size_t kHeaderSize = 38, kRequestData = 64;
constexpr std::uint8_t kImageEndpoint = 0x81;
constexpr std::uint8_t kDecodedTypeBits = 0xE3;  // recipient, type, direction: all that the firmware looks at
constexpr std::uint8_t kBulkType = 0x80, kBulkRequest = 0x33;
constexpr std::size_t kFrameHeaderSize = 64, kPieceSize = 512 << 10;

constexpr std::uint16_t kFpgaBus = 0x40, kSensorBus = 0xBA, kReadBit = 1;

constexpr std::uint8_t kBytesPerSample = 60, kHeight = 64, kWidth = 68, kReset = 108, kFocus = 120;
constexpr std::array<std::uint8_t, 4> kLanes{72, 73, 76, 77};
constexpr std::uint8_t kLaneReset = 0x22;
constexpr unsigned kAllLanes = 0xF;

constexpr std::uint8_t kFocusAtStart = 128;  // where the lens stands when switched on

std::string Hex(std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(value));
  return text;
}

bool AllZero(std::span<const std::uint8_t> bytes) {
  return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

unsigned Little16(std::span<const std::uint8_t> bytes, std::size_t at) {
  return FromBytes16(bytes[at], bytes[at + 1]);
}

/// What a transfer header has in common on all endpoints; the driver fills bytes 14 to 21 itself.
bool IsTransferHeader(std::span<const std::uint8_t> header, std::uint8_t endpoint, std::size_t data) {
  return header[12] == 0 && header[13] == endpoint && AllZero(header.subspan(22, 8)) &&
         LoadLittle32(&header[30]) == kHeaderSize && LoadLittle32(&header[34]) == data;
}

}  // namespace

class Fx3Wire::BulkTransfer : public PendingControl {
 public:
  /// `headerSize` bytes of the reported count precede the data.
  BulkTransfer(std::shared_ptr<Fx3Wire> wire, std::span<std::uint8_t> data, std::size_t headerSize)
      : wire_(std::move(wire)), data_(data), headerSize_(headerSize), aborts_(wire_->Aborts()) {}

  Waited Wait(std::uint32_t milliseconds) override {
    if (!result_) result_ = wire_->Serve(data_, milliseconds, aborts_);
    if (result_ && result_->ok && !counted_) {
      result_->bytes += static_cast<std::uint32_t>(headerSize_);
      counted_ = true;
    }
    return result_ ? Waited::Done : Waited::Timeout;
  }

  DriverResult Finish() override { return result_.value_or(DriverResult::Failed(DriverError::Pending)); }

  void Cancel() override {
    if (!result_) result_ = DriverResult::Failed(DriverError::Aborted);
  }

 private:
  const std::shared_ptr<Fx3Wire> wire_;
  const std::span<std::uint8_t> data_;
  const std::size_t headerSize_;
  const unsigned aborts_;
  std::optional<DriverResult> result_;
  bool counted_ = false;
};

class Fx3Wire::Handle : public SimHandle {
 public:
  explicit Handle(std::shared_ptr<Fx3Wire> wire) : SimHandle(wire), wire_(std::move(wire)) {}
  ~Handle() override { wire_->Closed(*this); }

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out) override {
    return wire_->Control(*this, code, in, out);
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                               std::span<std::uint8_t> out, DriverError* error) override {
    return wire_->BeginBulk(code, in, out, error);
  }

  DriverResult Seek(std::uint64_t) override { return Unknown("seek"); }
  DriverResult Read(std::span<std::uint8_t>) override { return Unknown("read"); }
  DriverResult Write(std::span<const std::uint8_t>) override { return Unknown("write"); }

 private:
  DriverResult Unknown(const char* call) {
    return wire_->Refuse(DriverError::NotSupported,
                         std::string(call) + ": the driver only has control calls");
  }

  const std::shared_ptr<Fx3Wire> wire_;
};

Fx3Wire::Fx3Wire(SimCameraAddress address, const SensorMap& map, std::shared_ptr<const Scene> scene,
                 const SimConfiguration& configuration)
    : SimDevice(address, map, std::move(scene), configuration) {
  fpga_[kFocus] = kFocusAtStart;
  Camera().MoveLens(kFocusAtStart);
}

std::u16string Fx3Wire::Path() const {
  return u"\\\\?\\usb#" + SimDriverName(Camera().Map()) + u"#" + ToUtf16(std::to_string(Address().index)) +
         u"#{328184c5-93e6-49b7-94b8-2ada13aabb39}";
}

std::optional<GUID> Fx3Wire::InterfaceClass() const {
  return kInterfaceClass;
}

std::unique_ptr<DriverHandle> Fx3Wire::Open(const OpenRequest& request, DriverError* error) {
  if (request.access != kAccessWrite || request.share != kShareWrite || request.flags != kOpenOverlapped) {
    *error = Refuse(DriverError::AccessDenied, "open: access " + Hex(request.access) + ", share " +
                                                   Hex(request.share) + ", flags " + Hex(request.flags))
                 .error;
    return nullptr;
  }
  *error = DriverError::None;
  return std::make_unique<Handle>(std::static_pointer_cast<Fx3Wire>(shared_from_this()));
}

void Fx3Wire::Closed(const Handle& handle) {
  const std::lock_guard lock(mutex_);
  if (streaming_ == &handle) stage_ = Stage::Idle;
}

DriverResult Fx3Wire::Refuse(DriverError error, const std::string& what) {
  Camera().NoteProtocolError(what);
  return DriverResult::Failed(error);
}

// ---- driver calls

DriverResult Fx3Wire::Control(const Handle& handle, std::uint32_t code, std::span<const std::uint8_t> in,
                              std::span<std::uint8_t> out) {
  if (Camera().IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
  switch (code) {
    case kControlTransfer:
      return ControlTransfer(handle, in, out);
    case kAbortPipe:
    case kResetPipe:
      return ChangePipe(code, in, out);
    case kCyclePort:
    case kResetParentPort:
      return ResetPort(in, out);
    case kGetSpeed:
      if (in.size() != 4 || out.size() != 4)
        return Refuse(DriverError::InvalidParameter, "the speed has 4 bytes");
      StoreLittle32(out.data(), kSuperSpeed);
      return DriverResult::Done(4);
    default:
      break;
  }
  DriverError error = DriverError::None;
  const auto transfer = BeginBulk(code, in, out, &error);
  if (!transfer) return DriverResult::Failed(error);
  const std::uint32_t timeout = LoadLittle32(&in[8]);
  return transfer->Wait(timeout) == PendingControl::Waited::Done ? transfer->Finish()
                                                                 : DriverResult::Failed(DriverError::Timeout);
}

DriverResult Fx3Wire::ResetPort(std::span<const std::uint8_t> in, std::span<const std::uint8_t> out) {
  if (!in.empty() || !out.empty())
    return Refuse(DriverError::InvalidParameter, "a port reset carries no data");
  const std::lock_guard lock(mutex_);
  link_ = Link::PortReset;
  stage_ = Stage::Idle;
  ++aborts_;
  return DriverResult::Done(0);
}

DriverResult Fx3Wire::ChangePipe(std::uint32_t code, std::span<const std::uint8_t> in,
                                 std::span<const std::uint8_t> out) {
  if (in.size() != 1 || in[0] != kImageEndpoint || !out.empty())
    return Refuse(DriverError::InvalidParameter, "control code " + Hex(code) + " names no bulk endpoint");
  const std::lock_guard lock(mutex_);
  stage_ = Stage::Idle;
  ++aborts_;
  return DriverResult::Done(0);
}

std::unique_ptr<Fx3Wire::BulkTransfer> Fx3Wire::BeginBulk(std::uint32_t code,
                                                          std::span<const std::uint8_t> in,
                                                          std::span<std::uint8_t> out, DriverError* error) {
  const auto refuse = [&](const std::string& what) {
    *error = Refuse(DriverError::InvalidParameter, what).error;
    return nullptr;
  };
  *error = DriverError::NotConnected;
  if (Camera().IsUnplugged()) return nullptr;
  const auto self = std::static_pointer_cast<Fx3Wire>(shared_from_this());
  if (code == kDirectTransfer) {
    if (in.size() != kHeaderSize || out.empty() || in[13] != kImageEndpoint ||
        LoadLittle32(&in[30]) != kHeaderSize)
      return refuse("direct transfer without its header");
    *error = DriverError::None;
    return std::make_unique<BulkTransfer>(self, out, 0);
  }
  if (code != kBulkTransfer) return refuse("unknown control code " + Hex(code));
  if (out.size() <= kHeaderSize || in.size() != out.size())
    return refuse("bulk transfer of " + std::to_string(in.size()) + " and " + std::to_string(out.size()) +
                  " bytes");
  if ((in[0] & kDecodedTypeBits) != kBulkType || in[1] != kBulkRequest || !AllZero(in.subspan(2, 4)) ||
      Little16(in, 6) != (in.size() & 0xFFFF) || LoadLittle32(&in[8]) == 0 ||
      !IsTransferHeader(in, kImageEndpoint, in.size() - kHeaderSize))
    return refuse("header of a bulk transfer of " + std::to_string(in.size()) + " bytes");
  *error = DriverError::None;
  return std::make_unique<BulkTransfer>(self, out.subspan(kHeaderSize), kHeaderSize);
}

// ---- vendor requests

const Fx3Wire::VendorRequest Fx3Wire::kRequests[] = {
    {0x30, 0x40, &Fx3Wire::BusWrite},        {0x31, 0xC0, &Fx3Wire::BusRead},
    {0x37, 0x40, &Fx3Wire::BlockWrite},      {0xB0, 0xC0, &Fx3Wire::ReadInformation},
    {0xC0, 0x40, &Fx3Wire::ResetController}, {0xC2, 0x42, &Fx3Wire::StartFrame},
};

DriverResult Fx3Wire::ControlTransfer(const Handle& handle, std::span<const std::uint8_t> in,
                                      std::span<std::uint8_t> out) {
  if (in.size() != kHeaderSize + kRequestData || out.size() != in.size())
    return Refuse(DriverError::InvalidParameter,
                  "control transfer of " + std::to_string(in.size()) + " bytes");
  const Setup setup{static_cast<std::uint8_t>(in[0] & kDecodedTypeBits), in[1], FromBytes16(in[2], in[3]),
                    FromBytes16(in[4], in[5])};
  if (Little16(in, 6) != in.size() || LoadLittle32(&in[8]) == 0 || !IsTransferHeader(in, 0, kRequestData))
    return Refuse(DriverError::InvalidParameter, "header of vendor request " + Hex(setup.request));
  const auto* const request = std::ranges::find(kRequests, setup.request, &VendorRequest::code);
  if (request == std::end(kRequests) || request->type != setup.type)
    return Refuse(DriverError::GeneralFailure,
                  "unknown vendor request " + Hex(setup.request) + " of type " + Hex(setup.type));

  std::array<std::uint8_t, kRequestData> data;
  std::ranges::copy(in.subspan(kHeaderSize), data.begin());
  const std::lock_guard lock(mutex_);
  DriverResult result = (this->*request->run)(setup, data);
  if (!result.ok) return result;
  if (request->code == 0xC2) streaming_ = &handle;
  std::copy_n(data.begin(), result.bytes, out.begin() + kHeaderSize);
  result.bytes += static_cast<std::uint32_t>(kHeaderSize);
  return result;
}

DriverResult Fx3Wire::BusWrite(const Setup& setup, std::span<std::uint8_t> data) {
  const std::size_t count = setup.value;
  if (count > data.size() || !AllZero(data.subspan(count)))
    return Refuse(DriverError::GeneralFailure, "bus write of " + std::to_string(count) + " bytes");
  const bool isReset = setup.index == kFpgaBus && data[0] == kReset;
  if (!isLoaded_ && !isReset)
    return Refuse(DriverError::GeneralFailure, "bus write before the FPGA's first reset");
  if (fpga_[kReset] != 0 && !isReset)
    return Refuse(DriverError::GeneralFailure, "bus write while the camera is held in reset");
  if (setup.index == kFpgaBus && count == 3 && data[1] == 0) return WriteFpga(data[0], data[2]);
  if (setup.index == kFpgaBus && count == 1) {
    fpgaAddress_ = data[0];
    return DriverResult::Done(0);
  }
  if (setup.index == kSensorBus && (count == 2 || count == 4)) {
    sensorAddress_ = FromBytes16(data[1], data[0]);
    if (count == 4) Camera().WriteRegister(sensorAddress_, FromBytes16(data[3], data[2]));
    return DriverResult::Done(0);
  }
  return Refuse(DriverError::GeneralFailure,
                "bus write of " + std::to_string(count) + " bytes to " + Hex(setup.index));
}

DriverResult Fx3Wire::BusRead(const Setup& setup, std::span<std::uint8_t> data) {
  const bool fpga = setup.index == (kFpgaBus | kReadBit);
  if (setup.value != 2 || (!fpga && setup.index != (kSensorBus | kReadBit)))
    return Refuse(DriverError::GeneralFailure,
                  "bus read of " + std::to_string(setup.value) + " bytes from " + Hex(setup.index));
  const std::uint32_t value = fpga ? fpga_[fpgaAddress_] : Camera().ReadRegister(sensorAddress_);
  data[0] = ByteOf(value, 1);
  data[1] = ByteOf(value, 0);
  return DriverResult::Done(2);
}

DriverResult Fx3Wire::BlockWrite(const Setup& setup, std::span<std::uint8_t> data) {
  if (setup.value > data.size())
    return Refuse(DriverError::GeneralFailure, "block write of " + std::to_string(setup.value) + " bytes");
  return DriverResult::Done(0);
}

DriverResult Fx3Wire::ReadInformation(const Setup& setup, std::span<std::uint8_t> data) {
  if (setup.value != 0 || setup.index != 0)
    return Refuse(DriverError::GeneralFailure, "device information has no parts");
  const std::string name = ToUtf8(SimDriverName(Camera().Map()));
  std::ranges::fill(data, std::uint8_t{0});
  std::ranges::copy(name, data.begin());
  return DriverResult::Done(static_cast<std::uint32_t>(data.size()));
}

DriverResult Fx3Wire::ResetController(const Setup& setup, std::span<std::uint8_t> data) {
  if (setup.value != 0 || setup.index != 0 || !AllZero(data))
    return Refuse(DriverError::GeneralFailure, "a controller reset carries no data");
  if (link_ == Link::PortReset) link_ = Link::InStep;
  stage_ = Stage::Idle;
  return DriverResult::Done(0);
}

DriverResult Fx3Wire::StartFrame(const Setup& setup, std::span<std::uint8_t> data) {
  if (setup.value != 0 || setup.index != 0 || !AllZero(data))
    return Refuse(DriverError::GeneralFailure, "a frame start carries no data");
  if (stage_ != Stage::Idle) {
    stage_ = Stage::Idle;
    return Refuse(DriverError::GeneralFailure, "frame start before the last frame was read");
  }
  if (link_ != Link::InStep)
    return Refuse(DriverError::GeneralFailure, "frame start while the controller is out of step");
  if (lanesReset_ != kAllLanes)
    return Refuse(DriverError::GeneralFailure, "frame start without a reset of the lanes");
  if (fpga_[kBytesPerSample] != 1 && fpga_[kBytesPerSample] != 2)
    return Refuse(DriverError::GeneralFailure, std::to_string(fpga_[kBytesPerSample]) + " bytes per sample");
  stage_ = Stage::Started;
  return DriverResult::Done(0);
}

// ---- FPGA

DriverResult Fx3Wire::WriteFpga(std::uint8_t address, std::uint8_t value) {
  const std::uint8_t before = std::exchange(fpga_[address], value);
  if (address == kReset && before != 0 && value == 0) ResetFpga();
  if (address == kFocus) Camera().MoveLens(value);
  if (address == kHeight || address == kHeight + 1 || address == kWidth || address == kWidth + 1)
    lanesReset_ = 0;
  const auto lane = std::ranges::find(kLanes, address);
  if (lane != kLanes.end()) ResetLane(static_cast<std::size_t>(lane - kLanes.begin()), before, value);
  return DriverResult::Done(0);
}

void Fx3Wire::ResetFpga() {
  const std::uint8_t focus = fpga_[kFocus];  // the lens has no spring
  fpga_.fill(0);
  fpga_[kFocus] = focus;
  lanesReset_ = 0;
  isLoaded_ = true;
  link_ = Link::OutOfStep;
  stage_ = Stage::Idle;
  Camera().ResetSensor();
  Camera().RestartStream();
}

void Fx3Wire::ResetLane(std::size_t lane, std::uint8_t before, std::uint8_t value) {
  const unsigned bit = 1u << lane;
  if (value != 0) {
    lanesReset_ &= ~bit;
  } else if (before == kLaneReset) {
    lanesReset_ |= bit;
    if (lanesReset_ == kAllLanes) Camera().RestartStream();
  }
}

// ---- frames

unsigned Fx3Wire::Aborts() {
  const std::lock_guard lock(mutex_);
  return aborts_;
}

std::optional<DriverResult> Fx3Wire::Serve(std::span<std::uint8_t> data, std::uint32_t milliseconds,
                                           unsigned aborts) {
  {
    const std::lock_guard lock(mutex_);
    if (Camera().IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
    if (aborts_ != aborts) return DriverResult::Failed(DriverError::Aborted);
    if (stage_ == Stage::Idle)
      return Refuse(DriverError::GeneralFailure,
                    "read of " + std::to_string(data.size()) + " bytes without a frame");
    if (stage_ == Stage::Image) return GiveImage(data);
    if (data.size() != kFrameHeaderSize)
      return Refuse(DriverError::GeneralFailure, "frame header of " + std::to_string(data.size()) + " bytes");
  }
  VirtualCamera::Frame frame;
  const DriverError error = Camera().AwaitFrame(milliseconds, &frame);
  if (error == DriverError::Timeout) return {};
  if (error != DriverError::None) return DriverResult::Failed(error);
  return GiveHeader(frame, data, aborts);
}

DriverResult Fx3Wire::GiveHeader(const VirtualCamera::Frame& frame, std::span<std::uint8_t> data,
                                 unsigned aborts) {
  int bytesPerSample = 0;
  std::vector<std::uint8_t> image;
  {
    const std::lock_guard lock(mutex_);
    const ReadoutWindow& window = frame.picture.readout.window;
    const int width = FromBytes16(fpga_[kWidth], fpga_[kWidth + 1]);
    const int height = FromBytes16(fpga_[kHeight], fpga_[kHeight + 1]);
    if (width != window.columns || height != window.rows)
      return Refuse(DriverError::GeneralFailure, "picture of " + std::to_string(width) + " x " +
                                                     std::to_string(height) + " from a window of " +
                                                     std::to_string(window.columns) + " x " +
                                                     std::to_string(window.rows));
    bytesPerSample = fpga_[kBytesPerSample];
    image.swap(image_);  // exposed below without the lock
    image.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                 static_cast<std::size_t>(bytesPerSample));
  }
  const bool garbage = frame.fault == SimFault::Kind::Garbage;
  if (!garbage) {
    Camera().Expose(frame, bytesPerSample, image);
    std::ranges::fill(data, std::uint8_t{0});
    StoreLittle32(&data[16], static_cast<std::uint32_t>(image.size()));
    StoreLittle32(&data[20], frame.picture.number);
  } else {
    Camera().Expose(frame, 1, data);
  }
  const std::lock_guard lock(mutex_);
  image_.swap(image);
  if (aborts_ != aborts) return DriverResult::Failed(DriverError::Aborted);
  // A controller that has lost the picture's size sends nothing after its header.
  stage_ = garbage ? Stage::Idle : Stage::Image;
  sent_ = 0;
  available_ = frame.fault == SimFault::Kind::Short ? image_.size() / 2 : image_.size();
  return DriverResult::Done(static_cast<std::uint32_t>(data.size()));
}

DriverResult Fx3Wire::GiveImage(std::span<std::uint8_t> data) {
  if (data.size() > image_.size() - sent_)
    return Refuse(DriverError::GeneralFailure,
                  "read of " + std::to_string(data.size()) + " bytes beyond the end of the picture");
  if (data.size() != std::min(kPieceSize, image_.size() - sent_))
    return Refuse(DriverError::GeneralFailure, "piece of " + std::to_string(data.size()) + " bytes");
  const std::size_t count = std::min(data.size(), available_ - sent_);
  std::copy_n(image_.begin() + static_cast<std::ptrdiff_t>(sent_), count, data.begin());
  sent_ += count;
  if (count < data.size() || sent_ == image_.size()) stage_ = Stage::Idle;
  return DriverResult::Done(static_cast<std::uint32_t>(count));
}

}  // namespace zel
