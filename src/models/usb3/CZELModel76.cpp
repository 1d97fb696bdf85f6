#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"

namespace zel {

/// 2336 x 1752 CCD behind a USB 3.0 disk.
class CZELModel76 : public BinningCcd {
 public:
  static constexpr LONG kType = 76;

  CZELModel76() : BinningCcd({.type = kType}) {}
};

CZELDevice* CreateModel76() {
  return NewDevice<CZELModel76>();
}

}  // namespace zel
