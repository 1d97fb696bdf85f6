// The reference page against what it describes, so that neither changes alone.
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <algorithm>
#include <fstream>
#include <regex>
#include <string>

#include "api/ZELCam.h"
#include "common/ResultCodes.h"
#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "property/PropertyIds.h"
#include "tools/support/PropertyNames.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

// The published names say what the library means.
static_assert(zelStateOpened == LONG{kStateOpened} && zelStatePlaying == LONG{kStatePlaying} &&
              zelStatePaused == LONG{kStatePaused} && zelStateStopped == LONG{kStateStopped} &&
              zelStateClosed == LONG{kStateClosed});
static_assert(zelDeliverCallback == LONG{kDeliverCallback} && zelDeliverQueue == LONG{kDeliverQueue} &&
              zelDeliverOnDemand == LONG{kDeliverOnDemand});
static_assert(zelEventStateChanged == LONG{kEventStateChanged} &&
              zelEventFrame == LONG{kEventFrameProcessed} &&
              zelEventRegisterRead == LONG{kEventRegisterRead} &&
              zelEventRegisterWritten == LONG{kEventRegisterWritten} &&
              zelEventSecondKindFrame == LONG{kEventSecondFrameKind});
static_assert(zelResultTimeout == kResultTimeout && zelResultCapturing == kResultCapturing);
static_assert(zelPropertyHorMirror == LONG{kHorMirror} && zelPropertyShutter == LONG{kShutter} &&
              zelPropertyColorGainBlue == LONG{kColorGainBlue} && zelPropertyAuxValue1 == LONG{kAuxValue1} &&
              zelPropertyGamma == LONG{kGamma} && zelPropertyFocusPosition == LONG{kFocusPosition} &&
              zelPropertyColorCorrection == LONG{kColorCorrection} &&
              zelPropertySharpness == LONG{kSharpness});

std::string Contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(ReferencePage, HasEverySettingConstantAndExitCode) {
  const std::string page = Contents(ZELCAM_SOURCES "/docs/reference.md");
  const std::string idl = Contents(ZELCAM_SOURCES "/src/api/ZELCam.idl");
  ASSERT_FALSE(page.empty());
  std::vector<std::string> rows;
  for (const PropertyName& known : PropertyNames()) {
    const std::string unit = *known.unit ? known.unit : "-";
    const std::string range = known.HasOwnRange() ? fmt::format("{}..{}", known.minimum, known.maximum) : "-";
    const std::string row = fmt::format("| `{}` | {} | {} | {} |\n", known.name, unit, range, known.text);
    if (known.id == kNoRecord) rows.push_back(row);
  }
  const std::regex constant(R"((zel\w+) = (-?\d+))");
  std::size_t properties = 0;
  for (std::sregex_iterator at(idl.begin(), idl.end(), constant), end; at != end; ++at) {
    const std::string name = (*at)[1], value = (*at)[2];
    if (!name.starts_with("zelProperty")) {
      rows.push_back(name.starts_with("zelResult") ? "| `" + name + "` |"
                                                   : fmt::format("| `{}` | {} |", name, value));
      continue;
    }
    ++properties;
    const auto known = std::ranges::find(PropertyNames(), std::stol(value), &PropertyName::id);
    ASSERT_NE(known, PropertyNames().end()) << name;
    rows.push_back(fmt::format("| {} | `{}` | `{}` | {} | {} |\n", value, known->name, name,
                               *known->unit ? known->unit : "-", known->text));
  }
  EXPECT_EQ(properties, std::size_t{kPropertyCount});
  EXPECT_GT(rows.size(), 100u);
  const std::string codes = page.substr(page.find("exit codes\n"));
  for (const int code : {kExitDone, kExitFailed, kExitUsage, kExitNoCamera, kExitInUse, kExitTimeout,
                         kExitVanished, kExitInterrupted}) {
    EXPECT_NE(codes.find(fmt::format("\n| {} | ", code)), std::string::npos) << code;
  }
  for (const std::string& row : rows) EXPECT_NE(page.find(row), std::string::npos) << row;
}

}  // namespace
}  // namespace zel::tool
