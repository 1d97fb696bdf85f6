#include "transport/sata/CZELDevicePropertyImplSATA.h"

#include <string>
#include <utility>

#include "common/BytePacking.h"
#include "property/OutParameter.h"
#include "transport/sata/CZELDeviceImplSATA.h"

namespace zel {
namespace {

constexpr std::uint32_t kSettleMs = 8;
constexpr int kPolls = 100;
constexpr LONG kPackedColor = 4;  // input format
constexpr std::uint32_t kStopPatienceMs = 50;

void Note(DriverHost::RegisterAccess access, std::uint32_t address, std::uint32_t value) {
  CurrentDriverHost().NoteRegister(access, address, value);
}

}  // namespace

void CZELDevicePropertyImplSATA::Settle() {
  CurrentDriverHost().Sleep(kSettleMs);
}

// ---- opening and closing

HRESULT CZELDevicePropertyImplSATA::AttachDevice(CZELDevice* device) {
  CZELDevicePropertyImpl::AttachDevice(device);
  camera_ = dynamic_cast<CZELDeviceImplSATA*>(device);
  if (camera_ == nullptr) return E_INVALIDARG;
  lock_ = &camera_->Lock();
  acknowledged_ = false;
  return volume_.Open(SataVolumePath(device->GetCameraIndex())) ? S_OK : E_INVALIDARG;
}

HRESULT CZELDevicePropertyImplSATA::DetachDevice() {
  volume_.Close();
  camera_ = nullptr;
  lock_ = &ownLock_;
  return CZELDevicePropertyImpl::DetachDevice();
}

bool CZELDevicePropertyImplSATA::CanReach() {
  return camera_ != nullptr && volume_.IsOpen();
}

bool CZELDevicePropertyImplSATA::IsStreaming() const {
  if (camera_ == nullptr) return false;
  const LONG state = camera_->GetStatus();
  return state == kStatePlaying || state == kStatePaused;
}

// ---- preparing and ending a capture

HRESULT CZELDevicePropertyImplSATA::ApplyColorMatrix() {
  frame_ = {};
  asked_ = false;
  if (!CanReach()) return E_HANDLE;
  LONG width = 0;
  LONG height = 0;
  GetROI(nullptr, nullptr, &width, &height);
  twoBytes_ = settings_.transferMode != 0;
  frame_ = LayOutSataFrame(width, height, twoBytes_, settings_.inputFormat == kPackedColor);
  MarkPending(kChangeEverything);
  if (!WriteSettings(SataRun::Stop)) return E_FAIL;
  ApplyPendingChanges();
  if (Record(kStrobe).supported != 0) ApplyStrobe();
  // A sensor that does not take a setting still sends pictures.
  ApplyPostPrepare();
  if (!WriteSettings(SataRun::Run)) return E_FAIL;
  NoteSilentSensor();
  return CZELDevicePropertyImpl::ApplyColorMatrix();
}

void CZELDevicePropertyImplSATA::NoteSilentSensor() {
  // A disk brings what lies in the image areas like a camera does; only the sensor tells the two apart. A
  // converter has none to ask.
  if (!asked_ || acknowledged_) return;
  camera_->Trouble().Note(CameraTrouble::Kind::NoAcknowledgement,
                          std::to_string(camera_->GetCameraType()) + '@' +
                              std::to_string(camera_->GetCameraIndex()) +
                              " does not answer as a camera: no register access was acknowledged");
}

LONG CZELDevicePropertyImplSATA::OnCaptureStopped() {
  // A read that is stuck in the driver must not hold up `Stop`; the next preparation stops the camera, too.
  const auto turn = volume_.TakeTurn(kStopPatienceMs);
  return turn && WriteSettings(SataRun::Stop) ? S_OK : E_FAIL;
}

SataSettings CZELDevicePropertyImplSATA::WantedSettings() const {
  return {.alignedWidth = frame_.alignedWidth,
          .alignedHeight = frame_.alignedHeight,
          .twoBytes = twoBytes_,
          .externalTrigger = Record(kExtTrigger).current != 0,
          .transferBits = settings_.transferBits,
          .aux1 = Record(kAuxValue1).current != 0,
          .aux2 = Record(kAuxValue2).current != 0};
}

bool CZELDevicePropertyImplSATA::WriteSettings(SataRun run) {
  return SendSettings(WantedSettings(), run);
}

bool CZELDevicePropertyImplSATA::SendSettings(const SataSettings& settings, SataRun run) {
  const auto turn = volume_.TakeTurn();
  sector_ = SataSettingsSector(settings, run);
  const bool done = WriteCommandSector() && ReadCommandSector();
  Settle();
  return done;
}

bool CZELDevicePropertyImplSATA::StopCamera() {
  const auto turn = volume_.TakeTurn();
  if (!ReadCommandSector()) return false;
  PutRun(sector_, SataRun::Stop);
  const bool done = WriteCommandSector();
  Settle();
  return done;
}

// ---- pending changes

void CZELDevicePropertyImplSATA::MarkPending(std::uint32_t changes) {
  const CritSecGuard guard(*lock_);
  pending_ |= changes;
}

bool CZELDevicePropertyImplSATA::HasPendingChanges() const {
  const CritSecGuard guard(*lock_);
  return pending_ != 0;
}

void CZELDevicePropertyImplSATA::ApplyPendingChanges() {
  const bool streaming = IsStreaming();
  if (streaming) StopCamera();
  std::uint32_t changes = 0;
  {
    const CritSecGuard guard(*lock_);
    // At once: what is marked while these are applied is for the next frame.
    changes = std::exchange(pending_, 0);
  }
  using Self = CZELDevicePropertyImplSATA;
  static constexpr struct {
    std::uint32_t change;
    LONG (Self::*apply)();
  } kSettings[] = {{kChangeWindow, &Self::ApplyWindow},       {kChangeSubSampling, &Self::ApplySubSampling},
                   {kChangeGain, &Self::ApplyGain},           {kChangeShutter, &Self::ApplyShutter},
                   {kChangeVerMirror, &Self::ApplyVerMirror}, {kChangeHorMirror, &Self::ApplyHorMirror}};
  const auto run = [&](std::uint32_t change, auto apply) {
    if ((changes & change) == 0) return;
    (this->*apply)();
    Settle();
  };
  for (const auto& [change, apply] : kSettings) run(change, apply);
  run(kReadRegister, &Self::ReadPendingRegister);
  run(kWriteRegister, &Self::WritePendingRegister);
  run(kChangeModelOption, &Self::ApplyModelOption);
  if (streaming) WriteSettings(SataRun::Run);
}

template <class Setter>
HRESULT CZELDevicePropertyImplSATA::SetAndMark(std::uint32_t change, Setter setter) {
  // Under one lock, so that the mark is never taken without the value.
  const CritSecGuard guard(*lock_);
  const HRESULT result = setter();
  if (result == S_OK) pending_ |= change;
  return result;
}

HRESULT CZELDevicePropertyImplSATA::SetShutter(LONG value) {
  return SetAndMark(kChangeShutter, [&] { return CZELDevicePropertyImpl::SetShutter(value); });
}

HRESULT CZELDevicePropertyImplSATA::SetDigitalGlobalGain(LONG value) {
  return SetAndMark(kChangeGain, [&] { return CZELDevicePropertyImpl::SetDigitalGlobalGain(value); });
}

HRESULT CZELDevicePropertyImplSATA::SetHorMirror(LONG on) {
  return SetAndMark(kChangeHorMirror, [&] { return CZELDevicePropertyImpl::SetHorMirror(on); });
}

HRESULT CZELDevicePropertyImplSATA::SetVerMirror(LONG on) {
  return SetAndMark(kChangeVerMirror, [&] { return CZELDevicePropertyImpl::SetVerMirror(on); });
}

// ---- registers, for applications

HRESULT CZELDevicePropertyImplSATA::SetRegister(LONG address, LONG value) {
  if (!CanReach()) return S_OK;
  const PendingAccess access{address, ByteOf(value, 1), ByteOf(value, 0)};
  if (IsStreaming()) {
    const CritSecGuard guard(*lock_);
    pendingWrite_ = access;
    pending_ |= kWriteRegister;
    return S_OK;
  }
  const bool done = StopCamera() && WriteRegister8(ByteOf(address, 0), access.high, access.low);
  const HRESULT result = done ? S_OK : E_FAIL;
  Report(kEventRegisterWritten, {result, address, access.high, access.low});
  return result;
}

HRESULT CZELDevicePropertyImplSATA::GetRegister(LONG address, LONG* value) {
  if (!CanReach()) return S_OK;
  if (IsStreaming()) {
    const CritSecGuard guard(*lock_);
    pendingReadAddress_ = address;
    pending_ |= kReadRegister;
    return S_OK;
  }
  RegisterEvent outcome{.result = E_FAIL, .address = address};
  if (StopCamera() && ReadRegister8(ByteOf(address, 0), &outcome.high, &outcome.low)) {
    outcome.result = S_OK;
    Put<LONG>(value, FromBytes16(outcome.low, outcome.high));
  }
  Report(kEventRegisterRead, outcome);
  return outcome.result;
}

void CZELDevicePropertyImplSATA::WritePendingRegister() {
  PendingAccess access;
  {
    const CritSecGuard guard(*lock_);
    access = pendingWrite_;
  }
  const bool done = WriteRegister8(ByteOf(access.address, 0), access.high, access.low);
  Report(kEventRegisterWritten, {done ? S_OK : E_FAIL, access.address, access.high, access.low});
}

void CZELDevicePropertyImplSATA::ReadPendingRegister() {
  RegisterEvent outcome;
  {
    const CritSecGuard guard(*lock_);
    outcome.address = pendingReadAddress_;
  }
  const bool done = ReadRegister8(ByteOf(outcome.address, 0), &outcome.high, &outcome.low);
  outcome.result = done ? S_OK : E_FAIL;
  Report(kEventRegisterRead, outcome);
}

void CZELDevicePropertyImplSATA::Report(LONG event, const RegisterEvent& outcome) {
  {
    const CritSecGuard guard(*lock_);
    lastEvent_ = outcome;
  }
  camera_->NotifyRegisterEvent(event);
}

CZELDevicePropertyImplSATA::RegisterEvent CZELDevicePropertyImplSATA::LastRegisterEvent() const {
  const CritSecGuard guard(*lock_);
  return lastEvent_;
}

// ---- registers, on the wire

bool CZELDevicePropertyImplSATA::WriteCommandSector() {
  if (volume_.WriteSectorAt(SectorPosition(sectors_.command), sector_)) return true;
  const std::string refusal = volume_.WriteRefusal();
  if (camera_ != nullptr && !refusal.empty())
    camera_->Trouble().Note(CameraTrouble::Kind::WriteRefused, refusal);
  return false;
}

bool CZELDevicePropertyImplSATA::Poll(SataProgress (*progress)(const Sector&)) {
  asked_ = true;
  for (int n = 0; n < kPolls; ++n) {
    if (!ReadCommandSector()) return false;
    const SataProgress now = progress(sector_);
    if (now == SataProgress::Done) acknowledged_ = true;
    if (now != SataProgress::Pending) return now == SataProgress::Done;
  }
  return false;
}

bool CZELDevicePropertyImplSATA::WriteRegister8(std::uint8_t address, std::uint8_t high, std::uint8_t low) {
  const auto turn = volume_.TakeTurn();
  if (!ReadCommandSector()) return false;
  PutRegisterWrite(sector_, address, high, low);
  if (!WriteCommandSector() || !Poll(RegisterWriteProgress)) return false;
  Note(DriverHost::RegisterAccess::Write, address, FromBytes16(low, high));
  return true;
}

bool CZELDevicePropertyImplSATA::ReadRegister8(std::uint8_t address, std::uint8_t* high, std::uint8_t* low) {
  const auto turn = volume_.TakeTurn();
  if (!ReadCommandSector()) return false;
  PutRegisterRead(sector_, address);
  if (!WriteCommandSector() || !Poll(RegisterReadProgress) || !ReadCommandSector()) return false;
  const auto found = static_cast<std::uint16_t>(ReadBack(sector_));
  *high = ByteOf(found, 1);
  *low = ByteOf(found, 0);
  Note(DriverHost::RegisterAccess::Read, address, found);
  return true;
}

bool CZELDevicePropertyImplSATA::WriteRegister24(LONG address, LONG value) {
  return WriteWide(address, value, kWide22);
}

bool CZELDevicePropertyImplSATA::ReadRegister24(LONG address, LONG* value) {
  return ReadWide(address, value, false);
}

bool CZELDevicePropertyImplSATA::WriteWide(LONG address, LONG value, std::uint32_t mask) {
  const auto turn = volume_.TakeTurn();
  if (!ReadCommandSector()) return false;
  const auto number = static_cast<std::uint16_t>(address);
  PutWideRegisterWrite(sector_, number, static_cast<std::uint32_t>(value) & mask);
  if (!WriteCommandSector() || !Poll(RegisterWriteProgress)) return false;
  Note(DriverHost::RegisterAccess::Write, number, static_cast<std::uint32_t>(value) & mask);
  return true;
}

bool CZELDevicePropertyImplSATA::ReadWide(LONG address, LONG* value, bool sendRequest) {
  const auto turn = volume_.TakeTurn();
  if (!ReadCommandSector()) return false;
  const auto number = static_cast<std::uint16_t>(address);
  PutWideRegisterRead(sector_, number);
  if (sendRequest && !WriteCommandSector()) return false;
  if (!Poll(RegisterReadProgress) || !ReadCommandSector()) return false;
  const std::uint32_t found = ReadBack(sector_);
  *value = static_cast<LONG>(found);
  Note(DriverHost::RegisterAccess::Read, number, found);
  return true;
}

}  // namespace zel
