#include "models/wom/WomCcd.h"

namespace zel {

/// 1360 x 1024 CCD behind the WOM controller.
class CZELModel66 : public WomModel<CZELModel66> {
 public:
  static constexpr LONG kType = 66;

  class CPropertyImpl : public ccd::Triggered<WomSplitCcdProperty> {
   public:
    CPropertyImpl() : Triggered(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel66() {
  return NewDevice<CZELModel66>();
}

}  // namespace zel
