#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

#include "api/FakeCamera.h"
#include "models/ModelTable.h"
#include "platform/Environment.h"
#include "sim/SimDriverHost.h"

namespace zel::test {
namespace {

/// One of the five objects: its interface and its factory.
template <class InterfaceType, HRESULT (*factory)(InterfaceType**)>
struct Kind {
  using Interface = InterfaceType;
  static ComPtr<Interface> Create() {
    Interface* object = nullptr;
    EXPECT_EQ(factory(&object), S_OK);
    return ComPtr<Interface>::Adopt(object);
  }
  static HRESULT CreateNowhere() { return factory(nullptr); }
};

template <class Type>
class EveryObject : public testing::Test {};
using Kinds = testing::Types<Kind<IZELBuilder, ZELCreateBuilder>, Kind<IZELCamera, ZELCreateCamera>,
                             Kind<IZELProperty, ZELCreateProperty>, Kind<IZELGrabberCB, ZELCreateGrabberCB>,
                             Kind<IZELGrabberCBNet, ZELCreateGrabberCBNet>>;
TYPED_TEST_SUITE(EveryObject, Kinds);

TYPED_TEST(EveryObject, IdentityAndReferences) {
  const LONG locks = ModuleLockCount();
  {
    const auto object = TypeParam::Create();
    EXPECT_EQ(ModuleLockCount(), locks + 1);
    const GUID offered[] = {IID_IUnknown, IID_IDispatch, __uuidof(typename TypeParam::Interface)};
    // From each interface every other is reached, and IUnknown is always the same.
    for (const GUID& from : offered) {
      IUnknown* first = nullptr;
      ASSERT_EQ(object->QueryInterface(from, reinterpret_cast<void**>(&first)), S_OK);
      for (const GUID& to : offered) {
        IUnknown* second = nullptr;
        ASSERT_EQ(first->QueryInterface(to, reinterpret_cast<void**>(&second)), S_OK);
        IUnknown* identity = nullptr;
        ASSERT_EQ(second->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
        EXPECT_EQ(identity, static_cast<IUnknown*>(object.Get()));
        EXPECT_EQ(identity->Release(), 3u);
        second->Release();
      }
      EXPECT_EQ(first->Release(), 1u);
    }
    // Another object's interface is refused, and nothing stays in the pointer.
    const GUID foreign =
        IsEqualGUID(offered[2], __uuidof(IZELCamera)) ? __uuidof(IZELBuilder) : __uuidof(IZELCamera);
    void* nothing = object.Get();
    EXPECT_EQ(object->QueryInterface(foreign, &nothing), E_NOINTERFACE);
    EXPECT_EQ(nothing, nullptr);
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  }
  EXPECT_EQ(ModuleLockCount(), locks);
  EXPECT_EQ(TypeParam::CreateNowhere(), E_POINTER);
}

TYPED_TEST(EveryObject, NoLateBindingWithoutATypeLibrary) {
  const auto object = TypeParam::Create();
  UINT count = 9;
  EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(object->Invoke(1, IID_NULL, 0, 1, nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
}

class Builder : public testing::Test {
 protected:
  ComPtr<IZELBuilder> builder_ = Kind<IZELBuilder, ZELCreateBuilder>::Create();
};

TEST_F(Builder, RefusesWhatIsNoType) {
  for (const LONG type : {-1, 99, 100, -2147483647 - 1, 2147483647}) {
    IZELCamera* camera = nullptr;
    BSTR name = nullptr;
    EXPECT_EQ(builder_->CreateCamera(type, &camera), E_INVALIDARG) << type;
    EXPECT_EQ(camera, nullptr);
    EXPECT_EQ(builder_->GetCameraName(type, &name), E_INVALIDARG) << type;
    EXPECT_EQ(name, nullptr);
  }
  EXPECT_EQ(builder_->CreateCamera(13, nullptr), E_INVALIDARG);
  EXPECT_EQ(builder_->GetCameraName(13, nullptr), E_INVALIDARG);
}

TEST_F(Builder, CountAndNames) {
  LONG count = 0;
  EXPECT_EQ(builder_->GetCameraTypeNum(&count), 99);
  EXPECT_EQ(count, 99);
  EXPECT_EQ(builder_->GetCameraTypeNum(nullptr), 99);
  std::set<std::basic_string<OLECHAR>> names;
  for (LONG type = 0; type < count; ++type) {
    BSTR name = nullptr;
    ASSERT_EQ(builder_->GetCameraName(type, &name), S_OK);
    EXPECT_GT(SysStringLen(name), 0u);
    EXPECT_LT(SysStringLen(name), 256u);
    names.insert(name);
    SysFreeString(name);
  }
  EXPECT_EQ(names.size(), 99u);
}

TEST_F(Builder, MakesAClosedCameraOfTheType) {
  IZELCamera* made = nullptr;
  ASSERT_EQ(builder_->CreateCamera(13, &made), S_OK);
  const auto camera = ComPtr<IZELCamera>::Adopt(made);
  EXPECT_EQ(camera->GetCameraType(nullptr), 13);
  EXPECT_EQ(camera->GetStatus(nullptr), kStateClosed);
  EXPECT_EQ(camera->Play(nullptr), E_FAIL);
  EXPECT_EQ(SettingsOf(*camera.Get())->GetPropertyMax(kRoiWidth, nullptr), ModelOf(13).full.width);
  made->AddRef();
  EXPECT_EQ(made->Release(), 1u);
}

TEST_F(Builder, DrivesThatAreNoCameras) {
  for (const LONG drive : {-1, 4711}) {
    LONG type = kUntouched;
    EXPECT_EQ(builder_->GetUsb3CameraType(drive, &type), 99);
    EXPECT_EQ(type, 99);
  }
  EXPECT_EQ(builder_->GetUsb3CameraType(4711, nullptr), 99);
}

TEST_F(Builder, DrivesThatAreCameras) {
  SimConfiguration computer;
  computer.cameras = {{61, 2}, {78, 4}};
  std::string error;
  const auto host = SimDriverHost::Create(computer, &error);
  const ScopedDriverHost installed(*host);
  for (const auto& [drive, expected] : {std::pair<LONG, LONG>{2, 61}, {4, 78}, {3, 99}}) {
    LONG type = kUntouched;
    EXPECT_EQ(builder_->GetUsb3CameraType(drive, &type), expected);
    EXPECT_EQ(type, expected);
  }
}

/// In a process of its own, as the environment is read once.
TEST(StartDeathTest, UnreadableSimulationIsSaidOnceAndRefused) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto create = [] {
    SetEnvironment("ZELCAM_SIM", "13,nonsense");
    IZELBuilder* builder = nullptr;
    bool refused = true;
    for (int n = 0; n < 2; ++n) refused = refused && ZELCreateBuilder(&builder) == E_INVALIDARG && !builder;
    std::_Exit(refused ? 3 : 4);
  };
  EXPECT_EXIT(create(), testing::ExitedWithCode(3), testing::HasSubstr("ZELCam: "));
}

}  // namespace
}  // namespace zel::test
