// GUIDs in the Windows layout and the RPC runtime's functions on them.
//
// The byte layout is part of the model file's identity data: Data1, Data2 and Data3
// are native (little-endian) integers followed by the eight Data4 bytes, 16 bytes in
// all. The text form is the runtime's: 36 characters, 8-4-4-4-12 hexadecimal digits
// where the first three groups print Data1, Data2 and Data3 as numbers and the last
// two print Data4[0..1] and Data4[2..7] byte by byte.
#pragma once

#include <cstdint>

#include "platform/types.h"

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using UUID = GUID;

static_assert(sizeof(GUID) == 16);

bool operator==(const GUID& a, const GUID& b) noexcept;
inline bool operator!=(const GUID& a, const GUID& b) noexcept {
    return !(a == b);
}
inline bool IsEqualGUID(const GUID& a, const GUID& b) noexcept {
    return a == b;
}

inline constexpr GUID GUID_NULL{};

using RPC_STATUS = LONG;
using RPC_CSTR = unsigned char*;

inline constexpr RPC_STATUS RPC_S_OK = 0;
inline constexpr RPC_STATUS RPC_S_OUT_OF_MEMORY = 14;
inline constexpr RPC_STATUS RPC_S_INVALID_ARG = 87;
inline constexpr RPC_STATUS RPC_S_INVALID_STRING_UUID = 1705;
inline constexpr RPC_STATUS RPC_S_UUID_NO_ADDRESS = 1739;

// A random (version 4, RFC 4122 variant) GUID from the kernel's random source.
// RPC_S_UUID_NO_ADDRESS, with *uuid unchanged, only when that source fails.
RPC_STATUS UuidCreate(UUID* uuid);

// Sets all 16 bytes to zero.
RPC_STATUS UuidCreateNil(UUID* uuid);

// TRUE when all 16 bytes are zero; a null uuid counts as nil. *status (if given)
// becomes RPC_S_OK.
int UuidIsNil(UUID* uuid, RPC_STATUS* status);

// Parses exactly the 36-character form (hex digits of either case, '-' at offsets
// 8, 13, 18 and 23, nothing after). Anything else returns RPC_S_INVALID_STRING_UUID
// and leaves *uuid unchanged. A null text gives the nil GUID.
RPC_STATUS UuidFromStringA(RPC_CSTR text, UUID* uuid);

// Allocates the lower-case 36-character text of *uuid (nil for a null uuid) into
// *text; release it with RpcStringFreeA.
RPC_STATUS UuidToStringA(const UUID* uuid, RPC_CSTR* text);

// Frees a text from UuidToStringA and nulls the pointer.
RPC_STATUS RpcStringFreeA(RPC_CSTR* text);
