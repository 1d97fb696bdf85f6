#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "api/windows/ServerFixture.h"

namespace zel::test {
namespace {

/// What the loaded module says of itself.
class ModuleFile : public Server {
 protected:
  template <class Part>
  static const Part* At(DWORD offset) {
    return reinterpret_cast<const Part*>(reinterpret_cast<const BYTE*>(module_) + offset);
  }
  static DWORD Directory(int entry) {
    const auto* const headers = At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    return headers->OptionalHeader.DataDirectory[entry].VirtualAddress;
  }
};

TEST_F(ModuleFile, ExportsTheFiveEntryPointsAndNothingElse) {
  const auto* const exports = At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
  EXPECT_STREQ(At<char>(exports->Name), "ZELCam.DLL");
  EXPECT_EQ(exports->NumberOfFunctions, 5u);
  std::vector<std::string> names;
  for (DWORD n = 0; n < exports->NumberOfNames; ++n) {
    names.emplace_back(At<char>(At<DWORD>(exports->AddressOfNames)[n]));
  }
  EXPECT_THAT(names, testing::ElementsAre("DllCanUnloadNow", "DllGetClassObject", "DllInstall",
                                          "DllRegisterServer", "DllUnregisterServer"));
}

TEST_F(ModuleFile, NeedsTheSystemsLibrariesOnly) {
  wchar_t system[MAX_PATH];
  GetSystemDirectoryW(system, MAX_PATH);
  int imported = 0;
  for (auto* row = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT)); row->Name; ++row) {
    ++imported;
    const std::string name = At<char>(row->Name);
    const auto path = std::wstring(system) + L"\\" + std::wstring(name.begin(), name.end());
    EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES) << name;
  }
  EXPECT_GT(imported, 3);
}

TEST_F(ModuleFile, Version) {
  const HRSRC found = FindResourceW(module_, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
  ASSERT_NE(found, nullptr);
  const auto* const words = static_cast<const WORD*>(LockResource(LoadResource(module_, found)));
  // After three sizes and the key the fixed part lies at the next multiple of four bytes.
  constexpr std::size_t kFixedPart = 40 / sizeof(WORD);
  const auto* const version = reinterpret_cast<const VS_FIXEDFILEINFO*>(words + kFixedPart);
  ASSERT_EQ(version->dwSignature, 0xFEEF04BDu);
  const std::string text = std::to_string(HIWORD(version->dwFileVersionMS)) + "." +
                           std::to_string(LOWORD(version->dwFileVersionMS)) + "." +
                           std::to_string(HIWORD(version->dwFileVersionLS));
  EXPECT_EQ(text, ZEL_PROJECT_VERSION);
  const std::wstring all(reinterpret_cast<const wchar_t*>(words), words[0] / sizeof(wchar_t));
  EXPECT_NE(all.find(L"ZELCam developers"), std::wstring::npos);
}

TEST_F(Server, ClassObjects) {
  for (const ClassRow& row : kServed) {
    SCOPED_TRACE(testing::Message() << row.name);
    const auto factory = FactoryOf(row.clsid);
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_TRUE(Create<IUnknown>(row.clsid, row.iid));
  }
  void* object = &object;
  EXPECT_EQ(ClassObject(IID_IUnknown, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(ClassObject(kServed[0].clsid, IID_IPersist, &object), E_NOINTERFACE);
  EXPECT_EQ(ClassObject(kServed[0].clsid, IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(Server, StaysLoadedWhileAnObjectLives) {
  {
    const auto camera = Create<IZELCamera>(__uuidof(ZELCamera));
    EXPECT_EQ(CanUnload(), S_FALSE);
  }
  EXPECT_EQ(CanUnload(), S_OK);
  const auto factory = FactoryOf(__uuidof(ZELCamera));
  factory->LockServer(TRUE);
  EXPECT_EQ(CanUnload(), S_FALSE);
  factory->LockServer(FALSE);
}

}  // namespace
}  // namespace zel::test
