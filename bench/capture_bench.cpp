// What the library costs a capture, family by family: frames per second through the simulated camera beside
// the time that the same bytes take by memcpy, the library's own part of a frame, allocations, and the time
// from a frame's arrival to its callback.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "bench/TimedDriverHost.h"
#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "platform/Threads.h"
#include "property/CZELDeviceProperty.h"
#include "sim/SimDriverHost.h"

namespace {

std::atomic<std::int64_t> allocations = 0;

void* Allocate(std::size_t bytes) {
  if (!zel::bench::insideDriver) ++allocations;
  if (void* const memory = std::malloc(bytes)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t bytes) {
  return Allocate(bytes);
}
void* operator new[](std::size_t bytes) {
  return Allocate(bytes);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace zel {
namespace {

using bench::TimedDriverHost;
using Clock = TimedDriverHost::Clock;

/// A simulated camera, playing; by default it delivers as fast as it is read.
class PlayingCamera {
 public:
  PlayingCamera(LONG type, LONG mode, bool wholeFrame, CZELObserver* observer = nullptr, double rate = 0) {
    const int index = ModelOf(type).family == Family::Sata ? 'E' : 0;
    SimConfiguration computer;
    computer.cameras = {{static_cast<int>(type), index}};
    computer.framesPerSecond = rate;
    computer.noise = 0;
    std::string error;
    sim_ = SimDriverHost::Create(computer, &error);
    if (!sim_) throw std::runtime_error(error);
    host_ = std::make_unique<TimedDriverHost>(*sim_);
    installed_ = std::make_unique<ScopedDriverHost>(*host_);
    camera_.reset(CreateDeviceForType(static_cast<std::uint32_t>(type)));
    camera_->SetObserver(observer);
    if (camera_->OpenCamera(index) != 1) throw std::runtime_error("the camera can't be opened");
    camera_->SetBufferSamples(mode);
    if (!wholeFrame) camera_->GetProperty()->SetROI(0, 0, kSmallWidth, kSmallHeight);
    if (camera_->Play() != 1) throw std::runtime_error("the camera does not play");
  }
  ~PlayingCamera() {
    camera_->Stop();
    camera_.reset();
  }

  CZELDevice& Camera() { return *camera_; }
  TimedDriverHost& Host() { return *host_; }

 private:
  static constexpr LONG kSmallWidth = 64;
  static constexpr LONG kSmallHeight = 48;

  std::unique_ptr<SimDriverHost> sim_;
  std::unique_ptr<TimedDriverHost> host_;
  std::unique_ptr<ScopedDriverHost> installed_;
  std::unique_ptr<CZELDevice> camera_;
};

/// Whole frames, read and processed by the calling thread.
void Frames(benchmark::State& state, LONG type) {
  PlayingCamera playing(type, kDeliverOnDemand, true);
  COrvaneImage& image = *playing.Camera().GetImage();
  const auto pixels =
      static_cast<std::size_t>(image.GetWidth()) * static_cast<std::size_t>(image.GetHeight());
  std::vector<unsigned char> unused(pixels * 4);
  while (playing.Camera().GetData(unused.data(), 0) != S_OK) {
  }
  const std::int64_t before = playing.Host().Nanoseconds();
  for (auto _ : state) {
    while (playing.Camera().GetData(unused.data(), 0) != S_OK) {
    }
  }
  const auto frames = static_cast<double>(state.iterations());
  state.counters["fps"] = benchmark::Counter(frames, benchmark::Counter::kIsRate);
  state.counters["camera_ms"] = static_cast<double>(playing.Host().Nanoseconds() - before) / 1e6 / frames;
}

/// The peer: as many bytes as such a frame has, copied.
void Copy(benchmark::State& state, LONG type) {
  const SensorSize& size = ModelOf(type).full;
  const auto pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
  std::vector<unsigned char> from(pixels, 1);
  std::vector<unsigned char> to(pixels);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), pixels);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(pixels) * state.iterations());
}

std::int64_t Median(std::vector<std::int64_t>& values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// A frame of 64 x 48, whose processing costs next to nothing: what is left after the driver's part.
void Overhead(benchmark::State& state, LONG type) {
  PlayingCamera playing(type, kDeliverOnDemand, false);
  std::vector<unsigned char> unused(64 * 48 * 4);
  for (int n = 0; n < 10; ++n) playing.Camera().GetData(unused.data(), 0);
  std::vector<std::int64_t> own;
  own.reserve(static_cast<std::size_t>(state.max_iterations));
  const std::int64_t allocated = allocations;
  for (auto _ : state) {
    const std::int64_t inDriver = playing.Host().Nanoseconds();
    const auto start = Clock::now();
    while (playing.Camera().GetData(unused.data(), 0) != S_OK) {
    }
    const auto elapsed = std::chrono::nanoseconds(Clock::now() - start).count();
    own.push_back(elapsed - (playing.Host().Nanoseconds() - inDriver));
  }
  state.counters["allocations"] =
      static_cast<double>(allocations - allocated) / static_cast<double>(state.iterations());
  state.counters["own_us"] = static_cast<double>(Median(own)) / 1e3;
}

constexpr double kUnhurriedRate = 200;  // frames per second

class Stopwatch : public CZELObserver {
 public:
  const TimedDriverHost* host = nullptr;  ///< none: nothing is measured

  void Notify(LONG event, void* picture, CZELDevice*) override {
    if (event != kEventFrameProcessed || picture == nullptr) return;
    const std::lock_guard lock(mutex_);
    if (host == nullptr) return;
    waits_.push_back(std::chrono::nanoseconds(Clock::now() - host->PictureArrived()).count());
    came.Set();
  }
  void Measure(const TimedDriverHost* from) {
    const std::lock_guard lock(mutex_);
    host = from;
  }
  std::int64_t MedianWait() {
    const std::lock_guard lock(mutex_);
    return Median(waits_);
  }
  Event came;

 private:
  std::mutex mutex_;
  std::vector<std::int64_t> waits_;
};

/// From the arrival of a frame of 64 x 48 to its callback on the processing worker, at a rate that leaves the
/// workers idle between frames.
void Latency(benchmark::State& state, LONG type) {
  Stopwatch stopwatch;
  PlayingCamera playing(type, kDeliverCallback, false, &stopwatch, kUnhurriedRate);
  stopwatch.Measure(&playing.Host());
  for (auto _ : state) {
    stopwatch.came.Reset();
    stopwatch.came.Wait(10'000);
  }
  stopwatch.Measure(nullptr);
  state.counters["median_us"] = static_cast<double>(stopwatch.MedianWait()) / 1e3;
}

double AllocatedMegabytes() {
  const auto info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / 1e6;
}

/// `Play` of a 2560 x 1920 camera until its workers run, without the driver's part, and what it then holds.
void Start(benchmark::State& state, LONG type) {
  PlayingCamera playing(type, kDeliverCallback, true, nullptr, 1);
  CZELDevice& camera = playing.Camera();
  std::vector<std::int64_t> own;
  double megabytes = 0;
  for (auto _ : state) {
    camera.Stop();
    const double before = AllocatedMegabytes();
    const std::int64_t inDriver = playing.Host().Nanoseconds();
    const auto start = Clock::now();
    camera.Play();
    const auto elapsed = std::chrono::nanoseconds(Clock::now() - start).count();
    own.push_back(elapsed - (playing.Host().Nanoseconds() - inDriver));
    megabytes = AllocatedMegabytes() - before;
  }
  state.counters["own_us"] = static_cast<double>(Median(own)) / 1e3;
  state.counters["megabytes"] = megabytes;
}

void RegisterAll() {
  for (const LONG type : {13, 78, 98, 67, 1}) {
    const auto add = [type](const char* what, void (*run)(benchmark::State&, LONG)) {
      const std::string name = std::string(what) + "/" + FamilyName(ModelOf(type).family) + ", type ";
      return benchmark::RegisterBenchmark((name + std::to_string(type)).c_str(), run, type)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    };
    add("frames", Frames);
    add("memcpy", Copy);
    add("overhead", Overhead)->Iterations(1000);
    add("latency", Latency)->Iterations(300);
  }
  benchmark::RegisterBenchmark("play", Start, 28)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->Iterations(20);
}

}  // namespace
}  // namespace zel

int main(int argc, char** argv) {
  zel::RegisterAll();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
