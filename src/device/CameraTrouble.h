#pragma once

#include <string>

#include "platform/Mutex.h"

namespace zel {

/// What keeps an open camera from working as one, for its user. Results can't say it: they stay those of a
/// camera that is slow or silent. Any thread.
class CameraTrouble {
 public:
  enum class Kind {
    None,
    WriteRefused,      ///< nothing is written to a drive that holds what no camera holds
    NoAcknowledgement  ///< what stands behind the volume does not act as a camera
  };
  struct Report {
    Kind kind = Kind::None;
    std::string words;  ///< one sentence without a full stop
  };

  /// Told in the log, too, unless the program tells its user itself.
  void Note(Kind kind, const std::string& words);
  void Clear();
  Report Now() const;
  void LeaveTellingToProgram();

 private:
  mutable Mutex mutex_;
  Report report_;
  bool isLogged_ = true;
};

}  // namespace zel
