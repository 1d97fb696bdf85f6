#pragma once

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <umockdev.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace zel::test {

using Bytes = std::vector<std::uint8_t>;

inline std::string Hex(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes)
    (text += "0123456789abcdef"[byte >> 4]) += "0123456789abcdef"[byte & 15];
  return text;
}

/// A device on bus 1 that answers the kernel's USB calls; unplugged when it goes. Handles on it must be
/// closed before. Any thread.
class EmulatedUsbDevice {
 public:
  EmulatedUsbDevice(const std::string& location, std::uint16_t vendor, std::uint16_t product,
                    const Bytes& bulkEndpoints)
      : number_(AddToBus(location, vendor, product, bulkEndpoints)),
        syspath_("/sys/devices/usb1/" + location) {
    g_signal_connect(handler_, "handle-ioctl", G_CALLBACK(OnIoctl), this);
    umockdev_testbed_attach_ioctl(Testbed(), Node(number_).c_str(), handler_, nullptr);
    umockdev_testbed_uevent(Testbed(), syspath_.c_str(), "add");
  }
  virtual ~EmulatedUsbDevice() {
    Unplug();
    umockdev_testbed_detach_ioctl(Testbed(), Node(number_).c_str(), nullptr);
    g_object_unref(handler_);
  }

  /// Who reads the endpoint next gets this in one go; endpoint 0 answers control requests.
  void Send(std::uint8_t endpoint, Bytes data) { Push(endpoint, {std::move(data), false}); }
  void Stall(std::uint8_t endpoint) { Push(endpoint, {{}, true}); }

  void Unplug() {
    {
      const std::lock_guard lock(mutex_);
      if (std::exchange(isGone_, true)) return;
      // As in the kernel: what was under way can still be fetched, all else is refused.
      for (Urb& urb : urbs_) urb.Finish(-ESHUTDOWN);
    }
    umockdev_testbed_uevent(Testbed(), syspath_.c_str(), "remove");
    umockdev_testbed_remove_device(Testbed(), syspath_.c_str());
  }

  /// What happened, separated by "; ": "02: 0409" for data to an endpoint and "4030030040004000: 6c" for a
  /// control request, up to their last byte that is not zero; "clear 88", "claim", "release", "reset".
  std::string TakeLog() {
    const std::lock_guard lock(mutex_);
    return std::exchange(log_, {});
  }
  /// Transfers: now, and the most at once.
  std::pair<std::size_t, std::size_t> UnderWay() {
    const std::lock_guard lock(mutex_);
    return {urbs_.size(), mostUnderWay_};
  }

  std::atomic<int> claimError = 0;  ///< errno

 protected:
  // What a device does by itself; on the kernel's thread. Answers go by `Send` and `Stall`.
  virtual void OnData(std::uint8_t /*endpoint*/, const Bytes& /*data*/) {}
  virtual void OnControl(const Bytes& /*setup*/, const Bytes& /*data*/) {}
  virtual void OnReset() {}

 private:
  struct Answer {
    Bytes data;
    bool isStall = false;
  };
  struct Urb {
    UMockdevIoctlData *data, *buffer;
    bool isDone = false;

    usbdevfs_urb& Fields() const { return *reinterpret_cast<usbdevfs_urb*>(data->data); }
    void Finish(int status, std::size_t moved = 0) {
      if (std::exchange(isDone, true)) return;
      Fields().status = status;
      Fields().actual_length = static_cast<int>(moved);
    }
  };

  /// One for the whole program: libusb keeps looking at the first that it has seen.
  static UMockdevTestbed* Testbed() {
    static UMockdevTestbed* const testbed = umockdev_testbed_new();
    return testbed;
  }
  static std::string Node(int number) {
    return std::string("/dev/bus/usb/001/0") + static_cast<char>('0' + number / 10 % 10) +
           static_cast<char>('0' + number % 10);
  }

