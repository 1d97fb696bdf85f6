#include "imaging/kernels/Samples.h"

#include <algorithm>
#include <cstring>

namespace zel {
namespace {

template <class Pack>
void PackInPieces(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed, Pack pack) {
  // Through a small buffer, because a loop whose output may overlap its input cannot be vectorised.
  std::uint8_t piece[1024];
  for (std::size_t done = 0; done < count; done += sizeof(piece)) {
    const std::size_t length = std::min(sizeof(piece), count - done);
    const std::uint8_t* in = samples + 2 * done;
    for (std::size_t i = 0; i < length; ++i) piece[i] = pack(in[2 * i], in[2 * i + 1]);
    std::memcpy(packed + done, piece, length);
  }
}

template <class Sample>
void SortTwoTaps(std::uint8_t* row, std::size_t samples, std::uint8_t* scratch) {
  const auto copy = [&](std::size_t to, std::size_t from) {
    std::memcpy(scratch + to * sizeof(Sample), row + from * sizeof(Sample), sizeof(Sample));
  };
  const std::size_t pairs = samples / 2;
  if (samples % 2 != 0) copy(pairs, pairs);
  for (std::size_t i = 0; i < pairs; ++i) {
    copy(i, 2 * i);
    copy(samples - 1 - i, 2 * i + 1);
  }
  std::memcpy(row, scratch, samples * sizeof(Sample));
}

}  // namespace

void PackTenBit(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed) {
  PackInPieces(samples, count, packed, [](std::uint8_t low, std::uint8_t high) {
    return static_cast<std::uint8_t>((low >> 2) | (high << 6));
  });
}

void PackLowByte(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed) {
  PackInPieces(samples, count, packed, [](std::uint8_t low, std::uint8_t) { return low; });
}

void ApplyTable(std::uint8_t* samples, std::size_t count, const std::uint8_t* table) {
  for (std::size_t i = 0; i < count; ++i) samples[i] = table[samples[i]];
}

void SortTwoTapRow(std::uint8_t* row, std::size_t samples, std::size_t sampleBytes, std::uint8_t* scratch) {
  if (sampleBytes == 2) {
    SortTwoTaps<std::uint16_t>(row, samples, scratch);
  } else {
    SortTwoTaps<std::uint8_t>(row, samples, scratch);
  }
}

}  // namespace zel
