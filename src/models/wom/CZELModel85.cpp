#include "models/wom/WomCcd.h"

namespace zel {

/// 656 x 494 CCD with 16-bit registers behind the WOM controller.
class CZELModel85 : public WomModel<CZELModel85> {
 public:
  static constexpr LONG kType = 85;

  class CPropertyImpl : public ccd::Map9A04<WomProperty> {
   public:
    CPropertyImpl() : PlainMap(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel85() {
  return NewDevice<CZELModel85>();
}

}  // namespace zel
