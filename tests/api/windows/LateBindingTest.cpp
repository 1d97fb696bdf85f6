// Clients that know the objects by the names in the type library only.
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "api/windows/ServerFixture.h"

namespace zel::test {
namespace {

/// Arguments for one call, made from the types that the library tells of its parameters; memory for what goes
/// out.
class Arguments {
 public:
  void Add(const TYPEDESC& type, LONG number) {
    VARIANT argument;
    VariantInit(&argument);
    if (type.vt == VT_PTR && type.lptdesc->vt == VT_USERDEFINED) {
      argument.vt = VT_DISPATCH;  // a sink: none
    } else if (type.vt == VT_PTR) {
      const VARTYPE target = type.lptdesc->vt == VT_PTR ? VARTYPE{VT_DISPATCH} : type.lptdesc->vt;
      argument.vt = static_cast<VARTYPE>(VT_BYREF | target);
      argument.byref = memory_.emplace_back(64).data();
      if (target == VT_DISPATCH) objects_.push_back(argument.ppdispVal);
      if (target == VT_BSTR) texts_.push_back(argument.pbstrVal);
    } else if (type.vt == VT_VARIANT) {
      argument.vt = VT_ARRAY | VT_UI1;
      argument.parray = arrays_.emplace_back(SafeArrayCreateVector(VT_UI1, 0, 64));
    } else {
      argument.vt = type.vt;
      argument.lVal = number;
    }
    arguments_.insert(arguments_.begin(), argument);  // the last parameter stands first
  }
  DISPPARAMS Params() { return {arguments_.data(), nullptr, static_cast<UINT>(arguments_.size()), 0}; }
  ~Arguments() {
    for (SAFEARRAY* array : arrays_) SafeArrayDestroy(array);
    for (IDispatch** object : objects_) {
      if (*object) (*object)->Release();
    }
    for (BSTR* text : texts_) SysFreeString(*text);
  }

 private:
  std::vector<VARIANT> arguments_;
  std::deque<std::vector<BYTE>> memory_;
  std::vector<SAFEARRAY*> arrays_;
  std::vector<IDispatch**> objects_;
  std::vector<BSTR*> texts_;
};

/// A pointer to a pointer to a number (the managed sink's) is nothing that a late-bound call can bring.
bool IsCallable(const FUNCDESC& function) {
  for (SHORT p = 0; p < function.cParams; ++p) {
    const TYPEDESC& type = function.lprgelemdescParam[p].tdesc;
    if (type.vt == VT_PTR && type.lptdesc->vt == VT_PTR && type.lptdesc->lptdesc->vt == VT_I4) return false;
  }
  return true;
}

HRESULT CallByName(IDispatch& object, const wchar_t* name, DISPPARAMS params, VARIANT* result = nullptr,
                   EXCEPINFO* failure = nullptr) {
  DISPID id = 0;
  auto* names = const_cast<wchar_t*>(name);
  const HRESULT found = object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(found)) return found;
  return object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result, failure, nullptr);
}

VARIANT Number(LONG value) {
  VARIANT variant;
  VariantInit(&variant);
  variant.vt = VT_I4;
  variant.lVal = value;
  return variant;
}

LONG CallForNumber(IDispatch& object, const wchar_t* name, std::vector<VARIANT> arguments = {}) {
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(
      CallByName(object, name, {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0}, &result),
      S_OK)
      << name;
  EXPECT_EQ(result.vt, VT_I4) << name;
  return result.lVal;
}

/// One method of an interface, as the library describes it.
struct Method {
  std::wstring name;
  DISPID id = 0;
  bool callable = false;
  Arguments arguments;
};

/// Where zeros are no valid arguments.
const std::map<std::wstring, std::vector<LONG>> kNumbers = {
    {L"CreateCamera", {13}},
    {L"GetCameraName", {13}},
    {L"SetROI", {0, 0, 64, 48}},
    {L"SetColorGain", {14, 128}},
    {L"GetColorGain", {14}},
    {L"GetColorGainRange", {14}},
    {L"GetColorGainDefault", {14}},
    {L"SetShutter", {300}},
    {L"SetColorOffset", {17, 0}},
    {L"GetColorOffset", {17}},
    {L"GetColorOffsetRange", {17}},
    {L"GetColorOffsetDefault", {17}},
    {L"SetTimeout", {100}},
    {L"IsCameraValid", {1}},
    {L"SetGamma", {100}},
    {L"SetProperty", {13, 300}},
    {L"SetOperatorBlock", {0, 0, 64, 48}},
};

