#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <numeric>

#include "TemporaryFolder.h"
#include "platform/FakeHost.h"
#include "platform/RecordingDriverHost.h"
#include "platform/ReplayDriverHost.h"

namespace zel {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;
using Tail = ReplayDriverHost::Tail;
using namespace std::string_view_literals;

constexpr GUID kClass = {0x01020304, 0x0506, 0x0708, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr std::uint32_t kInDirect = 0x222051, kBuffered = 0x220020;
const OpenRequest kCamera{.path = u"\\\\.\\Cam-0", .access = kAccessWrite, .share = kShareWrite, .flags = 0};

class Sessions : public testing::Test {
 protected:
  void SetUp() override {
    // Every buffer gets other bytes.
    camera_.fill = [n = std::make_shared<std::uint8_t>()](FakeHost::Out out) {
      for (std::uint8_t& byte : out) byte = ++*n;
    };
  }

  void Record(const std::function<void(DriverHost&)>& play) {
    RecordingDriverHost recorder(camera_, path_);
    play(recorder);
    EXPECT_FALSE(fs::exists(path_)) << "not before it is whole";
    EXPECT_TRUE(recorder.Finish("{\"camera\":1}")) << recorder.Error();
  }

  Session Load() const {
    Session session;
    std::string error;
    EXPECT_TRUE(ReadSession(path_, &session, &error)) << error;
    return session;
  }

  Bytes Contents() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  ReplayDriverHost::Summary Replay(Tail tail, const std::function<void(DriverHost&)>& play) const {
    const Session session = Load();
    ReplayDriverHost host(session, tail);
    play(host);
    return host.Summarize();
  }

  using FakeHost = test::FakeHost;
  FakeHost camera_;
  const test::TemporaryFolder folder_;
  const fs::path path_ = folder_.Path() / "session.zel";
};

/// Makes calls of every kind and writes down all that comes of them.
std::string EveryKindOfCall(DriverHost& host) {
  std::string log;
  const auto note = [&](DriverResult result, const Bytes& bytes) {
    log +=
        testing::PrintToString(bytes) + DriverErrorText(result.error) + std::to_string(result.bytes) + "; ";
  };
  DriverError error = DriverError::None;
  log += testing::PrintToString(host.InterfacePath(kClass, 0) == u"\\\\?\\usb#1");
  log += testing::PrintToString(host.InterfacePath(kClass, 1).has_value());
  log += std::to_string(host.Milliseconds());
  const auto first = host.Open(kCamera, &error), second = host.Open(kCamera, &error);
  for (DriverHandle* const handle : {second.get(), first.get()}) {
    Bytes area{1, 2, 3};
    note(handle->Control(kInDirect, Bytes{9}, area), area);
    note(handle->Control(kBuffered, area, area), area);
    note(handle->Seek(0x123456789), {});
    Bytes large(1000);
    note(handle->Read(large), large);
    note(handle->Write(area), {});
    const auto transfer = handle->BeginControl(kBuffered, large, large, &error);
    log += std::to_string(static_cast<int>(transfer->Wait(100)));
    transfer->Cancel();
    note(transfer->Finish(), large);
  }
  return log;
}

TEST_F(Sessions, GiveBackWhatWasRecorded) {
  std::string recorded, replayed;
  Record([&](DriverHost& host) { recorded = EveryKindOfCall(host); });
  const auto summary = Replay(Tail::Exact, [&](DriverHost& host) { replayed = EveryKindOfCall(host); });
  EXPECT_EQ(replayed, recorded);
  EXPECT_TRUE(summary.IsIdentical()) << testing::PrintToString(summary.differences);
  EXPECT_EQ(summary.matched, 2u + 2 * 11);
  EXPECT_EQ(Load().description, "{\"camera\":1}");
}

TEST_F(Sessions, HaveAFixedFormat) {
  Record([](DriverHost& host) {
    DriverError error = DriverError::None;
    Bytes area{7, 8};
    EXPECT_TRUE(host.Open(kCamera, &error)->Control(kInDirect, Bytes{5}, area).ok);
  });
  Bytes file = Contents();
  const std::size_t record = 12 + (4 + 48 + 4 * 4 + 9);  // the second: the control call
  ASSERT_GT(file.size(), record + 80);
  std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(record) + 36, 8, std::uint8_t{0xEE});  // its time
  const Bytes head{'Z', 'E', 'L', 'S', 'E', 'S', 'S', 0x1A, 1, 0, 0, 0};
  const Bytes control{69,   0,    0,    0,    2,    1,    0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0x51, 0x20, 0x22,
                      0,    0,    0,    0,    0,    0,    0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0,    0xEE, 0xEE,
                      0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0,    0,    1,
                      0,    0,    0,    5,    2,    0,    0, 0, 7, 8, 2, 0, 0, 0, 1, 2};
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 12), head);
  const auto start = file.begin() + static_cast<std::ptrdiff_t>(record);
  EXPECT_EQ(Bytes(start, start + static_cast<std::ptrdiff_t>(control.size())), control);
}

/// What a session plays on one handle; changed rows against the plain one.
struct Script {
  std::string_view packet = "\x04\x09\x03\xE8\0\0"sv;
  std::uint32_t code = kInDirect;
  std::size_t sector = 512;
  std::uint64_t position = 131072;
  int frames = 2;
  bool opensAgain = false;
  std::uint32_t access = kAccessWrite;

