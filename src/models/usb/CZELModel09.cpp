#include "models/FinalDevice.h"
#include "models/usb/AuxOutputs.h"
#include "models/usb/UsbWideVga.h"

namespace zel {

/// 640 x 480 of the 752 x 480 sensor, behind the USB 2.0 controller. `SetAuxValue3` and `SetAuxValue4` switch
/// the outputs of its I/O port.
class CZELModel09 : public UsbModel<CZELModel09> {
 public:
  static constexpr LONG kType = 9;
  static constexpr UsbTiming kTiming = wide_vga::kUsbTiming;

  class CPropertyImpl : public wide_vga::UsbSensor {
   public:
    CPropertyImpl() : Property(kType) { OfferSwitches({kHorMirror, kVerMirror, kAuxValue3, kAuxValue4}); }

    HRESULT SetAuxValue3(LONG on) override { return Switch(kAuxValue3, kAuxLine3, on); }
    HRESULT GetAuxValue3(LONG* on) override { return GetAuxLine(*this, kAuxLine3, on); }
    HRESULT SetAuxValue4(LONG on) override { return Switch(kAuxValue4, kAuxLine4, on); }
    HRESULT GetAuxValue4(LONG* on) override { return GetAuxLine(*this, kAuxLine4, on); }

   private:
    HRESULT Switch(LONG id, const AuxLine& line, LONG on) {
      const HRESULT result = SetAuxLine(*this, line, on);
      if (SUCCEEDED(result)) Edit(id).current = on != 0;
      return result;
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel09() {
  return NewDevice<CZELModel09>();
}

}  // namespace zel
