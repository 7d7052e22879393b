// Registered window messages.
//
// The library announces repository events to the host under named messages. The
// host and the library must agree on the numbers, so the names are registered in
// one process-wide table: the first registration of a name takes the next id from
// 0xC000 upward, and every later registration of the same name (byte for byte)
// returns that id again. Safe to call from any thread, including during static
// initialisation.
#pragma once

#include "platform/types.h"

// The id of `name`; 0 for a null or empty name, or once all ids up to 0xFFFF have
// been handed out.
UINT RegisterWindowMessageA(const char* name);
