#include "models/FinalDevice.h"
#include "models/usb3/BinningCcd.h"
#include "models/usb3/PatientCapture.h"

namespace zel {

/// 6576 x 4384 CCD behind a USB 3.0 disk.
class CZELModel75 : public PatientCapture<BinningCcd> {
 public:
  static constexpr LONG kType = 75;

  CZELModel75() : PatientCapture({.type = kType}) {}
};

CZELDevice* CreateModel75() {
  return NewDevice<CZELModel75>();
}

}  // namespace zel
