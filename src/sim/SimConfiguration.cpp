#include "sim/SimConfiguration.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/Environment.h"
#include "sim/SensorMap.h"

namespace zel {
namespace {

/// Walks over the text of one variable and words its errors.
class Cursor {
 public:
  Cursor(const char* variable, std::string_view text) : variable_(variable), text_(text) { SkipBlanks(); }

  bool AtEnd() const { return position_ == text_.size(); }
  std::size_t Position() const { return position_; }

  bool Take(char expected) {
    if (AtEnd() || text_[position_] != expected) return false;
    ++position_;
    SkipBlanks();
    return true;
  }

  std::string_view Word() {
    return TakeWhile([](char c) { return c >= 'a' && c <= 'z'; });
  }

  /// A number without sign; nothing, and no step, when there is none or it is too large.
  template <class Number>
  std::optional<Number> Unsigned() {
    Number value{};
    const char* const begin = text_.data() + position_;
    if (AtEnd() || *begin < '0' || *begin > '9') return {};
    const auto [end, code] = std::from_chars(begin, text_.data() + text_.size(), value);
    if (code != std::errc()) return {};
    position_ += static_cast<std::size_t>(end - begin);
    SkipBlanks();
    return value;
  }

  /// What stands at a position up to the next separator, in quotes; for messages.
  std::string Quoted(std::size_t position) const {
    const std::string_view rest = text_.substr(position);
    return '"' + std::string(rest.substr(0, rest.find_first_of(",@: "))) + '"';
  }

  std::string Error(std::size_t position, const std::string& what) const {
    return std::string(variable_) + ": position " + std::to_string(position + 1) + ": " + what;
  }

  /// For text left over where an item should have ended.
  std::string Unexpected() const {
    return Error(position_, std::string("\"") + text_[position_] + "\" is not expected here");
  }

 private:
  template <class Predicate>
  std::string_view TakeWhile(Predicate wanted) {
    const std::size_t begin = position_;
    while (!AtEnd() && wanted(text_[position_])) ++position_;
    const std::string_view word = text_.substr(begin, position_ - begin);
    SkipBlanks();
    return word;
  }

  void SkipBlanks() {
    while (!AtEnd() && text_[position_] == ' ') ++position_;
  }

