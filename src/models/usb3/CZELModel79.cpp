#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"

namespace zel {

/// 1920 x 1080 CCD behind a USB 3.0 disk.
class CZELModel79 : public BinningCcd {
 public:
  static constexpr LONG kType = 79;

  CZELModel79() : BinningCcd({.type = kType}) {}
};

CZELDevice* CreateModel79() {
  return NewDevice<CZELModel79>();
}

}  // namespace zel
