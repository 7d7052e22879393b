// Shared pieces of the benchmarks: scratch files and synthetic rows.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "zmflib.h"

namespace tessmeta::bench {

// A scratch directory for benchmark files, removed at exit.
const std::string& ScratchDir();
std::string ScratchFile(const std::string& name);

// Deterministic unique-object rows (key = index + 1, GUID texts of 32 digits).
std::vector<CUniqueObjectBase> MakeUniqueObjects(size_t count);

// Creates the scratch model file `name` with `rows` as its unique objects, saved and
// committed; returns the open file (to add more tables) and sets `path`.
std::unique_ptr<CZmfFile> CreateUniqueObjectFile(const std::string& name,
                                                 const std::vector<CUniqueObjectBase>& rows,
                                                 std::string& path);

// Opens a file with the raw SQLite API for a baseline, with the store's pragmas.
sqlite3* OpenRaw(const std::string& path);

// A model file to save into: created anew (empty tables), as a save replaces the
// rows of an existing file.
std::string FreshSaveTarget(const char* name);

// The raw baseline of a unique-object save: prepared INSERTs of `batch` rows each
// (single-row ones for the tail) in one transaction, then the commit. False when
// the commit failed.
bool RawSaveUniqueObjects(const std::string& path, const std::vector<CUniqueObjectBase>& rows,
                          int batch);

// The raw baseline of a unique-object scan: a sqlite3_step loop that reads every
// column of "UniqueObject" into a plain struct, as a hand-written loader would.
class CRawUniqueObjectScan {
  public:
    explicit CRawUniqueObjectScan(const std::string& path);
    ~CRawUniqueObjectScan();
    CRawUniqueObjectScan(const CRawUniqueObjectScan&) = delete;
    CRawUniqueObjectScan& operator=(const CRawUniqueObjectScan&) = delete;
    // Reads every row; returns the row count.
    size_t Run();

  private:
    sqlite3* m_db;
    sqlite3_stmt* m_stmt = nullptr;
};

// Raw baselines for any table of the catalogue.
//
// A scan: a sqlite3_step loop that reads every column of the table, in stored order,
// into plain buffers (integers as int64, texts as std::string, dates as double), as a
// hand-written loader would.
class CRawTableScan {
  public:
    CRawTableScan(const std::string& path, const SZmfTableDesc& desc);
    ~CRawTableScan();
    CRawTableScan(const CRawTableScan&) = delete;
    CRawTableScan& operator=(const CRawTableScan&) = delete;
    // Reads every row; returns the row count.
    size_t Run();

  private:
    const SZmfTableDesc& m_desc;
    sqlite3* m_db;
    sqlite3_stmt* m_stmt = nullptr;
};

// A save: the rows replace the table's in one transaction, through prepared
// INSERTs of `batch` rows each (single-row ones for the tail), then the commit.
// False when the commit failed.
bool RawSaveRows(const std::string& path, const SZmfTableDesc& desc,
                 const std::vector<const CDbObjectBase*>& rows, int batch);

// Writes `rows` into table `desc` of the scratch model file `name` (created anew),
// committed; returns its path.
std::string CreateTableFile(const std::string& name, const SZmfTableDesc& desc,
                            const std::vector<const CDbObjectBase*>& rows);

}  // namespace tessmeta::bench
