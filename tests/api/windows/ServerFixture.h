#pragma once

#include <gtest/gtest.h>

#include <string>

#include "api/ComPtr.h"
#include "api/ZELCam.h"
#include "api/windows/MethodNames.h"

namespace zel::test {

struct ClassRow {
  const wchar_t* name;
  CLSID clsid;
  IID iid;
  const wchar_t* methods;  ///< in their order, with spaces between
};
inline const ClassRow kServed[] = {
    {L"ZELBuilder", __uuidof(ZELBuilder), __uuidof(IZELBuilder), kBuilderMethods},
    {L"ZELCamera", __uuidof(ZELCamera), __uuidof(IZELCamera), kCameraMethods},
    {L"ZELProperty", __uuidof(ZELProperty), __uuidof(IZELProperty), kPropertyMethods},
    {L"ZELGrabberCB", __uuidof(ZELGrabberCB), __uuidof(IZELGrabberCB), kSinkMethods},
    {L"ZELGrabberCBNet", __uuidof(ZELGrabberCBNet), __uuidof(IZELGrabberCBNet), kSinkMethods},
};

/// The component server, loaded from beside the test program with two simulated cameras.
class Server : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    _putenv_s("ZELCAM_SIM", "13,13@1");
    _putenv_s("ZELCAM_SIM_FPS", "0");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    module_ = LoadLibraryW(L"ZELCam.DLL");
    ASSERT_NE(module_, nullptr);
  }
  static void TearDownTestSuite() {
    FreeLibrary(module_);
    CoUninitialize();
  }
  void TearDown() override { EXPECT_EQ(CanUnload(), S_OK) << "something was not released"; }

  template <class Function>
  static Function Entry(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }
  static HRESULT CanUnload() { return Entry<HRESULT (*)()>("DllCanUnloadNow")(); }
  static HRESULT ClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return Entry<HRESULT (*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(clsid, iid, object);
  }
  static ComPtr<IClassFactory> FactoryOf(REFCLSID clsid) {
    void* factory = nullptr;
    EXPECT_EQ(ClassObject(clsid, IID_IClassFactory, &factory), S_OK);
    return ComPtr<IClassFactory>::Adopt(static_cast<IClassFactory*>(factory));
  }
  template <class Interface>
  static ComPtr<Interface> Create(REFCLSID clsid, REFIID iid = __uuidof(Interface)) {
    void* object = nullptr;
    EXPECT_EQ(FactoryOf(clsid)->CreateInstance(nullptr, iid, &object), S_OK);
    return ComPtr<Interface>::Adopt(static_cast<Interface*>(object));
  }

  /// One of the simulated cameras, opened.
  static ComPtr<IZELCamera> OpenCamera() {
    IZELCamera* camera = nullptr;
    EXPECT_EQ(Create<IZELBuilder>(__uuidof(ZELBuilder))->CreateCamera(13, &camera), S_OK);
    EXPECT_EQ(camera->OpenCamera(0, nullptr), S_OK);
    return ComPtr<IZELCamera>::Adopt(camera);
  }

  /// Full path of the DLL, of which every program here has its copy.
  static std::wstring ModulePath() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(module_, path, MAX_PATH);
    return path;
  }

  inline static HMODULE module_ = nullptr;
};

}  // namespace zel::test
