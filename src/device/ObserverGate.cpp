#include "device/ObserverGate.h"

namespace zel {

class ObserverGate::CallScope {
 public:
  explicit CallScope(ObserverGate& gate) : gate_(gate) {
    const std::lock_guard guard(gate_.mutex_);
    observer_ = gate_.observer_;
    if (observer_ == nullptr) return;
    call_ = {std::this_thread::get_id(), gate_.calls_};
    gate_.calls_ = &call_;
    gate_.quiet_.Reset();
  }

  ~CallScope() {
    if (observer_ == nullptr) return;
    const std::lock_guard guard(gate_.mutex_);
    Call** link = &gate_.calls_;
    while (*link != &call_) link = &(*link)->next;
    *link = call_.next;
    if (gate_.calls_ == nullptr) gate_.quiet_.Set();
  }

  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  CZELObserver* Observer() const { return observer_; }

 private:
  ObserverGate& gate_;
  CZELObserver* observer_;
  Call call_{};
};

bool ObserverGate::IsInside() const {
  for (const Call* call = calls_; call != nullptr; call = call->next) {
    if (call->thread == std::this_thread::get_id()) return true;
  }
  return false;
}

void ObserverGate::Set(CZELObserver* observer) {
  bool wait = false;
  {
    const std::lock_guard guard(mutex_);
    if (observer_ == observer) return;
    // Detached first: with no new calls the ones under way come to an end.
    observer_ = nullptr;
    wait = calls_ != nullptr && !IsInside();
  }
  if (wait) quiet_.WaitPumping();
  const std::lock_guard guard(mutex_);
  observer_ = observer;
}

bool ObserverGate::Notify(LONG event, void* param, CZELDevice* device) {
  const CallScope scope(*this);
  if (scope.Observer() == nullptr) return false;
  try {
    scope.Observer()->Notify(event, param, device);
  } catch (...) {
    // An observer's trouble must neither end a worker nor leave a state half changed.
  }
  return true;
}

}  // namespace zel
