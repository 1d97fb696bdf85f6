#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"

namespace zel {

/// 4896 x 3264 CCD behind a USB 3.0 disk.
class CZELModel78 : public BinningCcd {
 public:
  static constexpr LONG kType = 78;

  CZELModel78() : BinningCcd({.type = kType, .frameLines = 3335}) {}
};

CZELDevice* CreateModel78() {
  return NewDevice<CZELModel78>();
}

}  // namespace zel
