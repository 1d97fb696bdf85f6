#include "api/VariantPixels.h"

namespace zel {
namespace {

// Features of a SAFEARRAY: BSTR, IUnknown, IDispatch, VARIANT, record elements.
constexpr USHORT kOwningElements = 0x0100 | 0x0200 | 0x0400 | 0x0800 | 0x0020;

const SAFEARRAY* SafeArrayOf(const VARIANT& variant) {
  if (!(variant.vt & VT_ARRAY)) return nullptr;
  if (variant.vt & VT_BYREF) return variant.byref ? *static_cast<SAFEARRAY* const*>(variant.byref) : nullptr;
  return variant.parray;
}

PixelMemory MemoryOf(const SAFEARRAY* array) {
  if (!array || !array->pvData || array->cDims == 0) return {};
  std::uint64_t size = array->cbElements;
  const SAFEARRAYBOUND* const bounds = array->rgsabound;
  for (USHORT dimension = 0; dimension < array->cDims; ++dimension) size *= bounds[dimension].cElements;
  return {static_cast<std::uint8_t*>(array->pvData), size};
}

}  // namespace

PixelMemory ArrayOf(const VARIANT& variant) {
  return MemoryOf(SafeArrayOf(Dereferenced(variant)));
}

PixelMemory WritableArrayOf(const VARIANT& variant) {
  const SAFEARRAY* const array = SafeArrayOf(Dereferenced(variant));
  if (array && (array->fFeatures & kOwningElements)) return {};
  return MemoryOf(array);
}

const VARIANT& Dereferenced(const VARIANT& variant) {
  const bool indirect = variant.vt == (VT_BYREF | VT_VARIANT) && variant.byref;
  return indirect ? *static_cast<const VARIANT*>(variant.byref) : variant;
}

VARIANT* EmptyVariable(const VARIANT& variant) {
  const bool indirect = variant.vt == (VT_BYREF | VT_VARIANT) && variant.byref;
  auto* const variable = indirect ? static_cast<VARIANT*>(variant.byref) : nullptr;
  return variable && (variable->vt == VT_EMPTY || variable->vt == VT_NULL) ? variable : nullptr;
}

}  // namespace zel
