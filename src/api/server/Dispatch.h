#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// Late binding of the dual interfaces, by the type library in this module's resources. Without one (a static
/// build, a system without type libraries) there are no type infos and the calls answer E_NOTIMPL. Any
/// thread.
HRESULT DispatchTypeInfoCount(REFIID interfaceId, UINT* count);
HRESULT DispatchTypeInfo(REFIID interfaceId, UINT index, ITypeInfo** info);
HRESULT DispatchIdsOfNames(REFIID interfaceId, REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids);
HRESULT DispatchInvoke(REFIID interfaceId, IDispatch* object, DISPID id, REFIID reserved, WORD flags,
                       DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* badArgument);

/// Drops the type infos kept between calls; they are loaded again when needed.
void ReleaseTypeInfos();

}  // namespace zel
