#pragma once

#include <array>
#include <vector>

#include "platform/ComponentTypes.h"

namespace zel {

/// One late-bound call: what script hosts pass, turned into what the type library's parameters ask for.
///
/// - A script's variables arrive as references to variants; for an out parameter that becomes a reference to
/// a
///   value of the parameter's type, and `Return` puts the result into the variable.
/// - Arrays go by reference: one that is given by value may be copied on its way, and a frame written into
/// the
///   copy would never reach the caller.
/// - Buffers of 8-bit characters are texts to a script; a reference to a single byte would be overrun.
class LateCall {
 public:
  LateCall(ITypeInfo& info, DISPID id, const DISPPARAMS* given);
  ~LateCall();
  LateCall(const LateCall&) = delete;
  LateCall& operator=(const LateCall&) = delete;

  DISPPARAMS* Params() { return isGiven_ ? &params_ : nullptr; }
  /// After success.
  void Return();

 private:
  /// What an argument was replaced by.
  struct Slot {
    VARIANT* variable = nullptr;  ///< the script's; gets the result
    VARIANT value{};
    std::array<char, 64> text{};  ///< zero-terminated; serial numbers have 8 characters
  };

  void Convert(const ELEMDESC& parameter, VARIANT& argument, Slot& slot);

  const bool isGiven_;
  std::vector<VARIANT> arguments_;
  std::vector<Slot> slots_;
  DISPPARAMS params_{};
};

/// Says in `failure` which call failed with which arguments and why, unless something is said there already.
void DescribeFailure(ITypeInfo& info, DISPID id, const DISPPARAMS* params, EXCEPINFO* failure);

}  // namespace zel
