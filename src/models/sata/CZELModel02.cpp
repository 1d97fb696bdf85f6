#include "models/FinalDevice.h"
#include "models/sata/SataMap16.h"

namespace zel {

/// 2592 x 1944 sensor with 16-bit registers, behind SATA.
class CZELModel02 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 2;

  class CPropertyImpl : public SataMap16Property {
   public:
    CPropertyImpl() : SataMap16Property(kType) {}
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel02() {
  return NewDevice<CZELModel02>();
}

}  // namespace zel
