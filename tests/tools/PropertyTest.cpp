#include <gtest/gtest.h>

#include <set>

#include "property/CZELDevicePropertyImpl.h"
#include "tools/support/PropertyNames.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

/// A store that offers everything, so that each name can be followed to its record.
class OpenStore : public CZELDevicePropertyImpl {
 public:
  OpenStore() {
    for (LONG id = 0; id < kPropertyCount; ++id) Edit(id) = {.minimum = 0, .maximum = 1000, .supported = 1};
  }
  std::vector<LONG> Currents() const {
    std::vector<LONG> values;
    for (LONG id = 0; id < kPropertyCount; ++id) values.push_back(Record(id).current);
    return values;
  }
};

TEST(PropertyNames, EveryRecordHasOneName) {
  std::multiset<LONG> ids;
  std::set<std::string_view> names;
  for (const PropertyName& property : PropertyNames()) {
    EXPECT_TRUE(names.insert(property.name).second) << property.name;
    EXPECT_STRNE(property.text, "") << property.name;
    if (property.id != kNoRecord) ids.insert(property.id);
  }
  for (LONG id = 0; id < kPropertyCount; ++id) EXPECT_EQ(ids.count(id), 1u) << id;
}

TEST(PropertyNames, EachReachesItsOwnRecordOnly) {
  for (const PropertyName& property : PropertyNames()) {
    if (property.set == nullptr || property.get == nullptr) continue;
    OpenStore store;
    const std::vector<LONG> before = store.Currents();
    const HRESULT result = property.set(store, 1);
    if (result == E_NOTIMPL) continue;  // the generic store has no hardware
    EXPECT_EQ(result, S_OK) << property.name;
    LONG value = -1;
    EXPECT_EQ(property.get(store, &value), S_OK) << property.name;
    EXPECT_EQ(value, 1) << property.name;
    std::vector<LONG> expected = before;
    if (property.id != kNoRecord) expected[static_cast<std::size_t>(property.id)] = 1;
    if (property.name == "auto-focus-cur-pos") expected[kFocusPosition] = 1;  // moves the lens
    EXPECT_EQ(store.Currents(), expected) << property.name;
  }
}

TEST(PropertyNames, Patterns) {
  const auto namesOf = [](const std::vector<std::string>& patterns) {
    std::string names;
    for (const PropertyName* const property : MatchProperties(patterns))
      names += std::string(property->name) + " ";
    return names;
  };
  EXPECT_EQ(namesOf({"gamma", "*-mirror", "hor*"}), "hor-mirror ver-mirror gamma ");
  EXPECT_EQ(MatchProperties({}).size(), PropertyNames().size());
  EXPECT_THROW(namesOf({"gamma", "nothing*"}), ToolError);
}

TEST(PropertyNames, UnknownNameOffersTheNearest) {
  try {
    FindProperty("digital-gain");
    FAIL();
  } catch (const ToolError& error) {
    EXPECT_EQ(error.Code(), kExitUsage);
    EXPECT_STREQ(error.what(), "unknown property 'digital-gain'");
    EXPECT_EQ(error.Hint(), "did you mean 'digital-global-gain'?");
  }
}

}  // namespace
}  // namespace zel::tool