class LateBinding : public Server {
 protected:
  /// The methods of an object in the order of the library.
  static std::vector<std::unique_ptr<Method>> MethodsOf(IDispatch& object) {
    std::vector<std::unique_ptr<Method>> methods;
    ITypeInfo* raw = nullptr;
    UINT count = 0;
    EXPECT_EQ(object.GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    if (FAILED(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, &raw))) return methods;
    const auto info = ComPtr<ITypeInfo>::Adopt(raw);
    FUNCDESC* function = nullptr;
    for (UINT n = 0; SUCCEEDED(info->GetFuncDesc(n, &function)); ++n) {
      if (function->memid > 0 && function->memid < 0x1000) {  // those of IDispatch have other numbers
        auto& method = *methods.emplace_back(std::make_unique<Method>());
        BSTR name = nullptr;
        UINT names = 0;
        info->GetNames(function->memid, &name, 1, &names);
        method.name = name;
        SysFreeString(name);
        method.id = function->memid;
        method.callable = IsCallable(*function);
        const auto known = kNumbers.find(method.name);
        std::size_t number = 0;
        for (SHORT p = 0; p < function->cParams; ++p) {
          const ELEMDESC& parameter = function->lprgelemdescParam[p];
          if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) continue;
          const bool given = known != kNumbers.end() && number < known->second.size();
          method.arguments.Add(parameter.tdesc, given ? known->second[number++] : 0);
        }
      }
      info->ReleaseFuncDesc(function);
    }
    return methods;
  }

  /// Calls every method of an object once. It succeeds or fails for one of the reasons given.
  static void CallEverything(IDispatch& object, std::set<HRESULT> refusals) {
    for (const auto& method : MethodsOf(object)) {
      if (!method->callable) continue;
      SCOPED_TRACE(testing::Message() << method->name.c_str());
      VARIANT result;
      VariantInit(&result);
      EXCEPINFO failure{};
      const HRESULT called =
          CallByName(object, method->name.c_str(), method->arguments.Params(), &result, &failure);
      EXPECT_TRUE(called == S_OK || (called == DISP_E_EXCEPTION && refusals.contains(failure.scode)))
          << std::hex << called << " " << failure.scode;
      SysFreeString(failure.bstrSource);
      SysFreeString(failure.bstrDescription);
      VariantClear(&result);
    }
  }
};

TEST_F(LateBinding, NamesAndNumbersAsPublished) {
  for (const ClassRow& row : kServed) {
    std::wistringstream published(row.methods);
    std::wstring name;
    DISPID number = 0;
    for (const auto& method : MethodsOf(*Create<IDispatch>(row.clsid).Get())) {
      ASSERT_TRUE(published >> name) << "more than published: " << testing::PrintToString(method->name);
      EXPECT_EQ(method->name, name);
      EXPECT_EQ(method->id, ++number);
    }
    EXPECT_FALSE(published >> name) << "missing: " << testing::PrintToString(name);
  }
}

TEST_F(LateBinding, EveryMethodOfEveryObject) {
  for (const ClassRow& row : kServed) {
    SCOPED_TRACE(testing::Message() << row.name);
    CallEverything(*Create<IDispatch>(row.clsid).Get(), {E_HANDLE, E_FAIL});
  }
}

TEST_F(LateBinding, EveryMethodOfAnOpenCamera) {
  const auto camera = OpenCamera();
  IZELProperty* raw = nullptr;
  ASSERT_EQ(camera->GetProperty(&raw), S_OK);
  const auto settings = ComPtr<IZELProperty>::Adopt(raw);
  CallEverything(*settings.Get(), {E_NOTIMPL});
  // Stopped again, GetData waits in vain; SaveImage has no name. Both succeed in other tests.
  CallEverything(*camera.Get(), {static_cast<HRESULT>(0x8000401E), E_FAIL});
}

