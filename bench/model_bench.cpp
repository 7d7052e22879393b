// A whole generated model: generate, load, check, save and peak memory, each
// against raw SQLite work over exactly the same tables in the same run.
//
// TESSMETA_MODEL_OBJECTS sets the model size (default 1,000,000; 10,000,000 is the
// large run). Ratios: load / raw scans of every stored table, save / raw inserts of
// every stored row, peak resident memory of a process that only opens the model /
// the file's size.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "identity/guid_mgr.h"
#include "identity/unique_object_table.h"
#include "model/model_check.h"
#include "model/model_file.h"
#include "model/model_generator.h"
#include "namespace/name_space_mgr.h"
#include "namespace/string_table.h"
#include "namespace/string_usage_table.h"
#include "support/bench_support.h"

extern char** environ;

namespace {

constexpr const char* kProbeVariable = "TESSMETA_MODEL_PROBE";

// The memory probe: the benchmark runs itself again with the probe variable set;
// that process opens the model (and with `used` asks one question of every large
// index, which files it), writes its peak resident size in kB (VmHWM: the program
// and SQLite's page cache included) to the file named by the variable and exits. The child's rusage
// is no use here: a spawned process keeps the parent's high-water mark across exec.
long PeakKilobytesOfSelf() {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    if (!status) return -1;
    char line[256];
    long peak = -1;
    while (std::fgets(line, sizeof line, status))
        if (std::sscanf(line, "VmHWM: %ld kB", &peak) == 1) break;
    std::fclose(status);
    return peak;
}

// One question to each index a load leaves to be filed on first use.
void FileEveryLargeIndex(tessmeta::CModelFile& model) {
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    names.GetStringIdFromString("probe");
    names.GetStringIdFromStringNoCase("probe");
    names.GetStringIdFromObjectAndUsageTypeIds(1, 1);
    names.GetStringUsageTable().GetKeyMap();
    names.GetStringTablePair().GetSmallTable().GetIdMap();
    names.GetStringTablePair().GetLargeTable().GetIdMap();
    CEnhUniqueObjectTable& objects = *model.GetGuidMgr().GetUniqueObjectTable();
    objects.GetIdMap();
    objects.GetIdByGuid(GUID{});
}

[[maybe_unused]] const bool kProbe = [] {
    if (const char* probe = std::getenv(kProbeVariable)) {
        const std::string text(probe);  // model|result|used
        const auto bar = text.find('|'), bar2 = text.find('|', bar + 1);
        std::string error;
        auto model = tessmeta::CModelFile::Open(text.substr(0, bar), &error);
        if (!model) std::_Exit(1);
        if (text.substr(bar2 + 1) == "used") FileEveryLargeIndex(*model);
        std::FILE* out = std::fopen(text.substr(bar + 1, bar2 - bar - 1).c_str(), "w");
        if (!out) std::_Exit(1);
        std::fprintf(out, "%ld\n", PeakKilobytesOfSelf());
        std::fclose(out);
        std::_Exit(0);
    }
    return false;
}();

std::uint64_t ModelObjects() {
    const char* text = std::getenv("TESSMETA_MODEL_OBJECTS");
    return text ? std::strtoull(text, nullptr, 10) : 1000000;
}

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

struct SModel {
    std::string path;
    double generateSeconds = 0;
    double generateSaveSeconds = 0;
};

const SModel& GeneratedModel() {
    static const SModel model = [] {
        SModel m;
        m.path = tessmeta::bench::ScratchFile("whole_model.zmf");
        std::filesystem::remove(m.path);
        auto file = tessmeta::CModelFile::Create(m.path, nullptr);
        if (!file) std::abort();
        auto start = std::chrono::steady_clock::now();
        tessmeta::GenerateModel(*file, {ModelObjects(), 1, true});
        m.generateSeconds = Seconds(start);
        start = std::chrono::steady_clock::now();
        if (!file->Save()) std::abort();
        m.generateSaveSeconds = Seconds(start);
        return m;
    }();
    return model;
}

// Every stored row of the model file, per table (tables without rows left out).
struct STableRows {
    const SZmfTableDesc* desc;
    std::vector<std::unique_ptr<CDbObjectBase>> rows;
};

std::vector<STableRows> StoredRows(const std::string& path) {
    auto file = CZmfFile::Open(path);
    std::vector<STableRows> tables;
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* table = file->GetTable(desc->name);
        if (!table || table->GetCount() == 0) continue;
        STableRows entry{desc, {}};
        auto cursor = table->OpenCursor();
        for (;;) {
            std::unique_ptr<CDbObjectBase> row(desc->createRow());
            if (!cursor->Next(row.get())) break;
            entry.rows.push_back(std::move(row));
        }
        tables.push_back(std::move(entry));
    }
    return tables;
}

// The best raw insert loop writing every stored row into a fresh file; seconds.
double RawSaveAll(const std::vector<STableRows>& stored) {
    const std::string target = tessmeta::bench::FreshSaveTarget("whole_model_raw.zmf");
    const auto start = std::chrono::steady_clock::now();
    for (const auto& table : stored) {
        std::vector<const CDbObjectBase*> rows;
        rows.reserve(table.rows.size());
        for (const auto& row : table.rows)
            rows.push_back(row.get());
        if (!tessmeta::bench::RawSaveRows(target, *table.desc, rows, 64)) std::abort();
    }
    return Seconds(start);
}

