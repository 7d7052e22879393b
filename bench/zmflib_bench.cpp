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

using tessmeta::bench::FreshSaveTarget;
using tessmeta::bench::MakeUniqueObjects;
using tessmeta::bench::OpenRaw;

constexpr size_t kRows = 1000000;

const std::vector<CUniqueObjectBase>& Rows() {
    static const auto rows = MakeUniqueObjects(kRows);
    return rows;
}

// A model file holding kRows unique objects, written once per run.
const std::string& ScanFile() {
    static const std::string path = [] {
        std::string p;
        tessmeta::bench::CreateUniqueObjectFile("scan.zmf", Rows(), p);
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

// Prepared INSERTs of `range(0)` rows each, in one transaction.
void BM_SaveRawSqlite(benchmark::State& state) {
    const auto& rows = Rows();
    const int batch = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("raw.zmf");
        state.ResumeTiming();
        if (!tessmeta::bench::RawSaveUniqueObjects(path, rows, batch))
            state.SkipWithError("commit");
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
