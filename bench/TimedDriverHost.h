#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

#include "platform/PassingDriverHost.h"

namespace zel::bench {

/// True on a thread that is inside a driver call: what happens then is not the library's.
inline thread_local bool insideDriver = false;

/// Passes every call on and adds up the time that passes in them.
class TimedDriverHost : public PassingDriverHost {
 public:
  using Clock = std::chrono::steady_clock;
  using PassingDriverHost::PassingDriverHost;

  /// Nanoseconds in driver calls so far, of all threads.
  std::int64_t Nanoseconds() const { return spent_; }
  /// When the last large transfer, a picture, had arrived.
  Clock::time_point PictureArrived() const { return Clock::time_point(Clock::duration(arrived_.load())); }

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    return Timed([&]() -> std::unique_ptr<DriverHandle> {
      auto opened = PassingDriverHost::Open(request, error);
      return opened ? std::make_unique<Handle>(*this, std::move(opened)) : nullptr;
    });
  }
  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override {
    return Timed([&] { return PassingDriverHost::InterfacePath(interfaceClass, index); });
  }
  void Sleep(std::uint32_t milliseconds) override {
    Timed([&] { PassingDriverHost::Sleep(milliseconds); });
  }

 private:
  static constexpr std::size_t kPictureBytes = 2048;

  class Transfer : public PendingControl {
   public:
    Transfer(TimedDriverHost& host, std::unique_ptr<PendingControl> next)
        : host_(host), next_(std::move(next)) {}
    ~Transfer() override {
      host_.Timed([this] { next_.reset(); });
    }
    Waited Wait(std::uint32_t milliseconds) override {
      return host_.Timed([&] { return next_->Wait(milliseconds); });
    }
    DriverResult Finish() override {
      return host_.Moved(host_.Timed([this] { return next_->Finish(); }));
    }
    void Cancel() override {
      host_.Timed([this] { next_->Cancel(); });
    }

   private:
    TimedDriverHost& host_;
    std::unique_ptr<PendingControl> next_;
  };

  class Handle : public DriverHandle {
   public:
    Handle(TimedDriverHost& host, std::unique_ptr<DriverHandle> next) : host_(host), next_(std::move(next)) {}
    ~Handle() override {
      host_.Timed([this] { next_.reset(); });
    }
    DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                         std::span<std::uint8_t> out) override {
      return host_.Moved(host_.Timed([&] { return next_->Control(code, in, out); }));
    }
    std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                                 std::span<std::uint8_t> out, DriverError* error) override {
      return host_.Timed([&]() -> std::unique_ptr<PendingControl> {
        auto begun = next_->BeginControl(code, in, out, error);
        return begun ? std::make_unique<Transfer>(host_, std::move(begun)) : nullptr;
      });
    }
    DriverResult Seek(std::uint64_t position) override {
      return host_.Timed([&] { return next_->Seek(position); });
    }
    DriverResult Read(std::span<std::uint8_t> out) override {
      return host_.Moved(host_.Timed([&] { return next_->Read(out); }));
    }
    DriverResult Write(std::span<const std::uint8_t> in) override {
      return host_.Timed([&] { return next_->Write(in); });
    }

   private:
    TimedDriverHost& host_;
    std::unique_ptr<DriverHandle> next_;
  };

  template <class Call>
  std::invoke_result_t<Call> Timed(Call call) {
    struct Scope {
      explicit Scope(std::atomic<std::int64_t>& spent) : spent_(spent) { insideDriver = true; }
      ~Scope() {
        insideDriver = false;
        spent_ += std::chrono::nanoseconds(Clock::now() - start_).count();
      }
      std::atomic<std::int64_t>& spent_;
      const Clock::time_point start_ = Clock::now();
    } const scope(spent_);
    return call();
  }
  DriverResult Moved(DriverResult result) {
    if (result.ok && result.bytes >= kPictureBytes) arrived_ = Clock::now().time_since_epoch().count();
    return result;
  }

  std::atomic<std::int64_t> spent_ = 0;
  std::atomic<Clock::rep> arrived_ = 0;
};

}  // namespace zel::bench
