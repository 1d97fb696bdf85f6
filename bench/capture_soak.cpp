// Many simulated cameras of mixed types at the same time: soak [SECONDS [CAMERAS]], by default 32 for a
// minute. Every picture carries its number at the top and at the bottom. Fails when one is torn, runs
// backwards or never comes, or when memory grows.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "sim/FrameCode.h"
#include "sim/SimDriverHost.h"

namespace zel {
namespace {

/// Larger sensors would leave the machine no memory for so many cameras.
constexpr LONG kMostPixels = 6'000'000;
constexpr int kBytesPerPixel = 4;

/// Counts a camera's pictures and looks at their numbers.
class Watcher : public CZELObserver {
 public:
  std::atomic<int> frames = 0;
  std::atomic<int> torn = 0;
  std::atomic<int> unreadable = 0;
  std::atomic<int> backwards = 0;
  std::atomic<int> skipped = 0;

  void Notify(LONG event, void* picture, CZELDevice* camera) override {
    if (event != kEventFrameProcessed || picture == nullptr) return;
    COrvaneImage& image = *camera->GetImage();
    const FrameCodes codes = ReadFrameCodes(image.GetBuffer(), image.GetWidth(), image.GetHeight(),
                                            image.GetStride(), kBytesPerPixel);
    ++frames;
    if (codes.Torn()) ++torn;
    if (!codes.top || !codes.bottom) {
      ++unreadable;
      return;
    }
    if (*codes.top <= last_)
      ++backwards;
    else
      skipped += static_cast<int>(*codes.top - last_ - 1);
    last_ = *codes.top;
  }

 private:
  std::uint32_t last_ = 0;
};

struct Place {
  LONG type;
  int index;
};

/// Types spread over all families, each with an index of its own.
std::vector<Place> ChooseCameras(int count) {
  std::vector<Place> small;
  for (const ModelRow& row : AllModels()) {
    if (row.full.width * row.full.height > kMostPixels) continue;
    small.push_back({row.type, 0});
  }
  std::vector<Place> chosen;
  int drive = 0;
  char letter = 'E';
  for (int n = 0; n < count && !small.empty(); ++n) {
    Place place = small[static_cast<std::size_t>(n) * small.size() / static_cast<std::size_t>(count)];
    switch (ModelOf(place.type).family) {
      case Family::Sata:
        place.index = letter++;
        break;
      case Family::Usb30:
      case Family::Usb3T2:
        place.index = drive++;
        break;
      default:
        break;
    }
    chosen.push_back(place);
  }
  return chosen;
}

double ResidentMegabytes() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return static_cast<double>(resident) * 4096 / 1e6;
}

int Run(int seconds, int count) {
  const std::vector<Place> places = ChooseCameras(count);
  SimConfiguration computer;
  for (const Place& place : places) computer.cameras.push_back({static_cast<int>(place.type), place.index});
  std::string error;
  const auto sim = SimDriverHost::Create(computer, &error);
  if (!sim) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  const ScopedDriverHost installed(*sim);

  std::vector<Watcher> watchers(places.size());
  std::vector<std::unique_ptr<CZELDevice>> cameras;
  int failures = 0;
  for (std::size_t n = 0; n < places.size(); ++n) {
    cameras.emplace_back(CreateDeviceForType(static_cast<std::uint32_t>(places[n].type)));
    CZELDevice& camera = *cameras.back();
    camera.SetObserver(&watchers[n]);
    camera.SetBufferSamples(kDeliverCallback);
    if (camera.OpenCamera(places[n].index) == 1 && camera.Play() == 1) continue;
    std::printf("type %d does not play\n", static_cast<int>(places[n].type));
    ++failures;
  }

  const auto sleep = [](int s) { std::this_thread::sleep_for(std::chrono::seconds(s)); };
  sleep(seconds / 3);
  const double early = ResidentMegabytes();
  sleep(seconds - seconds / 3);
  const double late = ResidentMegabytes();
  for (const auto& camera : cameras) camera->Stop();

  std::printf("type  family    frames   fps  skipped  torn  unreadable\n");
  int frames = 0;
  for (std::size_t n = 0; n < places.size(); ++n) {
    const Watcher& watcher = watchers[n];
    std::printf("%4d  %-8s %7d %5.1f %8d %5d %11d\n", static_cast<int>(places[n].type),
                FamilyName(ModelOf(places[n].type).family), watcher.frames.load(),
                static_cast<double>(watcher.frames) / seconds, watcher.skipped.load(), watcher.torn.load(),
                watcher.unreadable.load());
    frames += watcher.frames;
    failures += watcher.torn + watcher.backwards + (watcher.frames == 0 ? 1 : 0);
  }
  const bool flat = late < early * 1.02 + 8;
  std::printf("%zu cameras, %d frames in %d s, %d faults; memory %.0f MB after a third, %.0f MB at the end\n",
              places.size(), frames, seconds, failures, early, late);
  return failures == 0 && flat ? 0 : 1;
}

}  // namespace
}  // namespace zel

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::max(std::atoi(argv[1]), 3) : 60;
  const int cameras = argc > 2 ? std::max(std::atoi(argv[2]), 1) : 32;
  return zel::Run(seconds, cameras);
}
