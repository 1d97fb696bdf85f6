#include "sim/SectorWire.h"

#include <cinttypes>
#include <cstdio>

namespace zel {

class SectorWire::Handle : public SimHandle {
 public:
  explicit Handle(std::shared_ptr<SectorWire> wire) : SimHandle(wire), wire_(std::move(wire)) {}

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t>, std::span<std::uint8_t>) override {
    return wire_->Refuse(DriverError::NotSupported, "control code " + Hex(code) + " to a disk");
  }
  std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t>,
                                               std::span<std::uint8_t>, DriverError* error) override {
    *error = Control(code, {}, {}).error;
    return nullptr;
  }
  DriverResult Seek(std::uint64_t position) override {
    if (wire_->Camera().IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
    position_ = position;
    return DriverResult::Done(0);
  }
  DriverResult Read(std::span<std::uint8_t> out) override {
    if (wire_->Camera().IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
    return Advance(wire_->ReadAt(position_, out));
  }
  DriverResult Write(std::span<const std::uint8_t> in) override {
    if (wire_->Camera().IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
    return Advance(wire_->WriteAt(position_, in));
  }

 private:
  DriverResult Advance(const DriverResult& result) {
    position_ += result.bytes;
    return result;
  }

  std::shared_ptr<SectorWire> wire_;
  std::uint64_t position_ = 0;
};

std::unique_ptr<DriverHandle> SectorWire::Open(const OpenRequest& request, DriverError* error) {
  if (request.access != (kAccessRead | kAccessWrite) || !AllowsShare(request.share) || request.flags != 0) {
    *error = Refuse(DriverError::AccessDenied, "open: access " + Hex(request.access) + ", share " +
                                                   Hex(request.share) + ", flags " + Hex(request.flags))
                 .error;
    return nullptr;
  }
  *error = DriverError::None;
  return std::make_unique<Handle>(std::static_pointer_cast<SectorWire>(shared_from_this()));
}

DriverResult SectorWire::Refuse(DriverError error, const std::string& what) {
  Camera().NoteProtocolError(what);
  return DriverResult::Failed(error);
}

std::string SectorWire::Hex(std::uint64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%02" PRIX64, value);
  return text;
}

}  // namespace zel
