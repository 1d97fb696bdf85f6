#include <CLI/CLI.hpp>
#include <limits>

#include "device/CZELDevice.h"
#include "platform/TracingDriverHost.h"
#include "property/CZELDeviceProperty.h"
#include "tools/Verb.h"
#include "tools/support/Camera.h"
#include "tools/support/Output.h"
#include "tools/support/TraceStep.h"

namespace zel::tool {
namespace {

// No register is as wide.
constexpr LONG kNotRead = std::numeric_limits<LONG>::min();

struct StepOutcome {
  HRESULT result = S_OK;
  std::optional<LONG> value;
  bool comesLater = false;  ///< asked for, but not read yet
};

StepOutcome ReadInto(const std::function<HRESULT(LONG*)>& read) {
  LONG value = 0;
  const HRESULT result = read(&value);
  // Getters write what the camera has also when they answer that it is not offered.
  const bool written = SUCCEEDED(result) || result == E_NOTIMPL;
  return {result, written ? std::optional(value) : std::nullopt};
}

StepOutcome ReadRegister(CZELDeviceProperty& properties, LONG address) {
  LONG value = kNotRead;
  const HRESULT result = properties.GetRegister(address, &value);
  if (value != kNotRead) return {result, value};
  return {result, {}, SUCCEEDED(result)};
}

class Tracer {
 public:
  explicit Tracer(Camera& camera) : camera_(camera) { camera_.Api().SetBufferSamples(kDeliverOnDemand); }

  StepOutcome Run(const TraceStep& step) {
    using Kind = TraceStep::Kind;
    LONG ignored = 0;
    const auto& numbers = step.numbers;
    CZELDeviceProperty& properties = camera_.Properties();
    switch (step.kind) {
      case Kind::Open:
        return {camera_.TryOpen(&openError_), {}};
      case Kind::Play:
        return {camera_.Api().Play(&ignored), {}};
      case Kind::Pause:
        return {camera_.Api().Pause(&ignored), {}};
      case Kind::Stop:
        return {camera_.Api().Stop(&ignored), {}};
      case Kind::Frame:
        return {ReadFrame(), {}};
      case Kind::SetProperty:
        return {step.property->set(properties, numbers[0]), {}};
      case Kind::GetProperty:
        return ReadInto([&](LONG* value) { return step.property->get(properties, value); });
      case Kind::WriteRegister:
        return {properties.SetRegister(numbers[0], numbers[1]), {}};
      case Kind::ReadRegister:
        return ReadRegister(properties, numbers[0]);
      case Kind::SetWindow:
        return {properties.SetROI(numbers[0], numbers[1], numbers[2], numbers[3]), {}};
    }
    return {E_NOTIMPL, {}};
  }

  /// Why an `open` failed, if one did.
  const std::optional<ToolError>& OpenError() const { return openError_; }

 private:
  /// In on-demand delivery the frame stays in the library; the destination is not written.
  HRESULT ReadFrame() {
    LONG unused = 0;
    VARIANT destination{};
    destination.vt = VT_BYREF | VT_I4;
    destination.byref = &unused;
    LONG result = 0;
    return camera_.Api().GetData(destination, &result);
  }

  Camera& camera_;
  std::optional<ToolError> openError_;
};

ExitCode Trace(const std::vector<std::string>& texts, const Globals& globals) {
  std::vector<TraceStep> steps;
  steps.reserve(texts.size());
  for (const std::string& text : texts) steps.push_back(ParseTraceStep(text));
  const CameraId id = SelectCamera(globals.camera);

  // Handles of the camera come from the traced host, so the camera goes first.
  TracingDriverHost host(CurrentDriverHost(), [](const std::string& line) { PrintLine(line); });
  const ScopedDriverHost scope(host);
  Camera camera(id);
  Tracer tracer(camera);
  for (const TraceStep& step : steps) {
    host.SetStep(step.text);
    const StepOutcome outcome = tracer.Run(step);
    Json line;
    line["step"] = step.text;
    line["result"] = ResultText(outcome.result);
    if (outcome.value || outcome.comesLater) line["value"] = JsonOrNull(outcome.value);
    PrintJson(line);
  }
  if (const auto trouble = camera.Trouble()) PrintWarning(globals, trouble->what());
  host.SetStep("release");
  if (const auto& error = tracer.OpenError()) throw ToolError(*error);
  return kExitDone;
}

}  // namespace

Action DefineTrace(CLI::App& command, const Globals& globals) {
  auto steps = std::make_shared<std::vector<std::string>>();
  command
      .add_option(
          "STEP", *steps,
          "open, play, pause, stop, frame, set:NAME=VALUE, get:NAME, reg:ADDR, reg:ADDR=VALUE, roi:X,Y,W,H; "
          "values are not checked")
      ->required();
  command.footer(
      "A SATA camera that captures reads a register before its next frame: the value of `reg:` is null then, "
      "and the register's own line stands among that frame's.");
  return [steps, &globals] { return Trace(*steps, globals); };
}

}  // namespace zel::tool
