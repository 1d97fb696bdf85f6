#pragma once

#include "platform/ComponentTypes.h"

// Parts of the system that MinGW's import libraries know but its headers don't.

extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* helpFolder);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID locale, SYSKIND system);
}

namespace zel {

inline constexpr CLSID kRegistrarClass = {
    0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
inline constexpr IID kRegistrarInterface = {
    0x44EC053B, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};

/// Runs registration scripts; lives in atl.dll.
struct IRegistrar : IUnknown {
  /// %key% in scripts stands for `item`.
  virtual HRESULT AddReplacement(LPCOLESTR key, LPCOLESTR item) = 0;
  virtual HRESULT ClearReplacements() = 0;
  virtual HRESULT ResourceRegisterSz(LPCOLESTR module, LPCOLESTR name, LPCOLESTR type) = 0;
  virtual HRESULT ResourceUnregisterSz(LPCOLESTR module, LPCOLESTR name, LPCOLESTR type) = 0;
  virtual HRESULT FileRegister(LPCOLESTR file) = 0;
  virtual HRESULT FileUnregister(LPCOLESTR file) = 0;
  virtual HRESULT StringRegister(LPCOLESTR script) = 0;
  virtual HRESULT StringUnregister(LPCOLESTR script) = 0;
  virtual HRESULT ResourceRegister(LPCOLESTR module, UINT id, LPCOLESTR type) = 0;
  virtual HRESULT ResourceUnregister(LPCOLESTR module, UINT id, LPCOLESTR type) = 0;
};

}  // namespace zel