  /// Shows the device with one configuration of one vendor interface. The first one brings the root hub.
  static int AddToBus(const std::string& location, unsigned vendor, unsigned product,
                      const Bytes& endpoints) {
    static int devices = 0;
    if (devices == 0 && std::exchange(devices, 1) == 0) AddToBus("", 0x1D6B, 2, {});
    const int number = location.empty() ? 1 : ++devices;
    const auto byte = [](std::size_t value) { return static_cast<std::uint8_t>(value); };
    Bytes descriptors{18,
                      1,
                      0,
                      2,
                      0,
                      0,
                      0,
                      64,
                      byte(vendor),
                      byte(vendor >> 8),
                      byte(product),
                      byte(product >> 8),
                      0,
                      1,
                      0,
                      0,
                      0,
                      1,
                      9,
                      2,
                      byte(18 + 7 * endpoints.size()),
                      0,
                      1,
                      1,
                      0,
                      0x80,
                      50,
                      9,
                      4,
                      0,
                      0,
                      byte(endpoints.size()),
                      0xFF,
                      0,
                      0,
                      0};
    for (const std::uint8_t endpoint : endpoints)
      descriptors.insert(descriptors.end(), {7, 5, endpoint, 2, 0, 2, 0});
    const std::string text = std::to_string(number), node = Node(number);
    const std::string entry =
        "P: /devices/usb1" + (location.empty() ? "" : "/" + location) + "\nN: " + node.substr(5) +
        "\nE: DEVNAME=" + node + "\nE: DEVTYPE=usb_device\nE: SUBSYSTEM=usb\nE: BUSNUM=001\nE: DEVNUM=" +
        node.substr(node.size() - 3) + "\nA: busnum=1\\n\nA: devnum=" + text +
        "\\n\nA: bConfigurationValue=1\\n\nA: speed=480\\n\nH: descriptors=" + Hex(descriptors) + "\n\n";
    if (umockdev_testbed_add_from_string(Testbed(), entry.c_str(), nullptr)) return number;
    std::fprintf(stderr, "no emulated devices; is LD_PRELOAD=libumockdev-preload.so.0 set?\n");
    std::abort();
  }