long PeakKilobytesOfOpen(const std::string& path, bool used) {
    const std::string result = tessmeta::bench::ScratchFile("whole_model_peak.txt");
    const std::string variable =
        std::string(kProbeVariable) + "=" + path + "|" + result + (used ? "|used" : "|");
    std::vector<char*> env;
    for (char** e = environ; *e; ++e)
        env.push_back(*e);
    env.push_back(const_cast<char*>(variable.c_str()));
    env.push_back(nullptr);
    char self[] = "/proc/self/exe";
    char* argv[] = {self, nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, "/proc/self/exe", nullptr, nullptr, argv, env.data()) != 0) return -1;
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    long peak = -1;
    if (std::FILE* in = std::fopen(result.c_str(), "r")) {
        if (std::fscanf(in, "%ld", &peak) != 1) peak = -1;
        std::fclose(in);
    }
    return peak;
}

void BM_WholeModel(benchmark::State& state) {
    const SModel& model = GeneratedModel();
    const auto stored = StoredRows(model.path);
    size_t rowCount = 0;
    for (const auto& table : stored)
        rowCount += table.rows.size();
    double load = 0, warmLoad = 0, warmLoadOneThread = 0, scan = 0, check = 0, save = 0,
           rawSave = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        for (const auto& table : stored) {
            tessmeta::bench::CRawTableScan raw(model.path, *table.desc);
            benchmark::DoNotOptimize(raw.Run());
        }
        scan = Seconds(start);

        start = std::chrono::steady_clock::now();
        std::string error;
        auto loaded = tessmeta::CModelFile::Open(model.path, &error);
        load = Seconds(start);
        if (!loaded) state.SkipWithError(error.c_str());

        start = std::chrono::steady_clock::now();
        const auto report = tessmeta::CheckModelFile(loaded->GetFile());
        check = Seconds(start);
        benchmark::DoNotOptimize(report);

        // What a save's file pages cost the kernel depends on whether pages were
        // freed just before (on this virtual machine a page long free must be backed
        // by the host again). Each save runs three times, alternating with the
        // other, each over a file of its own from two runs before (which is closed
        // by then: a saved model keeps its new file open), and the faster run of
        // each counts.
        save = rawSave = std::numeric_limits<double>::max();
        for (int round = 0; round < 3; ++round) {
            const std::string target = tessmeta::bench::ScratchFile(
                "whole_model_saved_" + std::to_string(round % 2) + ".zmf");
            std::filesystem::remove(target);
            start = std::chrono::steady_clock::now();
            if (!loaded->SaveAs(target)) state.SkipWithError("save failed");
            save = std::min(save, Seconds(start));
            rawSave = std::min(rawSave, RawSaveAll(stored));
        }
        loaded.reset();

        // Again, now that the process has had the memory of a loaded model once: the
        // difference to the first load is mostly the kernel's first touch of pages.
        start = std::chrono::steady_clock::now();
        loaded = tessmeta::CModelFile::Open(model.path, &error);
        warmLoad = Seconds(start);
        loaded.reset();
        // And so on one thread.
        tessmeta::SModelLoadOptions oneThread;
        oneThread.parallelRead = 0;
        start = std::chrono::steady_clock::now();
        loaded = tessmeta::CModelFile::Open(model.path, &error, oneThread);
        warmLoadOneThread = Seconds(start);
        loaded.reset();
        state.SetIterationTime(load);
    }
    const double fileBytes = static_cast<double>(std::filesystem::file_size(model.path));
    const double peakBytes = static_cast<double>(PeakKilobytesOfOpen(model.path, false)) * 1024.0;
    const double usedBytes = static_cast<double>(PeakKilobytesOfOpen(model.path, true)) * 1024.0;
    state.counters["rows"] = static_cast<double>(rowCount);
    state.counters["tables"] = static_cast<double>(stored.size());
    state.counters["gen_s"] = model.generateSeconds;
    state.counters["gen_save_s"] = model.generateSaveSeconds;
    state.counters["load_s"] = load;
    state.counters["scan_s"] = scan;
    state.counters["load_ratio"] = load / scan;
    state.counters["load_again_s"] = warmLoad;
    state.counters["load_again_one_thread_s"] = warmLoadOneThread;
    state.counters["check_s"] = check;
    state.counters["save_s"] = save;
    state.counters["raw_save_s"] = rawSave;
    state.counters["save_ratio"] = save / rawSave;
    state.counters["file_MB"] = fileBytes / 1e6;
    state.counters["peak_MB"] = peakBytes / 1e6;
    state.counters["rss_ratio"] = peakBytes / fileBytes;
    state.counters["used_peak_MB"] = usedBytes / 1e6;
    state.counters["used_rss_ratio"] = usedBytes / fileBytes;
}
BENCHMARK(BM_WholeModel)->Unit(benchmark::kSecond)->Iterations(1)->UseManualTime();

}  // namespace
