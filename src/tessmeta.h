// The tessmeta library: every public class, with the record store and the platform
// types it is written in.
#pragma once

#include "zmflib.h"

#include "foundation/balanced_tree.h"
#include "foundation/enh_services.h"
#include "foundation/enh_table.h"
#include "foundation/enh_table_base.h"
#include "platform/cobject.h"
