#pragma once

namespace zel::test {

// The published order of the methods: the n-th name has the dispatch number n, for ever, as compiled clients
// hold the numbers.
inline constexpr const wchar_t* kBuilderMethods =
    L"CreateCamera GetCameraName GetCameraTypeNum GetUsb3CameraType";
inline constexpr const wchar_t* kCameraMethods =
    L"IsSataCamera GetMaxCameraNum IsCameraValid OpenCamera GetCameraType Play Pause Stop GetProperty "
    L"GetData SetObserver StretchDIBits GetStatus SetBufferSamples GetBufferSamples SetDIBits Resample "
    L"SetObserverNet SaveImage GetCameraID IsCameraConnected";
inline constexpr const wchar_t* kPropertyMethods =
    L"SetBayerDecodingMethod GetBayerDecodingMethod IsPropertySupported SetTransMode GetTransMode "
    L"SetTransBits GetTransBits SetOutputFormat GetOutputFormat SetHorMirror GetHorMirror SetVerMirror "
    L"GetVerMirror SetBayerMode GetBayerMode SetSubSampleX GetSubSampleX SetSubSampleY GetSubSampleY "
    L"GetFullROI SetROI GetROI SetExtTrigger GetExtTrigger SetHalfClock GetHalfClock SetStrobe "
    L"GetStrobe SetRegister GetRegister SetRegisterB GetRegisterB SetColorful GetColorful "
    L"SetAutoWhiteBalance GetAutoWhiteBalance SetColorGain GetColorGain GetColorGainRange "
    L"GetColorGainDefault SetDigitalGlobalGain GetDigitalGlobalGain GetDigitalGlobalGainRange "
    L"SetAnalogGlobalGain GetAnalogGlobalGain GetAnalogGlobalGainRange SetColorOffset GetColorOffset "
    L"GetColorOffsetRange GetColorOffsetDefault SetThresh GetThresh GetThreshRange GetThreshDefault "
    L"SetAutoThresh GetAutoThresh SetNoGainDep GetNoGainDep SetCalCtrl GetCalCtrl SetShutter GetShutter "
    L"GetShutterRange GetShutterDefault ChangePIDtoDS SetProperty GetProperty GetPropertyDefault "
    L"GetPropertyMin GetPropertyMax SetTimeout GetTimeout SetWhitePixelCanceling GetWhitePixelCanceling "
    L"SetBlackPixelCanceling GetBlackPixelCanceling SetDenoise GetDenoise SetEdgeEnhance GetEdgeEnhance "
    L"SetGamma GetGamma SetProgrammableGamma GetProgrammableGamma SetLensCorrection GetLensCorrection "
    L"SetNightMode GetNightMode SetSaturation GetSaturation SetBrightness GetBrightness SetContrast "
    L"GetContrast SetHue GetHue SetIO GetIO SetSROMRegister GetSROMRegister SetSROMID GetSROMID "
    L"SetRegisterEx GetRegisterEx SetFpgaRegister GetFpgaRegister SetDotFilterThreshold "
    L"GetDotFilterThreshold SetDotFilterEnabled GetDotFilterEnabled SetAutoFocusFilterType "
    L"SetAutoFocusRange SetAutoFocusCurPos SetOperatorBlock GetAutoFocusCurPos StartAutoFocus "
    L"StopAutoFocus GetAutoFocusLevel SetAutoFocusMode SetColorCorrection GetMark SetSerialNum "
    L"GetSerialNum SetSharpness GetSharpness";
inline constexpr const wchar_t* kSinkMethods = L"OnZELCameraEvent";

}  // namespace zel::test
