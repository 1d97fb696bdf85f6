#include "models/Factory.h"

namespace zel {

// One line per type, made by CMakeLists.txt: ZEL_MODEL(two digits, number).
#define ZEL_MODEL(digits, number) CZELDevice* CreateModel##digits();
#include "ModelList.inc"
#undef ZEL_MODEL

CZELDevice* CreateDeviceForType(std::uint32_t type) {
  switch (type) {
#define ZEL_MODEL(digits, number) \
  case number:                    \
    return CreateModel##digits();
#include "ModelList.inc"
#undef ZEL_MODEL
    default:
      return nullptr;
  }
}

}  // namespace zel
