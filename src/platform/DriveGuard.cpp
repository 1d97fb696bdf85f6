#include "platform/DriveGuard.h"

#include <optional>
#include <utility>

namespace zel {
namespace {

class GuardedDrive : public DriverHandle {
 public:
  GuardedDrive(std::unique_ptr<DriverHandle> drive, std::function<std::string()> refusal)
      : drive_(std::move(drive)), ask_(std::move(refusal)) {}

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out) override {
    return drive_->Control(code, in, out);
  }
  std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                               std::span<std::uint8_t> out, DriverError* error) override {
    return drive_->BeginControl(code, in, out, error);
  }
  DriverResult Seek(std::uint64_t position) override { return drive_->Seek(position); }
  DriverResult Read(std::span<std::uint8_t> out) override { return drive_->Read(out); }

  DriverResult Write(std::span<const std::uint8_t> in) override {
    if (!refusal_) refusal_ = ask_();
    return refusal_->empty() ? drive_->Write(in) : DriverResult::Failed(DriverError::WriteProtect);
  }

  std::string WriteRefusal() const override { return refusal_.value_or(""); }

 private:
  const std::unique_ptr<DriverHandle> drive_;
  const std::function<std::string()> ask_;
  std::optional<std::string> refusal_;  ///< nothing: not asked yet
};

std::string Joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all.append(all.empty() ? "" : " and ").append(text);
  return all;
}

}  // namespace

std::string WriteRefusalOf(const DriveContents& contents, const DrivePermission& permission) {
  constexpr const char* kNothing = ": nothing is written to it";
  if (contents.runsSystem) return permission.drive + " is part of the running system" + kNothing;
  if (permission.given) return {};
  std::string why = Joined(contents.signs);
  if (why.empty() && !contents.unreadable.empty()) why = "can't be examined (" + contents.unreadable + ")";
  if (why.empty()) return {};
  return permission.drive + ' ' + why + kNothing + "; " + permission.setting + " allows it";
}

std::unique_ptr<DriverHandle> GuardWrites(std::unique_ptr<DriverHandle> drive,
                                          std::function<std::string()> refusal) {
  return std::make_unique<GuardedDrive>(std::move(drive), std::move(refusal));
}

}  // namespace zel
