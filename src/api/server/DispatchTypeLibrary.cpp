#include <cstring>
#include <map>
#include <mutex>

#include "api/ComPtr.h"
#include "api/server/Dispatch.h"
#include "api/server/LateCall.h"
#include "api/server/ModulePath.h"

namespace zel {
namespace {

struct GuidLess {
  bool operator()(const GUID& a, const GUID& b) const { return std::memcmp(&a, &b, sizeof a) < 0; }
};

std::mutex cacheMutex;
std::map<GUID, ComPtr<ITypeInfo>, GuidLess>& Cache() {
  // Never destroyed: at unload the type library's own module may be gone already.
  static auto* const cache = new std::map<GUID, ComPtr<ITypeInfo>, GuidLess>;
  return *cache;
}

ComPtr<ITypeInfo> LoadTypeInfo(REFIID interfaceId) {
  ITypeLib* library = nullptr;
  if (FAILED(LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, &library))) return {};
  const auto owner = ComPtr<ITypeLib>::Adopt(library);
  ITypeInfo* info = nullptr;
  if (FAILED(library->GetTypeInfoOfGuid(interfaceId, &info))) return {};
  return ComPtr<ITypeInfo>::Adopt(info);
}

/// Null when this module has no type library.
ComPtr<ITypeInfo> TypeInfoOf(REFIID interfaceId) try {
  const std::lock_guard guard(cacheMutex);
  auto& entry = Cache()[interfaceId];
  if (!entry) entry = LoadTypeInfo(interfaceId);
  return ComPtr<ITypeInfo>(entry.Get());
} catch (...) {
  return {};
}

}  // namespace

HRESULT DispatchTypeInfoCount(REFIID interfaceId, UINT* count) {
  if (!count) return E_POINTER;
  *count = TypeInfoOf(interfaceId) ? 1 : 0;
  return S_OK;
}

HRESULT DispatchTypeInfo(REFIID interfaceId, UINT index, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  *info = TypeInfoOf(interfaceId).Detach();
  return *info ? S_OK : E_NOTIMPL;
}

HRESULT DispatchIdsOfNames(REFIID interfaceId, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) {
  if (!IsEqualIID(reserved, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  const auto info = TypeInfoOf(interfaceId);
  return info ? info->GetIDsOfNames(names, count, ids) : E_NOTIMPL;
}

HRESULT DispatchInvoke(REFIID interfaceId, IDispatch* object, DISPID id, REFIID reserved, WORD flags,
                       DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* badArgument) {
  if (!IsEqualIID(reserved, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  const auto info = TypeInfoOf(interfaceId);
  if (!info) return E_NOTIMPL;
  try {
    LateCall call(*info.Get(), id, params);
    const HRESULT outcome = info->Invoke(object, id, flags, call.Params(), result, exception, badArgument);
    if (SUCCEEDED(outcome)) call.Return();
    if (outcome == DISP_E_EXCEPTION) DescribeFailure(*info.Get(), id, params, exception);
    return outcome;
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

void ReleaseTypeInfos() {
  const std::lock_guard guard(cacheMutex);
  Cache().clear();
}

}  // namespace zel
