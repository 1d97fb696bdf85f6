#include "models/FinalDevice.h"
#include "models/sata/SataModelProperty.h"

namespace zel {
namespace {

// Each takes two addresses, the high byte first.
constexpr LONG kShutterLines = Chosen(0x10);
constexpr LONG kGain = Chosen(0x16);
constexpr WindowRegisters kWindow{.rowStart = Chosen(0x20),
                                  .columnStart = Chosen(0x22),
                                  .rowSize = Chosen(0x24),
                                  .columnSize = Chosen(0x26),
                                  .firstRow = 8,
                                  .firstColumn = 16};

constexpr std::uint8_t kLastAddress = 0xFF;

}  // namespace

/// 3264 x 2448 sensor behind SATA. Its registers are bytes: a value of 16 bits is spread over two neighbours.
class CZELModel05 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 5;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {}

   protected:
    bool WriteRegister8(std::uint8_t address, std::uint8_t high, std::uint8_t low) override {
      const auto turn = Volume().TakeTurn();
      if (address == kLastAddress || !SataModelProperty::WriteRegister8(address, 0, high)) return false;
      Settle();
      return SataModelProperty::WriteRegister8(static_cast<std::uint8_t>(address + 1), 0, low);
    }

    bool ReadRegister8(std::uint8_t address, std::uint8_t* high, std::uint8_t* low) override {
      const auto turn = Volume().TakeTurn();
      std::uint8_t none = 0;
      return address != kLastAddress && SataModelProperty::ReadRegister8(address, &none, high) &&
             SataModelProperty::ReadRegister8(static_cast<std::uint8_t>(address + 1), &none, low);
    }

    LONG ApplyGain() override {
      Write(kGain, Current(kDigitalGlobalGain));
      return 1;
    }

    LONG ApplyShutter() override {
      WriteWindowAhead(kWindow);
      Write(kShutterLines, Current(kShutter));
      return 1;
    }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel05() {
  return NewDevice<CZELModel05>();
}

}  // namespace zel
