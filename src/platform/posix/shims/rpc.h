#pragma once
// The generated interface header asks for this name; here all its types stand in one place.
#include "platform/posix/ComponentTypesPosix.h"
