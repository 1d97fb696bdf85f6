#include "models/FieldWeaver.h"

#include <cstring>

namespace zel {

void FieldWeaver::LayOut(std::size_t lineBytes, LONG lines, FirstField first) {
  lineBytes_ = lineBytes;
  lines_ = lines;
  firstStarts_ = first == FirstField::Odd ? 1 : 0;
  fields_.resize(lineBytes * static_cast<std::size_t>(lines));
}

void FieldWeaver::Weave(unsigned char* frame) {
  if (lines_ == 0) return;
  std::memcpy(fields_.data(), frame, fields_.size());
  const auto firstLines = static_cast<std::size_t>((lines_ + 1 - firstStarts_) / 2);
  const unsigned char* source[] = {fields_.data(), fields_.data() + lineBytes_ * firstLines};
  for (LONG line = 0; line < lines_; ++line, frame += lineBytes_) {
    const unsigned char*& from = source[(line + firstStarts_) % 2];
    std::memcpy(frame, from, lineBytes_);
    from += lineBytes_;
  }
}

}  // namespace zel
