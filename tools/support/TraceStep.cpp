#include "tools/support/TraceStep.h"

#include <fmt/format.h>

#include "tools/support/ToolError.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

using Kind = TraceStep::Kind;

struct StepForm {
  std::string_view word;
  Kind kind;
  const char* usage;
};

constexpr StepForm kForms[] = {
    {"open", Kind::Open, "open"},
    {"play", Kind::Play, "play"},
    {"pause", Kind::Pause, "pause"},
    {"stop", Kind::Stop, "stop"},
    {"frame", Kind::Frame, "frame"},
    {"set", Kind::SetProperty, "set:NAME=VALUE"},
    {"get", Kind::GetProperty, "get:NAME"},
    {"reg", Kind::WriteRegister, "reg:ADDR or reg:ADDR=VALUE"},
    {"roi", Kind::SetWindow, "roi:X,Y,W,H"},
};

const StepForm& FormOf(const std::string& text, std::string_view word) {
  std::vector<std::string_view> words;
  for (const StepForm& form : kForms) {
    if (form.word == word) return form;
    words.push_back(form.word);
  }
  const std::string_view meant = Nearest(word, words);
  throw ToolError(kExitUsage, fmt::format("step '{}' is unknown", text),
                  meant.empty() ? "steps are open, play, pause, stop, frame, set:, get:, reg:, roi:"
                                : fmt::format("did you mean '{}'?", meant));
}

}  // namespace

TraceStep ParseTraceStep(const std::string& text) {
  const std::size_t colon = text.find(':');
  const StepForm& form = FormOf(text, std::string_view(text).substr(0, colon));
  const auto malformed = [&] {
    return ToolError(kExitUsage, fmt::format("step '{}' is not {}", text, form.usage));
  };
  const auto number = [&](std::string_view digits) {
    const auto value = ParseNumber(digits);
    if (!value) throw malformed();
    return *value;
  };

  TraceStep step{.text = text, .kind = form.kind};
  const bool takesArguments = form.kind >= Kind::SetProperty;
  if (takesArguments != (colon != std::string::npos)) throw malformed();
  if (!takesArguments) return step;

  const std::string_view arguments = std::string_view(text).substr(colon + 1);
  const std::vector<std::string_view> sides = Split(arguments, '=');
  switch (form.kind) {
    case Kind::SetProperty:
      if (sides.size() != 2) throw malformed();
      step.property = &FindProperty(sides[0]);
      step.numbers[0] = number(sides[1]);
      if (step.property->set == nullptr)
        throw ToolError(kExitUsage, fmt::format("{} can only be read", sides[0]));
      break;
    case Kind::GetProperty:
      step.property = &FindProperty(arguments);
      if (step.property->get == nullptr)
        throw ToolError(kExitUsage, fmt::format("{} can only be set", arguments));
      break;
    case Kind::SetWindow: {
      const std::vector<std::string_view> edges = Split(arguments, ',');
      if (edges.size() != step.numbers.size()) throw malformed();
      for (std::size_t n = 0; n < edges.size(); ++n) step.numbers[n] = number(edges[n]);
      break;
    }
    default:
      if (sides.size() > 2) throw malformed();
      if (sides.size() == 1) step.kind = Kind::ReadRegister;
      for (std::size_t n = 0; n < sides.size(); ++n) step.numbers[n] = number(sides[n]);
  }
  return step;
}

}  // namespace zel::tool
