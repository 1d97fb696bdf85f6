#include <atomic>

#include "common/BytePacking.h"
#include "device/CommandChannel.h"
#include "models/FinalDevice.h"
#include "models/ModelProperty.h"
#include "models/WindowedProperty.h"
#include "models/usb3/DiskBytePort.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"

namespace zel {
namespace {

constexpr LONG kStandby = Chosen(0x00);    // 1: registers are kept, nothing else runs
constexpr LONG kStreaming = Chosen(0x01);  // 1: frames come
constexpr LONG kReadMode = Documented(0x28);
constexpr LONG kMirrorColumns = Chosen(0x01);  // of kReadMode
constexpr LONG kMirrorRows = Chosen(0x02);
constexpr LONG kShutterLow = Documented(0x2A);
constexpr LONG kShutterMiddle = Documented(0x2B);
constexpr LONG kShutterHigh = Documented(0x2C);
constexpr LONG kWindowLeft = Chosen(0x30);  // low byte first; top, columns and rows follow
constexpr LONG kWindowTop = Chosen(0x32);
constexpr LONG kWindowColumns = Chosen(0x34);
constexpr LONG kWindowRows = Chosen(0x36);
constexpr LONG kSkipping = Chosen(0x38);  // sub-sampling code
constexpr LONG kGainRegister = Documented(0x67);

// The camera's monitor output, which is to show what the library's pictures do.
constexpr LONG kMonitorDecoding = Chosen(0x80);
constexpr LONG kMonitorColour = Chosen(0x81);
constexpr LONG kMonitorWhiteBalance = Chosen(0x82);
constexpr LONG kMonitorGains = Chosen(0x83);  // red, green, blue: 8 bits, 128 is unity
constexpr LONG kHighestMonitorGain = 0xFF;

constexpr std::uint32_t kPrepareMs = 8;

}  // namespace

/// 2048 x 1080 sensor with 8-bit registers behind a USB 3.0 disk. It streams only while it has to, and rests
/// in standby while closed.
class CZELModel61 : public CZELDeviceImplUSB3 {
 public:
  static constexpr LONG kType = 61;

  class CProperty : public ModelProperty<WindowedProperty<CZELDevicePropertyImpl>> {
   public:
    CProperty() : ModelProperty(kType) { OfferSwitches({kHorMirror, kVerMirror}); }

