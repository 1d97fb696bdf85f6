#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/SimClock.h"

/// What the user asks of the simulated cameras, read from text.
namespace zel {

struct SimCameraAddress {
  int type = 0;
  int index = 0;  ///< device index within the type

  bool operator==(const SimCameraAddress&) const = default;
};

struct SimFault {
  enum class Kind {
    Unplug,   ///< the camera is gone for good
    Drop,     ///< the frame never leaves the camera; the next one comes instead
    Stall,    ///< the read waits `duration` before the frame comes
    Short,    ///< half of the bytes arrive
    Garbage,  ///< all bytes arrive, none of them means anything
  };

  Kind kind = Kind::Drop;
  std::uint32_t frame = 0;  ///< the camera's n-th frame since it was plugged in, counted from 1
  std::chrono::milliseconds duration{0};

  bool operator==(const SimFault&) const = default;
};

/// Where the lens of a camera with a focus drive shows the scene sharp, until the next such place.
struct SimFocus {
  int position = 136;       ///< of the drive, 0..255
  std::uint32_t frame = 0;  ///< from the camera's n-th frame on, counted as for faults

  bool operator==(const SimFocus&) const = default;
};

struct SimConfiguration {
  std::vector<SimCameraAddress> cameras;
  std::string scene;                      ///< UTF-8 path of a picture; empty: the test chart
  std::optional<double> framesPerSecond;  ///< nothing: the sensor's own rate; 0: as fast as it is read
  std::vector<SimFault> faults;           ///< every camera has them all
  double triggerRate = 10;                ///< Hz of the external trigger line; 0: no pulse ever comes
  std::vector<SimFocus> focus;            ///< the scene's ways, by rising frames; empty: it keeps its place
  double noise = 1;                       ///< multiplies the sensor's noise; 0: none
  std::uint64_t seed = 1;                 ///< of the noise: the same seed gives the same frames
  /// By which controllers are busy; frames keep the real time.
  std::shared_ptr<SimClock> clock = std::make_shared<SimClock>(SimClock::Kind::Real);
};

/// Reads "TYPE[@INDEX],...", as `ZELCAM_SIM` holds it: types that are simulated, no camera twice; without an
/// index the first one that the list leaves free. False, with a sentence in `error` (never null) and
/// `cameras` unchanged, when it can't.
bool ParseSimCameras(std::string_view text, std::vector<SimCameraAddress>* cameras, std::string* error);

/// Reads "unplug@100,drop@7,stall@50:2s,...", as `ZELCAM_SIM_FAULTS` holds it; durations end in "s" or "ms".
bool ParseSimFaults(std::string_view text, std::vector<SimFault>* faults, std::string* error);

/// Reads "POSITION[@FRAME],...", as `ZELCAM_SIM_FOCUS` holds it: "60,200@100" moves the scene at frame 100.
bool ParseSimFocus(std::string_view text, std::vector<SimFocus>* focus, std::string* error);

/// Value of an environment variable, or nothing.
using VariableReader = std::function<std::optional<std::string>(const char* name)>;

/// The configuration that the variables `ZELCAM_SIM`, `ZELCAM_SCENE`, `ZELCAM_SIM_FPS`, `ZELCAM_SIM_FAULTS`,
/// `ZELCAM_SIM_TRIGGER` and `ZELCAM_SIM_FOCUS` describe. Nothing with an empty `error` when `ZELCAM_SIM` is
/// unset or empty, nothing with a sentence there when one of them can't be read.
std::optional<SimConfiguration> SimConfigurationFrom(const VariableReader& variable, std::string* error);

/// The same from this process's environment.
std::optional<SimConfiguration> SimConfigurationFromEnvironment(std::string* error);

}  // namespace zel
