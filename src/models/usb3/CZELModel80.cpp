#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"

namespace zel {

/// 1600 x 1200 CCD behind a USB 3.0 disk.
class CZELModel80 : public BinningCcd {
 public:
  static constexpr LONG kType = 80;

  CZELModel80() : BinningCcd({.type = kType}) {}
};

CZELDevice* CreateModel80() {
  return NewDevice<CZELModel80>();
}

}  // namespace zel
