// The entry points of ZELCam.DLL.
#include <cwchar>

#include "api/ComObject.h"
#include "api/server/CZELCamModule.h"

using zel::CZELCamModule;
using Hive = zel::CZELCamModule::Hive;

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object) {
  return zel::Guarded([&] { return CZELCamModule::GetClassObject(classId, iid, object); });
}

STDAPI DllCanUnloadNow() {
  return CZELCamModule::CanUnload() ? S_OK : S_FALSE;
}

/// For the whole machine.
STDAPI DllRegisterServer() {
  return zel::Guarded([] { return CZELCamModule::Register(Hive::Machine); });
}

STDAPI DllUnregisterServer() {
  return zel::Guarded([] { return CZELCamModule::Unregister(Hive::Machine); });
}

/// "user" (in any case) as the command line means the current user only.
STDAPI DllInstall(BOOL bInstall, LPCWSTR pszCmdLine) {
  const Hive hive = pszCmdLine && _wcsnicmp(pszCmdLine, L"user", 5) == 0 ? Hive::User : Hive::Machine;
  return zel::Guarded(
      [&] { return bInstall ? CZELCamModule::Register(hive) : CZELCamModule::Unregister(hive); });
}
