// Models for the reliability tests: a base model with every manager populated, a
// deterministic edit of it (no new GUIDs or times, so that two runs of the edit
// write the same file), and comparisons against expected files.
#pragma once

#include <string>
#include <vector>

#include "model/model_file.h"

namespace tessmeta::test {

// Whether this build runs under AddressSanitizer (about ten times slower): the
// longest tests do less there. gcc names it one way, clang another.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool kSanitized = false;
#endif

// Creates `path`: `objects` generated objects with texts, plus a data dictionary,
// properties with values, an object domain, repository flags.
void WriteBaseModel(const std::string& path, std::uint64_t objects);
// Renames every object, drops a definition here and there, deletes every seventh
// object, sets property values, flags objects; `variant` changes every edit.
void EditModel(CModelFile& model, int variant);
// The save every edit ends with (purging): empty on success, else the error.
std::string SaveEdit(CModelFile& model);
// Opens `path`, edits it and saves: empty on success, else the error.
std::string EditAndSave(const std::string& path, int variant);
// Copies a file byte for byte.
void CopyFile(const std::string& from, const std::string& to);
// Empty when `path` opens, checks clean and equals one of `expected` table by
// table; else what is wrong.
std::string SameAsOneOf(const std::string& path, const std::vector<std::string>& expected);

}  // namespace tessmeta::test
