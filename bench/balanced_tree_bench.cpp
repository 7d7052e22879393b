// CBalancedTree as a foreign-key index against std::multimap on the same rows.
//
// Workload: 1,000,000 rows under about 222,000 keys, 1 to 8 rows per key, inserted
// in shuffled order (fixed seed); then every key is looked up, in shuffled order,
// and all its rows are read. Read the tree/multimap ratio of ns per row off the
// "time/row" counters of the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "foundation/balanced_tree.h"

namespace {

struct Workload {
    std::vector<std::pair<int64_t, void*>> rows;  // insertion order
    std::vector<int64_t> keys;                    // lookup order, each key once
};

const Workload& Data() {
    static const Workload data = [] {
        Workload w;
        std::mt19937_64 rng(1234567);
        constexpr std::size_t kRows = 1'000'000;
        int64_t key = 0;
        while (w.rows.size() < kRows) {
            ++key;
            w.keys.push_back(key);
            for (int n = 1 + static_cast<int>(rng() % 8); n > 0 && w.rows.size() < kRows; --n)
                w.rows.emplace_back(key, reinterpret_cast<void*>(w.rows.size() + 1));
        }
        std::shuffle(w.rows.begin(), w.rows.end(), rng);
        std::shuffle(w.keys.begin(), w.keys.end(), rng);
        return w;
    }();
    return data;
}

void SetCounters(benchmark::State& state, double rows) {
    state.counters["rows/s"] =
        benchmark::Counter(rows, benchmark::Counter::kIsIterationInvariantRate);
    // Inverted rate: seconds per row, printed with an SI prefix ("250.1ns").
    state.counters["time/row"] = benchmark::Counter(
        rows, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_TreeInsert(benchmark::State& state) {
    const Workload& w = Data();
    for (auto _ : state) {
        auto tree = std::make_unique<CBalancedTree>();
        tree->Init();
        for (const auto& [key, info] : w.rows)
            tree->Insert(key, info);
        benchmark::DoNotOptimize(tree->GetTotalSplits());
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
    SetCounters(state, static_cast<double>(w.rows.size()));
}

void BM_MultimapInsert(benchmark::State& state) {
    const Workload& w = Data();
    for (auto _ : state) {
        auto map = std::make_unique<std::multimap<int64_t, void*>>();
        for (const auto& [key, info] : w.rows)
            map->emplace(key, info);
        benchmark::DoNotOptimize(map->size());
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
    SetCounters(state, static_cast<double>(w.rows.size()));
}

void BM_TreeWalk(benchmark::State& state) {
    const Workload& w = Data();
    CBalancedTree tree;
    tree.Init();
    for (const auto& [key, info] : w.rows)
        tree.Insert(key, info);
    for (auto _ : state) {
        uintptr_t sum = 0;
        for (int64_t key : w.keys)
            for (void* p = tree.GetFirst(key); p != nullptr; p = tree.GetNext())
                sum += reinterpret_cast<uintptr_t>(p);
        benchmark::DoNotOptimize(sum);
    }
    SetCounters(state, static_cast<double>(w.rows.size()));
}

void BM_MultimapWalk(benchmark::State& state) {
    const Workload& w = Data();
    std::multimap<int64_t, void*> map;
    for (const auto& [key, info] : w.rows)
        map.emplace(key, info);
    for (auto _ : state) {
        uintptr_t sum = 0;
        for (int64_t key : w.keys) {
            auto [it, end] = map.equal_range(key);
            for (; it != end; ++it)
                sum += reinterpret_cast<uintptr_t>(it->second);
        }
        benchmark::DoNotOptimize(sum);
    }
    SetCounters(state, static_cast<double>(w.rows.size()));
}

}  // namespace

BENCHMARK(BM_TreeInsert)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_MultimapInsert)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_TreeWalk)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_MultimapWalk)->Unit(benchmark::kMillisecond)->MinTime(2.0);
