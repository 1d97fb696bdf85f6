// Where the system knows no type libraries there is no late binding.
#include "api/server/Dispatch.h"

namespace zel {

HRESULT DispatchTypeInfoCount(REFIID, UINT* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}
HRESULT DispatchTypeInfo(REFIID, UINT, ITypeInfo** info) {
  if (info) *info = nullptr;
  return E_NOTIMPL;
}
HRESULT DispatchIdsOfNames(REFIID, REFIID, LPOLESTR*, UINT, DISPID*) {
  return E_NOTIMPL;
}
HRESULT DispatchInvoke(REFIID, IDispatch*, DISPID, REFIID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
  return E_NOTIMPL;
}
void ReleaseTypeInfos() {}

}  // namespace zel
