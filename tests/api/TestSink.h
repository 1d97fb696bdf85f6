#pragma once

#include <atomic>
#include <functional>

#include "api/ZELCam.h"

namespace zel::test {

/// A sink that counts its references and runs a body in its event. Must outlive its camera.
template <class Interface, class Bits>
class TestSink final : public Interface {
 public:
  std::function<HRESULT(LONG, void*)> onEvent = [](LONG, void*) { return S_OK; };
  std::atomic<int> references{1};
  std::atomic<int> events{0};

  HRESULT QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return static_cast<ULONG>(++references); }
  ULONG Release() override { return static_cast<ULONG>(--references); }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }
  HRESULT OnZELCameraEvent(LONG event, Bits bits) override {
    ++events;
    return onEvent(event, bits);
  }
};
using NativeSink = TestSink<IZELGrabberCB, LONG*>;
using ManagedSink = TestSink<IZELGrabberCBNet, LONG**>;

}  // namespace zel::test