    HRESULT SetRegister(LONG address, LONG value) override {
      if (!port_.IsOpen()) return E_HANDLE;
      return port_.Write(address, value) ? S_OK : E_FAIL;
    }
    HRESULT GetRegister(LONG address, LONG* value) override {
      LONG found = 0;
      if (!port_.IsOpen()) return E_HANDLE;
      if (!port_.Read(address, &found)) return E_FAIL;
      Put(value, found);
      return S_OK;
    }

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, 0xFFFFFF, [this](LONG value) {
        return WriteParts(value,
                          {{kShutterLow, 0xFF}, {kShutterMiddle, 0xFF00, 8}, {kShutterHigh, 0xFF0000, 16}});
      });
    }
    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return Adjust(kDigitalGlobalGain, gain, 0xFF,
                    [this](LONG value) { return SetRegister(kGainRegister, value); });
    }
    HRESULT SetHorMirror(LONG on) override {
      const HRESULT result = SwitchSetting(kHorMirror, kReadMode, kMirrorColumns, on);
      return FAILED(result) ? result : ModelProperty::SetHorMirror(on);
    }
    HRESULT SetVerMirror(LONG on) override {
      const HRESULT result = SwitchSetting(kVerMirror, kReadMode, kMirrorRows, on);
      return FAILED(result) ? result : ModelProperty::SetVerMirror(on);
    }

    // A camera that does not take these still sends the same frames: without one they are only stored.
    HRESULT SetBayerDecodingMethod(LONG method) override {
      const HRESULT result = ModelProperty::SetBayerDecodingMethod(method);
      SetRegister(kMonitorDecoding, settings_.bayerDecodingMethod);
      return result;
    }
    HRESULT SetColorful(LONG on) override {
      const HRESULT result = ModelProperty::SetColorful(on);
      SetRegister(kMonitorColour, settings_.colorful);
      return result;
    }
    HRESULT SetAutoWhiteBalance(LONG mode) override {
      const HRESULT result = ModelProperty::SetAutoWhiteBalance(mode);
      SetRegister(kMonitorWhiteBalance, settings_.autoWhiteBalance);
      return result;
    }
    HRESULT SetColorGain(LONG id, LONG value) override {
      const HRESULT result = ModelProperty::SetColorGain(id, value);
      if (result == S_OK && id >= kColorGainRed && id <= kColorGainBlue) TellMonitorGain(id);
      return result;
    }

    HRESULT AttachDevice(CZELDevice* device) override {
      ModelProperty::AttachDevice(device);
      auto* const camera = dynamic_cast<CZELDeviceImplUSB3*>(device);
      LONG identity = 0;
      if (camera == nullptr || !port_.Open(camera->GetCameraIndex(), kType, &identity)) return E_INVALIDARG;
      camera->SetIdentity(identity);
      return S_OK;
    }
    HRESULT DetachDevice() override {
      port_.Close();
      return ModelProperty::DetachDevice();
    }

    /// Prepares the camera for a capture and sets its gain and shutter again.
    HRESULT ApplyColorMatrix() override {
      if (!port_.IsOpen()) return E_HANDLE;
      if (!port_.PrepareCapture()) return E_FAIL;
      CurrentDriverHost().Sleep(kPrepareMs);
      SetDigitalGlobalGain(Record(kDigitalGlobalGain).current);
      SetShutter(Record(kShutter).current);
      return ModelProperty::ApplyColorMatrix();
    }

    /// Everything that a capture needs: the camera has no reset, and may hold what another program set.
    bool ProgramWindow(const CaptureWindow& window) {
      const struct {
        LONG address;
        LONG value;
      } words[] = {{kWindowLeft, window.x},
                   {kWindowTop, window.y},
                   {kWindowColumns, window.width},
                   {kWindowRows, window.height}};
      for (const auto& [address, value] : words) {
        if (FAILED(WriteParts(value, {{address, 0xFF}, {address + 1, 0xFF00, 8}}))) return false;
      }
      const LONG mirrors = (Record(kHorMirror).current != 0 ? kMirrorColumns : 0) |
                           (Record(kVerMirror).current != 0 ? kMirrorRows : 0);
      TellMonitor();
      return SUCCEEDED(SetRegister(kSkipping, Record(kSubSampleX).current)) &&
             SUCCEEDED(SetRegister(kReadMode, mirrors));
    }

   private:
    void TellMonitor() {
      SetRegister(kMonitorDecoding, settings_.bayerDecodingMethod);
      SetRegister(kMonitorColour, settings_.colorful);
      SetRegister(kMonitorWhiteBalance, settings_.autoWhiteBalance);
      for (LONG id = kColorGainRed; id <= kColorGainBlue; ++id) TellMonitorGain(id);
    }

    void TellMonitorGain(LONG id) {
      SetRegister(kMonitorGains + id - kColorGainRed, std::min(Record(id).current, kHighestMonitorGain));
    }

    DiskBytePort port_;
  };

  LONG OpenDevice() override {
    const LONG opened = CZELDeviceImplUSB3::OpenDevice();
    if (opened != 0) property_.SetRegister(kStandby, 0);
    return opened;
  }

  LONG CloseDevice(LONG index) override {
    StopStreaming();
    property_.SetRegister(kStandby, 1);
    return CZELDeviceImplUSB3::CloseDevice(index);
  }

  LONG PrepareCapture() override {
    ForgetPreparation();
    const auto window = property_.WantedWindow();
    if (!window || !property_.ProgramWindow(*window) || property_.ApplyColorMatrix() != S_OK) return 0;
    const auto pixels = std::int64_t{window->width} * window->height;
    const auto bytes = RoundUp<std::int64_t>(pixels, kSectorBytes);
    return PrepareFrames(window->width, window->height, static_cast<LONG>(bytes));
  }

  LONG Play() override {
    if (GetStatus() != kStateClosed) StartStreaming();
    const LONG playing = CZELDeviceImplUSB3::Play();
    if (playing == 0) StopStreaming();
    return playing;
  }

  LONG Stop() override {
    const LONG stopped = CZELDeviceImplUSB3::Stop();
    if (stopped != 0) StopStreaming();
    return stopped;
  }

  LONG EndCapture() override {
    StopStreaming();
    return CZELDeviceImplUSB3::EndCapture();
  }

  void SendThreadCommand(LONG command) override {
    const auto kind = static_cast<ThreadCommand>(command);
    if (kind == ThreadCommand::Resume) StartStreaming();
    CZELDeviceImplUSB3::SendThreadCommand(command);
    if (kind == ThreadCommand::Pause) StopStreaming();
  }

  void SendExitCommand() override {
    StopStreaming();
    CZELDeviceImplUSB3::SendExitCommand();
  }

  virtual void StartStreaming() {
    if (!streaming_.exchange(true)) property_.SetRegister(kStreaming, 1);
  }
  virtual void StopStreaming() {
    if (streaming_.exchange(false)) property_.SetRegister(kStreaming, 0);
  }

 protected:
  CProperty property_;

 private:
  std::atomic<bool> streaming_ = false;
};

CZELDevice* CreateModel61() {
  return NewDevice<CZELModel61>();
}

}  // namespace zel
