#include <gtest/gtest.h>

#include "transport/ScriptedDriverHost.h"
#include "transport/usb3/DiskIdentification.h"

namespace zel {
namespace {

TEST(DiskIdentification, KnowsTwentyCodesOnDrivesWithTheSignature) {
  test::ScriptedDriverHost host;
  const ScopedDriverHost installed(host);
  std::vector<std::uint8_t>& status = host.sectors[0x20000];
  const auto identify = [&](const std::string& signature, int code) {
    status.assign(512, 0);
    std::copy(signature.begin(), signature.end(), status.begin());
    status[26] = static_cast<std::uint8_t>(code);
    status[27] = static_cast<std::uint8_t>(code >> 8);
    return IdentifyDiskCamera(5);
  };
  const std::map<int, LONG> types{{0x270, 44}, {0x250, 45}, {0x2C0, 47}, {0x570, 49}, {0x2E0, 50},
                                  {0x630, 52}, {0x300, 53}, {0x640, 54}, {0x650, 55}, {0x660, 58},
                                  {0x540, 60}, {0x680, 61}, {0x690, 62}, {0x6C0, 75}, {0x6D0, 76},
                                  {0x6E0, 78}, {0x6F0, 79}, {0x790, 80}, {0x700, 81}, {0x730, 83}};
  for (int code = 0; code < 0x10000; ++code) {
    const auto known = types.find(code);
    ASSERT_EQ(identify("ORVANE", code), known == types.end() ? 99 : known->second) << code;
  }
  EXPECT_EQ(identify("ORVANX", 0x270), 99) << "an ordinary disk";
  host.TakeLog();
  for (const int n : {0, 1}) {
    host.faultAt = n;
    EXPECT_EQ(identify("ORVANE", 0x270), 99) << "failed seek, failed read";
  }
  EXPECT_TRUE(host.TakeLog().starts_with("open \\\\.\\PhysicalDrive5 C0000000 1; "));
  host.faultAt = 1;
  host.fault = test::ScriptedDriverHost::Short;
  EXPECT_EQ(identify("ORVANE", 0x270), 99) << "short read";
  host.present = [](const auto&) { return false; };
  EXPECT_EQ(identify("ORVANE", 0x270), 99) << "no such drive";
  EXPECT_EQ(IdentifyDiskCamera(-1), 99);
  EXPECT_EQ(host.openHandles, 0);
}

}  // namespace
}  // namespace zel
