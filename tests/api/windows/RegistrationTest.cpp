#include <functional>
#include <set>
#include <string>

#include "api/windows/Process.h"
#include "api/windows/ServerFixture.h"

namespace zel::test {
namespace {

constexpr wchar_t kClasses[] = L"Software\\Classes";

std::wstring TextOf(const GUID& guid) {
  wchar_t text[39];
  StringFromGUID2(guid, text, 39);
  return text;
}

/// The default value of a key, or one of its values; "-" when there is none.
std::wstring ValueOf(HKEY hive, const std::wstring& path, const wchar_t* value = nullptr) {
  wchar_t text[1024];
  DWORD size = sizeof text;
  const auto full = std::wstring(kClasses) + L"\\" + path;
  return RegGetValueW(hive, full.c_str(), value, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS ? text
                                                                                                       : L"-";
}

/// Names of all keys at the places where a server leaves some.
std::set<std::wstring> KeysIn(HKEY hive) {
  std::set<std::wstring> names;
  for (const wchar_t* folder : {L"", L"\\CLSID", L"\\AppID", L"\\Interface", L"\\TypeLib"}) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(hive, (std::wstring(kClasses) + folder).c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
      continue;
    wchar_t name[256];
    for (DWORD n = 0, size = 256; RegEnumKeyExW(key, n, name, &size, nullptr, nullptr, nullptr, nullptr) == 0;
         ++n) {
      _wcslwr_s(name, 256);
      names.insert(std::wstring(folder) + L"\\" + name);
      size = 256;
    }
    RegCloseKey(key);
  }
  // Folders that were empty before may stay.
  for (const wchar_t* folder : {L"\\clsid", L"\\appid", L"\\interface", L"\\typelib"}) names.erase(folder);
  return names;
}

class Registration : public Server {
 protected:
  static HRESULT Install(bool install, const wchar_t* commandLine) {
    return Entry<HRESULT (*)(BOOL, LPCWSTR)>("DllInstall")(install, commandLine);
  }

  /// What clients find when the server stands in a hive.
  static void ExpectRegistered(HKEY hive) {
    for (const ClassRow& row : kServed) {
      SCOPED_TRACE(testing::Message() << row.name);
      const std::wstring name = row.name;
      const std::wstring progId = L"ZELCam." + name, versioned = progId + L".1", clsid = TextOf(row.clsid);
      EXPECT_EQ(ValueOf(hive, versioned), name + L" Class");
      EXPECT_EQ(ValueOf(hive, versioned + L"\\CLSID"), clsid);
      EXPECT_EQ(ValueOf(hive, progId + L"\\CLSID"), clsid);
      EXPECT_EQ(ValueOf(hive, progId + L"\\CurVer"), versioned);
      const std::wstring key = L"CLSID\\" + clsid;
      EXPECT_EQ(ValueOf(hive, key), name + L" Class");
      EXPECT_EQ(ValueOf(hive, key + L"\\ProgID"), versioned);
      EXPECT_EQ(ValueOf(hive, key + L"\\VersionIndependentProgID"), progId);
      EXPECT_EQ(ValueOf(hive, key + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
      EXPECT_EQ(ValueOf(hive, key + L"\\TypeLib"), L"{7DD40401-450C-4160-B8F1-DE709B87934B}");

      if (hive == HKEY_CURRENT_USER) continue;  // Wine looks classes up in the machine's part only
      CLSID found{};
      ASSERT_EQ(CLSIDFromProgID(progId.c_str(), &found), S_OK);
      EXPECT_EQ(found, row.clsid);
      void* object = nullptr;
      ASSERT_EQ(CoCreateInstance(found, nullptr, CLSCTX_INPROC_SERVER, row.iid, &object), S_OK);
      static_cast<IUnknown*>(object)->Release();
    }
    const std::wstring appId = ValueOf(hive, L"AppID\\ZELCam.DLL", L"AppID");
    EXPECT_EQ(ValueOf(hive, L"AppID\\" + appId), L"ZELCam");
    EXPECT_NE(ValueOf(hive, L"TypeLib\\{7DD40401-450C-4160-B8F1-DE709B87934B}\\1.0\\0\\win64"), L"-");
    if (hive == HKEY_CURRENT_USER) return;
    ITypeLib* library = nullptr;
    ASSERT_EQ(LoadRegTypeLib(kLibrary, 1, 0, 0, &library), S_OK);
    library->Release();
  }

  static constexpr GUID kLibrary = {
      0x7DD40401, 0x450C, 0x4160, {0xB8, 0xF1, 0xDE, 0x70, 0x9B, 0x87, 0x93, 0x4B}};
};

TEST_F(Registration, ComesAndGoes) {
  const auto byInstall = [](const wchar_t* commandLine) {
    return [commandLine](bool install) { return Install(install, commandLine); };
  };
  // The system's own program, in both of the documented ways.
  const auto byProgram = [](const wchar_t* options) {
    return [options](bool install) {
      return RunProgram(L"regsvr32.exe", std::wstring(L"/s ") + (install ? L"" : L"/u ") + options + L"\"" +
                                             ModulePath() + L"\"");
    };
  };
  struct Row {
    std::function<HRESULT(bool)> run;
    HKEY hive, other;
  };
  const Row rows[] = {
      {byInstall(L"USER"), HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE},
      {byInstall(L"users"), HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
      {byInstall(nullptr), HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
      {[](bool install) {
         return Entry<HRESULT (*)()>(install ? "DllRegisterServer" : "DllUnregisterServer")();
       },
       HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
      {byProgram(L""), HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
      {byProgram(L"/n /i:user "), HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    const auto before = KeysIn(row.hive), otherBefore = KeysIn(row.other);
    ASSERT_EQ(row.run(true), S_OK);
    ExpectRegistered(row.hive);
    EXPECT_EQ(KeysIn(row.other), otherBefore);
    EXPECT_EQ(row.run(false), S_OK);
    EXPECT_EQ(KeysIn(row.hive), before);
    EXPECT_EQ(row.run(false), S_OK);  // a second time there is nothing to do
  }
}

TEST_F(Registration, UndoesItselfWhenItFails) {
  auto before = KeysIn(HKEY_CURRENT_USER);
  // A volatile key takes no lasting one, which stops the script of the last class.
  const std::wstring blocked = std::wstring(kClasses) + L"\\ZELCam.ZELGrabberCBNet";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, blocked.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                            KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_LT(Install(true, L"user"), 0);
  RegDeleteTreeW(HKEY_CURRENT_USER, blocked.c_str());
  EXPECT_EQ(KeysIn(HKEY_CURRENT_USER), before);
}

}  // namespace
}  // namespace zel::test
