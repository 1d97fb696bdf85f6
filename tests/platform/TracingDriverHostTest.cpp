#include "platform/TracingDriverHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/FakeHost.h"
#include "platform/Threads.h"

namespace zel {
namespace {

using test::FakeHost;

class Tracing : public testing::Test {
 protected:
  FakeHost inner_;
  std::vector<std::string> lines_;
  TracingDriverHost tracer_{inner_, [this](const std::string& line) { lines_.push_back(line); }};
  DriverError error_ = DriverError::None;
};

TEST_F(Tracing, TellsEachCallInOneLine) {
  tracer_.SetStep("open");
  std::vector<std::uint8_t> shared{6, 0xAB, 0};
  const std::vector<std::uint8_t> sent{1, 2};
  auto handle = tracer_.Open({u"\\\\.\\ZelUsbBD-0"}, &error_);
  EXPECT_TRUE(handle->Control(0x222051, shared, shared).ok);
  tracer_.SetStep("a\"b\\\n\xFF");
  EXPECT_TRUE(handle->Seek(0x100020400).ok);
  tracer_.SetStep("");
  EXPECT_EQ(handle->Read(shared).bytes, 3u);
  EXPECT_EQ(handle->Write(sent).error, DriverError::NotConnected);
  auto pending = handle->BeginControl(0xABC, sent, shared, &error_);
  EXPECT_EQ(pending->Wait(3000), PendingControl::Waited::Timeout);
  EXPECT_TRUE(pending->Finish().ok);
  handle.reset();
  inner_.openError = DriverError::SharingViolation;
  EXPECT_EQ(tracer_.Open({{0xE9, 0xD800}}, &error_), nullptr);
  EXPECT_EQ(error_, DriverError::SharingViolation);
  EXPECT_EQ(tracer_.InterfacePath(GUID{}, 0), u"\\\\?\\usb#1");
  EXPECT_EQ(tracer_.InterfacePath(GUID{}, 1), std::nullopt);
  tracer_.NoteRegister(DriverHost::RegisterAccess::Write, 0x3012, 0xFFFFFFFF);
  tracer_.NoteRegister(DriverHost::RegisterAccess::Read, 9, 0);
  const std::string expected[] = {
      R"({"step":"open","call":"open","path":"\\\\.\\ZelUsbBD-0","in":"","out":"","in_size":0,"out_size":0,"ok":true,"bytes":0})",
      R"({"step":"open","call":"control","code":"0x222051","in":"06ab00","out":"eeeeee","in_size":3,"out_size":3,"ok":true,"bytes":3})",
      std::string("{\"step\":\"a\\\"b\\\\\\u000a\xEF\xBF\xBD\",") +
          R"("call":"seek","position":4295099392,"in":"","out":"","in_size":0,"out_size":0,"ok":true,"bytes":0})",
      R"({"step":"","call":"read","in":"","out":"eeeeee","in_size":0,"out_size":3,"ok":true,"bytes":3})",
      R"({"step":"","call":"write","in":"0102","out":"","in_size":2,"out_size":0,"ok":false,"bytes":0,"error":"not connected"})",
      R"({"step":"","call":"begin","code":"0x000ABC","in":"0102","out":"","in_size":2,"out_size":3,"ok":true,"bytes":0})",
      R"({"step":"","call":"wait","milliseconds":3000,"in":"","out":"","in_size":0,"out_size":0,"ok":false,"bytes":0,"error":"time-out"})",
      R"({"step":"","call":"finish","in":"","out":"eeeeee","in_size":0,"out_size":3,"ok":true,"bytes":3})",
      R"({"step":"","call":"close","in":"","out":"","in_size":0,"out_size":0,"ok":true,"bytes":0})",
      std::string("{\"step\":\"\",\"call\":\"open\",\"path\":\"\xC3\xA9\xEF\xBF\xBD\",") +
          R"("in":"","out":"","in_size":0,"out_size":0,"ok":false,"bytes":0,"error":"in use"})",
      R"({"step":"","call":"interface","path":"\\\\?\\usb#1","in":"","out":"","in_size":0,"out_size":0,"ok":true,"bytes":0})",
      R"({"step":"","call":"interface","path":"","in":"","out":"","in_size":0,"out_size":0,"ok":false,"bytes":0,"error":"not found"})",
      R"({"step":"","register":12306,"value":4294967295,"access":"write"})",
      R"({"step":"","register":9,"value":0,"access":"read"})"};
  EXPECT_THAT(lines_, testing::ElementsAreArray(expected));
}

TEST_F(Tracing, ShowsTheStartOfLongBuffersAndTakesSeveralThreads) {
  std::vector<std::uint8_t> frame(1000);
  EXPECT_TRUE(tracer_.Open({}, &error_)->Read(frame).ok);
  std::string shown;
  for (int n = 0; n < 128; ++n) shown += "ee";
  EXPECT_THAT(lines_[1], testing::HasSubstr("\"out\":\"" + shown + "\",\"in_size\":0,\"out_size\":1000"));
  lines_.clear();
  const auto work = [this] {
    for (int n = 0; n < 500; ++n) tracer_.NoteRegister(DriverHost::RegisterAccess::Read, 1, 2);
  };
  {
    const Worker first(work), second(work);
    tracer_.SetStep("x");
  }
  EXPECT_EQ(lines_.size(), 1000u);
}

TEST(InstalledHost, IsTheCurrentOneForItsScope) {
  FakeHost outer, inner;
  {
    const ScopedDriverHost first(outer);
    { const ScopedDriverHost second(inner), third(outer); }
    EXPECT_EQ(&CurrentDriverHost(), &outer);
  }
  EXPECT_EQ(&CurrentDriverHost(), &SystemDriverHost());
}

}  // namespace
}  // namespace zel
