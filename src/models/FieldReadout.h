#pragma once

#include "models/FieldWeaver.h"

namespace zel {

/// Capture of a model whose CCD always reads out all even lines and then all odd ones. `FamilyModel` is the
/// family's capture preparation.
template <class FamilyModel>
class FieldReadout : public FamilyModel {
 public:
  LONG PrepareCapture() override {
    weaver_.Forget();
    if (FamilyModel::PrepareCapture() == 0) return 0;
    const LONG lineBytes = this->geometry_.width * (this->IsEightBitTransfer() ? 1 : 2);
    weaver_.LayOut(static_cast<std::size_t>(lineBytes), this->geometry_.height,
                   FieldWeaver::FirstField::Even);
    return 1;
  }

  void OnFrameHook(unsigned char* raw) override { weaver_.Weave(raw); }

 private:
  FieldWeaver weaver_;  ///< of the capture being run
};

}  // namespace zel
