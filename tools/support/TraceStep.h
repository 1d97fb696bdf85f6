#pragma once

#include <array>
#include <string>

#include "tools/support/PropertyNames.h"

namespace zel::tool {

/// One step of `trace`, as typed.
struct TraceStep {
  enum class Kind {
    Open,
    Play,
    Pause,
    Stop,
    Frame,
    SetProperty,
    GetProperty,
    WriteRegister,
    ReadRegister,
    SetWindow
  };

  std::string text;
  Kind kind = Kind::Open;
  const PropertyName* property = nullptr;  ///< of SetProperty and GetProperty
  std::array<LONG, 4> numbers{};           ///< value; address (, value); x, y, width, height
};

/// Throws a usage error saying what is wrong with the step.
TraceStep ParseTraceStep(const std::string& text);

}  // namespace zel::tool
