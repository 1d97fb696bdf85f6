#pragma once

#include "platform/ComponentTypes.h"

/// Where the number of a register or bit comes from, told at its definition. What a whole type has documented
/// stands in the model table.
namespace zel {

/// The camera's documentation gives it, for the types of the model table's column.
consteval LONG Documented(LONG number) {
  return number;
}

/// No document gives it: chosen here, to be compared with the camera.
consteval LONG Chosen(LONG number) {
  return number;
}

}  // namespace zel
