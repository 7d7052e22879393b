// GUIDs as the model file stores them: 32 lower-case hexadecimal digits.
//
// The digits are those of UuidToStringA with the dashes left out (Data1, Data2 and
// Data3 printed as numbers, then the eight Data4 bytes); the nil GUID is stored as
// the empty text. Text is read in two forms: exactly 32 digits, or the runtime's
// dashed 36-character form (8-4-4-4-12); digits of either case.
//
// Loads and lookups handle millions of these, so nothing here allocates: digits go
// to and from fixed buffers, and a CString or field that already holds a GUID text
// is overwritten in place.
#pragma once

#include <string_view>

#include "platform/cstring.h"
#include "platform/guid.h"
#include "zmflib/fields.h"

namespace tessmeta {

inline constexpr int kGuidDigits = 32;

inline bool IsNilGuid(const GUID& guid) {
    return guid == GUID_NULL;
}

// The 32 digits of `guid`, without a terminating NUL.
void FormatGuidDigits(const GUID& guid, char* out);

// The stored text of `guid`: its 32 digits, or empty for the nil GUID.
void GuidToText(const GUID& guid, CString& out);
void GuidToText(const GUID& guid, CZmfString& out);

// Reads `text` in either form into `guid`. Empty or malformed text returns false
// and leaves `guid` as it was.
bool GuidFromText(std::string_view text, GUID& guid);

// Reads `text` after dropping every '-' wherever it stands: true only when exactly
// 32 digits remain. False leaves `guid` as it was.
bool GuidFromTextIgnoringDashes(std::string_view text, GUID& guid);

// Where new GUIDs come from: UuidCreate unless replaced. Tests install a source
// that fails, to reach the fallbacks of CGuidMgr::CreateNewGUID. Passing null
// restores UuidCreate; the previous source is returned. Install it before the
// library is in use: the source is process-wide.
using GuidSource = RPC_STATUS (*)(UUID* uuid);
GuidSource SetGuidSource(GuidSource source);

// A new GUID from the installed source.
RPC_STATUS CreateGuid(UUID* uuid);

}  // namespace tessmeta
