// The integrity check of the stored view metadata (part of CheckModelFile).
#pragma once

#include "model/model_check.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

// Reports every stored component, column, field, field column and column usage
// whose view is not stored.
void CheckViewTables(CZmfFile& file, CCheckReporter& out);

}  // namespace tessmeta
