#pragma once

#include <cstdint>

/// Result codes of the library that the component model has no name for. The usual ones (S_OK, E_FAIL,
/// E_INVALIDARG, E_HANDLE, E_NOTIMPL) come from platform/ComponentTypes.h.
namespace zel {

using ResultCode = std::int32_t;

/// `GetData`: no frame arrived within the time-out.
constexpr ResultCode kResultTimeout = static_cast<ResultCode>(0x8000401Eu);

/// Sub-sampling can't change while the camera captures or is closed.
constexpr ResultCode kResultCapturing = static_cast<ResultCode>(0x8004D011u);

}  // namespace zel
