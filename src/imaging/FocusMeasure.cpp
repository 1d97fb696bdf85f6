#include "imaging/FocusMeasure.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <vector>

namespace zel {

namespace {

constexpr std::size_t kStrongest = 9;  // responses that make the focus value
constexpr std::int32_t kFineStep = 4;

FocusRows RowsAround(std::span<const std::uint32_t> block, int width, int row) {
  const std::uint32_t* const middle = block.data() + static_cast<std::ptrdiff_t>(row) * width;
  return {middle - width, middle, middle + width, width};
}

/// Runs `visit(values, count)` over the rows and columns that leave `edge` out on every side.
template <class Visit>
void EachInnerRow(std::span<const std::uint32_t> block, int width, int height, int edge, Visit visit) {
  if (width <= 2 * edge) return;
  for (int row = edge; row < height - edge; ++row)
    visit(block.data() + static_cast<std::ptrdiff_t>(row) * width + edge, width - 2 * edge);
}

std::int32_t Mean(std::span<const std::uint32_t> block) {
  if (block.empty()) return 0;
  constexpr std::int32_t kBelowAll = -1;
  const GreySums all = SumOfGreater(block.data(), static_cast<int>(block.size()), kBelowAll);
  return static_cast<std::int32_t>(all.sum / all.count);
}

// The nine largest of a stream of values that are not negative.
class Strongest {
 public:
  void Add(std::int32_t value) {
    if (value <= kept_.back()) return;
    auto place = std::upper_bound(kept_.begin(), kept_.end(), value, std::greater<>());
    std::move_backward(place, kept_.end() - 1, kept_.end());
    *place = value;
  }
  /// What a value must exceed to count.
  std::int32_t Least() const { return kept_.back(); }
  std::int32_t Mean() const {
    std::int32_t sum = 0;
    for (const std::int32_t value : kept_) sum += value;
    return sum / static_cast<std::int32_t>(kStrongest);
  }

 private:
  std::array<std::int32_t, kStrongest> kept_{};  // falling
};

}  // namespace

void MedianFilter(std::span<std::uint32_t> block, std::span<std::uint32_t> scratch, int width, int height) {
  std::copy(block.begin(), block.end(), scratch.begin());
  for (int row = 1; row < height - 1; ++row)
    MedianOfRows(RowsAround(scratch, width, row), block.data() + static_cast<std::ptrdiff_t>(row) * width);
}

std::int32_t FocusThreshold(std::span<const std::uint32_t> block, int width, int height) {
  std::int32_t brightest = 0;
  EachInnerRow(block, width, height, 2, [&](const std::uint32_t* values, int count) {
    brightest = std::max(brightest, LargestOf(reinterpret_cast<const std::int32_t*>(values), count));
  });
  GreySums bright;
  EachInnerRow(block, width, height, 1, [&](const std::uint32_t* values, int count) {
    const GreySums row = SumOfGreater(values, count, brightest / 4);
    bright.sum += row.sum;
    bright.count += row.count;
  });
  // One more than the count, so that a black block is no division by zero.
  const auto mean = static_cast<std::int32_t>(bright.sum / (bright.count + 1));
  return 3 * std::clamp(mean, 35, 250) - 82;
}

std::int32_t FocusValue(std::span<const std::uint32_t> block, int width, int height, FocusFilter filter) {
  if (width <= 4) return 0;
  const std::int32_t mean = filter == FocusFilter::Deviation ? Mean(block) : 0;
  std::vector<std::int32_t> responses(static_cast<std::size_t>(width));
  const std::span<const std::int32_t> inner(responses.data() + 2, static_cast<std::size_t>(width - 4));
  Strongest strongest;
  for (int row = 2; row < height - 2; ++row) {
    FocusResponses(RowsAround(block, width, row), filter, mean, responses.data());
    // Few rows have any of the strongest.
    if (LargestOf(inner.data(), width - 4) <= strongest.Least()) continue;
    for (const std::int32_t response : inner) strongest.Add(response);
  }
  return strongest.Mean();
}

bool FocusSearch::Advance(std::int32_t value, std::int32_t threshold) {
  if (value < bestValue) {
    if (step != kCoarseStep) {
      direction = current <= bestPosition ? 1 : -1;
      if (step > 1) step /= 2;
    } else if (bestValue - value > value / 4) {
      step = kFineStep;
      direction = -direction;
    }
    const std::int32_t level = value * 100 / threshold;
    if (continuous && step == 1 && level < (threshold < 140 ? 8 : 14)) step = kCoarseStep;
    // Without a record to beat the climb goes on from wherever it is next.
    bestValue = 0;
  } else {
    if (step == kCoarseStep && bestValue != 0 && value - bestValue > bestValue / 4) step = kFineStep;
    bestValue = value;
    bestPosition = current;
  }

  const std::int64_t next = std::int64_t{bestPosition} + step * direction;
  if (next < minimum) {
    current = minimum;
    direction = 1;
  } else if (next > maximum) {
    current = maximum;
    direction = -1;
  } else {
    current = static_cast<std::int32_t>(next);
  }

  constexpr std::int32_t kFineRounds = 5;
  return !continuous && step == 1 && ++fineRounds >= kFineRounds;
}

}  // namespace zel
