#include "transport/usb3t2/FrameHeader.h"

#include <atomic>

#include "common/BytePacking.h"
#include "device/CZELObserver.h"

namespace zel {
namespace {

// One for the process: whoever processes a frame sees the kind of the one read last, by whichever camera.
std::atomic<std::uint8_t> g_lastFrameKind{0};

}  // namespace

FrameHeader FrameHeader::From(std::span<const std::uint8_t, kFrameHeaderBytes> bytes) {
  return {.kind = bytes[0],
          .imageBytes = LoadLittle32(&bytes[16]),
          .info = {LoadLittle32(&bytes[20]), LoadLittle32(&bytes[24])}};
}

std::uint8_t LastFrameKind() {
  return g_lastFrameKind.load(std::memory_order_relaxed);
}

void NoteFrameKind(std::uint8_t kind) {
  if (LastFrameKind() != kind) g_lastFrameKind.store(kind, std::memory_order_relaxed);
}

LONG FrameEventOf(std::uint8_t kind) {
  switch (kind) {
    case 0:
      return kEventFrameProcessed;
    case 1:
      return kEventSecondFrameKind;
    default:
      return 0;
  }
}

}  // namespace zel
