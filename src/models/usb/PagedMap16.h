#pragma once

#include "models/usb/UsbMap16.h"

namespace zel::map16 {

/// A sensor with this map, a fine gain and a colour processor of its own, whose registers are on a second
/// page. Register numbers beyond 0xFF name page and register.
class PagedSensor : public StrobedUsbSensor {
 public:
  /// The reset has selected the first page.
  LONG InitializeCamera() override {
    page_ = 0;
    return StrobedUsbSensor::InitializeCamera();
  }

  HRESULT SetRegister(LONG address, LONG value) override {
    return FAILED(SelectPage(address)) ? E_FAIL : StrobedUsbSensor::SetRegister(address & 0xFF, value);
  }
  HRESULT GetRegister(LONG address, LONG* value) override {
    return FAILED(SelectPage(address)) ? E_FAIL : StrobedUsbSensor::GetRegister(address & 0xFF, value);
  }

  /// The sensor balances its own colours as long as the library's balance is on.
  HRESULT SetAutoWhiteBalance(LONG mode) override {
    if (FAILED(SwitchBits(kColourControl, kBalanceBit, mode != 0))) return E_FAIL;
    return StrobedUsbSensor::SetAutoWhiteBalance(mode);
  }

 protected:
  explicit PagedSensor(LONG type)
      : StrobePort(type, {.shutterMask = 0xFFFF, .gainRegister = kFineGain, .gainMask = 0x7FF}) {
    OfferSwitch(kAutoThresh);
  }

 private:
  static constexpr LONG kPageSelect = Chosen(0xF0);
  static constexpr LONG kColourControl = Chosen(0x106);
  static constexpr LONG kBalanceBit = Chosen(0x0002);  // of kColourControl

  HRESULT SelectPage(LONG address) {
    const LONG page = address >> 8 & 0xFF;
    if (page == page_) return S_OK;
    const HRESULT result = StrobedUsbSensor::SetRegister(kPageSelect, page);
    if (SUCCEEDED(result)) page_ = page;
    return result;
  }

  LONG page_ = 0;
};

}  // namespace zel::map16
