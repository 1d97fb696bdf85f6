#include <algorithm>
#include <cstdint>

#include "models/FinalDevice.h"
#include "models/sata/SataMap16.h"

namespace zel {
namespace {

constexpr LONG kGainMask = 0x7F;
constexpr LONG kShutterMask = 0x3FFF;

template <class Sample>
void MirrorRows(unsigned char* raw, LONG width, LONG height, LONG pitch) {
  auto* row = reinterpret_cast<Sample*>(raw);
  for (LONG y = 0; y < height; ++y, row += pitch) std::reverse(row, row + width);
}

}  // namespace

/// 1440 x 1080 sensor with 16-bit registers, behind SATA. It reads even windows only, and its pictures are
/// those. It mirrors rows itself; columns are mirrored in the frames.
class CZELModel35 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 35;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {
      for (const LONG id : {kHorMirror, kVerMirror}) OfferSwitch(id);
    }

    HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
      return GetSensorRoi(x, y, width, height);
    }

   protected:
    LONG ApplyGain() override {
      Write(map16::kGain, Current(kDigitalGlobalGain) & kGainMask);
      return 1;
    }
    LONG ApplyShutter() override {
      WriteWindowAhead(kMap16Window);
      Write(map16::kShutterLines, Current(kShutter) & kShutterMask);
      return 1;
    }
    LONG ApplyVerMirror() override {
      return ApplyMirrorBit(map16::kReadMode2, map16::kMirrorRowsBit, kVerMirror);
    }
  };

  void OnFrameHook(unsigned char* raw) override {
    LONG mirrored = 0;
    {
      const CritSecGuard guard(Lock());
      mirrored = property_.Record(kHorMirror).current;
    }
    if (raw == nullptr || mirrored == 0) return;
    const auto mirror = IsEightBitTransfer() ? MirrorRows<std::uint8_t> : MirrorRows<std::uint16_t>;
    mirror(raw, geometry_.width, geometry_.height, geometry_.sourceWidth);
  }

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel35() {
  return NewDevice<CZELModel35>();
}

}  // namespace zel
