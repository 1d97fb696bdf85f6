#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/ComponentTypes.h"

namespace zel {

constexpr std::size_t kFrameHeaderBytes = 64;

/// The packet that FX3 cameras send before every picture.
struct FrameHeader {
  std::uint8_t kind = 0;                ///< 0 normal, 1 the second kind
  std::uint32_t imageBytes = 0;         ///< that follow
  std::array<std::uint32_t, 2> info{};  ///< sent along; nothing here depends on them

  static FrameHeader From(std::span<const std::uint8_t, kFrameHeaderBytes> bytes);
};

/// The kind of the frame that any camera of this process delivered last; 0 at first. Any thread.
std::uint8_t LastFrameKind();
void NoteFrameKind(std::uint8_t kind);

/// The device event that announces frames of a kind; 0 for kinds that are not announced.
LONG FrameEventOf(std::uint8_t kind);

}  // namespace zel
