#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "imaging/CAutoFocus.h"
#include "imaging/GuardedBytes.h"
#include "platform/DriverHost.h"

namespace zel {
namespace {

using Block = std::vector<std::uint32_t>;
using Bytes = std::vector<std::uint8_t>;

Block FromColumns(const std::vector<std::uint32_t>& columns, int height) {
  Block block;
  for (int row = 0; row < height; ++row) block.insert(block.end(), columns.begin(), columns.end());
  return block;
}

TEST(FocusMeasure, LiteralBlocks) {
  struct Case {
    const char* name;
    std::vector<std::uint32_t> columns;
    int height;
    std::int32_t threshold, sobel, laplacian, deviation;
  };
  const Case cases[] = {
      {"right edge", {0, 0, 0, 100, 100}, 5, 143, 400 / 9, 0, 40 * 5 / 9},
      {"left edge: the Laplacian looks left", {100, 100, 0, 0, 0}, 5, 143, 400 / 9, 600 / 9, 40 * 5 / 9},
      {"a line, its surroundings above a quarter of it",
       {30, 30, 100, 30, 30},
       5,
       62,
       0,
       420 / 9,
       56 * 5 / 9},
      {"black", {0, 0, 0, 0, 0, 0}, 6, 23, 0, 0, 0},
      {"white", Block(20, 255), 20, 668, 0, 0, 0},
      {"too small", {0, 200, 0}, 3, 218, 0, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Block block = FromColumns(c.columns, c.height);
    const int width = static_cast<int>(c.columns.size());
    EXPECT_EQ(FocusThreshold(block, width, c.height), c.threshold);
    EXPECT_EQ(FocusValue(block, width, c.height, FocusFilter::Sobel), c.sobel);
    EXPECT_EQ(FocusValue(block, width, c.height, FocusFilter::Laplacian), c.laplacian);
    EXPECT_EQ(FocusValue(block, width, c.height, FocusFilter::Deviation), c.deviation);
    EXPECT_EQ(FocusValue(block, width, c.height, static_cast<FocusFilter>(3)), 0);
  }
  // Nine of sixteen responses count: four of 500, five of 0 and then none.
  Block points(64, 10);
  for (int at : {18, 21, 42, 45}) points[at] = 110;
  EXPECT_EQ(FocusValue(points, 8, 8, FocusFilter::Deviation), (4 * 94 * 5 + 5 * 6 * 5) / 9);

  Block noisy = {9, 1, 8, 2, 7, 3, 6, 4, 5}, scratch(9);
  MedianFilter(noisy, scratch, 3, 3);
  EXPECT_EQ(noisy, (Block{9, 1, 8, 2, 5, 3, 6, 4, 5}));
}

TEST(FocusSearch, ClimbsStepByStep) {
  struct Step {
    std::int32_t value, current, step, direction;
    bool done;
  };
  const Step steps[] = {{100, 32, 32, 1, false}, {110, 64, 32, 1, false}, {140, 68, 4, 1, false},
                        {150, 72, 4, 1, false},  {120, 66, 2, -1, false}, {145, 64, 2, -1, false},
                        {140, 67, 1, 1, false},  {148, 68, 1, 1, false},  {150, 69, 1, 1, false},
                        {146, 67, 1, -1, false}, {148, 66, 1, -1, true}};
  FocusSearch search;
  for (const Step& step : steps) {
    EXPECT_EQ(search.Advance(step.value, 100), step.done);
    EXPECT_EQ(search.current, step.current);
    EXPECT_EQ(search.step, step.step);
    EXPECT_EQ(search.direction, step.direction);
  }
  EXPECT_EQ(search.bestPosition, 67);

  FocusSearch turned;
  turned.Advance(100, 100);
  turned.Advance(79, 100);  // a drop by more than a quarter of it, and the range's end behind
  EXPECT_EQ(turned.current, 0);
  EXPECT_EQ(turned.step, 4);
  EXPECT_EQ(turned.direction, 1);
}

TEST(FocusSearch, ContinuousSearchStartsOverOutOfFocus) {
  struct Case {
    std::int32_t value, threshold, step;
  };
  for (const Case& c : {Case{7, 100, 32}, Case{8, 100, 1}, Case{19, 140, 32}, Case{20, 140, 1}}) {
    FocusSearch search;
    search.continuous = true;
    search.step = 2;
    search.bestValue = 50;
    EXPECT_FALSE(search.Advance(c.value, c.threshold));
    EXPECT_EQ(search.step, c.step) << c.value << " of " << c.threshold;
  }
}

constexpr LONG kWidth = 48, kHeight = 40, kSharp = 137, kParked = 40;

// A lens and the picture it makes: stripes, the stronger the nearer it is to `kSharp`.
struct Lens final : FocusDrive {
  std::vector<unsigned char> picture = std::vector<unsigned char>(kWidth * kHeight * 4);
  std::atomic<LONG> position = -1, moves = 0;
  std::atomic<std::uint64_t> secondMoveMs = 0;

  LONG ReadFocusPosition() override { return kParked; }
  // The worker moves the lens before it asks for a block, so the frame thread reads a finished picture.
  void WriteFocusPosition(LONG to) override {
    const auto contrast = std::max<LONG>(0, 120 - 2 * std::abs(to - kSharp));
    for (std::size_t i = 0; i < picture.size(); ++i) {
      picture[i] = static_cast<unsigned char>(i / 16 % 2 ? 125 + contrast : 125);
    }
    position = to;
    if (++moves == 2) secondMoveMs = CurrentDriverHost().Milliseconds();
  }
};

struct FreeTime : DriverHost {
  std::atomic<std::uint64_t> slept = 0;

  std::unique_ptr<DriverHandle> Open(const OpenRequest&, DriverError*) override { return nullptr; }
  std::optional<std::u16string> InterfacePath(const GUID&, std::uint32_t) override { return {}; }
  void Sleep(std::uint32_t milliseconds) override { slept += milliseconds; }
  std::uint64_t Milliseconds() override { return slept; }
  void ShowMessage(std::u16string_view) override {}
};

class FocusBench : public testing::Test {
 protected:
  FocusBench() { focus_.Initialize(kWidth, kHeight); }

  void FeedUntil(const std::function<bool()>& enough) {
    while (!enough()) {
      focus_.OnFrame(lens_.picture.data());
      std::this_thread::yield();
    }
  }

  FreeTime time_;
  ScopedDriverHost host_{time_};
  Lens lens_;
  CAutoFocus focus_{lens_};
};

TEST_F(FocusBench, SingleSearchEndsNearTheSharpestPosition) {
  focus_.SetOperatorBlock(0, 0, kWidth, kHeight);  // up to the last corner, and no byte further
  for (LONG filter : {0, 1, 2}) {
    focus_.SetAutoFocusFilterType(filter);
    focus_.StartAutoFocus();
    FeedUntil([&] { return !focus_.IsRunning(); });
    EXPECT_NEAR(lens_.position, kSharp, 3) << filter;
    EXPECT_EQ(focus_.GetAutoFocusCurPos(), lens_.position);
    EXPECT_GT(focus_.GetAutoFocusLevel(), 30) << filter;
  }
}

TEST_F(FocusBench, AnEmptyRangeKeepsItsPosition) {
  focus_.SetAutoFocusRange(100, 100);
  focus_.StartAutoFocus();
  focus_.StartAutoFocus();  // the second is ignored
  FeedUntil([&] { return lens_.moves >= 5; });
  EXPECT_EQ(focus_.GetAutoFocusCurPos(), 100);
  focus_.StopAutoFocus();
  EXPECT_EQ(lens_.position, 100);
  EXPECT_EQ(lens_.secondMoveMs, 330u);  // from 40 to 100 at 4 ms each, and 90 ms of rest
}

TEST_F(FocusBench, BlocksLieOnePixelToTheRight) {
  focus_.SetAutoFocusRange(kSharp, kSharp);
  for (const auto& [x, hasEdge] : {std::pair{2, false}, {1, true}}) {  // stripes are four pixels wide
    focus_.SetOperatorBlock(x, 0, 6, 20);
    focus_.StartAutoFocus();
    FeedUntil([&, last = lens_.moves + 3] { return lens_.moves >= last; });
    focus_.StopAutoFocus();
    EXPECT_EQ(focus_.GetAutoFocusLevel() > 0, hasEdge);
  }
}

// The grey of a coloured block one pixel to the right of its place, its sharpness in percent of the
// threshold.
TEST_F(FocusBench, TheLevelIsExact) {
  constexpr LONG kLeft = 28, kTop = 20, kSide = 20;  // the block ends with the picture
  Bytes picture(std::size_t{kWidth} * kHeight * 4);
  for (std::size_t i = 0; i < picture.size(); ++i) {
    // Squares of 4 x 4 pixels, which the median leaves, each colour by itself; the fourth byte is no colour.
    const std::size_t square = i / 16 % 12 + i / (4 * kWidth * 4) * 12;
    picture[i] = static_cast<std::uint8_t>((square + 3) * (i % 4 + 5) * 37);
  }
  Block grey;
  for (LONG row = kTop; row < kTop + kSide; ++row) {
    for (LONG column = kLeft + 1; column < kLeft + 1 + kSide; ++column) {
      // Right of a row comes the next one, and the last pixel again.
      const std::uint8_t* p =
          &picture[std::size_t(std::min(row * kWidth + column, kWidth * kHeight - 1)) * 4];
      grey.push_back((117u * p[0] + 601u * p[1] + 306u * p[2]) >> 10);
    }
  }
  Block scratch(grey.size());
  MedianFilter(grey, scratch, kSide, kSide);
  focus_.SetOperatorBlock(kLeft, kTop, kSide, kSide);
  focus_.SetAutoFocusRange(kSharp, kSharp);
  GuardedBytes guarded(picture);
  for (const LONG filter : {0, 1, 2}) {
    const LONG expected = FocusValue(grey, kSide, kSide, static_cast<FocusFilter>(filter)) * 100 /
                          FocusThreshold(grey, kSide, kSide);
    ASSERT_GT(expected, 10);
    focus_.SetAutoFocusFilterType(filter);
    focus_.StartAutoFocus();
    for (const LONG last = lens_.moves + 3; lens_.moves < last; std::this_thread::yield())
      focus_.OnFrame(guarded.data());
    focus_.StopAutoFocus();
    EXPECT_EQ(focus_.GetAutoFocusLevel(), expected) << filter;
  }
}

TEST_F(FocusBench, StopsWithoutFramesAndWithBlocksOutsideThePicture) {
  const LONG blocks[][4] = {{0, 0, 20, 20},  {-1, 0, 20, 20}, {30, 0, 20, 20},
                            {0, 21, 20, 20}, {0, 0, 0, 20},   {2147483647, 0, 2147483647, 20}};
  for (const auto& [x, y, width, height] : blocks) {
    focus_.SetOperatorBlock(x, y, width, height);
    const LONG moves = lens_.moves;
    focus_.StartAutoFocus();
    if (&x != &blocks[0][0]) {
      for (int i = 0; i < 100 || lens_.moves == moves; ++i) focus_.OnFrame(lens_.picture.data());
    }
    EXPECT_EQ(focus_.GetAutoFocusLevel(), 0);
    focus_.StopAutoFocus();
    EXPECT_EQ(lens_.position, kParked) << "back where the lens was";
  }
  focus_.SetAutoFocusMode(1);
  focus_.StartAutoFocus();  // and destroyed while it runs
}

TEST_F(FocusBench, FramesMayComeWhileItStopsAndStarts) {
  focus_.SetAutoFocusMode(1);
  std::atomic<bool> enough = false;
  std::thread frames([&] { FeedUntil([&] { return enough.load(); }); });
  for (int i = 0; i < 200; ++i) {
    focus_.StartAutoFocus();
    if (i % 3 == 0) std::this_thread::yield();
    focus_.StopAutoFocus();
  }
  enough = true;
  frames.join();
  EXPECT_FALSE(focus_.IsRunning());
}

}  // namespace
}  // namespace zel
