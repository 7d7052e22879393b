// Fills rows of any catalogue table with values derived from a seed, and renders
// rows as text, so that tests can cover every table generically.
#pragma once

#include <memory>
#include <string>

#include "zmflib.h"

namespace tessmeta::test {

// A new row of the table whose every column depends on `seed` (key = `key`).
// Texts vary in length (some empty, some of 300 bytes); dates cycle through the
// valid, null and invalid statuses.
std::unique_ptr<CDbObjectBase> MakeRow(const SZmfTableDesc& desc, ULONG key, int seed);

// Every column of the row, as "name=value|..." text, for exact comparisons.
std::string RowText(const SZmfTableDesc& desc, const CDbObjectBase& row);

}  // namespace tessmeta::test
