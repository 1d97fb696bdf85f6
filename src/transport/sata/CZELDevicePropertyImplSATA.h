#pragma once

#include "platform/CZELCritSec.h"
#include "property/CZELDevicePropertyImpl.h"
#include "transport/sata/SataSector.h"

namespace zel {

class CZELDeviceImplSATA;

/// The settings traffic of a SATA camera, and the handle of its volume, which the frame reads share. The
/// sensor can be set only while it is stopped: setters mark what changed, and `ApplyPendingChanges` brings it
/// to the sensor, at capture preparation and between two frames.
/// Threads: setters on application threads, `ApplyPendingChanges` on the one that reads frames.
class CZELDevicePropertyImplSATA : public CZELDevicePropertyImpl {
 public:
  /// What the last register access came to. The device's observer is told of it: `kEventRegisterRead`,
  /// `kEventRegisterWritten`.
  struct RegisterEvent {
    HRESULT result = S_OK;
    LONG address = 0;
    std::uint8_t high = 0;
    std::uint8_t low = 0;
  };

  HRESULT AttachDevice(CZELDevice* device) override;
  HRESULT DetachDevice() override;
  HRESULT ApplyColorMatrix() override;
  LONG OnCaptureStopped() override;

  /// 8-bit address, 16-bit value. Stops an idle camera; while it captures, the access happens between two
  /// frames (the last one asked for, of either kind), S_OK comes at once, and the outcome with the observer's
  /// event. Without a camera S_OK and nothing happens.
  HRESULT SetRegister(LONG address, LONG value) override;
  /// As `SetRegister`; `value` is written only when the camera was idle.
  HRESULT GetRegister(LONG address, LONG* value) override;
  HRESULT SetShutter(LONG value) override;
  HRESULT SetDigitalGlobalGain(LONG value) override;
  HRESULT SetHorMirror(LONG on) override;
  HRESULT SetVerMirror(LONG on) override;

  RegisterEvent LastRegisterEvent() const;
  bool HasPendingChanges() const;
  void ApplyPendingChanges();

  SectorDevice& Volume() { return volume_; }
  const SataSectors& Sectors() const { return sectors_; }
  const SataFrame& Frame() const { return frame_; }  ///< of the last preparation

 protected:
  /// What waits to be applied, in the order in which it is.
  enum Change : std::uint32_t {
    kChangeGain = 0x01,
    kChangeShutter = 0x02,
    kChangeVerMirror = 0x04,
    kChangeHorMirror = 0x08,
    kChangeWindow = 0x10,
    kChangeSubSampling = 0x20,
    kChangeModelOption = 0x100,
    kChangeEverything = 0x17F,
    kReadRegister = 0x10000000,
    kWriteRegister = 0x20000000,
  };
  void MarkPending(std::uint32_t changes);

  // Register access of a stopped camera; false when the camera does not acknowledge it.
  virtual bool WriteRegister8(std::uint8_t address, std::uint8_t high, std::uint8_t low);
  virtual bool ReadRegister8(std::uint8_t address, std::uint8_t* high, std::uint8_t* low);
  virtual bool WriteRegister24(LONG address, LONG value);  ///< the lower 22 bits
  /// Only collects what the camera reports: it does not send the request.
  virtual bool ReadRegister24(LONG address, LONG* value);
  virtual bool WriteSettings(SataRun run);
  // What the three are made of.
  bool WriteWide(LONG address, LONG value, std::uint32_t mask);
  bool ReadWide(LONG address, LONG* value, bool sendRequest);
  SataSettings WantedSettings() const;
  bool SendSettings(const SataSettings& settings, SataRun run);

  virtual void WritePendingRegister();
  virtual void ReadPendingRegister();

  // A model's programming of its sensor; 1 or E_FAIL.
  virtual LONG ApplyPostPrepare() { return 1; }
  virtual LONG ApplyWindow() { return 1; }
  virtual LONG ApplySubSampling() { return 1; }
  virtual LONG ApplyGain() { return 1; }
  virtual LONG ApplyShutter() { return 1; }
  virtual LONG ApplyVerMirror() { return 1; }
  virtual LONG ApplyHorMirror() { return 1; }
  virtual LONG ApplyModelOption() { return 1; }
  virtual LONG ApplyStrobe() { return 1; }

  bool IsStreaming() const;  ///< playing or paused; false while a capture is prepared
  static void Settle();      ///< the controller's pause after a command

  SataSectors sectors_;  ///< set by the model

 private:
  struct PendingAccess {
    LONG address = 0;
    std::uint8_t high = 0;
    std::uint8_t low = 0;
  };

  bool CanReach();
  bool StopCamera();
  bool ReadCommandSector() { return volume_.ReadSectorAt(SectorPosition(sectors_.command), sector_); }
  bool WriteCommandSector();
  bool Poll(SataProgress (*progress)(const Sector&));
  void NoteSilentSensor();
  void Report(LONG event, const RegisterEvent& outcome);
  template <class Setter>
  HRESULT SetAndMark(std::uint32_t change, Setter setter);

  CZELCritSec ownLock_;
  CZELCritSec* lock_ = &ownLock_;  ///< the device's while attached; guards the following four
  std::uint32_t pending_ = 0;
  PendingAccess pendingWrite_;
  LONG pendingReadAddress_ = 0;
  RegisterEvent lastEvent_;

  CZELDeviceImplSATA* camera_ = nullptr;  ///< not owned
  Sector sector_{};                       ///< the last one read or written
  SectorDevice volume_;
  SataFrame frame_;
  // Of the register accesses, under the volume's turn.
  bool asked_ = false;         ///< one was made since the preparation began
  bool acknowledged_ = false;  ///< the camera was done with one since it was opened
  bool twoBytes_ = false;      ///< per sample, in the capture that was prepared last
};

}  // namespace zel
