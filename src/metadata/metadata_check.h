// The integrity check of the stored metadata and code-object tables (part of
// CheckModelFile).
#pragma once

#include "model/model_check_detail.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

// Reports members whose meta table is not stored, allowed values and object values
// ("Property_Value", "Property_Usage") whose property is not stored, and code
// objects whose model is not a unique object; `objects` holds every unique object id.
void CheckMetadataTables(CZmfFile& file, const CIdSet& objects, CReporter& out);

}  // namespace tessmeta