TEST_F(LateBinding, ScriptVariablesTakeWhatComesOut) {
  const auto builder = Create<IDispatch>(__uuidof(ZELBuilder));
  const auto camera = OpenCamera();
  VARIANT settings;
  VariantInit(&settings);
  ASSERT_EQ(CallByName(*camera.Get(), L"GetProperty", {}, &settings), S_OK);
  VARIANT variables[4], references[4];
  const auto call = [&](IDispatch& object, const wchar_t* name, UINT out, std::vector<VARIANT> in = {}) {
    for (UINT n = 0; n < out; ++n) {
      references[n].vt = VT_BYREF | VT_VARIANT;
      references[n].pvarVal = &variables[n];
      in.insert(in.begin(), references[n]);
    }
    return CallByName(object, name, {in.data(), nullptr, static_cast<UINT>(in.size()), 0});
  };
  for (VARIANT& variable : variables) VariantInit(&variable);
  EXPECT_EQ(call(*settings.pdispVal, L"GetROI", 4), S_OK);
  EXPECT_EQ(variables[2].vt, VT_I4);
  EXPECT_EQ(variables[2].lVal, 1280);
  EXPECT_EQ(variables[3].lVal, 1024);
  // What a variable held before is released.
  variables[0].vt = VT_BSTR;
  variables[0].bstrVal = SysAllocString(L"before");
  EXPECT_EQ(call(*builder.Get(), L"CreateCamera", 1, {Number(13)}), S_OK);
  ASSERT_EQ(variables[0].vt, VT_DISPATCH);
  EXPECT_EQ(CallForNumber(*variables[0].pdispVal, L"GetCameraType"), 13);
  EXPECT_EQ(call(*builder.Get(), L"GetCameraName", 1, {Number(13)}), S_OK);
  EXPECT_EQ(variables[0].vt, VT_BSTR);
  // A failed call changes nothing.
  EXPECT_EQ(call(*builder.Get(), L"GetCameraName", 1, {Number(99)}), DISP_E_EXCEPTION);
  EXPECT_EQ(variables[0].vt, VT_BSTR);
  // A serial number is a text here, and a buffer of characters for the camera.
  EXPECT_EQ(call(*settings.pdispVal, L"SetSerialNum", 1), S_OK);
  EXPECT_EQ(call(*settings.pdispVal, L"GetSerialNum", 1), S_OK);
  EXPECT_EQ(variables[0].vt, VT_BSTR);
  VariantClear(&variables[0]);
  VariantClear(&settings);
}

TEST_F(LateBinding, RefusesBadCalls) {
  const auto builder = Create<IDispatch>(__uuidof(ZELBuilder));
  ITypeInfo* info = nullptr;
  EXPECT_EQ(builder->GetTypeInfoCount(nullptr), E_POINTER);
  EXPECT_EQ(builder->GetTypeInfo(0, 0, nullptr), E_POINTER);
  EXPECT_EQ(builder->GetTypeInfo(1, 0, &info), DISP_E_BADINDEX);
  DISPPARAMS none{};
  VARIANT number = Number(13), noVariable;
  noVariable.vt = VT_BYREF | VT_VARIANT;
  noVariable.pvarVal = nullptr;
  VARIANT two[] = {noVariable, number};
  struct Row {
    DISPID id;
    IID reserved;
    DISPPARAMS* params;
  };
  DISPPARAMS one{&number, nullptr, 1, 0}, broken{two, nullptr, 2, 0};
  const Row rows[] = {
      {99, IID_NULL, &none}, {3, IID_IUnknown, &none}, {3, IID_NULL, &one},  // too many arguments
      {2, IID_NULL, &none},  {2, IID_NULL, nullptr},   {2, IID_NULL, &broken},
  };
  for (const Row& row : rows) {
    EXPECT_LT(
        builder->Invoke(row.id, row.reserved, 0, DISPATCH_METHOD, row.params, nullptr, nullptr, nullptr), 0)
        << &row - rows;
  }
}

