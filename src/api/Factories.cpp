#include "api/Factories.h"

#include "api/CZELBuilder.h"
#include "api/CZELCamera.h"
#include "api/CZELGrabberCB.h"
#include "api/CZELProperty.h"

namespace {

template <class Object, class Interface>
HRESULT Create(Interface** object) {
  return zel::CreateObject<Object>(__uuidof(Interface), reinterpret_cast<void**>(object));
}

}  // namespace

HRESULT ZELCreateBuilder(IZELBuilder** builder) {
  return Create<zel::CZELBuilder>(builder);
}
HRESULT ZELCreateCamera(IZELCamera** camera) {
  return Create<zel::CZELCamera>(camera);
}
HRESULT ZELCreateProperty(IZELProperty** settings) {
  return Create<zel::CZELProperty>(settings);
}
HRESULT ZELCreateGrabberCB(IZELGrabberCB** sink) {
  return Create<zel::CZELGrabberCB>(sink);
}
HRESULT ZELCreateGrabberCBNet(IZELGrabberCBNet** sink) {
  return Create<zel::CZELGrabberCBNet>(sink);
}
