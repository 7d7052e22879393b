// Shared pieces of the benchmarks: scratch files and synthetic rows.
#pragma once

#include <benchmark/benchmark.h>
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

// The raw baseline of a table scan: per benchmark iteration, a sqlite3_step loop
// over `sql` on the file at `path` that calls read(stmt) for every row; a count
// other than `rows` fails the benchmark.
template <class Read>
void RunRawScan(benchmark::State& state, const std::string& path, const char* sql, size_t rows,
                Read&& read) {
    sqlite3* db = OpenRaw(path);
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    for (auto _ : state) {
        size_t n = 0;
        for (; sqlite3_step(stmt) == SQLITE_ROW; ++n)
            read(stmt);
        sqlite3_reset(stmt);
        if (n != rows) state.SkipWithError("row count");
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
}

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

}  // namespace tessmeta::bench
