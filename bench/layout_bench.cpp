// Layout settings and view metadata against baselines measured in the same run.
//
//  - Setting parameters: 10,000 submodels x 10 parameters of the force-directed
//    algorithm through UpdateSubmodelAlgorithmProperty, first into an empty manager
//    (every pair and value new), then again (every value replaced); the baseline
//    assigns the same strings in a std::unordered_map keyed by (submodel, name).
//  - Loading: the five layout tables of a file with those 100,000 values against a
//    sqlite3_step loop reading the two settings tables' columns into structs.
//  - Deleting views: 1,000 views of 4 components, 16 columns, 12 fields, 12 field
//    columns and 8 column usages each, deleted with their cascades (rows, unique
//    objects, text usages), with distinct and with shared names; the baseline erases
//    as many rows, objects and usages from std::unordered_maps by key.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "layout/auto_layout_data_mgr.h"
#include "model/model_file.h"
#include "support/bench_support.h"

namespace {

using tessmeta::bench::OpenRaw;
using tessmeta::bench::ScratchFile;

constexpr ULONG kSubmodels = 10000;
constexpr int kParameters = 10;  // the first ten FORCE names
constexpr ULONG kValues = kSubmodels * kParameters;

const std::vector<CString>& Values() {
    static const std::vector<CString> values = [] {
        std::vector<CString> v;
        for (ULONG i = 0; i < kValues; ++i)
            v.emplace_back(std::to_string(i % 977).c_str());
        return v;
    }();
    return values;
}

void SetEveryValue(CAutoLayoutDataMgr& mgr) {
    const auto& values = Values();
    ULONG i = 0;
    for (ULONG submodel = 1; submodel <= kSubmodels; ++submodel)
        for (int p = 0; p < kParameters; ++p)
            mgr.UpdateSubmodelAlgorithmProperty(submodel, 1, tessmeta::kLayoutPropertyNames[p].name,
                                                "Integer", values[i++]);
}

void BM_SetParametersFirstTime(benchmark::State& state) {
    for (auto _ : state) {
        auto file = CZmfFile::OpenMemory();
        auto mgr = std::make_unique<CAutoLayoutDataMgr>(file.get(), nullptr);
        mgr->Init();
        SetEveryValue(*mgr);
        if (mgr->GetAlgorithmPropertyTable().GetCount() != static_cast<int>(kValues))
            state.SkipWithError("value count");
        state.PauseTiming();
        mgr.reset();
        file.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void BM_SetParametersAgain(benchmark::State& state) {
    auto file = CZmfFile::OpenMemory();
    CAutoLayoutDataMgr mgr(file.get(), nullptr);
    mgr.Init();
    SetEveryValue(mgr);
    for (auto _ : state)
        SetEveryValue(mgr);
    if (mgr.GetAlgorithmPropertyTable().GetCount() != static_cast<int>(kValues))
        state.SkipWithError("value count");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

struct SPairHash {
    size_t operator()(const std::pair<ULONG, std::string>& k) const {
        return std::hash<std::string>()(k.second) * 31 + k.first;
    }
};

void BM_BaselineUnorderedMapAssign(benchmark::State& state) {
    const auto& values = Values();
    std::unordered_map<std::pair<ULONG, std::string>, CString, SPairHash> map;
    for (auto _ : state) {
        ULONG i = 0;
        for (ULONG submodel = 1; submodel <= kSubmodels; ++submodel)
            for (int p = 0; p < kParameters; ++p)
                map[{submodel, tessmeta::kLayoutPropertyNames[p].name}] = values[i++];
    }
    benchmark::DoNotOptimize(map.size());
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

const std::string& SettingsFile() {
    static const std::string path = [] {
        std::string p = ScratchFile("layout.zmf");
        auto file = CZmfFile::Create(p);
        CAutoLayoutDataMgr mgr(file.get(), nullptr);
        mgr.Init();
        SetEveryValue(mgr);
        mgr.Save(file.get());
        mgr.ReleaseStorageTables(0);
        if (!file->Commit()) std::abort();
        return p;
    }();
    return path;
}

void BM_LoadLayoutTables(benchmark::State& state) {
    auto file = CZmfFile::Open(SettingsFile());
    for (auto _ : state) {
        auto mgr = std::make_unique<CAutoLayoutDataMgr>(file.get(), nullptr);
        mgr->Init();
        if (mgr->GetAlgorithmPropertyTable().GetCount() != static_cast<int>(kValues))
            state.SkipWithError("value count");
        state.PauseTiming();
        mgr.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

struct SRawValue {
    int64_t id, name, type, pair;
    std::string value;
};

void BM_BaselineRawScan(benchmark::State& state) {
    sqlite3* db = OpenRaw(SettingsFile());
    sqlite3_stmt *pairs = nullptr, *values = nullptr;
    sqlite3_prepare_v2(db,
                       "SELECT Submodel_Algorithm_ID, Layout_Algorithm_ID, Submodel_ID, Reserved"
                       " FROM Submodel_Algorithm ORDER BY rowid",
                       -1, &pairs, nullptr);
    sqlite3_prepare_v2(db,
                       "SELECT Algorithm_Property_ID, Layout_Property_Name_ID, Data_Type_ID,"
                       " Submodel_Algorithm_ID, Value FROM Algorithm_Property ORDER BY rowid",
                       -1, &values, nullptr);
    for (auto _ : state) {
        std::vector<std::array<int64_t, 4>> pairRows;
        while (sqlite3_step(pairs) == SQLITE_ROW)
            pairRows.push_back({sqlite3_column_int64(pairs, 0), sqlite3_column_int64(pairs, 1),
                                sqlite3_column_int64(pairs, 2), sqlite3_column_int64(pairs, 3)});
        sqlite3_reset(pairs);
        std::vector<SRawValue> valueRows;
        while (sqlite3_step(values) == SQLITE_ROW)
            valueRows.push_back({sqlite3_column_int64(values, 0), sqlite3_column_int64(values, 1),
                                 sqlite3_column_int64(values, 2), sqlite3_column_int64(values, 3),
                                 reinterpret_cast<const char*>(sqlite3_column_text(values, 4))});
        sqlite3_reset(values);
        if (valueRows.size() != kValues) state.SkipWithError("value count");
        benchmark::DoNotOptimize(pairRows.data());
    }
    sqlite3_finalize(pairs);
    sqlite3_finalize(values);
    sqlite3_close(db);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

constexpr ULONG kViews = 1000;
constexpr int kRowsPerView = 1 + 4 + 16 + 12 + 12 + 8;
constexpr int kTextsPerView = 4 * 2 + 16 + 12;

// Builds the views of the deletion benchmark; returns their keys. With `shared`, every
// view names its parts alike ("T", "t", "col", "f"), as real views share column
// names; else every text is a string of its own.
std::vector<ULONG> BuildViews(CViewMetaDataMgr& views, bool shared) {
    auto text = [shared](const char* stem, ULONG n) {
        std::string name(stem);
        if (!shared) name.append(std::to_string(n));
        return CString(name.c_str());
    };
    std::vector<ULONG> keys;
    for (ULONG v = 0; v < kViews; ++v) {
        const ULONG view = views.InsertView(1, {}, 0);
        std::vector<ULONG> columns;
        for (ULONG c = 0; c < 4; ++c) {
            const ULONG component =
                views.InsertViewComponent(view, 0, text("T", v * 4 + c), text("t", v * 4 + c), c);
            for (ULONG i = 0; i < 4; ++i)
                columns.push_back(
                    views.InsertViewColumn(view, component, 0, text("col", v * 16 + c * 4 + i)));
        }
        for (ULONG f = 0; f < 12; ++f)
            views.InsertViewFieldColumn(views.InsertViewField(view, text("f", v * 12 + f), "", f),
                                        columns[f], 1);
        for (ULONG u = 0; u < 8; ++u)
            views.InsertViewColumnUsage(columns[u], tessmeta::kViewClauseGroupBy, u, 0);
        keys.push_back(view);
    }
    return keys;
}

void BM_DeleteViews(benchmark::State& state) {
    const bool shared = state.range(0) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto model = tessmeta::CModelFile::CreateInMemory();
        CViewMetaDataMgr& views = model->GetViewMetaDataMgr();
        const auto keys = BuildViews(views, shared);
        state.ResumeTiming();
        for (ULONG key : keys)
            views.DeleteView(key);
        if (views.GetViewFieldTable().GetCount() != 0) state.SkipWithError("rows left");
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
    }
    state.SetLabel(shared ? "shared names" : "distinct names");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kViews * kRowsPerView);
}

// The same bookkeeping in standard maps: per row its table row, its unique object
// and its text usages, erased by key.
void BM_BaselineUnorderedMapErase(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::unordered_map<ULONG, std::array<ULONG, 6>>> tables(6);
        std::unordered_map<ULONG, std::array<ULONG, 12>> objects;
        std::unordered_map<uint64_t, ULONG> usages;
        ULONG key = 0;
        for (ULONG v = 0; v < kViews; ++v)
            for (int r = 0; r < kRowsPerView; ++r) {
                tables[static_cast<size_t>(r % 6)][++key] = {v};
                objects[key] = {v};
                if (r < kTextsPerView) usages[uint64_t{key} << 8 | 1] = key;
            }
        state.ResumeTiming();
        key = 0;
        for (ULONG v = 0; v < kViews; ++v)
            for (int r = 0; r < kRowsPerView; ++r) {
                tables[static_cast<size_t>(r % 6)].erase(++key);
                objects.erase(key);
                usages.erase(uint64_t{key} << 8 | 1);
            }
        benchmark::DoNotOptimize(tables.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kViews * kRowsPerView);
}

BENCHMARK(BM_SetParametersFirstTime)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_SetParametersAgain)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_BaselineUnorderedMapAssign)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_LoadLayoutTables)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_BaselineRawScan)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_DeleteViews)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_BaselineUnorderedMapErase)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
