#pragma once

#include <array>
#include <atomic>
#include <string>

#include "device/CZELDeviceImpl.h"
#include "transport/sata/CZELDevicePropertyImplSATA.h"

namespace zel {

/// "\\.\E:" for index 'E'.
std::u16string SataVolumePath(LONG index);

/// Device base of the SATA cameras; a camera's index is the character code of its drive letter. The camera
/// fills two image areas in turn; frames are read alternately from them, or, with a trigger, from the one
/// that the camera announces.
class CZELDeviceImplSATA : public CZELDeviceImpl {
 public:
  LONG IsSataCamera() override { return 1; }
  LONG GetMaxCameraNum() override;
  /// Always 0: nothing on a volume tells a camera from a disk; `OpenCamera` shows whether it can be opened.
  /// The out parameters of both probes receive the result, too; they may be null.
  LONG IsCameraValid(LONG index, LONG* valid) override;
  LONG IsCameraConnected(LONG* connected) override;

  LONG OpenDevice() override;
  LONG CloseDevice(LONG index) override;
  LONG PrepareCapture() override;
  LONG EndCapture() override;
  /// Never fails while prepared: after a failed or short read, and for the first frame after a change of
  /// settings, which is thrown away, it is a success without a frame.
  LONG ReadFrame(unsigned char* buffer) override;
  /// Waits for a frame, up to the property's time-out or `AbortTransfer`.
  LONG ReadFrameAlt(unsigned char* buffer) override;
  void ProcessFrame(unsigned char* raw) override;
  void AbortTransfer() override { aborted_ = capture_.load(); }

  void NotifyRegisterEvent(LONG event) { NotifyObserver(event, nullptr); }

 private:
  /// True when at least the picture's pixels came, counted in bytes.
  bool ReadArea(std::size_t area, unsigned char* buffer);
  /// False when no area is announced, or its picture is not whole.
  bool ReadAnnounced(unsigned char* buffer);

  CZELDevicePropertyImplSATA* sata_ = nullptr;  ///< the property store of the open camera
  std::atomic<std::uint32_t> capture_ = 0;      ///< counts preparations
  std::atomic<std::uint32_t> aborted_ = 0;      ///< the last one whose reads shall end

  // Under the volume's turn, as a read of an earlier capture may come back while the next is prepared.
  Sector status_{};
  std::array<std::uint64_t, 2> areas_{};  ///< positions of image areas A and B
  LONG readBytes_ = 0;                    ///< of a frame; 0: not prepared
  LONG expectedPixels_ = 0;
  std::size_t nextArea_ = 0;
};

}  // namespace zel
