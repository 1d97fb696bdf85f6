#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"

namespace zel {

/// 1024 x 1024 CCD behind a USB 3.0 disk.
class CZELModel81 : public BinningCcd {
 public:
  static constexpr LONG kType = 81;

  CZELModel81() : BinningCcd({.type = kType}) {}
};

CZELDevice* CreateModel81() {
  return NewDevice<CZELModel81>();
}

}  // namespace zel
