// The record store against raw SQLite on the same rows, in the same run:
//  - scanning 1,000,000 "UniqueObject" rows through the table iterator against a
//    plain sqlite3_step loop that reads the same columns;
//  - saving 1,000,000 rows through CTableBase::Insert in one save against the
//    fastest raw insert loops (prepared multi-row INSERTs in one transaction, and
//    single-row ones).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/bench_support.h"

namespace {

using tessmeta::bench::MakeUniqueObjects;
using tessmeta::bench::OpenRaw;
using tessmeta::bench::ScratchFile;

constexpr size_t kRows = 1000000;

const std::vector<CUniqueObjectBase>& Rows() {
    static const auto rows = MakeUniqueObjects(kRows);
    return rows;
}

// A model file holding kRows unique objects, written once per run.
const std::string& ScanFile() {
    static const std::string path = [] {
        std::string p = ScratchFile("scan.zmf");
        auto file = CZmfFile::Create(p);
        CTableBase* t = file->GetEmptyTable("UniqueObject");
        for (const auto& row : Rows())
            t->Insert(&row);
        if (!file->Commit()) std::abort();
        return p;
    }();
    return path;
}

void BM_ScanIterator(benchmark::State& state) {
    auto file = CZmfFile::Open(ScanFile());
    for (auto _ : state) {
        CUniqueObjectIterator it(file->GetTable("UniqueObject"));
        CUniqueObjectBase row;
        size_t n = 0;
        while (it.GetNext(&row))
            ++n;
        if (n != kRows) state.SkipWithError("row count");
        benchmark::DoNotOptimize(row);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// The baseline: the same columns read into a plain struct.
void BM_ScanRawSqlite(benchmark::State& state) {
    tessmeta::bench::CRawUniqueObjectScan scan(ScanFile());
    for (auto _ : state)
        if (scan.Run() != kRows) state.SkipWithError("row count");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// Each save replaces the rows of an existing model file, as a model save does.
std::string FreshSaveTarget(const char* name) {
    std::string path = ScratchFile(name);
    std::filesystem::remove(path);
    CZmfFile::Create(path).reset();
    return path;
}

void BM_SaveTableInsert(benchmark::State& state) {
    const auto& rows = Rows();
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("save.zmf");
        state.ResumeTiming();
        auto file = CZmfFile::Open(path);
        CTableBase* t = file->GetEmptyTable("UniqueObject");
        t->SetSizeEstimate(static_cast<LONG>(rows.size()));
        for (const auto& row : rows)
            t->Insert(&row);
        if (!file->Commit()) state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BindObject(sqlite3_stmt* stmt, int base, const CUniqueObjectBase& r) {
    sqlite3_bind_int64(stmt, base + 1, r.Unique_Object_ID);
    sqlite3_bind_int64(stmt, base + 2, static_cast<LONG>(r.Object_Type_ID));
    sqlite3_bind_int64(stmt, base + 3, r.Model_ID);
    sqlite3_bind_int64(stmt, base + 4, r.Object_Domain_ID);
    sqlite3_bind_int64(stmt, base + 5, static_cast<LONG>(r.Plex_ID_1));
    sqlite3_bind_int64(stmt, base + 6, static_cast<LONG>(r.Plex_ID_2));
    sqlite3_bind_double(stmt, base + 7, r.Modification_Date.GetValue().m_dt);
    sqlite3_bind_int64(stmt, base + 8, r.Creation_Time);
    sqlite3_bind_int64(stmt, base + 9, r.Repository_Status);
    sqlite3_bind_int64(stmt, base + 10, r.Reserved);
    sqlite3_bind_text(stmt, base + 11, r.Object_GUID, r.Object_GUID.GetLength(), SQLITE_STATIC);
    sqlite3_bind_text(stmt, base + 12, r.Version_GUID, r.Version_GUID.GetLength(), SQLITE_STATIC);
}

sqlite3_stmt* PrepareInsert(sqlite3* db, int rowsPerStatement) {
    std::string sql =
        "INSERT INTO UniqueObject (Unique_Object_ID, Object_Type_ID, Model_ID, Object_Domain_ID,"
        " Plex_ID_1, Plex_ID_2, Modification_Date, Creation_Time, Repository_Status, Reserved,"
        " Object_GUID, Version_GUID) VALUES ";
    for (int r = 0; r < rowsPerStatement; ++r)
        sql += r ? ",(?,?,?,?,?,?,?,?,?,?,?,?)" : "(?,?,?,?,?,?,?,?,?,?,?,?)";
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
    return stmt;
}

// Prepared INSERTs of `range(0)` rows each, in one transaction.
void BM_SaveRawSqlite(benchmark::State& state) {
    const auto& rows = Rows();
    const int batch = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("raw.zmf");
        state.ResumeTiming();
        sqlite3* db = OpenRaw(path);
        sqlite3_exec(db, "BEGIN IMMEDIATE; DELETE FROM UniqueObject;", nullptr, nullptr, nullptr);
        sqlite3_stmt* many = PrepareInsert(db, batch);
        sqlite3_stmt* one = PrepareInsert(db, 1);
        size_t i = 0;
        for (; i + batch <= rows.size(); i += batch) {
            for (int r = 0; r < batch; ++r)
                BindObject(many, r * 12, rows[i + r]);
            sqlite3_step(many);
            sqlite3_reset(many);
        }
        for (; i < rows.size(); ++i) {
            BindObject(one, 0, rows[i]);
            sqlite3_step(one);
            sqlite3_reset(one);
        }
        sqlite3_finalize(many);
        sqlite3_finalize(one);
        if (sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK)
            state.SkipWithError("commit");
        sqlite3_close(db);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

BENCHMARK(BM_ScanIterator)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_ScanRawSqlite)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_SaveTableInsert)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SaveRawSqlite)
    ->Arg(1)
    ->Arg(16)
    ->Arg(64)
    ->Arg(256)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5)
    ->UseRealTime();

}  // namespace
