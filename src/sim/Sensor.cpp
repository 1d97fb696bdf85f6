#include "sim/Sensor.h"

#include <algorithm>

namespace zel {

void Sensor::Reset() {
  registers_.clear();
  const SensorMap& map = *map_;
  if (map.reset) {
    Store(map.left, static_cast<std::uint32_t>(map.leftOffset));
    Store(map.top, static_cast<std::uint32_t>(map.topOffset));
    Store(map.columns, static_cast<std::uint32_t>(map.width - map.columnsBias));
    Store(map.rows, static_cast<std::uint32_t>(map.height - map.rowsBias));
    Store(map.shutter, map.reset->shutter);
    Store(map.gain, map.reset->gain);
  }
  for (const RegisterValue& reset : map.resetValues) registers_[reset.address] = reset.value;
}

void Sensor::ResetExposure() {
  const Sensor fresh(*map_);
  Store(map_->shutter, fresh.Value(map_->shutter));
  Store(map_->gain, fresh.Value(map_->gain));
}

std::uint32_t Sensor::Read(std::uint32_t address) const {
  const auto found = registers_.find(address);
  return found == registers_.end() ? 0 : found->second;
}

std::uint32_t Sensor::Value(const RegisterField& field) const {
  std::uint32_t value = 0;
  for (const RegisterBits& bits : field) {
    const std::uint32_t mask = (std::uint32_t{1} << bits.count) - 1;
    value |= ((Read(bits.address) >> bits.low) & mask) << bits.shift;
  }
  return value;
}

void Sensor::Store(const RegisterField& field, std::uint32_t value) {
  for (const RegisterBits& bits : field) {
    const std::uint32_t mask = ((std::uint32_t{1} << bits.count) - 1) << bits.low;
    if (mask == 0) continue;
    std::uint32_t& held = registers_[bits.address];
    held = (held & ~mask) | (value >> bits.shift << bits.low & mask);
  }
}

double Sensor::ShutterLines() const {
  const std::uint32_t code = Value(map_->shutter);
  return map_->shutterLines != nullptr ? map_->shutterLines(code) : code;
}

Readout Sensor::Decode(int clockDivider) const {
  const SensorMap& map = *map_;
  const auto value = [this](const RegisterField& field) { return static_cast<int>(Value(field)); };

  Readout readout;
  ReadoutWindow& window = readout.window;
  window.left = value(map.left) - map.leftOffset;
  window.top = value(map.top) - map.topOffset;
  window.columns = value(map.columns) + map.columnsBias;
  window.rows = value(map.rows) + map.rowsBias;
  window.mirrorX = value(map.mirrorX) != 0;
  window.mirrorY = value(map.mirrorY) != 0;
  const auto skip = std::ranges::find_if(
      map.skips, [this](const SkipRule& rule) { return (Read(rule.address) & rule.mask) == rule.value; });
  if (skip != map.skips.end()) window.skipX = window.skipY = skip->factor;
  const int binX = value(map.binX) != 0 ? 2 : 1;
  const int binY = value(map.binY) != 0 ? 2 : 1;
  window.columns /= binX;
  window.rows /= binY;
  window.skipX *= binX;
  window.skipY *= binY;
  const auto& fields = map.fieldReadout;
  if (fields && (Read(fields->address) & fields->mask) == fields->value && binY == 1) {
    using enum ReadoutWindow::Fields;
    window.fields = value(map.oddFieldFirst) != 0 ? OddFirst : EvenFirst;
  }
  readout.triggered = value(map.trigger) != 0;
  readout.streams = value(map.standby) == 0 && (map.stream[0].count == 0 || value(map.stream) != 0);

  const Sensor fresh(map);
  const double resetGain = map.gainFactor(fresh.Value(map.gain));
  readout.gain = map.gainFactor(Value(map.gain)) / resetGain;
  readout.exposure = ShutterLines() / fresh.ShutterLines() * readout.gain * binX * binY;

  const double line = std::max(window.columns + map.lineBlanking, map.shortestLine);
  const double clocks = std::max(line * window.rows + map.frameBlanking, line * ShutterLines());
  const int divider = value(map.halfClock) != 0 ? 2 * clockDivider : clockDivider;
  readout.frameSeconds = clocks * divider / map.pixelClock;
  return readout;
}

}  // namespace zel
