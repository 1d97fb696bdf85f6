#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "device/CZELDeviceImpl.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "platform/PassingDriverHost.h"
#include "property/CZELDevicePropertyImpl.h"
#include "sim/SimDriverHost.h"

namespace zel::test {

/// Writes down which registers are accessed.
class RegisterLog : public PassingDriverHost {
 public:
  using PassingDriverHost::PassingDriverHost;
  void NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) override {
    char text[40];
    std::snprintf(text, sizeof(text), "%s%s %X=%X", log_.empty() ? "" : "; ",
                  access == RegisterAccess::Read ? "read" : "write", address, value);
    log_ += text;
  }
  void Sleep(std::uint32_t milliseconds) override {
    slept_ += milliseconds;
    PassingDriverHost::Sleep(milliseconds);
  }
  std::string Take() { return std::exchange(log_, {}); }
  std::uint32_t Slept() const { return slept_; }

 private:
  std::atomic<std::uint32_t> slept_ = 0;
  std::string log_;
};

/// A simulated camera of a type, opened; its controller waits in virtual time. At its end nothing of it may
/// be open.
class OpenedCamera {
 public:
  /// At 0 frames per second a frame comes whenever it is read.
  explicit OpenedCamera(LONG type, double framesPerSecond = 0, std::vector<SimFault> faults = {}) {
    SimConfiguration computer;
    computer.faults = std::move(faults);
    const int index = ModelOf(type).family == Family::Sata ? 'E' : 0;
    address_ = {static_cast<int>(type), index};
    computer.cameras = {address_};
    computer.framesPerSecond = framesPerSecond;
    computer.clock = std::make_shared<SimClock>(SimClock::Kind::Virtual);
    std::string error;
    sim_ = SimDriverHost::Create(computer, &error);
    EXPECT_NE(sim_, nullptr) << error;
    log_ = std::make_unique<RegisterLog>(*sim_);
    installed_ = std::make_unique<ScopedDriverHost>(*log_);
    Reopen();
  }

  /// As another program: with a new object. `meanwhile` is what happens to the closed camera before.
  void Reopen(const std::function<void(VirtualCamera&)>& meanwhile = {}) {
    camera_.reset();
    if (meanwhile) meanwhile(*sim_->Camera(address_));
    camera_.reset(CreateDeviceForType(static_cast<std::uint32_t>(address_.type)));
    EXPECT_EQ(camera_->OpenCamera(address_.index), 1);
    log_->Take();
  }
  ~OpenedCamera() {
    camera_.reset();
    EXPECT_EQ(sim_->Handles(address_), 0);
  }

  /// Without workers: frames come when they are read.
  bool Plays() {
    Device().SetBufferSamples(kDeliverOnDemand);
    return Device().Play() == 1;
  }

  /// Plays, reads a frame and stops.
  bool Prepares() {
    if (!Plays()) return false;
    // The first frame that a process reads from a disk-style camera is not shown.
    const bool came = Device().GetData(nullptr, 0) == S_OK || Device().GetData(nullptr, 0) == S_OK;
    return Device().Stop() == 1 && came;
  }

  CZELDeviceImpl& Device() { return dynamic_cast<CZELDeviceImpl&>(*camera_); }
  CZELDevicePropertyImpl& Property() { return Device().PropertyStore(); }
  VirtualCamera& Sensor() { return *sim_->Camera(address_); }
  void Unplug() { Sensor().Unplug(); }
  std::string TakeLog() { return log_->Take(); }
  std::uint32_t SleptMs() const { return log_->Slept(); }
  /// What sensor and controller hold beside zeros; the controller's registers are those from `kFpga` on.
  std::map<std::uint32_t, std::uint32_t> Registers() {
    std::map<std::uint32_t, std::uint32_t> registers;
    const VirtualCamera& sensor = Sensor();
    for (std::uint32_t address = 0; address < kFpga; ++address) {
      if (const std::uint32_t value = sensor.ReadRegister(address); value != 0) registers[address] = value;
    }
    for (LONG address = 0; address < 256; ++address) {
      LONG value = 0;
      Property().GetFpgaRegister(address, &value);
      if (value != 0)
        registers[kFpga + static_cast<std::uint32_t>(address)] = static_cast<std::uint32_t>(value);
    }
    return registers;
  }
  static constexpr std::uint32_t kFpga = 0x10000;
  int Handles() const { return sim_->Handles(address_); }
  std::vector<std::string> ProtocolErrors() { return Sensor().ProtocolErrors(); }

 private:
  SimCameraAddress address_;
  std::unique_ptr<SimDriverHost> sim_;
  std::unique_ptr<RegisterLog> log_;
  std::unique_ptr<ScopedDriverHost> installed_;
  std::unique_ptr<CZELDevice> camera_;
};

}  // namespace zel::test
