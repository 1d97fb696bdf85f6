#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"

namespace zel {

/// 3296 x 2472 CCD behind a USB 3.0 disk.
class CZELModel83 : public BinningCcd {
 public:
  static constexpr LONG kType = 83;

  CZELModel83() : BinningCcd({.type = kType}) {}
};

CZELDevice* CreateModel83() {
  return NewDevice<CZELModel83>();
}

}  // namespace zel
