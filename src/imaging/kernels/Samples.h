#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Two-byte little-endian samples of ten bits to their top eight bits. `packed` may be where `samples` is.
void PackTenBit(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed);

/// Two-byte samples to their low bytes. `packed` may be where `samples` is.
void PackLowByte(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed);

/// Replaces every sample through a table of 256.
void ApplyTable(std::uint8_t* samples, std::size_t count, const std::uint8_t* table);

/// Sorts a row that a sensor read through two outputs, from both ends towards the middle: of each pair the
/// first sample belongs to the left half, the second, mirrored, to the right half. An odd middle column keeps
/// its sample. `scratch` has room for the row.
void SortTwoTapRow(std::uint8_t* row, std::size_t samples, std::size_t sampleBytes, std::uint8_t* scratch);

}  // namespace zel
