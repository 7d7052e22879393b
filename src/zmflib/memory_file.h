// The in-memory backend: tables as lists of row copies, nothing on disk.
#pragma once

#include "zmflib/zmf_file.h"

// A model file that lives in memory. Fast and fully deterministic, which makes it
// the store of choice for unit tests; combine with CTableBase::FailInsertCalls to
// exercise save failures. Commit only records that the save ended.
class CMemoryZmfFile final : public CZmfFile {
  public:
    explicit CMemoryZmfFile(DWORD formatVersion);

  protected:
    std::unique_ptr<CTableBase> CreateTable(const SZmfTableDesc& desc) override;
    bool BeginSave() override { return true; }
    bool CommitSave() override;
};
