#pragma once

#include <cstddef>
#include <vector>

#include "platform/ComponentTypes.h"

namespace zel {

/// Puts the lines of a CCD that is read out in two fields, all even lines and all odd ones, in the order of
/// the picture. Laid out in capture preparation, used for every frame.
class FieldWeaver {
 public:
  enum class FirstField { Even, Odd };

  /// From now on frames stay as they are.
  void Forget() { lines_ = 0; }
  void LayOut(std::size_t lineBytes, LONG lines, FirstField first);
  /// `frame` holds all lines of both fields without gaps.
  void Weave(unsigned char* frame);

 private:
  std::size_t lineBytes_ = 0;
  LONG lines_ = 0;        ///< of both fields; 0: nothing to do
  LONG firstStarts_ = 0;  ///< picture line with which the first field starts
  std::vector<unsigned char> fields_;
};

}  // namespace zel
