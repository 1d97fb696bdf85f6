#include "device/CaptureRun.h"

namespace zel {
namespace {

thread_local RunScope* innermost = nullptr;

}  // namespace

bool CaptureRun::FrameFits(std::size_t headerBytes) const {
  return headerBytes <= buffers.Bytes() && inputBytes <= buffers.Bytes() - headerBytes;
}

RunScope::RunScope(const CZELDevice& device, std::shared_ptr<CaptureRun> run)
    : device_(device), run_(std::move(run)), outer_(innermost) {
  innermost = this;
}

RunScope::~RunScope() {
  innermost = outer_;
}

std::shared_ptr<CaptureRun> RunScope::Of(const CZELDevice& device) {
  for (const RunScope* scope = innermost; scope != nullptr; scope = scope->outer_) {
    if (&scope->device_ == &device) return scope->run_;
  }
  return nullptr;
}

}  // namespace zel
