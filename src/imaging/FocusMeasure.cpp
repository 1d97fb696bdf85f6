#include "imaging/FocusMeasure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>

namespace zel {

namespace {

constexpr std::size_t kStrongest = 9;  // responses that make the focus value
constexpr std::int32_t kFineStep = 4;

std::int32_t At(std::span<const std::uint32_t> block, int width, int row, int column) {
  return static_cast<std::int32_t>(block[static_cast<std::size_t>(row) * width + column]);
}

std::int32_t Mean(std::span<const std::uint32_t> block) {
  std::uint64_t sum = 0;
  for (const std::uint32_t value : block) sum += value;
  return block.empty() ? 0 : static_cast<std::int32_t>(sum / block.size());
}

// p is the value in the middle, w the width of the block.
std::int32_t Sobel(const std::uint32_t* p, std::ptrdiff_t w) {
  const auto v = [p](std::ptrdiff_t offset) { return static_cast<std::int32_t>(p[offset]); };
  const std::int32_t gx = v(-w + 1) + 2 * v(1) + v(w + 1) - v(-w - 1) - 2 * v(-1) - v(w - 1);
  const std::int32_t gy = v(w - 1) + 2 * v(w) + v(w + 1) - v(-w - 1) - 2 * v(-w) - v(-w + 1);
  return static_cast<std::int32_t>(std::floor(std::sqrt(static_cast<double>(gx * gx + gy * gy)) + 0.5));
}

// The 3 x 3 kernel 1 4 1, 4 -20 4, 1 4 1 with what belongs to the right column taken from the middle one. The
// thresholds of the search are tuned to its responses.
std::int32_t LeftLaplacian(const std::uint32_t* p, std::ptrdiff_t w) {
  const auto v = [p](std::ptrdiff_t offset) { return static_cast<std::int32_t>(p[offset]); };
  return std::abs(v(-w - 1) + 4 * v(-w) + v(-w) + 4 * v(-1) - 20 * v(0) + 4 * v(0) + v(w - 1) + 4 * v(w) +
                  v(w));
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
  const std::ptrdiff_t w = width;
  for (int row = 1; row < height - 1; ++row) {
    for (int column = 1; column < width - 1; ++column) {
      const std::uint32_t* p = scratch.data() + row * w + column;
      std::array<std::uint32_t, 9> near = {p[-w - 1], p[-w],    p[-w + 1], p[-1],   p[0],
                                           p[1],      p[w - 1], p[w],      p[w + 1]};
      std::nth_element(near.begin(), near.begin() + 4, near.end());
      block[static_cast<std::size_t>(row * w + column)] = near[4];
    }
  }
}

std::int32_t FocusThreshold(std::span<const std::uint32_t> block, int width, int height) {
  std::int32_t brightest = 0;
  for (int row = 2; row < height - 2; ++row) {
    for (int column = 2; column < width - 2; ++column)
      brightest = std::max(brightest, At(block, width, row, column));
  }
  std::int64_t sum = 0, count = 0;
  for (int row = 1; row < height - 1; ++row) {
    for (int column = 1; column < width - 1; ++column) {
      const std::int32_t value = At(block, width, row, column);
      if (value <= brightest / 4) continue;
      sum += value;
      ++count;
    }
  }
  // One more than the count, so that a black block is no division by zero.
  const auto mean = static_cast<std::int32_t>(sum / (count + 1));
  return 3 * std::clamp(mean, 35, 250) - 82;
}

std::int32_t FocusValue(std::span<const std::uint32_t> block, int width, int height, FocusFilter filter) {
  const std::int32_t mean = Mean(block);
  Strongest strongest;
  for (int row = 2; row < height - 2; ++row) {
    for (int column = 2; column < width - 2; ++column) {
      const std::uint32_t* p = block.data() + static_cast<std::ptrdiff_t>(row) * width + column;
      switch (filter) {
        case FocusFilter::Sobel:
          strongest.Add(Sobel(p, width));
          break;
        case FocusFilter::Laplacian:
          strongest.Add(LeftLaplacian(p, width));
          break;
        case FocusFilter::Deviation:
          strongest.Add(std::abs(static_cast<std::int32_t>(*p) - mean) * 5);
          break;
      }
    }
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
