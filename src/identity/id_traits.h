// Map traits for maps keyed by a 32-bit id whose hash is the id itself, so that the
// bucket is the id modulo the bucket count (not the framework's key >> 4): ids are
// handed out consecutively, and consecutive ids then fill consecutive buckets.
#pragma once

#include "platform/types.h"

struct SIdHashTraits {
    static constexpr bool kGrow = true;  // see cmap.h: a growing model stays fast
    static UINT Hash(ULONG id) { return id; }
    static bool Equal(const ULONG& stored, ULONG id) { return stored == id; }
};
