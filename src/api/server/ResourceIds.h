#pragma once

// Shared with the resource compiler: numbers of the registration scripts, of type REGISTRY.
#define ZEL_SCRIPT_APPLICATION 101
#define ZEL_SCRIPT_CLASS 102
