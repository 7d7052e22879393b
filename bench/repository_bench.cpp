// The repository tables against baselines measured in the same run:
//  - recording N modifications (every object modified, then every second one
//    deleted) and clearing them all with ClearModsAndDels, which deletes the
//    deleted objects, at N = 10,000, 100,000 and 1,000,000: the time per row must not grow
//    with N. For contrast, the same work where each insert first looks for the
//    object's row by walking both lists, as a table without an index would, at
//    N = 2,000 and 10,000; and the same with the heap's pages already touched, with
//    every row "modified" (no object deletions), and for the table alone;
//  - loading 1,000,000 modification rows from a .zmf file into the table (alone,
//    and classified by a loaded identity manager of 1,000,000 objects), against a
//    raw sqlite3_step scan of the same rows;
//  - saving them, against the best raw insert loop (prepared 64-row INSERTs in one
//    transaction), both ending with the commit.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "model/model_file.h"
#include "repository/repo_table_manager.h"
#include "support/bench_support.h"

namespace {

using tessmeta::bench::FreshSaveTarget;

constexpr DWORD kRows = 1000000;

const std::vector<CObjectModificationBase>& Rows() {
    static const auto rows = [] {
        std::vector<CObjectModificationBase> r(kRows);
        for (DWORD k = 1; k <= kRows; ++k) {
            r[k - 1].ObjectModification_ID = k;
            r[k - 1].Object_ID = k;
            r[k - 1].Modification_Kind =
                k % 3 ? CEnhRepoObjModTable::kModified : CEnhRepoObjModTable::kDeleted;
        }
        return r;
    }();
    return rows;
}

std::vector<const CDbObjectBase*> RowPointers() {
    std::vector<const CDbObjectBase*> pointers;
    for (const auto& row : Rows())
        pointers.push_back(&row);
    return pointers;
}

// The modification rows alone.
const std::string& PlainFile() {
    static const std::string path = tessmeta::bench::CreateTableFile(
        "modifications.zmf", CObjectModificationBase::Desc(), RowPointers());
    return path;
}

// The modification rows with the objects they name (types of every meta-class).
const std::string& ObjectsFile() {
    static const std::string path = [] {
        std::string p;
        auto file = tessmeta::bench::CreateUniqueObjectFile(
            "modifications-objects.zmf", tessmeta::bench::MakeUniqueObjects(kRows), p);
        if (!tessmeta::WriteInitialObjectDefinitions(*file)) std::abort();
        CTableBase* table = file->GetEmptyTable("ObjectModification");
        table->SetSizeEstimate(static_cast<LONG>(kRows));
        for (const auto& row : Rows())
            table->Insert(&row);
        if (!file->Commit()) std::abort();
        return p;
    }();
    return path;
}

void Load(benchmark::State& state, const std::string& path, bool classified) {
    auto file = CZmfFile::Open(path);
    std::unique_ptr<CGuidMgr> guids;
    if (classified) {
        guids = std::make_unique<CGuidMgr>(file.get(), 0);
        guids->Init(0, 530);
    }
    for (auto _ : state) {
        auto table = std::make_unique<CEnhRepoObjModTable>(file.get(), guids.get());
        table->Init(0);
        if (table->GetDiagObjCount() + table->GetDataDictObjCount() != static_cast<int>(kRows))
            state.SkipWithError("count");
        state.PauseTiming();
        if (classified && table->GetDataDictObjCount() == 0) state.SkipWithError("classes");
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_LoadModifications(benchmark::State& state) {
    Load(state, PlainFile(), false);
}
void BM_LoadModificationsClassified(benchmark::State& state) {
    Load(state, ObjectsFile(), true);
}

void BM_ScanModificationsRaw(benchmark::State& state) {
    tessmeta::bench::CRawTableScan scan(PlainFile(), CObjectModificationBase::Desc());
    for (auto _ : state)
        if (scan.Run() != kRows) state.SkipWithError("count");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_SaveModifications(benchmark::State& state) {
    auto source = CZmfFile::Open(PlainFile());
    CEnhRepoObjModTable table(source.get(), nullptr);
    table.Init(0);
    for (auto _ : state) {
        state.PauseTiming();
        auto target = CZmfFile::Open(FreshSaveTarget("save.zmf"));
        state.ResumeTiming();
        table.Save(target.get(), 0, 0);
        target->ReleaseTable(table.GetTablePtrAddr(), 0);
        if (!target->Commit()) state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_SaveModificationsRaw(benchmark::State& state) {
    const auto pointers = RowPointers();
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("raw.zmf");
        state.ResumeTiming();
        if (!tessmeta::bench::RawSaveRows(path, CObjectModificationBase::Desc(), pointers, 64))
            state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// The lookup a table without an index makes: both lists, first match.
const CKelObjectModifications* WalkForObject(const CEnhRepoObjModTable& mods, ULONG objectId) {
    for (POSITION pos = mods.GetFirstRowPositionDiagObj(); pos;)
        if (const auto* row = mods.GetNextRowDiagObj(pos); row->Object_ID == objectId) return row;
    for (POSITION pos = mods.GetFirstRowPositionDataDictObj(); pos;)
        if (const auto* row = mods.GetNextRowDataDictObj(pos); row->Object_ID == objectId)
            return row;
    return nullptr;
}

enum class EMode {
    Indexed,          // as the table works
    Walk,             // each insert first walks both lists
    IndexedWarmHeap,  // as the table works, with the heap's pages already touched
    ModifiedOnly      // the same, every row "modified": clearing deletes no object
};

// Keeps freed memory in the heap and touches `bytes` of it, so that the rows and
// maps allocated next do not pay for the first touch of fresh pages (costly on a
// virtual machine, and a cost of the process, not of the table). Touched in blocks
// that come from the heap itself, not from separate mappings.
void WarmHeap(size_t bytes) {
    constexpr size_t kBlock = size_t{1} << 20;
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    std::vector<char*> blocks;
    for (size_t done = 0; done < bytes; done += kBlock) {
        blocks.push_back(static_cast<char*>(std::malloc(kBlock)));
        std::memset(blocks.back(), 1, kBlock);
    }
    for (char* block : blocks)
        std::free(block);
}

// N objects, one in four of a data-dictionary type: every one recorded as
// modified, every second one then as deleted (not in ModifiedOnly), then all
// cleared, which deletes the deleted objects through the identity manager.
template <EMode kMode>
void RecordAndClear(benchmark::State& state) {
    constexpr bool kWalk = kMode == EMode::Walk;
    const auto count = static_cast<ULONG>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto model = tessmeta::CModelFile::CreateInMemory();
        CGuidMgr& guids = model->GetGuidMgr();
        CRepoTableManager& repo = model->GetRepoTableManager();
        std::vector<ULONG> ids(count);
        for (ULONG i = 0; i < count; ++i)
            ids[i] = static_cast<ULONG>(
                guids.GetNewUniqueId(CString(i % 4 ? "Entity" : "Default"), 0, 0, 0));
        const int objectsBefore = guids.GetUniqueObjCount();
        constexpr bool kDeletes = kMode != EMode::ModifiedOnly;
        if (kMode == EMode::IndexedWarmHeap || !kDeletes) WarmHeap(count * size_t{400});
        state.ResumeTiming();
        for (int pass = 0; pass < (kDeletes ? 2 : 1); ++pass) {
            const LONG kind = pass ? CEnhRepoObjModTable::kDeleted : CEnhRepoObjModTable::kModified;
            for (ULONG i = pass; i < count; i += 1 + pass) {
                if constexpr (kWalk)
                    benchmark::DoNotOptimize(
                        WalkForObject(*repo.GetObjectModificationTable(), ids[i]));
                repo.InsertObjectModificationRow(ids[i], kind, 0);
            }
        }
        repo.ClearModsAndDels();
        state.PauseTiming();
        if (guids.GetUniqueObjCount() !=
            objectsBefore - (kDeletes ? static_cast<int>(count / 2) : 0))
            state.SkipWithError("objects");
        model.reset();
        state.ResumeTiming();
    }
    state.counters["ns_per_row"] =
        benchmark::Counter(static_cast<double>(state.iterations() * count),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The table alone, without an identity manager (every row in the diagram list): N
// objects recorded as modified, then every row removed.
void TableOnly(benchmark::State& state) {
    const auto count = static_cast<ULONG>(state.range(0));
    auto file = CZmfFile::OpenMemory();
    for (auto _ : state) {
        state.PauseTiming();
        WarmHeap(count * size_t{200});
        auto table = std::make_unique<CEnhRepoObjModTable>(file.get(), nullptr);
        table->Init(0);
        state.ResumeTiming();
        for (ULONG id = 1; id <= count; ++id)
            table->Insert(id, CEnhRepoObjModTable::kModified, 0);
        table->RemoveAll();
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
    state.counters["ns_per_row"] =
        benchmark::Counter(static_cast<double>(state.iterations() * count),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(BM_LoadModifications)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_LoadModificationsClassified)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_ScanModificationsRaw)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_SaveModifications)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SaveModificationsRaw)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK_TEMPLATE(RecordAndClear, EMode::Indexed)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(30)
    ->UseRealTime();
BENCHMARK_TEMPLATE(RecordAndClear, EMode::Indexed)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();
BENCHMARK_TEMPLATE(RecordAndClear, EMode::Walk)
    ->Arg(2000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseRealTime();
// Last: it leaves the heap keeping its pages for the rest of the program.
BENCHMARK_TEMPLATE(RecordAndClear, EMode::IndexedWarmHeap)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(30)
    ->UseRealTime();
BENCHMARK_TEMPLATE(RecordAndClear, EMode::IndexedWarmHeap)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

BENCHMARK_TEMPLATE(RecordAndClear, EMode::ModifiedOnly)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(30)
    ->UseRealTime();
BENCHMARK_TEMPLATE(RecordAndClear, EMode::ModifiedOnly)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

BENCHMARK(TableOnly)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(30)->UseRealTime();
BENCHMARK(TableOnly)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();

}  // namespace