TEST_F(LateBinding, FailuresAreSaidInWords) {
  const auto camera = OpenCamera();
  VARIANT settings;
  VariantInit(&settings);
  ASSERT_EQ(CallByName(*camera.Get(), L"GetProperty", {}, &settings), S_OK);
  VARIANT tooMuch = Number(4);
  EXCEPINFO failure{};
  EXPECT_EQ(CallByName(*settings.pdispVal, L"SetBayerMode", {&tooMuch, nullptr, 1, 0}, nullptr, &failure),
            DISP_E_EXCEPTION);
  EXPECT_EQ(failure.scode, E_INVALIDARG);
  EXPECT_STREQ(failure.bstrSource, L"ZELCam");
  ASSERT_NE(failure.bstrDescription, nullptr);
  EXPECT_EQ(std::wstring(failure.bstrDescription).find(L"SetBayerMode(4): not a valid value (0x80070057)"),
            0u)
      << testing::PrintToString(std::wstring(failure.bstrDescription));
  SysFreeString(failure.bstrSource);
  SysFreeString(failure.bstrDescription);
  VariantClear(&settings);
}

TEST_F(LateBinding, Values) {
  const auto builder = Create<IDispatch>(__uuidof(ZELBuilder));
  EXPECT_EQ(CallForNumber(*builder.Get(), L"getcameratypenum"), 99);  // names have no case
  EXPECT_EQ(CallByName(*builder.Get(), L"NoSuchName", {}), DISP_E_UNKNOWNNAME);
  const auto camera = OpenCamera();
  EXPECT_EQ(CallForNumber(*camera.Get(), L"GetCameraType"), 13);
  EXPECT_EQ(CallForNumber(*camera.Get(), L"GetStatus"), 0);
  VARIANT settings;
  VariantInit(&settings);
  ASSERT_EQ(CallByName(*camera.Get(), L"GetProperty", {}, &settings), S_OK);
  ASSERT_EQ(settings.vt, VT_DISPATCH);
  VARIANT one = Number(1);
  EXPECT_EQ(CallByName(*settings.pdispVal, L"SetHorMirror", {&one, nullptr, 1, 0}), S_OK);
  EXPECT_EQ(CallForNumber(*settings.pdispVal, L"GetHorMirror"), 1);
  VariantClear(&settings);
}

TEST_F(LateBinding, FramesReachTheCallersArray) {
  const auto camera = OpenCamera();
  ASSERT_EQ(camera->SetBufferSamples(1), S_OK);
  ASSERT_EQ(camera->Play(nullptr), S_OK);
  constexpr ULONG kBytes = 2048u * 2048 * 4;
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, kBytes);
  VARIANT direct, variable, reference;
  VariantInit(&direct);
  direct.vt = VT_ARRAY | VT_UI1;
  direct.parray = array;
  variable = direct;
  variable.vt = VT_BYREF | VT_VARIANT;
  variable.pvarVal = &direct;
  reference = direct;
  reference.vt = VT_BYREF | VT_ARRAY | VT_UI1;
  reference.pparray = &array;
  for (const VARIANT& argument : {direct, variable, reference}) {
    SCOPED_TRACE(argument.vt);
    auto* const bytes = static_cast<BYTE*>(array->pvData);
    bytes[3] = 0;
    EXPECT_EQ(CallForNumber(*camera.Get(), L"GetData", {argument}), 0);
    EXPECT_EQ(bytes[3], 255);  // the fourth byte of a pixel
  }
  SafeArrayDestroy(array);
  // A script's variable that holds nothing becomes an array; the next call fills that one again.
  VariantInit(&direct);
  EXPECT_EQ(CallForNumber(*camera.Get(), L"GetData", {variable}), 0);
  ASSERT_EQ(direct.vt, VT_ARRAY | VT_UI1);
  EXPECT_EQ(direct.parray->rgsabound[0].cElements, 1280u * 1024 * 4);
  const SAFEARRAY* const made = direct.parray;
  EXPECT_EQ(CallForNumber(*camera.Get(), L"GetData", {variable}), 0);
  EXPECT_EQ(direct.parray, made);
  EXPECT_EQ(static_cast<const BYTE*>(made->pvData)[3], 255);
  VariantClear(&direct);
  camera->Stop(nullptr);
}

}  // namespace
}  // namespace zel::test
