#pragma once

#include "imaging/COrvaneImageImpl.h"

namespace zel {

/// The image object for 24-bit pixels (output format 4). Neither colour matrix, gamma nor the enhancement
/// filters act here; automatic white balance has the modes 1 and 2.
class COrvaneImageImpl24 : public COrvaneImageImpl {
 public:
  using COrvaneImageImpl::COrvaneImageImpl;

  bool SaveToFile(const OLECHAR* path) override;
  bool ConvertRaw(unsigned char* frame) override;
  bool ConvertComplementary(unsigned char* frame) override;
  DWORD GetMeanLuminance() override;
};

}  // namespace zel
