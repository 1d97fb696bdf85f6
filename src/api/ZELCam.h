#pragma once

/// ZELCam: 99 industrial camera types behind five objects.
///
///   IZELBuilder*  builder = nullptr;   the types, and a camera of one of them
///   IZELCamera*   camera = nullptr;    open by index, play, take frames, draw and save them
///   IZELProperty* settings = nullptr;  exposure, gains, window, ... of that camera
///
///   ZELCreateBuilder(&builder);
///   builder->CreateCamera(13, &camera);
///   camera->OpenCamera(0, &result);
///
/// The methods with their units, ranges and results are in ZELCam.idl. Reference counting is that of the
/// component model: who gets an object calls `Release` once; `QueryInterface` adds a reference.
///
/// Threads. An object is to be used from one thread. Sinks (`IZELGrabberCB`, `IZELGrabberCBNet`) are called
/// on the thread that changed the camera's state or, for frames, on a worker of the library; they must be
/// safe for that, return quickly, and may call back into the library: which calls inside which event,
/// ZELCam.idl says. The picture behind `lBits` is valid during the call only.
///
/// Simulated cameras: when the environment variable ZELCAM_SIM lists camera types ("13,78@2"), the library
/// shows virtual cameras instead of the connected ones. It is read once, by the first call into the library.

#include "platform/ComponentTypes.h"
// Generated from ZELCam.idl; needs the component types first.
#include "ZELCam_i.h"

#ifdef __GNUC__
#define ZELCAM_API __attribute__((visibility("default")))
#else
#define ZELCAM_API
#endif

extern "C" {

/// The five objects, each with one reference for the caller. S_OK; E_POINTER for a null argument;
/// E_OUTOFMEMORY; the builder also E_INVALIDARG when ZELCAM_SIM can't be read (the reason is printed to
/// standard error, once). On failure the pointer is set to null. Any thread. On Windows these exist in static
/// builds only: clients of the DLL create the objects by their class identifiers.
ZELCAM_API HRESULT ZELCreateBuilder(IZELBuilder** builder);
/// A camera without a device: all but drawing, resampling and saving answer E_HANDLE.
ZELCAM_API HRESULT ZELCreateCamera(IZELCamera** camera);
/// Settings without a camera: every method answers E_HANDLE.
ZELCAM_API HRESULT ZELCreateProperty(IZELProperty** settings);
/// Sinks that do nothing.
ZELCAM_API HRESULT ZELCreateGrabberCB(IZELGrabberCB** sink);
ZELCAM_API HRESULT ZELCreateGrabberCBNet(IZELGrabberCBNet** sink);

}  // extern "C"
