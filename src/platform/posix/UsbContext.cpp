#include "platform/posix/UsbContext.h"

#include <sys/types.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

namespace zel {
namespace {

/// All devices on the USB, as long as it lives.
class DeviceList {
 public:
  explicit DeviceList(libusb_context* context) : count_(libusb_get_device_list(context, &devices_)) {}
  ~DeviceList() {
    if (count_ >= 0) libusb_free_device_list(devices_, 1);
  }
  DeviceList(const DeviceList&) = delete;
  DeviceList& operator=(const DeviceList&) = delete;

  std::span<libusb_device* const> Devices() const {
    return {devices_, static_cast<std::size_t>(std::max<ssize_t>(count_, 0))};
  }

 private:
  libusb_device** devices_ = nullptr;
  const ssize_t count_;
};

bool HasOneOf(libusb_device* device, std::span<const UsbId> ids) {
  libusb_device_descriptor about;
  if (libusb_get_device_descriptor(device, &about) != LIBUSB_SUCCESS) return false;
  return std::ranges::find(ids, UsbId{about.idVendor, about.idProduct}) != ids.end();
}

UsbLocation LocationOf(libusb_device* device) {
  UsbLocation location{.bus = libusb_get_bus_number(device)};
  std::array<std::uint8_t, 7> ports;
  const int count = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
  std::copy_n(ports.begin(), std::max(count, 0), location.ports.begin());
  return location;
}

/// The context of the process. Never destroyed itself: threads may outlive static objects.
struct Shared {
  std::mutex mutex;
  std::shared_ptr<UsbContext> context;
  bool isOver = false;
};

Shared& TheShared() {
  static Shared& shared = *new Shared;
  return shared;
}

struct EndOfProcess {
  ~EndOfProcess() {
    std::shared_ptr<UsbContext> last;
    const std::lock_guard lock(TheShared().mutex);
    TheShared().isOver = true;
    last.swap(TheShared().context);
  }
};

}  // namespace

std::shared_ptr<UsbContext> UsbContext::Get() {
  static const EndOfProcess endOfProcess;
  Shared& shared = TheShared();
  const std::lock_guard lock(shared.mutex);
  libusb_context* context = nullptr;
  if (!shared.context && !shared.isOver && libusb_init(&context) == LIBUSB_SUCCESS)
    shared.context.reset(new UsbContext(context));
  return shared.context;
}

UsbContext::UsbContext(libusb_context* context) : context_(context) {
  // Without this, devices that leave are noticed with the next transfer.
  (void)libusb_hotplug_register_callback(context_, LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT, 0,
                                         LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
                                         LIBUSB_HOTPLUG_MATCH_ANY, OnLeft, this, nullptr);
  events_ = std::make_unique<Worker>([this] { RunEvents(); });
  events_->SetPriority(WorkerPriority::Highest);
}

UsbContext::~UsbContext() {
  isStopping_ = true;
  libusb_interrupt_event_handler(context_);
  events_.reset();
  libusb_exit(context_);
}

void UsbContext::RunEvents() {
  constexpr std::chrono::milliseconds kPause{10};
  while (!isStopping_) {
    const int problem = libusb_handle_events(context_);
    // What fails now may fail for a while: not at full speed then.
    if (problem != LIBUSB_SUCCESS && problem != LIBUSB_ERROR_INTERRUPTED) std::this_thread::sleep_for(kPause);
  }
}

std::vector<UsbLocation> UsbContext::Find(std::span<const UsbId> ids) const {
  std::vector<UsbLocation> found;
  const DeviceList list(context_);
  for (libusb_device* const device : list.Devices()) {
    if (HasOneOf(device, ids)) found.push_back(LocationOf(device));
  }
  std::ranges::sort(found);
  return found;
}

std::shared_ptr<UsbDevice> UsbContext::Open(const UsbLocation& location, std::span<const UsbId> ids,
                                            DriverError* error) {
  const DeviceList list(context_);
  const auto device = std::ranges::find_if(list.Devices(), [&](libusb_device* candidate) {
    return HasOneOf(candidate, ids) && LocationOf(candidate) == location;
  });
  *error = DriverError::FileNotFound;
  if (device == list.Devices().end()) return nullptr;

  const std::lock_guard turn(turn_);
  auto entry = std::ranges::find(opened_, *device, [](const OpenedDevice& o) { return o.device->Device(); });
  if (entry == opened_.end()) {
    std::unique_ptr<UsbDevice> opened = UsbDevice::Open(*device, error);
    if (!opened) return nullptr;
    const std::lock_guard lock(listMutex_);
    entry = opened_.insert(opened_.end(), {std::move(opened), 0});
  }
  *error = DriverError::None;
  ++entry->users;
  return {entry->device.get(), [self = shared_from_this()](UsbDevice* used) { self->Close(used); }};
}

void UsbContext::Close(UsbDevice* device) {
  // Within the turn: whoever opens the device next finds its interface free.
  const std::lock_guard turn(turn_);
  const auto entry = std::ranges::find(opened_, device, [](const OpenedDevice& o) { return o.device.get(); });
  if (--entry->users > 0) return;
  std::unique_ptr<UsbDevice> last;  // closing waits for the event thread, which may want the list
  const std::lock_guard lock(listMutex_);
  last = std::move(entry->device);
  opened_.erase(entry);
}

int LIBUSB_CALL UsbContext::OnLeft(libusb_context*, libusb_device* device, libusb_hotplug_event, void* self) {
  UsbContext& context = *static_cast<UsbContext*>(self);
  const std::lock_guard lock(context.listMutex_);
  for (const OpenedDevice& opened : context.opened_) {
    if (opened.device->Device() == device) opened.device->NoteUnplugged();
  }
  return 0;
}

}  // namespace zel
