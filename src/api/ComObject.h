#pragma once

#include <atomic>
#include <new>

#include "api/ComPtr.h"
#include "api/ModuleLock.h"
#include "api/ZELCam.h"
#include "api/server/Dispatch.h"

namespace zel {

/// Runs the body of an interface method; an exception becomes the method's failure code.
template <class Body>
HRESULT Guarded(Body&& body, HRESULT failure = E_FAIL) noexcept {
  try {
    return body();
  } catch (...) {
    return failure;
  }
}

/// Writes an out parameter that may be null.
template <class Value>
void Put(Value* out, Value value) {
  if (out) *out = value;
}

/// Reference counting, identity and late binding of an object with one dual interface. A new object has one
/// reference, its creator's.
template <class Interface>
class ComObject : public Interface {
 public:
  virtual ~ComObject() = default;
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  HRESULT QueryInterface(REFIID iid, void** object) final {
    if (!object) return E_POINTER;
    const bool offered = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
                         IsEqualIID(iid, __uuidof(Interface));
    *object = offered ? static_cast<Interface*>(this) : nullptr;
    if (!offered) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG AddRef() final { return ++references_; }
  ULONG Release() final {
    const ULONG left = --references_;
    if (left == 0) {
      // Who takes and drops a reference while the object is being destroyed must not destroy it again.
      references_ = kDestroying;
      delete this;
    }
    return left;
  }

  HRESULT GetTypeInfoCount(UINT* count) final { return DispatchTypeInfoCount(__uuidof(Interface), count); }
  HRESULT GetTypeInfo(UINT index, LCID, ITypeInfo** info) final {
    return DispatchTypeInfo(__uuidof(Interface), index, info);
  }
  HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID, DISPID* ids) final {
    return DispatchIdsOfNames(__uuidof(Interface), reserved, names, count, ids);
  }
  HRESULT Invoke(DISPID id, REFIID reserved, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* exception, UINT* badArgument) final {
    return DispatchInvoke(__uuidof(Interface), static_cast<Interface*>(this), id, reserved, flags, params,
                          result, exception, badArgument);
  }

 protected:
  ComObject() = default;

 private:
  static constexpr ULONG kDestroying = 0x40000000;

  std::atomic<ULONG> references_{1};
  ModuleLock moduleLock_;
};

/// A new object, or null when memory is short.
template <class Object>
ComPtr<Object> NewObject() {
  return ComPtr<Object>::Adopt(new (std::nothrow) Object);
}

}  // namespace zel
