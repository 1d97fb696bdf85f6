#include "sim/SataWire.h"

#include <algorithm>
#include <utility>

#include "common/BytePacking.h"

namespace zel {
namespace {

// Bytes of the sector.
constexpr std::size_t kRequest = 34, kAddress = 36, kAddressHigh = 37, kValue = 38, kReadBack = 40;
constexpr std::size_t kStatus = 42, kReady = 44, kRun = 46, kOneByte = 48, kValueHigh = 50, kUnused = 51;
constexpr std::size_t kWidth = 64, kHeight = 68, kLeft = 72, kTop = 76, kTrigger = 80;
constexpr std::size_t kBits = 96, kAux = 98;

constexpr std::uint8_t kWriteRequest = 1, kReadRequest = 2;
constexpr std::uint8_t kWriteBusy = 1, kWriteDone = 2, kReadBusy = 4, kReadDone = 8;
constexpr std::uint8_t kRunning = 1, kStopped = 2;
constexpr std::uint8_t kReadyA = 2, kReadyB = 1;

constexpr int kBusyReads = 2;  // how long a register access takes
constexpr std::uint32_t kSettlingMs = 5, kCarryingMs = 5;
constexpr std::uint32_t kDriverTimeoutMs = 3000;

// The camera's own mark at the start of the sector: a request has to bring it back.
constexpr std::uint8_t kMark[] = {0x5A, 0x45, 0x4C, 0xA5};

struct SettingByte {
  std::size_t offset;
  bool (*isValid)(std::uint8_t byte);
};

constexpr SettingByte kSettings[] = {
    {kRun, [](std::uint8_t byte) { return byte == kRunning || byte == kStopped; }},
    {kOneByte, [](std::uint8_t byte) { return byte <= 1; }},
    {kWidth, [](std::uint8_t) { return true; }},
    {kWidth + 2, [](std::uint8_t) { return true; }},
    {kHeight, [](std::uint8_t) { return true; }},
    {kHeight + 2, [](std::uint8_t) { return true; }},
    {kLeft, [](std::uint8_t) { return true; }},
    {kLeft + 2, [](std::uint8_t) { return true; }},
    {kTop, [](std::uint8_t) { return true; }},
    {kTop + 2, [](std::uint8_t) { return true; }},
    {kTrigger, [](std::uint8_t byte) { return byte <= 1; }},
    {kBits, [](std::uint8_t byte) { return byte <= 8 && (byte & (byte - 1)) == 0; }},
    {kAux, [](std::uint8_t byte) { return byte <= 3; }},
};

constexpr std::size_t kRequestFields[] = {kRequest,   kAddress,   kAddressHigh, kValue,
                                          kValue + 1, kValueHigh, kUnused};

/// Whether the controller cuts the window out of the sensor's picture.
bool CutsWindow(const SensorMap& map) {
  return map.left[0].address == kControllerLeft;
}

}  // namespace

SataWire::SataWire(SimCameraAddress address, const SensorMap& map, std::shared_ptr<const Scene> scene,
                   const SimConfiguration& configuration)
    : SectorWire(address, map, std::move(scene), configuration) {
  std::ranges::copy(kMark, sector_.begin());
  sector_[kRun] = kStopped;
}

std::u16string SataWire::Path() const {
  return std::u16string(u"\\\\.\\") + static_cast<char16_t>(Address().index) + u':';
}

bool SataWire::IsRunning() const {
  return sector_[kRun] == kRunning;
}

std::size_t SataWire::Pitch() const {
  const std::size_t bytesPerSample = sector_[kOneByte] == 1 ? 1 : 2;
  return FromBytes16(sector_[kWidth], sector_[kWidth + 2]) * bytesPerSample;
}

std::size_t SataWire::FrameBytes() const {
  return Pitch() * FromBytes16(sector_[kHeight], sector_[kHeight + 2]);
}

DriverResult SataWire::ReadAt(std::uint64_t position, std::span<std::uint8_t> out) {
  const VolumeSectors& volume = Camera().Map().volume;
  if (position == volume.command * std::uint64_t{kSectorSize} && out.size() == kSectorSize)
    return GiveSector(out);
  if (position == volume.areaA * std::uint64_t{kSectorSize}) return GiveImage(0, out);
  if (position == volume.areaB * std::uint64_t{kSectorSize}) return GiveImage(1, out);
  return Refuse(DriverError::InvalidParameter,
                "read of " + std::to_string(out.size()) + " bytes at " + Hex(position));
}

DriverResult SataWire::GiveSector(std::span<std::uint8_t> out) {
  const std::lock_guard lock(mutex_);
  if (busyReads_ > 0 && --busyReads_ == 0) FinishRequest();
  if (IsRunning() && !areas_[0] && !areas_[1]) {
    VirtualCamera::Frame frame;
    const DriverError error = Camera().AwaitFrame(0, &frame);
    if (error == DriverError::NotConnected) return DriverResult::Failed(error);
    if (error == DriverError::None) {
      areas_[nextArea_] = frame;
      nextArea_ ^= 1;
    }
  }
  sector_[kReady] = areas_[0] ? kReadyA : areas_[1] ? kReadyB : 0;
  std::ranges::copy(sector_, out.begin());
  return DriverResult::Done(static_cast<std::uint32_t>(out.size()));
}

void SataWire::FinishRequest() {
  const bool writes = sector_[kRequest] == kWriteRequest;
  const std::uint32_t address = FromBytes16(sector_[kAddress], sector_[kAddressHigh]);
  const bool wide = Camera().Map().valueBytes > 2;
  if (writes) {
    const std::uint32_t high = wide ? sector_[kValueHigh] : 0;
    Camera().WriteRegister(address, FromBytes16(sector_[kValue], sector_[kValue + 1]) | high << 16);
    sector_[kStatus] = kWriteDone;
    carrying_.Start(kCarryingMs);
  } else {
    const std::uint32_t value = Camera().ReadRegister(address);
    sector_[kReadBack] = ByteOf(value, 0);
    sector_[kReadBack + 1] = ByteOf(value, 1);
    if (wide) sector_[kValueHigh] = ByteOf(value, 2);
    sector_[kStatus] = kReadDone;
  }
  sector_[kRequest] = 0;
}

DriverResult SataWire::WriteAt(std::uint64_t position, std::span<const std::uint8_t> in) {
  if (position != Camera().Map().volume.command * std::uint64_t{kSectorSize} || in.size() != kSectorSize)
    return Refuse(DriverError::InvalidParameter,
                  "write of " + std::to_string(in.size()) + " bytes at " + Hex(position));
  SectorBytes written;
  std::ranges::copy(in, written.begin());
  const std::lock_guard lock(mutex_);
  if (busyReads_ > 0) {
    Camera().NoteProtocolError("write while a register access is under way");
    busyReads_ = 0;
    FinishRequest();
  }
  return written[kRequest] != 0 ? TakeRequest(written) : TakeSettings(written);
}

DriverResult SataWire::TakeRequest(const SectorBytes& written) {
  const std::uint8_t request = written[kRequest];
  if (request != kWriteRequest && request != kReadRequest)
    return Refuse(DriverError::GeneralFailure, "unknown request " + Hex(request));
  if (IsRunning()) return Refuse(DriverError::GeneralFailure, "register access while the camera runs");
  if (Camera().Map().addressBytes == 1 && written[kAddressHigh] != 0)
    return Refuse(DriverError::GeneralFailure, "register address of two bytes");
  if (Camera().Map().valueBytes == 1 && request == kWriteRequest && written[kValue + 1] != 0)
    return Refuse(DriverError::GeneralFailure, "register value of two bytes");
  SectorBytes expected = sector_;
  for (const std::size_t field : kRequestFields) expected[field] = written[field];
  const auto changed = std::ranges::mismatch(written, expected).in1;
  if (changed != written.end())
    return Refuse(DriverError::GeneralFailure,
                  "request changes byte " + std::to_string(changed - written.begin()));
  if (settling_.IsRunning() || (request == kWriteRequest && carrying_.IsRunning())) {
    // The sector itself was written: nothing tells the host.
    Camera().NoteProtocolError("register access before the last change has settled");
    return DriverResult::Done(kSectorSize);
  }
  sector_ = written;
  sector_[kStatus] = request == kWriteRequest ? kWriteBusy : kReadBusy;
  busyReads_ = kBusyReads + 1;
  return DriverResult::Done(kSectorSize);
}

DriverResult SataWire::TakeSettings(const SectorBytes& written) {
  SectorBytes onlyRun = sector_;
  onlyRun[kRun] = written[kRun];
  const bool whole = written != onlyRun;
  SectorBytes rest = written;
  for (const auto& [offset, isValid] : kSettings) {
    if (!isValid(written[offset]) && (whole || offset == kRun))
      return Refuse(DriverError::GeneralFailure,
                    "setting " + Hex(written[offset]) + " in byte " + std::to_string(offset));
    const bool unused = offset >= kLeft && offset <= kTop + 2 && !CutsWindow(Camera().Map());
    if (!unused) rest[offset] = 0;
  }
  if (whole) {
    const auto stray = std::ranges::find_if(rest, [](std::uint8_t byte) { return byte != 0; });
    if (stray != rest.end())
      return Refuse(DriverError::GeneralFailure,
                    "settings are not zero in byte " + std::to_string(stray - rest.begin()));
  }
  const std::uint8_t runBefore = sector_[kRun];
  if (whole) {
    if (WindowDiffers(written)) locking_.Start(Camera().Map().lockMs);
    for (const auto& setting : kSettings) sector_[setting.offset] = written[setting.offset];
    sector_[kStatus] = 0;
    TellSensor();
  }
  sector_[kRun] = runBefore;
  if (written[kRun] == kRunning && locking_.IsRunning()) {
    Camera().NoteProtocolError("run before the source was found");
  } else {
    SetRun(written[kRun]);
  }
  settling_.Start(kSettlingMs);
  return DriverResult::Done(kSectorSize);
}

bool SataWire::WindowDiffers(const SectorBytes& written) const {
  return !std::equal(&written[kWidth], &written[kTop + 3], &sector_[kWidth]);
}

void SataWire::TellSensor() {
  const auto word = [this](std::size_t at) { return FromBytes16(sector_[at], sector_[at + 2]); };
  Camera().WriteRegister(kControllerTrigger, sector_[kTrigger]);
  Camera().WriteRegister(kControllerLeft, word(kLeft));
  Camera().WriteRegister(kControllerTop, word(kTop));
  Camera().WriteRegister(kControllerColumns, word(kWidth));
  Camera().WriteRegister(kControllerRows, word(kHeight));
}

void SataWire::SetRun(std::uint8_t run) {
  // Who stops a stopped camera prepares a new capture.
  if (run == kStopped && !IsRunning()) Camera().RestartStream();
  if (run == kRunning && !IsRunning()) nextArea_ = 0;
  sector_[kRun] = run;
  areas_ = {};
  ++runs_;
}

DriverError SataWire::AwaitArea(std::size_t area, VirtualCamera::Frame* frame) {
  std::unique_lock lock(mutex_);
  const std::uint32_t run = runs_;
  while (!areas_[area]) {
    lock.unlock();
    const DriverError error = Camera().AwaitFrame(kDriverTimeoutMs, frame);
    if (error != DriverError::None) return error;
    lock.lock();
    if (runs_ != run) return DriverError::Aborted;
    areas_[nextArea_] = *frame;
    nextArea_ ^= 1;
  }
  *frame = *std::exchange(areas_[area], std::nullopt);
  // After a change of settings the host may be one area ahead; it is not shown the past.
  auto& other = areas_[area ^ 1];
  if (other && other->picture.number < frame->picture.number) other.reset();
  return DriverError::None;
}

DriverResult SataWire::GiveImage(std::size_t area, std::span<std::uint8_t> out) {
  int bytesPerSample = 1;
  std::size_t pitch = 0;
  {
    const std::lock_guard lock(mutex_);
    if (!IsRunning() || settling_.IsRunning())
      return Refuse(DriverError::GeneralFailure, "image read while the camera is stopped");
    if (out.empty() || out.size() != RoundUp(FrameBytes(), kSectorSize))
      return Refuse(DriverError::InvalidParameter, "image read of " + std::to_string(out.size()) +
                                                       " bytes from a frame of " +
                                                       std::to_string(FrameBytes()));
    bytesPerSample = sector_[kOneByte] == 1 ? 1 : 2;
    pitch = Pitch();
  }
  VirtualCamera::Frame frame;
  const DriverError error = AwaitArea(area, &frame);
  if (error != DriverError::None) return DriverResult::Failed(error);
  Camera().Expose(frame, bytesPerSample, out, pitch);
  const bool cut = frame.fault == SimFault::Kind::Short;
  return DriverResult::Done(static_cast<std::uint32_t>(cut ? out.size() / 2 : out.size()));
}

}  // namespace zel
