#pragma once

#include <string>

namespace zel {

/// Full path of the module (DLL or program) that this code is part of.
std::wstring ModulePath();

}  // namespace zel
