// Meta-class members against baselines measured in the same run.
//
// Workload: 1,000,000 "MetaClass_Member" rows, one per object of 28 meta tables
// (row i: meta table 1 + i mod 28, table row 1 + i / 28, member name "Table"), in
// one .zmf file.
//  - Load: CEnhMetaClassMemberTbl::Init (row objects, row list, key map, the
//    duplicate-object repair) against a sqlite3_step loop that reads the same
//    columns into a plain struct (texts into reused std::strings).
//  - Lookup: every (meta table, table row) pair, in shuffled order, through
//    GetFirstRow / GetNextRow, against std::multimap<int64_t, row*> keyed the same
//    way (equal_range). Both read each row found. The table's tree is filed before
//    timing (the first walk files it; BM_LoadMembers<true> gives that cost).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "metadata/meta_class_member_table.h"
#include "support/bench_support.h"

namespace {

constexpr DWORD kRows = 1000000;
constexpr DWORD kMetaTables = 28;

const std::string& MemberFile() {
    static const std::string path = [] {
        std::vector<CMetaClass_MemberBase> rows(kRows);
        std::vector<const CDbObjectBase*> pointers;
        for (DWORD i = 0; i < kRows; ++i) {
            CMetaClass_MemberBase& row = rows[i];
            row.MetaClass_Member_ID = i + 1;
            row.MetaTable_ID = 1 + i % kMetaTables;
            row.Name = "Table";
            row.TableRow_ID = 1 + i / kMetaTables;
            row.Global_User_ID = kRows + i;
            pointers.push_back(&row);
        }
        return tessmeta::bench::CreateTableFile("members.zmf", CMetaClass_MemberBase::Desc(),
                                                pointers);
    }();
    return path;
}

void SetCounters(benchmark::State& state) {
    state.counters["time/row"] = benchmark::Counter(
        kRows, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Init alone, or Init and then the first walk by pair, which files every member in
// the tree.
template <bool kFirstWalk>
void BM_LoadMembers(benchmark::State& state) {
    auto file = CZmfFile::Open(MemberFile());
    for (auto _ : state) {
        auto table = std::make_unique<CEnhMetaClassMemberTbl>(file.get(), nullptr);
        table->Init(0);
        if (static_cast<DWORD>(table->GetCount()) != kRows) state.SkipWithError("row count");
        if (kFirstWalk && !table->GetFirstRow(1, 1)) state.SkipWithError("walk");
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
    SetCounters(state);
}

// Every column of every row into plain buffers (texts into reused std::strings).
void BM_ScanMembersRawSqlite(benchmark::State& state) {
    tessmeta::bench::CRawTableScan scan(MemberFile(), CMetaClass_MemberBase::Desc());
    for (auto _ : state)
        if (scan.Run() != kRows) state.SkipWithError("row count");
    SetCounters(state);
}

// The loaded table, its tree filed, and every pair in shuffled order.
struct SLookup {
    std::unique_ptr<CZmfFile> file;
    std::unique_ptr<CEnhMetaClassMemberTbl> table;
    std::vector<std::pair<ULONG, ULONG>> pairs;
};

SLookup& Lookup() {
    static SLookup data = [] {
        SLookup d;
        d.file = CZmfFile::Open(MemberFile());
        d.table = std::make_unique<CEnhMetaClassMemberTbl>(d.file.get(), nullptr);
        d.table->Init(0);
        d.table->GetFirstRow(1, 1);  // files the tree
        for (DWORD i = 0; i < kRows; ++i)
            d.pairs.emplace_back(1 + i % kMetaTables, 1 + i / kMetaTables);
        std::shuffle(d.pairs.begin(), d.pairs.end(), std::mt19937_64(7));
        return d;
    }();
    return data;
}

void BM_GetFirstRowByPair(benchmark::State& state) {
    SLookup& d = Lookup();
    for (auto _ : state) {
        uint64_t sum = 0;
        for (auto [metaTable, tableRow] : d.pairs)
            for (auto* row = d.table->GetFirstRow(metaTable, tableRow); row;
                 row = d.table->GetNextRow())
                sum += row->Global_User_ID;
        benchmark::DoNotOptimize(sum);
    }
    SetCounters(state);
}

void BM_MultimapByPair(benchmark::State& state) {
    SLookup& d = Lookup();
    std::multimap<int64_t, CKelMetaClassMember*> map;
    for (POSITION pos = d.table->GetFirstRowPosition(); pos;) {
        CKelMetaClassMember* row = d.table->GetNextRow(pos);
        map.emplace((int64_t{row->MetaTable_ID} << 32) | row->TableRow_ID, row);
    }
    for (auto _ : state) {
        uint64_t sum = 0;
        for (auto [metaTable, tableRow] : d.pairs) {
            auto [it, end] = map.equal_range((int64_t{metaTable} << 32) | tableRow);
            for (; it != end; ++it)
                sum += it->second->Global_User_ID;
        }
        benchmark::DoNotOptimize(sum);
    }
    SetCounters(state);
}

// The shares of the load: the record store's iterator alone, and the iterator
// filling a new row object (with its name text) per row, kept in a vector.
void BM_ScanMembersIterator(benchmark::State& state) {
    auto file = CZmfFile::Open(MemberFile());
    for (auto _ : state) {
        CMetaClass_MemberIterator it(file->GetTable("MetaClass_Member"));
        CMetaClass_MemberBase row;
        DWORD n = 0;
        while (it.GetNext(&row))
            ++n;
        if (n != kRows) state.SkipWithError("row count");
        benchmark::DoNotOptimize(row);
    }
    SetCounters(state);
}

void BM_ScanIntoRowObjects(benchmark::State& state) {
    auto file = CZmfFile::Open(MemberFile());
    for (auto _ : state) {
        CMetaClass_MemberIterator it(file->GetTable("MetaClass_Member"));
        std::vector<std::unique_ptr<CKelMetaClassMember>> rows;
        rows.reserve(kRows);
        auto row = std::make_unique<CKelMetaClassMember>();
        while (it.GetNext(row.get())) {
            rows.push_back(std::move(row));
            row = std::make_unique<CKelMetaClassMember>();
        }
        state.PauseTiming();
        rows.clear();
        state.ResumeTiming();
    }
    SetCounters(state);
}

}  // namespace

BENCHMARK_TEMPLATE(BM_LoadMembers, false)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(BM_ScanMembersRawSqlite)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(BM_ScanMembersIterator)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(BM_ScanIntoRowObjects)->Unit(benchmark::kMillisecond)->MinTime(3);
BENCHMARK(BM_GetFirstRowByPair)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_MultimapByPair)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK_TEMPLATE(BM_LoadMembers, true)->Unit(benchmark::kMillisecond)->MinTime(2);