  void operator()(DriverHost& host) const {
    DriverError error = DriverError::None;
    const auto handle = host.Open({kCamera.path, access, kCamera.share, 0}, &error);
    if (!handle) return;
    Bytes area(packet.begin(), packet.end()), data(sector);
    (void)handle->Control(code, Bytes{0, 0, 0, 0}, area);
    for (int n = 0; n < frames; ++n) {
      (void)handle->Seek(position);
      (void)handle->Read(data);
    }
    if (opensAgain) {
      EXPECT_EQ(host.Open(kCamera, &error), nullptr);
      EXPECT_EQ(error, DriverError::FileNotFound);
    }
  }
};

TEST_F(Sessions, TellWhereTheLibraryDiffers) {
  const struct {
    Script script;
    Tail tail;
    std::uint64_t matched, different, neverMade;
    const char* words;
  } rows[] = {
      {{}, Tail::Exact, 7, 0, 0, ""},
      {{.packet = "\x04\x09\x03\xE9\0\0"sv},
       Tail::Exact,
       6,
       1,
       0,
       "call 1 of \\\\.\\Cam-0: expected control 0x222051 04 09 03 e8, the library sent 04 09 03 e9"},
      {{.packet = "\x04\x09\x03\xE8\0"sv}, Tail::Exact, 6, 1, 0, "04 09 03 e8, the library sent 04 09 03 e8"},
      {{.code = kBuffered}, Tail::Exact, 6, 1, 0, "the library made control 0x220020 00"},
      {{.sector = 511},
       Tail::Exact,
       5,
       2,
       0,
       "call 3 of \\\\.\\Cam-0: expected read of 512 bytes, the library made read of 511 bytes"},
      {{.position = 5}, Tail::Exact, 5, 2, 0, "expected seek to 131072, the library made seek to 5"},
      {{.frames = 1}, Tail::Exact, 5, 0, 2, ""},
      {{.frames = 3},
       Tail::Exact,
       7,
       2,
       0,
       "call 6 of \\\\.\\Cam-0: expected nothing more, the library made seek"},
      {{.opensAgain = true},
       Tail::Exact,
       7,
       1,
       0,
       "call 2 of the opens of \\\\.\\Cam-0: expected nothing more"},
      {{.access = kAccessRead}, Tail::Exact, 0, 1, 6, "access 0x40000000, share 2"},
      {{.frames = 1}, Tail::MayVary, 5, 0, 0, ""},
      {{.frames = 40}, Tail::MayVary, 7, 0, 0, ""},
      {{.position = 5, .frames = 3}, Tail::MayVary, 5, 3, 0, "seek to 5"},
      {{.packet = "\x01"sv, .frames = 1}, Tail::MayVary, 4, 1, 0, "the library sent 01"},
      {{.sector = 9, .frames = 20}, Tail::Exact, 5, 38, 0, "expected nothing more"},
  };
  Record(Script());
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    const auto summary = Replay(row.tail, row.script);
    const std::string words =
        std::accumulate(summary.differences.begin(), summary.differences.end(), std::string());
    EXPECT_EQ(summary.matched, row.matched);
    EXPECT_EQ(summary.different, row.different) << words;
    EXPECT_EQ(summary.neverMade, row.neverMade);
    EXPECT_THAT(words, HasSubstr(row.words));
    EXPECT_EQ(summary.differences.size(), std::min<std::uint64_t>(row.different, 10));
  }
}

TEST_F(Sessions, RefuseDamagedFiles) {
  Record([](DriverHost& host) { EveryKindOfCall(host); });
  const Bytes whole = Contents();
  Session session;
  std::string error;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    error.clear();
    EXPECT_FALSE(
        ParseSession({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}, &session, &error));
    EXPECT_NE(error, "") << size;
  }
  // What parses nevertheless must play without harm.
  int refused = 0;
  for (std::size_t at = 0; at + 4 <= whole.size(); ++at) {
    for (const std::uint8_t byte : {0xFF, 0x01, 0x0B}) {
      Bytes damaged = whole;
      std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(at), byte == 0xFF ? 4 : 1, byte);
      error.clear();
      if (ParseSession(damaged, &session, &error)) {
        ReplayDriverHost host(session, Tail::Exact);
        Script()(host);
      } else {
        EXPECT_NE(error, "") << at;
        ++refused;
      }
    }
  }
  EXPECT_GT(refused, 500);

  const struct {
    std::size_t at;
    std::uint8_t byte;
    const char* words;
  } rows[] = {{0, 'z', "it is not a recorded session"},
              {8, 2, "its format has version 2, not 1"},
              {16, 99, "record 1 at byte 12: it is of an unknown kind"},
              {12, 9, "record 1 at byte 12: its pieces do not fill it"}};
  for (const auto& row : rows) {
    Bytes damaged = whole;
    damaged[row.at] = row.byte;
    EXPECT_FALSE(ParseSession(damaged, &session, &error));
    EXPECT_EQ(error, row.words);
  }
  EXPECT_FALSE(ReadSession(path_ / "none", &session, &error));
}

TEST_F(Sessions, AreNotLeftBehindHalfDone) {
  fs::path part = path_;
  part += ".part";
  {
    RecordingDriverHost recorder(camera_, path_);
    Script()(recorder);
    EXPECT_TRUE(fs::exists(part));
  }
  EXPECT_FALSE(fs::exists(part));
  RecordingDriverHost recorder(camera_, path_ / "no-folder" / "a");
  Script()(recorder);
  EXPECT_NE(recorder.Error(), "");
  EXPECT_FALSE(recorder.Finish(""));
  EXPECT_FALSE(fs::exists(path_));
}

}  // namespace
}  // namespace zel
