// The integrity check of the metadata and code-object tables, part of
// CheckModelFile (model_check.h), made on the stored tables.
#pragma once

#include <functional>
#include <string>
#include <unordered_set>

#include "model/model_check.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

using CheckFindingSink =
    std::function<void(ECheckKind kind, const char* table, std::string detail)>;

// Reports members whose meta table does not exist, allowed values and object values
// ("Property_Value", "Property_Usage") whose property does not exist, and code
// objects whose model is not among `objects` (the unique object ids).
void CheckMetadataTables(CZmfFile& file, const std::unordered_set<DWORD>& objects,
                         const CheckFindingSink& add);

}  // namespace tessmeta
