#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>

#include "platform/ComponentTypes.h"

// The component runtime of a system without one: texts, variants and one-dimensional arrays behave as on
// Windows as far as this library and its users need them.
namespace {

// Memory before a text: its byte length stands in the last four bytes, the rest keeps it aligned.
constexpr std::size_t kTextHeader = 8;
constexpr std::size_t kMaximumTextBytes = std::numeric_limits<UINT>::max() - kTextHeader - sizeof(OLECHAR);

constexpr USHORT kHasVartype = 0x0080;    // FADF_HAVEVARTYPE
constexpr USHORT kMadeAsVector = 0x2000;  // FADF_CREATEVECTOR
constexpr ULONG kMaximumLocks = 0xFFFF;

/// One allocation: the type right before the descriptor, where Windows keeps it as well, and the elements
/// behind, 16-byte aligned as malloc is.
struct Vector {
  std::uint32_t unused[3];
  std::uint32_t type;
  SAFEARRAY array;
};
static_assert(offsetof(Vector, array) == 16 && sizeof(Vector) == 48);

Vector* VectorOf(SAFEARRAY* array) {
  return reinterpret_cast<Vector*>(reinterpret_cast<std::byte*>(array) - offsetof(Vector, array));
}

ULONG ElementSize(VARTYPE type) {
  switch (type) {
    case VT_UI1:
      return 1;
    case VT_I2:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_R4:
      return 4;
    case VT_R8:
      return 8;
    default:
      return 0;
  }
}

bool HasDimension(const SAFEARRAY* array, UINT dimension) {
  return dimension >= 1 && dimension <= array->cDims;
}

/// Bounds are stored with the last dimension first.
const SAFEARRAYBOUND& BoundOf(const SAFEARRAY* array, UINT dimension) {
  return array->rgsabound[array->cDims - dimension];
}

}  // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
  if (bytes > kMaximumTextBytes) return nullptr;
  auto* const memory = static_cast<std::byte*>(std::calloc(1, kTextHeader + bytes + sizeof(OLECHAR)));
  if (!memory) return nullptr;
  const auto byteLength = static_cast<std::uint32_t>(bytes);
  std::memcpy(memory + kTextHeader - sizeof byteLength, &byteLength, sizeof byteLength);
  if (text) std::memcpy(memory + kTextHeader, text, bytes);
  return reinterpret_cast<BSTR>(memory + kTextHeader);
}

BSTR SysAllocString(const OLECHAR* text) {
  if (!text) return nullptr;
  std::size_t length = 0;
  while (text[length]) ++length;
  return length > std::numeric_limits<UINT>::max() ? nullptr
                                                   : SysAllocStringLen(text, static_cast<UINT>(length));
}

void SysFreeString(BSTR text) {
  if (text) std::free(reinterpret_cast<std::byte*>(text) - kTextHeader);
}

UINT SysStringByteLen(BSTR text) {
  if (!text) return 0;
  std::uint32_t bytes;
  std::memcpy(&bytes, reinterpret_cast<const std::byte*>(text) - sizeof bytes, sizeof bytes);
  return bytes;
}

UINT SysStringLen(BSTR text) {
  return SysStringByteLen(text) / sizeof(OLECHAR);
}

void VariantInit(VARIANT* variant) {
  if (variant) std::memset(variant, 0, sizeof *variant);
}

HRESULT VariantClear(VARIANT* variant) {
  if (!variant) return E_INVALIDARG;
  if (variant->vt & VT_BYREF) {
    // What a reference points to belongs to someone else.
  } else if (variant->vt & VT_ARRAY) {
    const HRESULT destroyed = SafeArrayDestroy(variant->parray);
    if (FAILED(destroyed)) return destroyed;
  } else if (variant->vt == VT_BSTR) {
    SysFreeString(variant->bstrVal);
  } else if ((variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) && variant->punkVal) {
    variant->punkVal->Release();
  }
  VariantInit(variant);
  return S_OK;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
  const ULONG elementSize = ElementSize(type);
  const bool lastIndexFits = std::int64_t{lowerBound} + count - 1 <= std::numeric_limits<LONG>::max();
  // Sizes are counted in 32 bits.
  const bool sizeFits = std::uint64_t{count} * elementSize <= std::numeric_limits<ULONG>::max();
  if (elementSize == 0 || !lastIndexFits || !sizeFits) return nullptr;
  const std::size_t bytes = sizeof(Vector) + std::size_t{count} * elementSize;
  auto* const vector = static_cast<Vector*>(std::calloc(1, bytes));
  if (!vector) return nullptr;
  vector->type = type;
  vector->array.cDims = 1;
  vector->array.fFeatures = kHasVartype | kMadeAsVector;
  vector->array.cbElements = elementSize;
  vector->array.pvData = vector + 1;
  vector->array.rgsabound[0] = {count, lowerBound};
  return &vector->array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (!array) return S_OK;
  if (std::atomic_ref(array->cLocks).load() != 0) return DISP_E_ARRAYISLOCKED;
  if (!(array->fFeatures & kMadeAsVector)) return E_INVALIDARG;  // its memory is not from here
  std::free(VectorOf(array));
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (!array || !data) return E_INVALIDARG;
  const std::atomic_ref locks(array->cLocks);
  if (locks.fetch_add(1) >= kMaximumLocks) {
    locks.fetch_sub(1);
    return E_UNEXPECTED;
  }
  *data = array->pvData;
  return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
  if (!array) return E_INVALIDARG;
  const std::atomic_ref locks(array->cLocks);
  ULONG count = locks.load();
  do {
    if (count == 0) return E_UNEXPECTED;
  } while (!locks.compare_exchange_weak(count, count - 1));
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
  return array ? array->cDims : 0;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array) {
  return array ? array->cbElements : 0;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* lowest) {
  if (!array || !lowest) return E_INVALIDARG;
  if (!HasDimension(array, dimension)) return DISP_E_BADINDEX;
  *lowest = BoundOf(array, dimension).lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* highest) {
  if (!array || !highest) return E_INVALIDARG;
  if (!HasDimension(array, dimension)) return DISP_E_BADINDEX;
  const SAFEARRAYBOUND& bound = BoundOf(array, dimension);
  // In 64 bits: an empty array ends one before it begins, and a foreign descriptor may say anything.
  *highest = static_cast<LONG>(std::int64_t{bound.lLbound} + bound.cElements - 1);
  return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
  if (!array || !type || !(array->fFeatures & kHasVartype)) return E_INVALIDARG;
  *type = static_cast<VARTYPE>(VectorOf(array)->type);
  return S_OK;
}
