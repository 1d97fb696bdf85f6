#include <cstdint>

#include "models/usb/UsbCcd.h"

namespace zel {

/// 1360 x 1024 CCD with half clock behind the USB 2.0 controller; keeps a serial number.
class CZELModel21 : public UsbCcd<CZELModel21> {
 public:
  static constexpr LONG kType = 21;

  class CPropertyImpl : public ccd::HalfClock<SplitCcdProperty> {
   public:
    CPropertyImpl() : HalfClock(kType) {}

    /// 8 characters.
    HRESULT SetSerialNum(unsigned char* text) override {
      if (!IsAttached() || text == nullptr) return E_FAIL;
      for (std::uint8_t n = 0; n < kCharacters; ++n) {
        if (!WriteSerialRom(kFirst + n, text[n])) return E_FAIL;
        CurrentDriverHost().Sleep(kRomWriteMs);
      }
      return S_OK;
    }

    /// 8 characters and a zero.
    HRESULT GetSerialNum(unsigned char* text) override {
      if (!IsAttached() || text == nullptr) return E_FAIL;
      for (std::uint8_t n = 0; n < kCharacters; ++n) {
        if (!ReadSerialRom(kFirst + n, &text[n])) return E_FAIL;
      }
      text[kCharacters] = 0;
      return S_OK;
    }

   private:
    static constexpr std::uint8_t kFirst = 0x10;  // behind the camera's identification in the serial ROM
    static constexpr std::uint8_t kCharacters = 8;
    static constexpr std::uint32_t kRomWriteMs = 10;  // until the ROM takes the next byte
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel21() {
  return NewDevice<CZELModel21>();
}

}  // namespace zel
