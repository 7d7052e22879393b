// Loading an in-memory table against raw SQLite, in the same run: 1,000,000
// "Storage_Object" rows spread over 1,000 models, read from one .zmf file
//  - into an in-memory table without services (record store, row list, key map,
//    foreign-key tree), Init sizing the key map from the saved figure;
//  - into the same table without its foreign-key index, to show the tree's share;
//  - through the record store's iterator alone (the part of the load it owns);
//  - by a plain sqlite3_step loop reading the same columns into a struct.
// Freeing the loaded table is not timed: that is the cost of closing a model.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "foundation/enh_table.h"
#include "schema/code_object_tables.h"
#include "support/bench_support.h"

namespace {

using tessmeta::bench::OpenRaw;
using tessmeta::bench::ScratchFile;

constexpr DWORD kRows = 1000000;
constexpr DWORD kModels = 1000;

// The product's storage-object table (schema/code_object_tables.h).
using CBenchStorageTable = CEnhStorageObjectTable;

// The same rows with no foreign-key index.
class CBenchUnindexedTable;
class CKelBenchUnindexed final : public CEnhRow<CStorage_ObjectBase, CBenchUnindexedTable> {};

class CBenchUnindexedTable : public CEnhTable<CEnhTableTraits<CKelBenchUnindexed>> {
  public:
    using CEnhTable::CEnhTable;
};

// A model whose storage objects belong to the models in turn (row i to model
// i mod 1000), so that each model's rows are spread over the whole file.
const std::string& LoadFile() {
    static const std::string path = [] {
        std::string p = ScratchFile("storage.zmf");
        auto file = CZmfFile::Create(p);
        CTableBase* t = file->GetEmptyTable("Storage_Object");
        t->SetSizeEstimate(static_cast<LONG>(kRows));
        for (DWORD k = 1; k <= kRows; ++k) {
            CStorage_ObjectBase row(k);
            row.Model_ID = 1 + k % kModels;
            row.Name = 4 * k;
            row.Owner = 4 * k + 1;
            row.Description = 4 * k + 2;
            row.Value = 4 * k + 3;
            row.Global_User_ID = kRows + k;
            t->Insert(&row);
        }
        if (!file->Commit()) std::abort();
        return p;
    }();
    return path;
}

template <class Table>
void BM_LoadEnhTable(benchmark::State& state) {
    auto file = CZmfFile::Open(LoadFile());
    for (auto _ : state) {
        auto table = std::make_unique<Table>(nullptr, file->GetIdentityMgr(), nullptr, file.get());
        table->Init(0);
        if (static_cast<DWORD>(table->GetCount()) != kRows) state.SkipWithError("row count");
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
}

// Load, then one walk by foreign key, which files every loaded row in the index.
void BM_LoadThenFirstFKWalk(benchmark::State& state) {
    auto file = CZmfFile::Open(LoadFile());
    for (auto _ : state) {
        auto table = std::make_unique<CBenchStorageTable>(nullptr, file->GetIdentityMgr(), nullptr,
                                                          file.get());
        table->Init(0);
        DWORD n = 0;
        for (auto* row = table->GetFirstFKRow(1); row; row = table->GetNextFKRow())
            ++n;
        if (n != kRows / kModels) state.SkipWithError("walk");
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
}

void BM_ScanIterator(benchmark::State& state) {
    auto file = CZmfFile::Open(LoadFile());
    for (auto _ : state) {
        CStorage_ObjectIterator it(file->GetTable("Storage_Object"));
        CStorage_ObjectBase row;
        DWORD n = 0;
        while (it.GetNext(&row))
            ++n;
        if (n != kRows) state.SkipWithError("row count");
        benchmark::DoNotOptimize(row);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
}

struct RawStorageObject {
    int64_t id, model, name, owner, description, value, uniqueId;
};

void BM_ScanRawSqlite(benchmark::State& state) {
    sqlite3* db = OpenRaw(LoadFile());
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db,
                       "SELECT Storage_Object_ID, Model_ID, Name, Owner, Description, Value,"
                       " Global_User_ID FROM Storage_Object ORDER BY rowid",
                       -1, &stmt, nullptr);
    for (auto _ : state) {
        RawStorageObject row{};
        DWORD n = 0;
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            row.id = sqlite3_column_int64(stmt, 0);
            row.model = sqlite3_column_int64(stmt, 1);
            row.name = sqlite3_column_int64(stmt, 2);
            row.owner = sqlite3_column_int64(stmt, 3);
            row.description = sqlite3_column_int64(stmt, 4);
            row.value = sqlite3_column_int64(stmt, 5);
            row.uniqueId = sqlite3_column_int64(stmt, 6);
            ++n;
        }
        sqlite3_reset(stmt);
        if (n != kRows) state.SkipWithError("row count");
        benchmark::DoNotOptimize(row);
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRows);
}

BENCHMARK_TEMPLATE(BM_LoadEnhTable, CBenchStorageTable)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK_TEMPLATE(BM_LoadEnhTable, CBenchUnindexedTable)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(3);
BENCHMARK(BM_LoadThenFirstFKWalk)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(BM_ScanIterator)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_ScanRawSqlite)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
