// The path of a loaded module.
//
// The library finds files that ship beside it (the macro templates) from its own
// location, whether it is linked into an executable or into a shared object.
#pragma once

#include "platform/types.h"

// A loaded module is named, as on Windows, by its base address; any address inside
// the module also names it.
using HMODULE = void*;

// Copies the full path of `module` into `buffer`: for a null module, the shared
// object or executable that contains this library. At most size - 1 bytes are
// copied, followed by a NUL. Returns the number of bytes copied without the NUL;
// when the path was truncated, returns `size`; on failure (an address in no module,
// a null buffer or size 0) returns 0.
DWORD GetModuleFileNameA(HMODULE module, char* buffer, DWORD size);