  static gboolean OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, void* self) {
    auto& device = *static_cast<EmulatedUsbDevice*>(self);
    const std::lock_guard lock(device.mutex_);
    const int error =
        device.Handle(umockdev_ioctl_client_get_request(client), umockdev_ioctl_client_get_arg(client));
    umockdev_ioctl_client_complete(client, error == 0 ? 0 : -1, error);
    return TRUE;
  }

  /// The errno of a kernel call.
  int Handle(unsigned long request, UMockdevIoctlData* argument) {
    if (request == USBDEVFS_REAPURBNDELAY) return Reap(argument);
    if (isGone_) return ENODEV;
    switch (request) {
      case USBDEVFS_GET_CAPABILITIES: {
        const __u32 capabilities = USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_BULK_SCATTER_GATHER;
        g_autoptr(UMockdevIoctlData) out =
            umockdev_ioctl_data_resolve(argument, 0, sizeof capabilities, nullptr);
        std::memcpy(out->data, &capabilities, sizeof capabilities);
        return 0;
      }
      case USBDEVFS_CLAIMINTERFACE:
      case USBDEVFS_DISCONNECT_CLAIM:
        if (claimError == 0) Note("claim");
        return claimError;
      case USBDEVFS_RELEASEINTERFACE:
        return Note("release");
      case USBDEVFS_RESET:
        OnReset();
        return Note("reset");
      case USBDEVFS_CLEAR_HALT: {
        g_autoptr(UMockdevIoctlData) in = umockdev_ioctl_data_resolve(argument, 0, sizeof(unsigned), nullptr);
        return Note("clear " + Hex({in->data[0]}));
      }
      case USBDEVFS_SUBMITURB:
        return Submit(argument);
      case USBDEVFS_DISCARDURB: {
        const unsigned long address = *reinterpret_cast<unsigned long*>(argument->data);
        for (Urb& urb : urbs_) {
          if (urb.data->client_addr != address || urb.isDone) continue;
          urb.Finish(-ENOENT);
          return 0;
        }
        return EINVAL;
      }
      default:
        return ENOTTY;
    }
  }

  int Submit(UMockdevIoctlData* argument) {
    Urb urb{umockdev_ioctl_data_resolve(argument, 0, sizeof(usbdevfs_urb), nullptr), nullptr};
    const auto size = static_cast<std::size_t>(urb.Fields().buffer_length);
    urb.buffer = umockdev_ioctl_data_resolve(urb.data, offsetof(usbdevfs_urb, buffer), size, nullptr);
    const Bytes bytes(urb.buffer->data, urb.buffer->data + size);
    if (urb.Fields().type == USBDEVFS_URB_TYPE_CONTROL) {
      const bool in = bytes[0] & 0x80;
      const Bytes setup(bytes.begin(), bytes.begin() + 8), data(bytes.begin() + 8, bytes.end());
      Note(Hex(setup), in ? Bytes() : data);
      OnControl(setup, in ? Bytes() : data);
      Fill(urb, 0, 8);
      urb.Finish(0, in ? 0 : size - 8);
    } else if (!(urb.Fields().endpoint & 0x80)) {
      Note(Hex({urb.Fields().endpoint}), bytes);
      OnData(urb.Fields().endpoint, bytes);
      urb.Finish(0, size);
    }
    urbs_.push_back(urb);
    mostUnderWay_ = std::max(mostUnderWay_, urbs_.size());
    return 0;
  }

  /// With the next answer of the endpoint, if there is one.
  void Fill(Urb& urb, std::uint8_t endpoint, std::size_t offset) {
    std::deque<Answer>& answers = answers_[endpoint];
    if (urb.isDone || answers.empty()) return;
    Bytes& data = answers.front().data;
    const std::size_t room = static_cast<std::size_t>(urb.Fields().buffer_length) - offset;
    const std::size_t count = std::min(data.size(), room);
    std::copy_n(data.begin(), count, urb.buffer->data + offset);
    data.erase(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(count));
    urb.Finish(answers.front().isStall ? -EPIPE : 0, count);
    if (data.empty()) answers.pop_front();
  }

  int Reap(UMockdevIoctlData* argument) {
    for (auto urb = urbs_.begin(); urb != urbs_.end(); ++urb) {
      Fill(*urb, urb->Fields().endpoint, 0);
      if (!urb->isDone) continue;
      g_autoptr(UMockdevIoctlData) out = umockdev_ioctl_data_resolve(argument, 0, sizeof(void*), nullptr);
      umockdev_ioctl_data_set_ptr(out, 0, urb->data);
      g_object_unref(urb->data);
      g_object_unref(urb->buffer);
      urbs_.erase(urb);
      return 0;
    }
    return isGone_ ? ENODEV : EAGAIN;
  }

  void Push(std::uint8_t endpoint, Answer answer) {
    const std::lock_guard lock(mutex_);
    answers_[endpoint].push_back(std::move(answer));
  }

  int Note(const std::string& line, Bytes data = {}) {
    while (!data.empty() && data.back() == 0) data.pop_back();
    log_ += (log_.empty() ? "" : "; ") + line + (data.empty() ? "" : ": " + Hex(data));
    return 0;
  }

  const int number_;
  const std::string syspath_;
  UMockdevIoctlBase* const handler_ = umockdev_ioctl_base_new();
  std::recursive_mutex mutex_;  // what a device does may answer at once
  std::list<Urb> urbs_;         // in the order of their submission
  std::size_t mostUnderWay_ = 0;
  std::map<std::uint8_t, std::deque<Answer>> answers_;
  std::string log_;
  bool isGone_ = false;
};

}  // namespace zel::test
