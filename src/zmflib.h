// The record store: model files (.zmf, SQLite) and the in-memory store, their
// tables, row classes, iterators and key allocator. Includes the platform layer.
#pragma once

#include "platform/cmap.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/guid.h"
#include "platform/hooks.h"
#include "platform/module.h"
#include "platform/oledatetime.h"
#include "platform/types.h"
#include "platform/winmsg.h"
#include "zmflib/catalogue.h"
#include "zmflib/db_object.h"
#include "zmflib/fields.h"
#include "zmflib/identity_mgr.h"
#include "zmflib/iterators.h"
#include "zmflib/rows.h"
#include "zmflib/table_base.h"
#include "zmflib/zmf_file.h"
