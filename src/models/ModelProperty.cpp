#include "models/ModelProperty.h"

namespace zel {
namespace {

void PutRange(PropertyRecord& record, const SettingRange& range) {
  record = {.minimum = range.minimum,
            .maximum = range.maximum,
            .defaultValue = range.defaultValue,
            .current = range.defaultValue,
            .supported = range.supported};
}

void PutExtent(PropertyRecord& start, PropertyRecord& extent, LONG full, LONG smallest, LONG initial,
               bool fixed) {
  extent = {
      .minimum = smallest, .maximum = full, .defaultValue = initial, .current = initial, .supported = !fixed};
  start = {.minimum = 0, .maximum = full - smallest, .supported = !fixed};
}

}  // namespace

void ApplyModelRow(const ModelRow& row, const std::function<PropertyRecord&(LONG id)>& edit) {
  const SensorSize smallest =
      row.smallest.value_or(SensorSize{edit(kRoiWidth).minimum, edit(kRoiHeight).minimum});
  const SensorSize initial = row.defaultRoi.value_or(row.full);
  PutExtent(edit(kRoiLeft), edit(kRoiWidth), row.full.width, smallest.width, initial.width, row.fixedRoi);
  PutExtent(edit(kRoiTop), edit(kRoiHeight), row.full.height, smallest.height, initial.height, row.fixedRoi);
  if (row.subSampling) {
    for (const LONG id : {kSubSampleX, kSubSampleY}) PutRange(edit(id), {0, *row.subSampling, 0});
  }
  if (row.gain) PutRange(edit(kDigitalGlobalGain), *row.gain);
  if (row.shutter) PutRange(edit(kShutter), *row.shutter);
}

}  // namespace zel
