#pragma once

#include "api/ComObject.h"
#include "api/LibraryStart.h"

namespace zel {

class CZELBuilder;

/// Creates an object and hands out the interface that was asked for; null is written on failure.
template <class Object>
HRESULT CreateObject(REFIID iid, void** object) noexcept {
  return Guarded(
      [&]() -> HRESULT {
        if (!object) return E_POINTER;
        *object = nullptr;
        // The way to a camera: it is refused when the cameras asked for can't be had.
        if constexpr (std::is_same_v<Object, CZELBuilder>) {
          if (!StartLibrary()) return E_INVALIDARG;
        }
        const auto created = NewObject<Object>();
        return created ? created->QueryInterface(iid, object) : E_OUTOFMEMORY;
      },
      E_OUTOFMEMORY);
}

}  // namespace zel
