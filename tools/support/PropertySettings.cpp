#include "tools/support/PropertySettings.h"

#include <fmt/format.h>

#include <array>

#include "tools/support/ToolError.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

bool IsWindowEdge(const PropertyName& property) {
  return property.id >= kRoiLeft && property.id <= kRoiHeight;
}

void CheckRange(Camera& camera, const PropertySetting& setting, const PropertyState& state) {
  const auto complain = [&](const char* side, LONG limit) {
    throw ToolError(kExitUsage, fmt::format("{} {} is {} {} of {}", setting.property->name, setting.value,
                                            side, limit, camera.Label()));
  };
  if (state.minimum && setting.value < *state.minimum) complain("below the minimum", *state.minimum);
  if (state.maximum && setting.value > *state.maximum) complain("above the maximum", *state.maximum);
}

/// The window that the settings ask for, checked as a whole; nothing when they leave it alone.
std::optional<std::array<LONG, 4>> WantedWindow(Camera& camera,
                                                const std::vector<PropertySetting>& settings) {
  std::array<LONG, 4> window{};
  std::array<LONG, 2> full{};
  for (LONG id = kRoiLeft; id <= kRoiHeight; ++id) {
    PropertyRecord record;
    camera.Properties().GetPropertyInfo(id, &record);
    window[static_cast<std::size_t>(id)] = record.current;
    if (id >= kRoiWidth) full[static_cast<std::size_t>(id - kRoiWidth)] = record.maximum;
  }
  bool wanted = false;
  for (const auto& [property, value] : settings) {
    if (!IsWindowEdge(*property)) continue;
    window[static_cast<std::size_t>(property->id)] = value;
    wanted = true;
  }
  if (!wanted) return std::nullopt;
  for (std::size_t axis = 0; axis < 2; ++axis) {
    if (window[axis] > full[axis] - window[axis + 2]) {
      throw ToolError(kExitUsage,
                      fmt::format("window {},{} {}x{} reaches beyond the {}x{} pixels of {}", window[0],
                                  window[1], window[2], window[3], full[0], full[1], camera.Label()));
    }
  }
  return window;
}

void CheckResult(Camera& camera, HRESULT result, std::string_view what) {
  if (SUCCEEDED(result)) return;
  throw ToolError(kExitFailed, fmt::format("{} refused {} (0x{:08X})", camera.Label(), what,
                                           static_cast<std::uint32_t>(result)));
}

}  // namespace

PropertySetting ParseSetting(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) throw ToolError(kExitUsage, fmt::format("'{}' is not NAME=VALUE", text));
  const PropertyName& property = FindProperty(text.substr(0, equals));
  if (property.set == nullptr) throw ToolError(kExitUsage, fmt::format("{} can only be read", property.name));
  const auto value = ParseNumber(std::string_view(text).substr(equals + 1));
  if (!value) {
    throw ToolError(kExitUsage,
                    fmt::format("{}: '{}' is not a number", property.name, text.substr(equals + 1)));
  }
  return {&property, *value};
}

std::vector<PropertySetting> ParseSettings(const std::vector<std::string>& texts) {
  std::vector<PropertySetting> settings;
  settings.reserve(texts.size());
  for (const std::string& text : texts) settings.push_back(ParseSetting(text));
  return settings;
}

PropertyState ReadProperty(Camera& camera, const PropertyName& property) {
  PropertyState state;
  PropertyRecord record;
  if (property.id != kNoRecord) {
    state.supported = camera.Properties().GetPropertyInfo(property.id, &record) == S_OK;
    state.minimum = record.minimum;
    state.maximum = record.maximum;
    state.defaultValue = record.defaultValue;
    state.current = record.current;
    if (!state.supported) return state;
  } else if (property.HasOwnRange()) {
    state.minimum = property.minimum;
    state.maximum = property.maximum;
  }
  if (property.get == nullptr) {
    state.supported = true;
    return state;
  }
  LONG value = 0;
  state.result = property.get(camera.Properties(), &value);
  if (property.id == kNoRecord) state.supported = state.result != E_NOTIMPL;
  state.current.reset();
  if (SUCCEEDED(state.result)) state.current = value;
  return state;
}

void ApplySettings(Camera& camera, const std::vector<PropertySetting>& settings) {
  for (const PropertySetting& setting : settings) {
    const PropertyState state = ReadProperty(camera, *setting.property);
    if (!state.supported) {
      throw ToolError(kExitUsage,
                      fmt::format("{} is not offered by {}", setting.property->name, camera.Label()));
    }
    CheckRange(camera, setting, state);
  }
  const auto window = WantedWindow(camera, settings);

  if (window) {
    const auto& [x, y, width, height] = *window;
    CheckResult(camera, camera.Properties().SetROI(x, y, width, height),
                fmt::format("window {},{} {}x{}", x, y, width, height));
  }
  for (const auto& [property, value] : settings) {
    if (IsWindowEdge(*property)) continue;
    CheckResult(camera, property->set(camera.Properties(), value),
                fmt::format("{} {}", property->name, value));
  }
}

}  // namespace zel::tool
