#include "models/wom/WomCcd.h"

namespace zel {

/// 2456 x 2058 CCD with 16-bit registers behind the WOM controller.
class CZELModel84 : public WomModel<CZELModel84> {
 public:
  static constexpr LONG kType = 84;

  class CPropertyImpl : public ccd::Map9A04<WomProperty> {
   public:
    CPropertyImpl() : PlainMap(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel84() {
  return NewDevice<CZELModel84>();
}

}  // namespace zel
