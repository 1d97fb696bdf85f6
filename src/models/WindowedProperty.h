#pragma once

#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"

namespace zel {

/// The family's property with the window as cameras with a mosaic sensor have it.
template <class FamilyProperty>
class WindowedProperty : public FamilyProperty {
 public:
  /// Settings beyond their range are clamped; see `ModelProperty::Adjust`.
  static constexpr bool kMasksSettings = false;

  /// Sub-sampling code k divides both sides by 2 to the power k.
  HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
    const LONG code = this->Record(kSubSampleX).current;
    Put(x, this->Record(kRoiLeft).current);
    Put(y, this->Record(kRoiTop).current);
    Put(width, this->Record(kRoiWidth).current >> code);
    Put(height, this->Record(kRoiHeight).current >> code);
    return S_OK;
  }

  /// A window that starts at an odd column begins with the neighbour's colour.
  LONG UpdateDerivedSizes() override {
    const LONG phase = FamilyProperty::UpdateDerivedSizes();
    return this->Record(kRoiLeft).current % 2 != 0 ? phase ^ 2 : phase;
  }
};

}  // namespace zel
