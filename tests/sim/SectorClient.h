#pragma once

#include "UsbClient.h"

namespace zel {

/// A program that speaks with a simulated camera that looks like a disk or a volume.
class SectorClient {
 public:
  SectorClient(SimDriverHost& host, std::u16string path) {
    DriverError error{};
    handle_ = host.Open({std::move(path), kAccessRead | kAccessWrite, kShareRead | kShareWrite, 0}, &error);
  }

  DriverResult TryRead(std::uint64_t position, std::size_t size) {
    last_.assign(size, 0xEE);
    (void)handle_->Seek(position);
    return handle_->Read(last_);
  }
  /// Empty when it failed.
  Bytes Read(std::uint64_t position, std::size_t size) {
    return TryRead(position, size).ok ? last_ : Bytes();
  }
  /// Zeros are added up to a whole sector.
  bool Write(std::uint64_t position, Bytes bytes) {
    bytes.resize(std::max<std::size_t>(bytes.size(), 512));
    (void)handle_->Seek(position);
    const DriverResult result = handle_->Write(bytes);
    return result.ok && result.bytes == bytes.size();
  }

 private:
  std::unique_ptr<DriverHandle> handle_;
  Bytes last_;
};

}  // namespace zel
