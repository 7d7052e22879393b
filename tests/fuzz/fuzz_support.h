// What the fuzz targets share: a scratch folder, the properties every model must
// keep whatever its input, and a digest of a model's managers for comparisons.
#pragma once

#include <cstdint>
#include <string>

#include "model/model_file.h"

namespace tessmeta::fuzz {

// A folder of this process's own (in memory when /dev/shm exists), made on first
// use; `name` inside it.
std::string ScratchFile(const std::string& name);
// Removes the file and its journal.
void RemoveModelFile(const std::string& path);

// Stops the run with `what` when `condition` is false (a finding).
void Require(bool condition, const std::string& what);

// Every object (type, owner, GUIDs, status, domain), string and usage of the model,
// and each catalogue table's row count as the managers report it, as text.
std::string ModelDigest(CModelFile& model);

// Opens `path` as a model. A refusal must say why and name the file; a model that
// opens is walked, checked, saved to a second file, and that file must reopen,
// walk and check as well.
void OpenWalkSaveReopen(const std::string& path);

// A small valid model with texts, domains and every manager's defaults, saved at
// `path` (which must not exist).
void WriteSmallModel(const std::string& path, std::uint64_t objects);

}  // namespace tessmeta::fuzz
