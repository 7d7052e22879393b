// Checks on record stores shared by the backend tests: opening, a model of unique
// objects written and verified, and whole stores compared row by row.
#pragma once

#include <memory>
#include <string>

#include "zmflib.h"

namespace tessmeta::test {

// Opens a model file or URI, failing the test (and returning null) when it cannot.
std::unique_ptr<CZmfFile> OpenOk(const std::string& path);
// The error of an open that must fail.
std::string OpenError(const std::string& path);

// Writes `count` unique objects (keys 1..count, Model_ID = key + offset) in one save.
void SaveObjects(CZmfFile& file, ULONG count, ULONG offset);
// Checks that the store holds exactly the objects SaveObjects(count, offset) wrote.
void ExpectObjects(const std::string& path, ULONG count, ULONG offset);

// Compares two stores as a whole: format version, key counters, and every table of
// the catalogue row by row in stored order (a missing table reads as empty).
// Returns the first difference, empty when they are the same.
std::string StoreDifference(CZmfFile& a, CZmfFile& b);

}  // namespace tessmeta::test
