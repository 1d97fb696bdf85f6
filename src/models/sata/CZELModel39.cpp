#include <atomic>
#include <string>

#include "models/FinalDevice.h"
#include "models/sata/CaptureLog.h"
#include "models/sata/SataModelProperty.h"

namespace zel {
namespace {

// The converter locks to its source anew after every change of the window: a frame at 25 Hz.
constexpr std::uint32_t kLockMs = 40;

}  // namespace

/// Frame-grabbing converter for sources that run at their own pace: frames are not awaited in turn, but read
/// from the area that the converter announces. What its captures come to is logged.
class CZELModel39 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 39;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType, kConverterVolume) {}

    HRESULT ApplyColorMatrix() override {
      const HRESULT result = SataModelProperty::ApplyColorMatrix();
      LogCapture("preparation " + std::string(result == S_OK ? "done" : "failed") + ": window " +
                 std::to_string(Window().column) + ',' + std::to_string(Window().row) + ", frame " +
                 std::to_string(Frame().alignedWidth) + 'x' + std::to_string(Frame().alignedHeight) + ", " +
                 std::to_string(Frame().sectorCount) + " sectors");
      return result;
    }

   protected:
    bool WriteSettings(SataRun run) override { return WriteSettingsWithWindow(run); }

    LONG ApplyPostPrepare() override {
      CurrentDriverHost().Sleep(kLockMs);
      return 1;
    }
  };

  LONG PrepareCapture() override {
    frames_ = misses_ = 0;
    return CZELDeviceImplSATA::PrepareCapture();
  }

  LONG ReadFrame(unsigned char* buffer) override { return ReadFrameAlt(buffer); }

  LONG ReadFrameAlt(unsigned char* buffer) override {
    const LONG result = CZELDeviceImplSATA::ReadFrameAlt(buffer);
    ++(result != 0 ? frames_ : misses_);
    return result;
  }

  DWORD CaptureThreadProc() override {
    LogCapture("capture begins");
    const DWORD result = CZELDeviceImplSATA::CaptureThreadProc();
    LogCapture("capture ends: " + std::to_string(frames_) + " frames, " + std::to_string(misses_) +
               " reads without one");
    return result;
  }

 protected:
  CPropertyImpl property_;

 private:
  std::atomic<std::uint32_t> frames_ = 0;  ///< of the capture
  std::atomic<std::uint32_t> misses_ = 0;
};

CZELDevice* CreateModel39() {
  return NewDevice<CZELModel39>();
}

}  // namespace zel
