#include "models/wom/WomCcd.h"

namespace zel {

/// 1280 x 960 CCD behind the WOM controller.
class CZELModel64 : public WomModel<CZELModel64> {
 public:
  static constexpr LONG kType = 64;

  class CPropertyImpl : public WomSplitCcdProperty {
   public:
    CPropertyImpl() : WomSplitCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel64() {
  return NewDevice<CZELModel64>();
}

}  // namespace zel
