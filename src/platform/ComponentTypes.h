#pragma once

/// The component model's and bitmap types under their usual names on both systems: `HRESULT`, `GUID`, `BSTR`,
/// `VARIANT`, `SAFEARRAY`, `IUnknown`, `BITMAPINFOHEADER` and what belongs to them. Layouts are the same
/// everywhere: `LONG` and `HRESULT` are 32 bits, an `OLECHAR` is one UTF-16 unit.
#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// Component model headers need windows.h first.
#include <oaidl.h>
#include <ole2.h>
#include <oleauto.h>
#else
#include "posix/ComponentTypesPosix.h"  // from here, so that the installed headers need one folder only
#endif

static_assert(sizeof(LONG) == 4 && sizeof(HRESULT) == 4 && sizeof(OLECHAR) == 2);
static_assert(sizeof(GUID) == 16 && sizeof(VARIANT) == 24 && sizeof(SAFEARRAY) == 32);
static_assert(sizeof(BITMAPFILEHEADER) == 14 && sizeof(BITMAPINFOHEADER) == 40 && sizeof(RGBQUAD) == 4);
