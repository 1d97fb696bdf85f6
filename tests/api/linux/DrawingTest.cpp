#include <gtest/gtest.h>

#include "api/FakeCamera.h"

namespace zel::test {
namespace {

TEST(Drawing, SaysThatThereIsNone) {
  const auto camera = NewObject<CZELCamera>();
  ArrayVariant array(16);
  EXPECT_EQ(camera->StretchDIBits(0, 2, 2, array.variant), E_NOTIMPL);
  EXPECT_EQ(camera->SetDIBits(0, 2, 2, array.variant), E_NOTIMPL);
  EXPECT_EQ(camera->SetDIBits(0, 2, 3, array.variant), E_NOTIMPL);
}

}  // namespace
}  // namespace zel::test
