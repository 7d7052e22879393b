// The identity manager against baselines measured in the same run, on 1,000,000
// unique objects with random GUIDs:
//  - load (CGuidMgr construction and Init, with the GUID map) from a .zmf file,
//    against a raw sqlite3_step scan of the same table;
//  - GetUniqueObjectID by GUID text and GetObjectTypeId by id, against
//    std::unordered_map lookups of the same keys, in the same shuffled order;
//  - GetNewUniqueId throughput;
//  - save of the same table against prepared multi-row INSERTs in one transaction;
//  - the GUID map's hash: summing the 16 bytes against the mixing hash in use,
//    building a map of the same GUIDs and looking every one up.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "identity/guid_mgr.h"
#include "identity/guid_text.h"
#include "support/bench_support.h"

namespace {

using tessmeta::bench::FreshSaveTarget;
using tessmeta::bench::MakeUniqueObjects;
using tessmeta::bench::OpenRaw;

constexpr size_t kRows = 1000000;
// Buckets as CGuidMgr sizes them for kRows stored objects: 1.7 times, made odd.
constexpr UINT kGuidBuckets = static_cast<UINT>(kRows * 17 / 10) | 1u;

std::vector<GUID> RandomGuids(size_t count) {
    std::vector<GUID> guids(count);
    for (GUID& g : guids)
        UuidCreate(&g);
    return guids;
}

// The shared synthetic rows, with random GUIDs as a real model has.
const std::vector<CUniqueObjectBase>& Rows() {
    static const auto rows = [] {
        auto made = MakeUniqueObjects(kRows);
        const auto objectGuids = RandomGuids(kRows);
        const auto versionGuids = RandomGuids(kRows);
        for (size_t i = 0; i < kRows; ++i) {
            tessmeta::GuidToText(objectGuids[i], made[i].Object_GUID);
            tessmeta::GuidToText(versionGuids[i], made[i].Version_GUID);
        }
        return made;
    }();
    return rows;
}

// A model file holding the rows and a few object definitions, written once per run.
const std::string& ModelFile() {
    static const std::string path = [] {
        std::string p;
        auto file = tessmeta::bench::CreateUniqueObjectFile("identity.zmf", Rows(), p);
        CTableBase* definitions = file->GetEmptyTable("ObjectDefinition");
        for (DWORD id = 1; id <= 75; ++id) {
            CObjectDefinitionBase def(id);
            def.Name = (id == 1 ? std::string("Entity") : "Type " + std::to_string(id)).c_str();
            definitions->Insert(&def);
        }
        if (!file->Commit()) std::abort();
        return p;
    }();
    return path;
}

std::unique_ptr<CGuidMgr> LoadModel(CZmfFile& file) {
    auto mgr = std::make_unique<CGuidMgr>(&file, 1);
    mgr->Init(0, 530);
    return mgr;
}

void BM_LoadGuidMgr(benchmark::State& state) {
    auto file = CZmfFile::Open(ModelFile());
    for (auto _ : state) {
        auto mgr = LoadModel(*file);
        if (mgr->GetUniqueObjCount() != static_cast<int>(kRows)) state.SkipWithError("count");
        state.PauseTiming();
        mgr.reset();  // freeing a million rows is not part of the load
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// The baseline: the same columns read into a plain struct.
void BM_LoadRawSqliteScan(benchmark::State& state) {
    tessmeta::bench::CRawUniqueObjectScan scan(ModelFile());
    for (auto _ : state)
        if (scan.Run() != kRows) state.SkipWithError("row count");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// One loaded model shared by the lookup benchmarks.
struct LoadedModel {
    std::unique_ptr<CZmfFile> file;
    std::unique_ptr<CGuidMgr> mgr;
    std::vector<size_t> order;  // a shuffled walk over the rows
};

LoadedModel& Loaded() {
    static LoadedModel model = [] {
        LoadedModel m;
        m.file = CZmfFile::Open(ModelFile());
        m.mgr = LoadModel(*m.file);
        m.order.resize(kRows);
        for (size_t i = 0; i < kRows; ++i)
            m.order[i] = i;
        std::shuffle(m.order.begin(), m.order.end(), std::mt19937_64(42));
        return m;
    }();
    return model;
}

void BM_GuidTextLookup(benchmark::State& state) {
    auto& model = Loaded();
    std::vector<CString> keys;
    keys.reserve(kRows);
    for (size_t i : model.order)
        keys.emplace_back(Rows()[i].Object_GUID.GetValue());
    for (auto _ : state) {
        uint64_t sum = 0;
        for (const CString& key : keys)
            sum += model.mgr->GetUniqueObjectID(key);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_GuidTextLookupUnorderedMap(benchmark::State& state) {
    auto& model = Loaded();
    std::unordered_map<std::string, ULONG> map;
    map.reserve(kRows);
    for (const auto& row : Rows())
        map.emplace(row.Object_GUID.GetValue().GetString(), row.Unique_Object_ID);
    std::vector<std::string> keys;
    keys.reserve(kRows);
    for (size_t i : model.order)
        keys.emplace_back(Rows()[i].Object_GUID.GetValue().GetString());
    for (auto _ : state) {
        uint64_t sum = 0;
        for (const std::string& key : keys) {
            auto it = map.find(key);
            sum += it == map.end() ? 0 : it->second;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_TypeIdLookup(benchmark::State& state) {
    auto& model = Loaded();
    std::vector<unsigned int> keys;
    keys.reserve(kRows);
    for (size_t i : model.order)
        keys.push_back(Rows()[i].Unique_Object_ID);
    for (auto _ : state) {
        int64_t sum = 0;
        for (unsigned int id : keys)
            sum += model.mgr->GetObjectTypeId(id);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_TypeIdLookupUnorderedMap(benchmark::State& state) {
    auto& model = Loaded();
    std::unordered_map<ULONG, int> map;
    map.reserve(kRows);
    for (const auto& row : Rows())
        map.emplace(row.Unique_Object_ID, row.Object_Type_ID);
    std::vector<ULONG> keys;
    keys.reserve(kRows);
    for (size_t i : model.order)
        keys.push_back(Rows()[i].Unique_Object_ID);
    for (auto _ : state) {
        int64_t sum = 0;
        for (ULONG id : keys) {
            auto it = map.find(id);
            sum += it == map.end() ? 0 : it->second;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

void BM_NewUniqueId(benchmark::State& state) {
    auto file = CZmfFile::OpenMemory();
    CGuidMgr mgr(file.get(), 1);
    // Sized as a reload of a million objects would be: maps never grow, so an empty
    // model started with Init(0, ...) would have one bucket.
    mgr.Init(kGuidBuckets, 530);
    for (auto _ : state)
        benchmark::DoNotOptimize(mgr.GetNewUniqueId(7, 1, 0, 0));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

void BM_SaveGuidMgr(benchmark::State& state) {
    auto& model = Loaded();
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("save.zmf");
        state.ResumeTiming();
        auto file = CZmfFile::Open(path);
        if (!model.mgr->Save(file.get(), nullptr, 0, 0)) state.SkipWithError("save");
        model.mgr->ReleaseStorageTables(0);
        if (!file->Commit()) state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// Prepared INSERTs of 64 rows each (the record store's batch), in one transaction.
void BM_SaveRawSqlite(benchmark::State& state) {
    const auto& rows = Rows();
    constexpr int kBatch = 64;
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("raw.zmf");
        state.ResumeTiming();
        if (!tessmeta::bench::RawSaveUniqueObjects(path, rows, kBatch))
            state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

// ---- the GUID map's hash --------------------------------------------------------------

// Summing the 16 bytes: at most 16 * 255 + 1 = 4,081 distinct hashes.
struct SGuidByteSumTraits {
    static UINT Hash(const GUID& guid) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&guid);
        UINT sum = 0;
        for (size_t i = 0; i < sizeof(GUID); ++i)
            sum += bytes[i];
        return sum;
    }
    static bool Equal(const GUID& stored, const GUID& guid) { return stored == guid; }
};

const std::vector<GUID>& HashGuids() {
    static const auto guids = RandomGuids(kRows);
    return guids;
}

template <class Traits>
using GuidMap = CMap<GUID, const GUID&, ULONG, ULONG, Traits>;

// Builds the map as a load does (first entry of a GUID wins, so each insertion
// probes its chain first).
template <class Traits>
void Fill(GuidMap<Traits>& map) {
    map.InitHashTable(kGuidBuckets, TRUE);
    ULONG id = 0;
    for (const GUID& g : HashGuids()) {
        ULONG& slot = map[g];
        if (!slot) slot = ++id;
    }
}

template <class Traits>
void ReportChains(benchmark::State& state) {
    std::vector<UINT> chain(kGuidBuckets, 0);
    for (const GUID& g : HashGuids())
        ++chain[Traits::Hash(g) % kGuidBuckets];
    UINT used = 0, longest = 0;
    double probes = 0;  // nodes visited by a successful lookup, on average
    for (UINT n : chain) {
        used += n ? 1 : 0;
        longest = std::max(longest, n);
        probes += n * (n + 1) / 2.0;
    }
    state.counters["chains"] = used;
    state.counters["longest"] = longest;
    state.counters["probes"] = probes / static_cast<double>(kRows);
}

template <class Traits>
void BM_GuidMapBuild(benchmark::State& state) {
    HashGuids();  // generated outside the timing
    for (auto _ : state) {
        GuidMap<Traits> map(10);
        Fill(map);
        if (map.GetCount() != static_cast<int>(kRows)) state.SkipWithError("count");
        state.PauseTiming();
        map.RemoveAll();
        state.ResumeTiming();
    }
    ReportChains<Traits>(state);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

template <class Traits>
void BM_GuidMapLookup(benchmark::State& state) {
    GuidMap<Traits> map(10);
    Fill(map);
    std::vector<GUID> keys = HashGuids();
    std::shuffle(keys.begin(), keys.end(), std::mt19937_64(7));
    for (auto _ : state) {
        uint64_t sum = 0;
        ULONG value = 0;
        for (const GUID& g : keys)
            sum += map.Lookup(g, value) ? value : 0;
        benchmark::DoNotOptimize(sum);
    }
    ReportChains<Traits>(state);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kRows));
}

BENCHMARK(BM_LoadGuidMgr)->Unit(benchmark::kMillisecond)->MinTime(3)->UseRealTime();
BENCHMARK(BM_LoadRawSqliteScan)->Unit(benchmark::kMillisecond)->MinTime(3)->UseRealTime();
BENCHMARK(BM_GuidTextLookup)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_GuidTextLookupUnorderedMap)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_TypeIdLookup)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_TypeIdLookupUnorderedMap)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_NewUniqueId)->Unit(benchmark::kNanosecond)->Iterations(1000000);
BENCHMARK(BM_SaveGuidMgr)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SaveRawSqlite)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK_TEMPLATE(BM_GuidMapBuild, SGuidHashTraits)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_TEMPLATE(BM_GuidMapBuild, SGuidByteSumTraits)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
BENCHMARK_TEMPLATE(BM_GuidMapLookup, SGuidHashTraits)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_TEMPLATE(BM_GuidMapLookup, SGuidByteSumTraits)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace
