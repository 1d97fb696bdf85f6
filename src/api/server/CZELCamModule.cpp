#include "api/server/CZELCamModule.h"

#include <algorithm>

#include "api/CZELBuilder.h"
#include "api/CZELCamera.h"
#include "api/CZELGrabberCB.h"
#include "api/CZELProperty.h"
#include "api/Factories.h"
#include "api/server/Dispatch.h"

namespace zel {
namespace {

const ServedClass kClasses[] = {
    {__uuidof(ZELBuilder), L"ZELBuilder", &CreateObject<CZELBuilder>},
    {__uuidof(ZELCamera), L"ZELCamera", &CreateObject<CZELCamera>},
    {__uuidof(ZELProperty), L"ZELProperty", &CreateObject<CZELProperty>},
    {__uuidof(ZELGrabberCB), L"ZELGrabberCB", &CreateObject<CZELGrabberCB>},
    {__uuidof(ZELGrabberCBNet), L"ZELGrabberCBNet", &CreateObject<CZELGrabberCBNet>},
};

/// Makes objects of one class.
class ClassObject final : public IClassFactory {
 public:
  explicit ClassObject(const ServedClass& served) : served_(served) {}

  HRESULT QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    const bool offered = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
    *object = offered ? this : nullptr;
    if (!offered) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    return outer ? CLASS_E_NOAGGREGATION : served_.create(iid, object);
  }
  HRESULT LockServer(BOOL lock) override {
    lock ? LockModule() : UnlockModule();
    return S_OK;
  }

 private:
  virtual ~ClassObject() = default;

  const ServedClass& served_;
  std::atomic<ULONG> references_{1};
  ModuleLock moduleLock_;
};

}  // namespace

std::span<const ServedClass> CZELCamModule::Classes() {
  return kClasses;
}

HRESULT CZELCamModule::GetClassObject(REFCLSID classId, REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  const auto served =
      std::ranges::find_if(kClasses, [&](const auto& row) { return IsEqualCLSID(row.id, classId); });
  if (served == std::end(kClasses)) return CLASS_E_CLASSNOTAVAILABLE;
  const auto factory = ComPtr<ClassObject>::Adopt(new (std::nothrow) ClassObject(*served));
  return factory ? factory->QueryInterface(iid, object) : E_OUTOFMEMORY;
}

bool CZELCamModule::CanUnload() {
  if (ModuleLockCount() != 0) return false;
  ReleaseTypeInfos();
  return true;
}

}  // namespace zel
