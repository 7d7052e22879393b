// Copying a whole model from one record store into another: .zmf file to server,
// server to file, or any pair of backends.
#pragma once

#include <string>

#include "zmflib/zmf_file.h"

namespace zmf {

// Replaces the content of `to` with that of `from` in one save: every table of
// the catalogue row by row in stored order, the size estimates `from` keeps, its
// key counters and its format version. False with `error` ("<location>: <cause>")
// when a read or the save failed; `to` then keeps its previous content.
bool CopyStore(CZmfFile& from, CZmfFile& to, std::string& error);

}  // namespace zmf
