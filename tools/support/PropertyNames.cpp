#include "tools/support/PropertyNames.h"

#include <algorithm>
#include <array>

#include "tools/support/ToolError.h"
#include "tools/support/Words.h"
#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

namespace zel::tool {
namespace {

using P = CZELDeviceProperty;

template <auto Method>
HRESULT Plain(P& property, LONG value) {
  return (property.*Method)(value);
}
template <auto Method>
HRESULT Read(P& property, LONG* value) {
  return (property.*Method)(value);
}
template <auto Method, LONG Channel>
HRESULT PlainChannel(P& property, LONG value) {
  return (property.*Method)(Channel, value);
}
template <auto Method, LONG Channel>
HRESULT ReadChannel(P& property, LONG* value) {
  return (property.*Method)(Channel, value);
}
template <LONG Selector>
HRESULT SetPair(P& property, LONG value) {
  return property.SetPairValue(value, Selector);
}
template <LONG Selector>
HRESULT GetPair(P& property, LONG* value) {
  return property.GetPairValue(value, Selector);
}

template <LONG Id>
HRESULT SetRecord(P& property, LONG value) {
  return property.SetProperty(Id, value);
}
template <LONG Id>
HRESULT GetRecord(P& property, LONG* value) {
  PropertyRecord record;
  const HRESULT result = property.GetPropertyInfo(Id, &record);
  *value = record.current;
  return result;
}

// Only cameras with automatic exposure have a target.
HRESULT SetAeTarget(P& property, LONG value) {
  auto* const camera = dynamic_cast<CZELPropertyImplUSB3T2*>(&property);
  return camera != nullptr ? camera->SetAeTarget(value) : E_NOTIMPL;
}
HRESULT GetAeTarget(P& property, LONG* value) {
  auto* const camera = dynamic_cast<CZELPropertyImplUSB3T2*>(&property);
  return camera != nullptr ? camera->GetAeTarget(value) : E_NOTIMPL;
}

/// One edge of the window: the camera takes only whole windows.
template <LONG Id>
HRESULT SetWindowEdge(P& property, LONG value) {
  std::array<LONG, 4> window{};
  for (LONG id = kRoiLeft; id <= kRoiHeight; ++id) {
    PropertyRecord record;
    property.GetPropertyInfo(id, &record);
    window[static_cast<std::size_t>(id)] = record.current;
  }
  window[Id] = value;
  return property.SetROI(window[0], window[1], window[2], window[3]);
}

#define PAIR(Name) Plain<&P::Set##Name>, Read<&P::Get##Name>
#define CHANNEL(Name, id) PlainChannel<&P::Set##Name, id>, ReadChannel<&P::Get##Name, id>
#define WINDOW(id) SetWindowEdge<id>, GetRecord<id>
#define RECORD(id) SetRecord<id>, GetRecord<id>
#define MODEL_PROPERTY(id) \
  { "programmable-gamma-" #id, id, CHANNEL(ProgrammableGamma, id), "", "meaning depends on the camera type" }

// clang-format off: one setting, one line.
constexpr PropertyName kNames[] = {
    {"roi-left", kRoiLeft, WINDOW(kRoiLeft), "px", "window's left column on the sensor"},
    {"roi-top", kRoiTop, WINDOW(kRoiTop), "px", "window's top row on the sensor"},
    {"roi-width", kRoiWidth, WINDOW(kRoiWidth), "px", "window's width"},
    {"roi-height", kRoiHeight, WINDOW(kRoiHeight), "px", "window's height"},
    {"sub-sample-x", kSubSampleX, PAIR(SubSampleX), "", "horizontal sub-sampling code, 0 none"},
    {"sub-sample-y", kSubSampleY, PAIR(SubSampleY), "", "vertical sub-sampling code, 0 none"},
    {"hor-mirror", kHorMirror, PAIR(HorMirror), "", "left and right exchanged, 0 or 1"},
    {"ver-mirror", kVerMirror, PAIR(VerMirror), "", "top and bottom exchanged, 0 or 1"},
    {"ext-trigger", kExtTrigger, PAIR(ExtTrigger), "", "each frame waits for the trigger input, 0 or 1"},
    {"half-clock", kHalfClock, PAIR(HalfClock), "", "sensor at half its pixel clock, 0 or 1"},
    {"strobe", kStrobe, PAIR(Strobe), "", "flash output, 0 or 1"},
    {"analog-global-gain", kAnalogGlobalGain, PAIR(AnalogGlobalGain), "", "analog gain, sensor units"},
    {"digital-global-gain", kDigitalGlobalGain, PAIR(DigitalGlobalGain), "", "digital gain, sensor units"},
    {"shutter", kShutter, PAIR(Shutter), "", "exposure time, sensor units (mostly lines)"},
    {"color-gain-red", kColorGainRed, CHANNEL(ColorGain, kColorGainRed), "1/128",
     "gain of red, 128 is unity"},
    {"color-gain-green", kColorGainGreen, CHANNEL(ColorGain, kColorGainGreen), "1/128",
     "gain of green, 128 is unity"},
    {"color-gain-blue", kColorGainBlue, CHANNEL(ColorGain, kColorGainBlue), "1/128",
     "gain of blue, 128 is unity"},
    {"color-offset-1", 17, CHANNEL(ColorOffset, 17), "", "offset of the first channel"},
    {"color-offset-2", 18, CHANNEL(ColorOffset, 18), "", "offset of the second channel"},
    {"color-offset-3", 19, CHANNEL(ColorOffset, 19), "", "offset of the third channel"},
    {"color-offset-4", 20, CHANNEL(ColorOffset, 20), "", "offset of the fourth channel"},
    {"channel-value-1", 21, RECORD(21), "", "further value of the first channel"},
    {"channel-value-2", 22, RECORD(22), "", "further value of the second channel"},
    {"channel-value-3", 23, RECORD(23), "", "further value of the third channel"},
    {"channel-value-4", 24, RECORD(24), "", "further value of the fourth channel"},
    {"thresh", kThresh, PAIR(Thresh), "", "threshold"},
    {"auto-thresh", kAutoThresh, PAIR(AutoThresh), "", "the sensor finds the threshold itself, 0 or 1"},
    {"no-gain-dep", kNoGainDep, PAIR(NoGainDep), "", "threshold independent of the gain"},
    {"cal-ctrl", kCalCtrl, PAIR(CalCtrl), "", "calibration control"},
    {"aux-value1", kAuxValue1, PAIR(AuxValue1), "", "switch, 0 or 1"},
    {"aux-value2", kAuxValue2, PAIR(AuxValue2), "", "switch, 0 or 1"},
    {"white-pixel-canceling", kWhitePixelCanceling, PAIR(WhitePixelCanceling), "",
     "removes bright defect pixels"},
    {"black-pixel-canceling", kBlackPixelCanceling, PAIR(BlackPixelCanceling), "",
     "removes dark defect pixels"},
    {"denoise", kDenoise, PAIR(Denoise), "", "noise filter of the sensor"},
    {"night-mode", kNightMode, PAIR(NightMode), "", "long exposures in the dark"},
    {"edge-enhance", kEdgeEnhance, PAIR(EdgeEnhance), "", "edge filter of the sensor"},
    {"lens-correction", kLensCorrection, PAIR(LensCorrection), "", "evens out the lens's shading"},
    {"saturation", kSaturation, PAIR(Saturation), "", "0 leaves the colours as they are"},
    {"brightness", kBrightness, PAIR(Brightness), "", "added to each channel"},
    {"contrast", kContrast, PAIR(Contrast), "", "0 leaves the tones as they are"},
    {"hue", kHue, PAIR(Hue), "degree", "turns the colours"},
    {"gamma", kGamma, PAIR(Gamma), "1/100", "exponent in hundredths, 0 off"},
    MODEL_PROPERTY(42),
    MODEL_PROPERTY(43),
    MODEL_PROPERTY(44),
    MODEL_PROPERTY(45),
    MODEL_PROPERTY(46),
    MODEL_PROPERTY(47),
    {"focus-position", kFocusPosition, RECORD(kFocusPosition), "", "position of the lens, its own steps"},
    MODEL_PROPERTY(49),
    MODEL_PROPERTY(50),
    MODEL_PROPERTY(51),
    MODEL_PROPERTY(52),
    MODEL_PROPERTY(53),
    MODEL_PROPERTY(54),
    MODEL_PROPERTY(55),
    MODEL_PROPERTY(56),
    {"color-correction", kColorCorrection, PAIR(ColorCorrection), "", "colour matrix, 0 or 1"},
    MODEL_PROPERTY(58),
    MODEL_PROPERTY(59),
    {"aux-value3", kAuxValue3, PAIR(AuxValue3), "",
     "switch, 0 or 1; USB3T2: automatic exposure; 9, 13: first output"},
    {"aux-value4", kAuxValue4, PAIR(AuxValue4), "",
     "switch, 0 or 1; USB3T2: automatic gain; 9: second output"},
    {"dot-filter-threshold", kDotFilterThreshold, PAIR(DotFilterThreshold), "",
     "least deviation of a defect pixel"},
    {"dot-filter-enabled", kDotFilterEnabled, PAIR(DotFilterEnabled), "",
     "removes single deviating pixels, 0 or 1"},
    {"sharpness", kSharpness, PAIR(Sharpness), "", "0 off"},

    {"bayer-decoding-method", kNoRecord, PAIR(BayerDecodingMethod), "", "0 best, 1 and 2 plain interpolation",
     0, 2},
    {"bayer-mode", kNoRecord, PAIR(BayerMode), "", "colour of the first pixel", 0, 3},
    {"trans-mode", kNoRecord, PAIR(TransMode), "", "0 one byte per sample, 1 two", 0, 1},
    {"trans-bits", kNoRecord, PAIR(TransBits), "bit", "bits per transferred sample"},
    {"output-format", kNoRecord, PAIR(OutputFormat), "", "0 raw, 1 and 5 32-bit, 4 24-bit pixels", 0, 5},
    {"large-frame-option", kNoRecord, PAIR(LargeFrameOption), "", "large frames"},
    {"colorful", kNoRecord, PAIR(Colorful), "", "1 colour, 0 grey", 0, 1},
    {"auto-white-balance", kNoRecord, PAIR(AutoWhiteBalance), "", "0 off, 1 to 3 the method", 0, 3},
    {"timeout", kNoRecord, PAIR(Timeout), "ms", "longest wait for a frame"},
    {"io", kNoRecord, PAIR(IO), "", "input and output pins, a bit each"},
    {"io-port", kNoRecord, PAIR(IOPort), "", "the same as io"},
    {"model-value1", kNoRecord, PAIR(ModelValue1), "", "meaning depends on the camera type"},
    {"model-value2", kNoRecord, PAIR(ModelValue2), "", "meaning depends on the camera type"},
    {"model-value3", kNoRecord, PAIR(ModelValue3), "", "meaning depends on the camera type"},
    {"model-value4", kNoRecord, PAIR(ModelValue4), "", "meaning depends on the camera type"},
    {"model-value5", kNoRecord, PAIR(ModelValue5), "", "meaning depends on the camera type"},
    {"positive-value", kNoRecord, PAIR(PositiveValue), "", "meaning depends on the camera type"},
    {"pair-value1", kNoRecord, SetPair<1>, GetPair<1>, "", "first of a pair"},
    {"pair-value2", kNoRecord, SetPair<0>, GetPair<0>, "", "second of a pair"},
    {"ae-target", kNoRecord, SetAeTarget, GetAeTarget, "", "mean brightness that automatic exposure aims at",
     0, 255},
    {"auto-focus-filter-type", kNoRecord, Plain<&P::SetAutoFocusFilterType>, nullptr, "", "focus measure"},
    {"auto-focus-mode", kNoRecord, Plain<&P::SetAutoFocusMode>, nullptr, "", "search strategy"},
    {"auto-focus-cur-pos", kNoRecord, PAIR(AutoFocusCurPos), "", "where the focus search stands"},
    {"auto-focus-level", kNoRecord, nullptr, Read<&P::GetAutoFocusLevel>, "", "sharpness of the last frame"},
    {"mark", kNoRecord, nullptr, Read<&P::GetMark>, "", "the camera's own mark"},
};
// clang-format on

}  // namespace

std::span<const PropertyName> PropertyNames() {
  return kNames;
}

const PropertyName& FindProperty(std::string_view name) {
  const auto found = std::ranges::find(kNames, name, &PropertyName::name);
  if (found != std::end(kNames)) return *found;
  std::vector<std::string_view> names;
  for (const PropertyName& known : kNames) names.push_back(known.name);
  const std::string_view meant = Nearest(name, names);
  throw ToolError(
      kExitUsage, "unknown property '" + std::string(name) + "'",
      meant.empty() ? "`zelcam get` lists them all" : "did you mean '" + std::string(meant) + "'?");
}

std::vector<const PropertyName*> MatchProperties(const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) {
    const auto matches = [&](const PropertyName& known) { return MatchesGlob(pattern, known.name); };
    // Names the nearest one, if it was a name.
    if (std::ranges::none_of(kNames, matches)) FindProperty(pattern);
  }
  std::vector<const PropertyName*> chosen;
  for (const PropertyName& known : kNames) {
    const auto matches = [&](const std::string& pattern) { return MatchesGlob(pattern, known.name); };
    if (patterns.empty() || std::ranges::any_of(patterns, matches)) chosen.push_back(&known);
  }
  return chosen;
}

}  // namespace zel::tool
