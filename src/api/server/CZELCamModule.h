#pragma once

#include <span>

#include "platform/ComponentTypes.h"

namespace zel {

/// One creatable class. Its program identifier is "ZELCam.<name>", its description "<name> Class".
struct ServedClass {
  CLSID id;
  const wchar_t* name;
  HRESULT (*create)(REFIID, void**) noexcept;
};

/// The component server in this module.
class CZELCamModule {
 public:
  enum class Hive { Machine, User };

  /// The five classes.
  static std::span<const ServedClass> Classes();

  /// What the entry points of the DLL do; see there.
  static HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** object);
  static bool CanUnload();
  /// Undoes itself when it fails.
  static HRESULT Register(Hive hive);
  /// Goes through to the end also when a step fails; the first failure is the result.
  static HRESULT Unregister(Hive hive);
};

}  // namespace zel
