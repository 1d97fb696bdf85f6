#include "tools/support/Words.h"

#include <gtest/gtest.h>

#include "tools/support/ToolError.h"
#include "tools/support/TraceStep.h"

namespace zel::tool {
namespace {

TEST(Words, Number) {
  struct Row {
    const char* text;
    std::optional<std::int32_t> value;
  };
  const Row rows[] = {
      {"0", 0},
      {"-128", -128},
      {"2147483647", 2147483647},
      {"2147483648", std::nullopt},
      {"-2147483648", std::numeric_limits<std::int32_t>::min()},
      {"-2147483649", std::nullopt},
      {"0x3FFF", 0x3FFF},
      {"0XfF", 255},
      {"-0x10", -16},
      {"0xFFFFFFFF", -1},
      {"0x100000000", std::nullopt},
      {"99999999999999999999", std::nullopt},
      {"0x", std::nullopt},
      {"", std::nullopt},
      {"-", std::nullopt},
      {"--1", std::nullopt},
      {"0x-1", std::nullopt},
      {"+1", std::nullopt},
      {"1 ", std::nullopt},
      {"12a", std::nullopt},
      {"1.5", std::nullopt},
  };
  for (const Row& row : rows) EXPECT_EQ(ParseNumber(row.text), row.value) << row.text;
}

TEST(Words, Duration) {
  struct Row {
    const char* text;
    std::optional<std::int64_t> milliseconds;
  };
  const Row rows[] = {
      {"500ms", 500}, {"10s", 10000}, {"2m", 120000}, {"0.5s", 500}, {"1ms", 1},
      {"0s", {}},     {"-1s", {}},    {"10", {}},     {"s", {}},     {"10 s", {}},
      {"10h", {}},    {"infs", {}},   {"nans", {}},   {"1e30s", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(ParseDuration(row.text), row.milliseconds) << row.text;
}

TEST(Words, Glob) {
  struct Row {
    const char *pattern, *text;
    bool matches;
  };
  const Row rows[] = {
      {"shutter", "shutter", true}, {"shut", "shutter", false},    {"*", "", true},
      {"*gain*", "gain", true},     {"color-*", "color", false},   {"?o?", "roi", true},
      {"?o?", "ro", false},         {"*-x", "sub-sample-x", true}, {"a*b*c", "a-b-b-d-c", true},
      {"a*b*c", "a-b-b-d", false},  {"*ab", "aab", true},          {"", "x", false},
  };
  for (const Row& row : rows) EXPECT_EQ(MatchesGlob(row.pattern, row.text), row.matches) << row.pattern;
}

TEST(Words, NearestOffersOnlyWhatWasMeant) {
  const std::vector<std::string_view> names{"shutter", "sharpness", "io", "digital-global-gain", "hue"};
  EXPECT_EQ(Nearest("shuter", names), "shutter");
  EXPECT_EQ(Nearest("gain", names), "digital-global-gain");
  EXPECT_EQ(Nearest("exposure", names), "");
  EXPECT_EQ(Nearest("xy", names), "");
}

TEST(TraceStep, ReadsEveryForm) {
  using Kind = TraceStep::Kind;
  struct Row {
    const char* text;
    Kind kind;
    const char* property;
    std::array<LONG, 4> numbers;
  };
  const Row rows[] = {
      {"open", Kind::Open, "", {}},
      {"frame", Kind::Frame, "", {}},
      {"set:shutter=70000", Kind::SetProperty, "shutter", {70000}},
      {"set:hue=-0x1", Kind::SetProperty, "hue", {-1}},
      {"get:aux-value3", Kind::GetProperty, "aux-value3", {}},
      {"reg:0x1E", Kind::ReadRegister, "", {0x1E}},
      {"reg:9=0x3FFF", Kind::WriteRegister, "", {9, 0x3FFF}},
      {"roi:0,-1,640,480", Kind::SetWindow, "", {0, -1, 640, 480}},
  };
  for (const Row& row : rows) {
    const TraceStep step = ParseTraceStep(row.text);
    EXPECT_EQ(step.kind, row.kind) << row.text;
    EXPECT_EQ(step.property ? step.property->name : "", row.property) << row.text;
    EXPECT_EQ(step.numbers, row.numbers) << row.text;
  }
}

TEST(TraceStep, RefusesEverythingElse) {
  const char* const texts[] = {"",
                               "opn",
                               "open:",
                               "open:1",
                               "set",
                               "set:",
                               "set:shutter",
                               "set:shutter=",
                               "set:shutter=x",
                               "set:shutter=1=2",
                               "set:shuter=1",
                               "set:mark=1",
                               "get",
                               "get:",
                               "get:auto-focus-mode",
                               "reg",
                               "reg:",
                               "reg:1=",
                               "reg:1=2=3",
                               "reg:x",
                               "roi:1,2,3",
                               "roi:1,2,3,4,5",
                               "roi:1,2,3,",
                               "frame 1"};
  for (const char* const text : texts) {
    try {
      ParseTraceStep(text);
      ADD_FAILURE() << "'" << text << "' was taken";
    } catch (const ToolError& error) {
      EXPECT_EQ(error.Code(), kExitUsage) << text;
    }
  }
}

}  // namespace
}  // namespace zel::tool
