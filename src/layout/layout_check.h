// The integrity check of the stored layout settings (part of CheckModelFile).
#pragma once

#include "model/model_check_detail.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

// Reports every stored parameter value whose submodel algorithm, parameter name or
// data type is not stored.
void CheckLayoutTables(CZmfFile& file, CReporter& out);

}  // namespace tessmeta
