#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/InterceptingDriverHost.h"
#include "platform/SessionFile.h"

namespace zel {

/// Plays a recorded session back without the camera, and notes where the library makes other calls than then.
/// The n-th open of a path is the n-th recorded open of that path; the calls on a handle must come in the
/// recorded order and ask the same. A call that doesn't is answered with failure, one past the end of its
/// handle's recording as if the camera had been unplugged. Sleeps take no time, and the clock shows what it
/// showed then. Any thread.
class ReplayDriverHost : public InterceptingDriverHost {
 public:
  /// What counts as a difference at the end of a handle's recording. `MayVary` is for sessions that captured
  /// with worker threads, where timing decides how many frames are still read: there repetitions of earlier
  /// calls on the same path may be missing or come in addition.
  enum class Tail { Exact, MayVary };

  /// The session must outlive this host.
  ReplayDriverHost(const Session& session, Tail tail);

  struct Summary {
    std::uint64_t matched = 0;
    std::uint64_t different = 0;
    std::uint64_t neverMade = 0;           ///< recorded calls that the library did not make
    std::vector<std::string> differences;  ///< the first ten, in words

    bool IsIdentical() const { return different == 0 && neverMade == 0; }
  };
  /// Complete once every handle is closed.
  Summary Summarize() const;

  /// Whether some call went past the end of its recording: nothing but failures follows there.
  bool HasRunOut() const;

  void Sleep(std::uint32_t) override {}
  std::uint64_t Milliseconds() override;
  void ShowMessage(std::u16string_view) override {}

 protected:
  DriverResult Intercept(DriverCall& call, const Forward& forward) override;

 private:
  /// Calls that must come in this order: opens of a path, lookups of an interface, calls on a handle.
  struct Track {
    std::string name;  ///< for messages
    std::string path;  ///< that repetitions are looked for on
    std::vector<const SessionRecord*> records;
    std::size_t next = 0;

    bool AtEnd() const { return next == records.size(); }
  };

  Track& TrackOf(const DriverCall& call, const SessionRequest& request);
  Track& OpensOf(const SessionRequest& request);
  Track& LookupsOf(const SessionRequest& request);
  const SessionRecord* Match(Track& track, const SessionRequest& request);
  DriverResult Close(Track& track);
  DriverResult Refuse(Track& track, const SessionRequest& request);
  void NoteDifference(const Track& track, const std::string& text);
  bool IsRepetition(const Track& track, const SessionRequest& request) const;
  std::uint64_t NeverMade(const Track& track) const;

  const Session& session_;
  const Tail tail_;
  mutable std::mutex mutex_;                              // guards what follows
  std::map<std::string, Track> opens_;                    // by path
  std::map<std::string, Track> lookups_;                  // by interface class and index
  std::map<std::uint32_t, Track> handles_;                // by recorded handle
  std::map<std::uint32_t, Track*> played_;                // by handle of this host
  std::map<std::string, std::set<SessionRequest>> seen_;  // what was asked on each path, for `MayVary`
  Summary summary_;
  bool runOut_ = false;
  std::size_t nextLook_ = 0;
};

}  // namespace zel
