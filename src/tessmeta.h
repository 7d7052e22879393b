// The tessmeta library: every public class, with the record store and the platform
// types it is written in.
#pragma once

#include "zmflib.h"

#include "foundation/balanced_tree.h"
