#include "imaging/CAutoFocus.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "platform/DriverHost.h"

namespace zel {

namespace {

// The lens needs this long to move: per position, and to come to rest.
constexpr std::int64_t kMsPerPosition = 4;
constexpr std::int64_t kRestMs = 90;

// Longest time until a worker that waits notices that it shall stop.
constexpr std::uint32_t kSliceMs = 50;

}  // namespace

CAutoFocus::CAutoFocus(FocusDrive& drive) : drive_(drive) {}

CAutoFocus::~CAutoFocus() {
  StopAutoFocus();
}

void CAutoFocus::Initialize(LONG pitchPixels, LONG imageHeight) {
  const std::lock_guard lock(settings_);
  pitchPixels_ = pitchPixels;
  imageHeight_ = imageHeight;
}

void CAutoFocus::SetAutoFocusFilterType(LONG type) {
  const std::lock_guard lock(settings_);
  filterType_ = type;
}

void CAutoFocus::SetAutoFocusRange(LONG minimum, LONG maximum) {
  const std::lock_guard lock(settings_);
  search_.minimum = minimum;
  search_.maximum = maximum;
}

void CAutoFocus::SetAutoFocusCurPos(LONG position) {
  {
    const std::lock_guard lock(settings_);
    search_.current = position;
  }
  drive_.WriteFocusPosition(position);
}

LONG CAutoFocus::GetAutoFocusCurPos() const {
  const std::lock_guard lock(settings_);
  return search_.current;
}

void CAutoFocus::SetOperatorBlock(LONG x, LONG y, LONG width, LONG height) {
  const std::lock_guard lock(settings_);
  block_ = {x, y, width, height};
}

LONG CAutoFocus::GetAutoFocusLevel() const {
  const std::lock_guard lock(settings_);
  return level_;
}

void CAutoFocus::SetAutoFocusMode(LONG mode) {
  const std::lock_guard lock(settings_);
  search_.continuous = mode != 0;
}

void CAutoFocus::StartAutoFocus() {
  const std::lock_guard lifecycle(lifecycle_);
  if (running_) return;
  worker_.reset();  // of a search that ended by itself
  const LONG position = drive_.ReadFocusPosition();
  {
    const std::lock_guard lock(settings_);
    FocusSearch fresh;
    fresh.minimum = search_.minimum;
    fresh.maximum = search_.maximum;
    fresh.continuous = search_.continuous;
    fresh.current = search_.minimum;
    fresh.bestPosition = position;  // where a search that sees no frame leaves the lens
    search_ = fresh;
    lastWritten_ = position;
  }
  running_ = true;
  try {
    worker_ = std::make_unique<Worker>([this] { Run(); });
  } catch (...) {
    running_ = false;
    throw;
  }
}

void CAutoFocus::StopAutoFocus() {
  running_ = false;
  const std::lock_guard lifecycle(lifecycle_);
  running_ = false;  // again, for a start that came in between
  worker_.reset();
}

// False without memory: the request must never get lost, the worker waits for its answer.
bool CAutoFocus::HoldBlock(const Block& block) {
  try {
    grey_.resize(static_cast<std::size_t>(block.width) * static_cast<std::size_t>(block.height));
  } catch (const std::bad_alloc&) {
    return false;
  }
  blockWidth_ = block.width;
  blockHeight_ = block.height;
  return true;
}

void CAutoFocus::OnFrame(const unsigned char* image) {
  if (!request_.Acquire(0)) return;
  Block block;
  std::int64_t pitch, rows;
  {
    const std::lock_guard lock(settings_);
    block = block_;
    pitch = pitchPixels_;
    rows = imageHeight_;
  }
  const bool isInside = image != nullptr && block.x >= 0 && block.y >= 0 && block.width > 0 &&
                        block.height > 0 && std::int64_t{block.x} + block.width <= pitch &&
                        std::int64_t{block.y} + block.height <= rows;
  if (!isInside || !HoldBlock(block)) {
    request_.Release();  // for a later frame, when block, picture or memory may have changed
    return;
  }
  const std::int64_t pixels = pitch * rows;
  std::uint32_t* grey = grey_.data();
  for (std::int64_t row = 0; row < block.height; ++row, grey += block.width) {
    // Blocks are taken one pixel to the right of where they are set. Only at the picture's last corner there
    // is none; the last pixel stands in for it.
    const std::int64_t first = (block.y + row) * pitch + block.x + 1;
    const auto count = static_cast<int>(std::min<std::int64_t>(block.width, pixels - first));
    GreyOfPixels(image + first * 4, count, grey);
    if (count < block.width) GreyOfPixels(image + (pixels - 1) * 4, 1, grey + count);
  }
  blockReady_.Release();
}

void CAutoFocus::Run() {
  try {
    while (running_) {
      Settle();
      if (!FetchBlock()) break;
      if (Evaluate()) break;
    }
  } catch (const std::bad_alloc&) {
    // No memory to evaluate a block: the search ends where it was best.
  }
  LONG best;
  {
    const std::lock_guard lock(settings_);
    best = search_.current = search_.bestPosition;
  }
  drive_.WriteFocusPosition(best);
  running_ = false;
}

// Moves the lens to the position to try and waits until it is there.
void CAutoFocus::Settle() {
  LONG position;
  std::int64_t wait;
  {
    const std::lock_guard lock(settings_);
    position = search_.current;
    wait = std::abs(std::int64_t{position} - lastWritten_) * kMsPerPosition + kRestMs;
    lastWritten_ = position;
  }
  drive_.WriteFocusPosition(position);
  while (wait > 0 && running_) {
    const auto slice = static_cast<std::uint32_t>(std::min<std::int64_t>(wait, kSliceMs));
    CurrentDriverHost().Sleep(slice);
    wait -= slice;
  }
}

// Has the frame thread copy a block. False when the search is stopped meanwhile; nothing is in flight then.
bool CAutoFocus::FetchBlock() {
  request_.Release();
  while (running_) {
    if (blockReady_.Acquire(kSliceMs)) return true;
  }
  while (!request_.Acquire(0)) {
    // A frame has taken the request and is about to answer it, or to give it back.
    if (blockReady_.Acquire(1)) break;
  }
  return false;
}

// True when the search is done.
bool CAutoFocus::Evaluate() {
  LONG type;
  {
    const std::lock_guard lock(settings_);
    type = filterType_;
  }
  scratch_.resize(grey_.size());
  MedianFilter(grey_, scratch_, blockWidth_, blockHeight_);
  const std::int32_t threshold = FocusThreshold(grey_, blockWidth_, blockHeight_);
  const std::int32_t value = FocusValue(grey_, blockWidth_, blockHeight_, static_cast<FocusFilter>(type));
  const std::lock_guard lock(settings_);
  level_ = value * 100 / threshold;
  return search_.Advance(value, threshold);
}

}  // namespace zel
