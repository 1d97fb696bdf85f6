#pragma once

#include <new>

#include "models/ModelTable.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {

/// The object that the factory makes of a model: adds what follows from the model's type number `kType` and
/// its property object `property_`, and ends the capture workers before anything of the model goes.
template <class Model>
class FinalDevice final : public Model {
 public:
  ~FinalDevice() override {
    this->Shutdown();
    this->CloseDevice(this->GetCameraIndex());
  }

  LONG GetCameraType() override { return Model::kType; }
  const OLECHAR* GetDriverName() override { return DriverName(Model::kType); }
  CZELDeviceProperty* GetProperty() override { return &this->property_; }
  CZELDevicePropertyImpl& PropertyStore() override { return this->property_; }
};

/// What the factory calls for a type; null when memory is short.
template <class Model>
CZELDevice* NewDevice() {
  return new (std::nothrow) FinalDevice<Model>;
}

}  // namespace zel
