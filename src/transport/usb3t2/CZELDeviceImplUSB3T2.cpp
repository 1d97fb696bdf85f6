#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"

#include <algorithm>

#include "common/BytePacking.h"
#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"
#include "transport/DriverPath.h"
#include "transport/usb3t2/FpgaRegisters.h"

namespace zel {
namespace {

constexpr std::size_t kPieceBytes = 0x80000;

/// The lanes' reset inputs.
constexpr LONG kLaneReset = 0x22;

/// Closes a controller at the end of a scope that opened it.
class OpenScope {
 public:
  OpenScope(CFx3Api& controller, LONG index)
      : controller_(controller), opened_(!controller.IsOpen() && controller.Open(index)) {}
  ~OpenScope() {
    if (opened_) controller_.Close();
  }
  OpenScope(const OpenScope&) = delete;
  OpenScope& operator=(const OpenScope&) = delete;

  explicit operator bool() const { return controller_.IsOpen(); }

 private:
  CFx3Api& controller_;
  const bool opened_;
};

}  // namespace

// ---- presence, opening, closing

LONG CZELDeviceImplUSB3T2::GetMaxCameraNum() {
  return kDeviceIndexes;
}

LONG CZELDeviceImplUSB3T2::IsCameraValid(LONG index, LONG* valid) {
  const LONG result = IsDeviceFree(GetCameraType(), index) && CFx3Api().Probe(index);
  Put(valid, result);
  return result;
}

LONG CZELDeviceImplUSB3T2::IsCameraConnected(LONG* connected) {
  // Not with the device's own controller, which may be reading a frame.
  const LONG result = CFx3Api().Probe(GetCameraIndex());
  Put(connected, result);
  return result;
}

LONG CZELDeviceImplUSB3T2::OpenDevice() {
  CloseDevice(GetCameraIndex());
  if (!claim_.Take(GetCameraType(), GetCameraIndex())) return 0;
  try {
    if (!Connect()) {
      CloseDevice(GetCameraIndex());
      return 0;
    }
  } catch (...) {
    // The user is told, and the camera stays open: it may answer after being plugged in again.
    CurrentDriverHost().ShowMessage(kResetFailed);
  }
  return 1;
}

bool CZELDeviceImplUSB3T2::Connect() {
  devicePath_ = DriverPath(GetDriverName(), GetCameraIndex());
  const OpenScope open(fx3_, GetCameraIndex());
  if (!open) return false;
  CZELDevicePropertyImpl& store = PropertyStore();
  if (store.AttachDevice(this) != S_OK) return false;
  // A camera that missed a reset may still answer; what follows shows it.
  store.SetFpgaRegister(kFpgaReset, 1);
  store.SetFpgaRegister(kFpgaReset, 0);
  fx3_.ResetParentPort();
  fx3_.ResetController();
  return store.InitializeCamera() != 0;
}

LONG CZELDeviceImplUSB3T2::CloseDevice(LONG) {
  PropertyStore().DetachDevice();
  claim_.Release();
  return 1;
}

// ---- preparation

void CZELDeviceImplUSB3T2::SetFrame(const Usb3T2Frame& frame) {
  const CritSecGuard guard(Lock());
  frame_ = frame;
}

Usb3T2Frame CZELDeviceImplUSB3T2::CopyFrame() {
  const CritSecGuard guard(Lock());
  return frame_;
}

LONG CZELDeviceImplUSB3T2::PrepareCapture() {
  // After a failure nothing may be read into buffers that were never made.
  transferBytes_ = 0;
  if (PropertyStore().ApplyColorMatrix() != S_OK) return 0;
  if (!AllocateRawBuffers(frame_.frameBytes)) return 0;
  ApplyFrameGeometry();
  if (!ProgramFpga()) return 0;
  transferBytes_ = frame_.frameBytes;
  return 1;
}

bool CZELDeviceImplUSB3T2::ProgramFpga() {
  const struct {
    LONG address;
    LONG value;
  } writes[] = {
      {kFpgaWidthLow, ByteOf(geometry_.width, 0)},
      {kFpgaWidthHigh, ByteOf(geometry_.width, 1)},
      {kFpgaHeightLow, ByteOf(geometry_.height, 0)},
      {kFpgaHeightHigh, ByteOf(geometry_.height, 1)},
      {kFpgaFirstLane, kLaneReset},
      {kFpgaSecondLane, kLaneReset},
      {kFpgaThirdLane, kLaneReset},
      {kFpgaFourthLane, kLaneReset},
      {kFpgaFirstLane, 0},
      {kFpgaSecondLane, 0},
      {kFpgaThirdLane, 0},
      {kFpgaFourthLane, 0},
  };
  return std::ranges::all_of(writes, [this](const auto& write) {
    return SUCCEEDED(PropertyStore().SetFpgaRegister(write.address, write.value));
  });
}

// ---- frames

struct CZELDeviceImplUSB3T2::FrameRequest {
  std::array<std::uint8_t, kFrameHeaderBytes> header{};
  std::span<unsigned char> buffer;
};

LONG CZELDeviceImplUSB3T2::ReadFrame(unsigned char* buffer) {
  const LONG bytes = transferBytes_;
  if (buffer == nullptr || bytes <= 0) return 0;
  FrameRequest request{.buffer = {buffer, static_cast<std::size_t>(bytes)}};
  return ReadRequest(request);
}

bool CZELDeviceImplUSB3T2::ReadRequest(FrameRequest& request) {
  const OpenScope open(fx3_, GetCameraIndex());
  if (!open || !fx3_.StartFrame()) return false;
  std::uint32_t received = 0;
  if (!fx3_.BulkRead(request.header, kFx3ImageEndpoint, &received)) return false;
  if (received != request.header.size()) return false;
  const FrameHeader header = FrameHeader::From(request.header);
  NoteFrameKind(header.kind);
  if (header.imageBytes > request.buffer.size()) return false;
  return ReadImage(request.buffer.first(header.imageBytes));
}

bool CZELDeviceImplUSB3T2::ReadImage(std::span<unsigned char> image) {
  bool moved = true;
  std::size_t offset = 0;
  while (moved && offset < image.size()) {
    const std::size_t bytes = std::min(kPieceBytes, image.size() - offset);
    std::uint32_t received = 0;
    moved = fx3_.BulkReadAt(image, offset, bytes, kFx3ImageEndpoint, &received) && received == bytes;
    offset += received;
  }
  return NoteReceived(offset, image.size()) && moved;
}

void CZELDeviceImplUSB3T2::ProcessFrame(unsigned char* raw) {
  const auto headerPixels = static_cast<std::size_t>(std::max<LONG>(geometry_.headerPixels, 0));
  DeliverFrame(raw, headerPixels * (IsEightBitTransfer() ? 1 : 2), FrameEventOf(LastFrameKind()));
}

void CZELDeviceImplUSB3T2::AbortTransfer() {
  PropertyStore().AbortTransfer();
}

}  // namespace zel
