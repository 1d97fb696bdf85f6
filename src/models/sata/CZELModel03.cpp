#include <algorithm>

#include "models/FinalDevice.h"
#include "models/sata/SataModelProperty.h"

namespace zel {
namespace {

constexpr WindowRegisters kWindow{.rowStart = Chosen(0x02),
                                  .columnStart = Chosen(0x01),
                                  .rowSize = Chosen(0x03),
                                  .columnSize = Chosen(0x04),
                                  .firstRow = 4,
                                  .firstColumn = 1,
                                  .sizeOffset = 1};
constexpr LONG kHorBlanking = Chosen(0x05), kHorBlankingClocks = 94;
constexpr LONG kVerBlanking = Chosen(0x06), kVerBlankingRows = 45;
constexpr LONG kShutterLines = Chosen(0x0B);
constexpr LONG kReadMode = Chosen(0x0D);
constexpr LONG kGain = Chosen(0x35);
constexpr LONG kAutomatics = Chosen(0xAF);  // 0: the sensor leaves gain and exposure to the host

// Of the read mode: rows and columns are summed by 2 to the power of these.
constexpr LONG kBinRowsShift = 0, kBinColumnsShift = 2;
constexpr LONG kBinCodes = 0x3;
constexpr LONG kMirrorRowsBit = Chosen(0x10), kMirrorColumnsBit = Chosen(0x20);

}  // namespace

/// 752 x 480 wide-VGA sensor behind SATA. It reads even windows only, and its pictures are those.
class CZELModel03 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 3;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {
      for (const LONG id : {kHorMirror, kVerMirror}) OfferSwitch(id);
    }

    HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
      return GetSensorRoi(x, y, width, height, BinCode(kSubSampleX), BinCode(kSubSampleY));
    }

   protected:
    LONG ApplyWindow() override {
      WriteWindow(kWindow);
      WriteAndSettle(kHorBlanking, kHorBlankingClocks);
      WriteAndSettle(kVerBlanking, kVerBlankingRows);
      return 1;
    }

    LONG ApplySubSampling() override {
      LONG mode = 0;
      if (!Read(kReadMode, &mode)) return E_FAIL;
      mode &= ~(kBinCodes << kBinRowsShift | kBinCodes << kBinColumnsShift);
      mode |= BinCode(kSubSampleY) << kBinRowsShift | BinCode(kSubSampleX) << kBinColumnsShift;
      return Write(kReadMode, mode) ? 1 : E_FAIL;
    }

    LONG ApplyGain() override {
      WriteAndSettle(kAutomatics, 0);
      Write(kGain, Current(kDigitalGlobalGain));
      return 1;
    }

    LONG ApplyShutter() override {
      WriteAndSettle(kAutomatics, 0);
      Write(kShutterLines, Current(kShutter));
      return 1;
    }

    LONG ApplyVerMirror() override { return ApplyMirrorBit(kReadMode, kMirrorRowsBit, kVerMirror); }
    LONG ApplyHorMirror() override { return ApplyMirrorBit(kReadMode, kMirrorColumnsBit, kHorMirror); }

   private:
    LONG BinCode(LONG id) const { return std::min<LONG>(Current(id), 2); }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel03() {
  return NewDevice<CZELModel03>();
}

}  // namespace zel
