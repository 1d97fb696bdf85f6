#pragma once

#include <cstdint>
#include <cstring>

// Names that the component model's headers define on Windows, for a system without them. Only what this
// library and the header generated from ZELCam.idl use.

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using INT = std::int32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = std::int32_t;
using HRESULT = std::int32_t;
using OLECHAR = char16_t;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;  ///< its byte length stands in the four bytes before
using LCID = DWORD;
using DISPID = LONG;
using MEMBERID = DISPID;
using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;
using SCODE = LONG;
using DATE = double;
using HDC = void*;
using PVOID = void*;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

#define S_OK (static_cast<HRESULT>(0))
#define S_FALSE (static_cast<HRESULT>(1))
#define E_NOTIMPL (static_cast<HRESULT>(0x80004001u))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80004002u))
#define E_POINTER (static_cast<HRESULT>(0x80004003u))
#define E_UNEXPECTED (static_cast<HRESULT>(0x8000FFFFu))
#define E_FAIL (static_cast<HRESULT>(0x80004005u))
#define E_HANDLE (static_cast<HRESULT>(0x80070006u))
#define E_OUTOFMEMORY (static_cast<HRESULT>(0x8007000Eu))
#define E_INVALIDARG (static_cast<HRESULT>(0x80070057u))
#define DISP_E_BADINDEX (static_cast<HRESULT>(0x8002000Bu))
#define DISP_E_ARRAYISLOCKED (static_cast<HRESULT>(0x8002000Du))
#define CLASS_E_NOAGGREGATION (static_cast<HRESULT>(0x80040110u))
#define CLASS_E_CLASSNOTAVAILABLE (static_cast<HRESULT>(0x80040111u))
#define SUCCEEDED(result) (static_cast<HRESULT>(result) >= 0)
#define FAILED(result) (static_cast<HRESULT>(result) < 0)

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline bool operator==(const GUID& a, const GUID& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}
inline bool operator!=(const GUID& a, const GUID& b) {
  return !(a == b);
}
inline bool IsEqualGUID(const GUID& a, const GUID& b) {
  return a == b;
}
inline bool IsEqualIID(const IID& a, const IID& b) {
  return a == b;
}

// What the generated header is written in.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are its own.
#define STDMETHODCALLTYPE
#define __RPC_USER
#define STDMETHODIMP HRESULT
#define STDMETHODIMP_(type) type
#define EXTERN_C extern "C"
#define DECLSPEC_UUID(text)
#define MIDL_INTERFACE(text) struct
#define BEGIN_INTERFACE
#define END_INTERFACE
#define CONST_VTBL
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
  inline constexpr GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}

/// `__uuidof(Interface)` on every system: the generated header fills the specialisations.
template <class Interface>
struct ZelUuidOf;
#define __CRT_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)         \
  }                                                                              \
  template <>                                                                    \
  struct ZelUuidOf<type> {                                                       \
    static constexpr GUID value = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}; \
  };                                                                             \
  extern "C" {
#define __uuidof(type) (ZelUuidOf<type>::value)
// NOLINTEND(bugprone-reserved-identifier)

enum VARENUM : VARTYPE {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_UI1 = 17,
  VT_UI4 = 19,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000,
};

struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};
struct SAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  PVOID pvData;
  SAFEARRAYBOUND rgsabound[1];
};

struct IUnknown;
struct IDispatch;
struct ITypeInfo;

struct ZelVariantRecord {
  PVOID pvRecord;
  PVOID pRecInfo;
};
struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    ULONG ulVal;
    BYTE bVal;
    SHORT iVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    PVOID byref;
    ZelVariantRecord record;
  };
};
using VARIANTARG = VARIANT;

struct DISPPARAMS {
  VARIANTARG* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};
struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  PVOID pvReserved;
  HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

struct IUnknown {
  virtual HRESULT QueryInterface(REFIID iid, void** object) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};
struct IDispatch : IUnknown {
  virtual HRESULT GetTypeInfoCount(UINT* count) = 0;
  virtual HRESULT GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
  virtual HRESULT GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) = 0;
  virtual HRESULT Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                         EXCEPINFO* exception, UINT* badArgument) = 0;

 protected:
  ~IDispatch() = default;
};

DEFINE_GUID(IID_NULL, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
DEFINE_GUID(IID_IUnknown, 0x00000000, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46);
DEFINE_GUID(IID_IDispatch, 0x00020400, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46);

// Also for programs that use the library: they free the texts and arrays that it hands out.
#pragma GCC visibility push(default)
extern "C" {
/// Copy of a zero-terminated text, or null; freed by `SysFreeString`.
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);      ///< UTF-16 units
UINT SysStringByteLen(BSTR text);  ///< bytes

void VariantInit(VARIANT* variant);
HRESULT VariantClear(VARIANT* variant);  ///< frees texts and arrays, releases interfaces

/// One-dimensional array of VT_UI1, VT_I2, VT_I4, VT_UI4, VT_R4 or VT_R8, zeroed; null when that fails.
SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
HRESULT SafeArrayDestroy(SAFEARRAY* array);  ///< refused while its data is accessed
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
UINT SafeArrayGetDim(SAFEARRAY* array);
UINT SafeArrayGetElemsize(SAFEARRAY* array);                                  ///< bytes
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* lowest);   ///< dimensions count from 1
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* highest);  ///< inclusive
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
}
#pragma GCC visibility pop

struct RGBQUAD {
  BYTE rgbBlue;
  BYTE rgbGreen;
  BYTE rgbRed;
  BYTE rgbReserved;
};
struct BITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth;
  LONG biHeight;
  WORD biPlanes;
  WORD biBitCount;
  DWORD biCompression;
  DWORD biSizeImage;
  LONG biXPelsPerMeter;
  LONG biYPelsPerMeter;
  DWORD biClrUsed;
  DWORD biClrImportant;
};
#pragma pack(push, 2)
struct BITMAPFILEHEADER {
  WORD bfType;
  DWORD bfSize;
  WORD bfReserved1;
  WORD bfReserved2;
  DWORD bfOffBits;
};
#pragma pack(pop)
