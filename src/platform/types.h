// Fixed-width stand-ins for the framework types the library's interface is written in.
//
// The library's arithmetic (hashes, status words, keys) depends on these widths, so
// they are pinned here once: ULONG/DWORD are 32 bits even though `unsigned long` is
// 64 bits on Linux. Write these names, never `unsigned long`, in signatures.
#pragma once

#include <cstdint>

using DWORD = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using UINT = unsigned int;
using WORD = std::uint16_t;
using BYTE = std::uint8_t;
using BOOL = int;
using DATE = double;  // OLE automation date: days since 1899-12-30

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

// An opaque cursor into a container. Containers hand out their own node pointers
// (or encoded indexes) as POSITION; a null POSITION means "no more elements".
struct __POSITION {};
using POSITION = __POSITION*;

static_assert(sizeof(DWORD) == 4 && sizeof(ULONG) == 4 && sizeof(LONG) == 4);
static_assert(sizeof(POSITION) == sizeof(void*));
