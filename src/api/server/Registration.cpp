// Writing the server into the registry and taking it out again.
#include <string>

#include "api/ComPtr.h"
#include "api/ZELCam.h"
#include "api/server/CZELCamModule.h"
#include "api/server/ModulePath.h"
#include "api/server/Registrar.h"
#include "api/server/ResourceIds.h"

namespace zel {
namespace {

constexpr wchar_t kScriptType[] = L"REGISTRY";
constexpr wchar_t kApplicationId[] = L"{6C152E7E-599C-403A-BF8A-FE6F4C74CC59}";
constexpr GUID kLibraryId = {0x7DD40401, 0x450C, 0x4160, {0xB8, 0xF1, 0xDE, 0x70, 0x9B, 0x87, 0x93, 0x4B}};

std::wstring TextOf(const GUID& guid) {
  wchar_t text[39];
  return {text, static_cast<std::size_t>(StringFromGUID2(guid, text, 39) - 1)};
}

/// A text as it stands between single quotes in a script.
std::wstring Quoted(const std::wstring& text) {
  std::wstring quoted;
  for (const wchar_t c : text) quoted.append(c == L'\'' ? 2 : 1, c);
  return quoted;
}

/// Installers need not have initialised the component model on their thread.
class ComScope {
 public:
  ComScope() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~ComScope() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;

 private:
  HRESULT result_;
};

/// While it lives, HKEY_CLASSES_ROOT is the current user's part of it.
class UserHiveScope {
 public:
  UserHiveScope() {
    HKEY classes = nullptr;
    error_ = RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Classes", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                             &classes, nullptr);
    if (error_ != ERROR_SUCCESS) return;
    error_ = RegOverridePredefKey(HKEY_CLASSES_ROOT, classes);
    RegCloseKey(classes);
  }
  ~UserHiveScope() {
    if (error_ == ERROR_SUCCESS) RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
  }
  UserHiveScope(const UserHiveScope&) = delete;
  UserHiveScope& operator=(const UserHiveScope&) = delete;

  HRESULT Result() const { return HRESULT_FROM_WIN32(static_cast<DWORD>(error_)); }

 private:
  LSTATUS error_;
};

enum class Direction { In, Out };

/// Puts everything into the registry, or takes it out. Loads what it needs first, as little can be found
/// while HKEY_CLASSES_ROOT is turned to the user's part.
class Registration {
 public:
  Registration(CZELCamModule::Hive hive, Direction direction) : hive_(hive), direction_(direction) {}

  HRESULT Run() {
    Note(Load());
    if (FAILED(result_)) return result_;
    if (hive_ == CZELCamModule::Hive::Machine) return RunSteps();
    const UserHiveScope scope;
    Note(scope.Result());
    return FAILED(result_) ? result_ : RunSteps();
  }

 private:
  HRESULT Load() {
    IRegistrar* registrar = nullptr;
    HRESULT result = CoCreateInstance(kRegistrarClass, nullptr, CLSCTX_INPROC_SERVER, kRegistrarInterface,
                                      reinterpret_cast<void**>(&registrar));
    if (FAILED(result)) return result;
    registrar_ = ComPtr<IRegistrar>::Adopt(registrar);
    ITypeLib* library = nullptr;
    result = LoadTypeLibEx(module_.c_str(), REGKIND_NONE, &library);
    library_ = ComPtr<ITypeLib>::Adopt(library);
    return result;
  }

  /// Taking out goes on after a failure; putting in stops.
  HRESULT RunSteps() {
    Script(ZEL_SCRIPT_APPLICATION, {{L"APPID", kApplicationId}});
    for (const ServedClass& served : CZELCamModule::Classes()) {
      const std::wstring name = served.name;
      Script(ZEL_SCRIPT_CLASS, {{L"CLSID", TextOf(served.id)},
                                {L"LIBID", TextOf(kLibraryId)},
                                {L"PROGID", L"ZELCam." + name},
                                {L"VERSIONED", L"ZELCam." + name + L".1"},
                                {L"DESCRIPTION", name + L" Class"},
                                {L"MODULE", Quoted(module_)}});
    }
    if (GoOn()) Note(TypeLibrary());
    return result_;
  }

  void Script(UINT id, std::initializer_list<std::pair<const wchar_t*, std::wstring>> replacements) {
    if (!GoOn()) return;
    Note(registrar_->ClearReplacements());
    for (const auto& [key, item] : replacements) Note(registrar_->AddReplacement(key, item.c_str()));
    Note(direction_ == Direction::In ? registrar_->ResourceRegister(module_.c_str(), id, kScriptType)
                                     : registrar_->ResourceUnregister(module_.c_str(), id, kScriptType));
  }

  HRESULT TypeLibrary() {
    const bool user = hive_ == CZELCamModule::Hive::User;
    if (direction_ == Direction::In) {
      return user ? RegisterTypeLibForUser(library_.Get(), module_.data(), nullptr)
                  : RegisterTypeLib(library_.Get(), module_.data(), nullptr);
    }
    TLIBATTR* attributes = nullptr;
    HRESULT result = library_->GetLibAttr(&attributes);
    if (FAILED(result)) return result;
    BSTR registered = nullptr;
    if (SUCCEEDED(QueryPathOfRegTypeLib(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum,
                                        attributes->lcid, &registered))) {
      SysFreeString(registered);
      auto* const unregister = user ? UnRegisterTypeLibForUser : UnRegisterTypeLib;
      result = unregister(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum,
                          attributes->lcid, attributes->syskind);
    }
    library_->ReleaseTLibAttr(attributes);
    return result;
  }

  bool GoOn() const { return direction_ == Direction::Out || SUCCEEDED(result_); }
  void Note(HRESULT result) {
    if (SUCCEEDED(result_)) result_ = result;
  }

  const CZELCamModule::Hive hive_;
  const Direction direction_;
  std::wstring module_ = ModulePath();
  ComPtr<IRegistrar> registrar_;
  ComPtr<ITypeLib> library_;
  HRESULT result_ = S_OK;
};

}  // namespace

HRESULT CZELCamModule::Register(Hive hive) {
  const ComScope com;
  const HRESULT result = Registration(hive, Direction::In).Run();
  if (FAILED(result)) Unregister(hive);
  return result;
}

HRESULT CZELCamModule::Unregister(Hive hive) {
  const ComScope com;
  return Registration(hive, Direction::Out).Run();
}

}  // namespace zel