  const char* variable_;
  std::string_view text_;
  std::size_t position_ = 0;
};

constexpr int kMaxCameraType = 98;
constexpr std::uint32_t kMaxFocusPosition = 255;
constexpr int kIndexToChoose = -1;

struct IndexRange {
  int first, last;
  int preferred;  ///< where none is asked for
};

/// A SATA camera's index is the character of its drive letter; the first ones belong to the computer's disks.
IndexRange IndexesOf(int type) {
  if (std::u16string_view(FindSensorMap(type)->family) == u"Sata") return {'A', 'Z', 'E'};
  return {0, 31, 0};
}

/// Whether two cameras would be found at the same place. The drivers of USB 2.0 and WOM cameras count every
/// type for itself, all others count their devices together.
bool SamePlace(const SimCameraAddress& one, const SimCameraAddress& other) {
  if (one.index != other.index) return false;
  if (one.type == other.type) return true;
  const std::u16string_view family = FindSensorMap(one.type)->family;
  return family == FindSensorMap(other.type)->family && family != u"Usb" && family != u"Wom";
}

struct ListedCamera {
  SimCameraAddress address;
  std::size_t position;
};

/// One "TYPE[@INDEX]".
std::optional<ListedCamera> ReadCamera(Cursor& cursor, std::string* error) {
  const std::size_t position = cursor.Position();
  const auto fail = [&](std::size_t where, const std::string& what) {
    *error = cursor.Error(where, what);
    return std::nullopt;
  };
  if (cursor.AtEnd() || cursor.Quoted(position) == "\"\"") return fail(position, "a camera type is missing");
  const auto type = cursor.Unsigned<std::uint32_t>();
  if (!type) return fail(position, cursor.Quoted(position) + " is not a camera type");
  if (*type > kMaxCameraType)
    return fail(position, "camera type " + std::to_string(*type) + " is not one of 0 to 98");

  ListedCamera camera{{static_cast<int>(*type), kIndexToChoose}, position};
  if (cursor.Take('@')) {
    const std::size_t indexPosition = cursor.Position();
    const auto index = cursor.Unsigned<std::uint32_t>();
    const auto [first, last, preferred] = IndexesOf(camera.address.type);
    camera.address.index = index && *index <= INT32_MAX ? static_cast<int>(*index) : kIndexToChoose;
    if (camera.address.index < first || camera.address.index > last)
      return fail(indexPosition, "index " + cursor.Quoted(indexPosition) + " is not one of " +
                                     std::to_string(first) + " to " + std::to_string(last));
  }
  return camera;
}

std::optional<SimFault> ReadFault(Cursor& cursor, std::string* error) {
  struct KindName {
    std::string_view name;
    SimFault::Kind kind;
  };
  static constexpr KindName kKinds[] = {{"unplug", SimFault::Kind::Unplug},
                                        {"drop", SimFault::Kind::Drop},
                                        {"stall", SimFault::Kind::Stall},
                                        {"short", SimFault::Kind::Short},
                                        {"garbage", SimFault::Kind::Garbage}};
  std::size_t position = cursor.Position();
  const auto fail = [&](const std::string& what) {
    *error = cursor.Error(position, what);
    return std::nullopt;
  };
  const std::string_view word = cursor.Word();
  const auto* const kind = std::ranges::find(kKinds, word, &KindName::name);
  if (kind == std::end(kKinds))
    return fail(cursor.Quoted(position) + " is not one of unplug, drop, stall, short, garbage");

  SimFault fault{kind->kind, 0, {}};
  position = cursor.Position();
  if (!cursor.Take('@')) return fail("\"@\" and a frame number are missing");
  position = cursor.Position();
  const auto frame = cursor.Unsigned<std::uint32_t>();
  if (!frame || *frame == 0) return fail("a frame number from 1 on is missing");
  fault.frame = *frame;

  if (fault.kind == SimFault::Kind::Stall) {
    position = cursor.Position();
    constexpr double kMaxDuration = 1e8;  // ms: about a day
    const double amount = cursor.Take(':') ? cursor.Unsigned<double>().value_or(-1) : -1;
    const std::string_view unit = cursor.Word();
    const double duration = unit == "s" ? amount * 1000 : amount;
    if ((unit != "s" && unit != "ms") || !(duration >= 0 && duration <= kMaxDuration))
      return fail("a duration like \":2s\" or \":500ms\" is missing");
    fault.duration = std::chrono::milliseconds(std::llround(duration));
  }
  return fault;
}

std::optional<SimFocus> ReadFocus(Cursor& cursor, const std::vector<SimFocus>& before, std::string* error) {
  const std::uint32_t lastFrame = before.empty() ? 0 : before.back().frame;
  std::size_t position = cursor.Position();
  const auto fail = [&](const std::string& what) {
    *error = cursor.Error(position, what);
    return std::nullopt;
  };
  SimFocus focus;
  const auto place = cursor.Unsigned<std::uint32_t>();
  if (!place || *place > kMaxFocusPosition)
    return fail(cursor.Quoted(position) + " is not a focus position from 0 to " +
                std::to_string(kMaxFocusPosition));
  focus.position = static_cast<int>(*place);
  if (cursor.Take('@')) {
    position = cursor.Position();
    const auto frame = cursor.Unsigned<std::uint32_t>();
    if (!frame || *frame <= lastFrame)
      return fail("a frame number from " + std::to_string(lastFrame + 1ull) + " on is missing");
    focus.frame = *frame;
  } else if (!before.empty()) {
    position = cursor.Position();
    return fail("\"@\" and a frame number are missing");
  }
  return focus;
}

/// Reads the items that commas separate; `read` takes the next one from the cursor.
template <class Item, class Read>
bool ReadList(Cursor cursor, std::vector<Item>* items, std::string* error, Read read) {
  std::vector<Item> all;
  do {
    const auto item = read(cursor, all);
    if (!item) return false;
    all.push_back(*item);
  } while (cursor.Take(','));
  if (!cursor.AtEnd()) {
    *error = cursor.Unexpected();
    return false;
  }
  *items = std::move(all);
  return true;
}

/// A number from 0 to `maximum` in a variable that holds nothing else.
bool ReadNumber(const char* variable, const std::string& text, double maximum, double* value,
                std::string* error) {
  Cursor cursor(variable, text);
  const auto number = cursor.Unsigned<double>();
  if (!number || !cursor.AtEnd() || !(*number <= maximum)) {
    *error = std::string(variable) + ": \"" + text + "\" is not a number from 0 to " +
             std::to_string(static_cast<int>(maximum));
    return false;
  }
  *value = *number;
  return true;
}

}  // namespace

bool ParseSimCameras(std::string_view text, std::vector<SimCameraAddress>* cameras, std::string* error) {
  Cursor cursor("ZELCAM_SIM", text);
  std::vector<ListedCamera> listed;
  const auto at = [&](const SimCameraAddress& address) {
    return std::ranges::find_if(
        listed, [&](const ListedCamera& camera) { return SamePlace(camera.address, address); });
  };
  do {
    const auto camera = ReadCamera(cursor, error);
    if (!camera) return false;
    const auto other = at(camera->address);
    if (camera->address.index != kIndexToChoose && other != listed.end()) {
      const int type = other->address.type;
      *error = cursor.Error(camera->position,
                            "type " + std::to_string(camera->address.type) + " index " +
                                std::to_string(camera->address.index) +
                                (type == camera->address.type ? " is listed twice"
                                                              : " is taken by type " + std::to_string(type)));
      return false;
    }
    listed.push_back(*camera);
  } while (cursor.Take(','));
  if (!cursor.AtEnd()) {
    *error = cursor.Unexpected();
    return false;
  }

  // After the list is known, so that "13,13@0" leaves index 0 to the one that asks for it.
  for (ListedCamera& camera : listed) {
    if (camera.address.index != kIndexToChoose) continue;
    const auto [first, last, preferred] = IndexesOf(camera.address.type);
    SimCameraAddress address{camera.address.type, preferred};
    while (at(address) != listed.end()) ++address.index;
    if (address.index > last) {
      *error = cursor.Error(camera.position, "more than " + std::to_string(last + 1 - preferred) +
                                                 " cameras of type " + std::to_string(address.type));
      return false;
    }
    camera.address = address;
  }
  cameras->clear();
  for (const ListedCamera& camera : listed) cameras->push_back(camera.address);
  return true;
}

bool ParseSimFaults(std::string_view text, std::vector<SimFault>* faults, std::string* error) {
  return ReadList(Cursor("ZELCAM_SIM_FAULTS", text), faults, error,
                  [&](Cursor& cursor, const auto& /*before*/) { return ReadFault(cursor, error); });
}

bool ParseSimFocus(std::string_view text, std::vector<SimFocus>* focus, std::string* error) {
  return ReadList(Cursor("ZELCAM_SIM_FOCUS", text), focus, error,
                  [&](Cursor& cursor, const auto& before) { return ReadFocus(cursor, before, error); });
}

std::optional<SimConfiguration> SimConfigurationFrom(const VariableReader& variable, std::string* error) {
  error->clear();
  const auto text = [&](const char* name) { return variable(name).value_or(""); };

  SimConfiguration configuration;
  const std::string cameras = text("ZELCAM_SIM");
  if (cameras.empty()) return {};
  if (!ParseSimCameras(cameras, &configuration.cameras, error)) return {};

  const std::string scene = text("ZELCAM_SCENE");
  if (scene != "chart") configuration.scene = scene;

  const std::string rate = text("ZELCAM_SIM_FPS");
  double framesPerSecond = 0;
  if (!rate.empty()) {
    if (!ReadNumber("ZELCAM_SIM_FPS", rate, 100000, &framesPerSecond, error)) return {};
    configuration.framesPerSecond = framesPerSecond;
  }

  const std::string faults = text("ZELCAM_SIM_FAULTS");
  if (!faults.empty() && !ParseSimFaults(faults, &configuration.faults, error)) return {};

  const std::string trigger = text("ZELCAM_SIM_TRIGGER");
  if (!trigger.empty() &&
      !ReadNumber("ZELCAM_SIM_TRIGGER", trigger, 100000, &configuration.triggerRate, error))
    return {};

  const std::string focus = text("ZELCAM_SIM_FOCUS");
  if (!focus.empty() && !ParseSimFocus(focus, &configuration.focus, error)) return {};
  return configuration;
}

std::optional<SimConfiguration> SimConfigurationFromEnvironment(std::string* error) {
  return SimConfigurationFrom(GetEnvironment, error);
}

}  // namespace zel
