// The integrity check of the stored view metadata (part of CheckModelFile).
#pragma once

#include "model/model_check_detail.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

// Reports every stored component, column, field, field column and column usage
// whose view is not stored.
void CheckViewTables(CZmfFile& file, CReporter& out);

}  // namespace tessmeta
