#pragma once

// What any client in C++ needs: a holder of object references, pixels as the library takes them, a sink for
// frames.
#include <windows.h>

#include <atomic>
#include <cstring>
#include <utility>

#include "ZELCam_i.h"

constexpr UINT kFrameArrived = WM_APP;  ///< posted to the window
constexpr LONG kBytesPerPixel = 4;

/// One reference to an object of the library.
template <class Interface>
class Com {
 public:
  Com() = default;
  Com(Com&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Com& operator=(Com&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Com() { Reset(); }
  void Reset() {
    if (Interface* const old = std::exchange(object_, nullptr)) old->Release();
  }
  /// For a call that hands an object out.
  Interface** Put() {
    Reset();
    return &object_;
  }
  Interface* operator->() const { return object_; }
  Interface& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Interface* object_ = nullptr;
};

/// 32-bit pixels in an array as the library takes them.
class Pixels {
 public:
  Pixels() { VariantInit(&array_); }
  ~Pixels() { VariantClear(&array_); }
  Pixels(const Pixels&) = delete;
  Pixels& operator=(const Pixels&) = delete;

  void Resize(LONG newWidth, LONG newHeight) {
    if (newWidth == width && newHeight == height) return;
    VariantClear(&array_);
    width = height = 0;
    array_.parray =
        SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(newWidth) * newHeight * kBytesPerPixel);
    if (!array_.parray) return;
    array_.vt = VT_ARRAY | VT_UI1;
    width = newWidth;
    height = newHeight;
  }
  bool IsEmpty() const { return width == 0; }
  const VARIANT& Array() const { return array_; }
  void* Data() const { return array_.parray->pvData; }
  std::size_t Size() const { return static_cast<std::size_t>(width) * height * kBytesPerPixel; }

  LONG width = 0, height = 0;

 private:
  VARIANT array_;
};

/// Takes each frame on the library's thread. The frame belongs to that thread until `kFrameArrived` is
/// posted, then to the window until `GiveBack`; frames that come meanwhile are counted only.
class FrameSink final : public IZELGrabberCB {
 public:
  Pixels frame;
  std::atomic<unsigned> frames{0};

  void PostTo(HWND window) { window_ = window; }
  void GiveBack() { shown_ = false; }

  HRESULT STDMETHODCALLTYPE OnZELCameraEvent(LONG event, LONG* bits) override {
    if (event != 1 || !bits || frame.IsEmpty()) return S_OK;
    ++frames;
    if (shown_.exchange(true)) return S_OK;
    std::memcpy(frame.Data(), bits, frame.Size());
    PostMessageW(window_, kFrameArrived, 0, 0);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    const bool offered = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
                         IsEqualIID(iid, __uuidof(IZELGrabberCB));
    *object = offered ? this : nullptr;
    return offered ? S_OK : E_NOINTERFACE;
  }
  // Lives as long as the program.
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

 private:
  HWND window_ = nullptr;
  std::atomic<bool> shown_{false};
};
