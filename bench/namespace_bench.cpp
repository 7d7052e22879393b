// The name space against standard containers and raw SQLite, in the same run.
//
// Interning and lookups: 1,000,000 distinct texts (one in ten, at random, 255 bytes
// or longer)
// are interned, then each is looked up by text, without case (a differently cased
// spelling) and by id (the text copied out, and read in place as a view), in a
// shuffled order. The baseline does
// the same with std::unordered_map: text -> id, upper-cased text -> id (upper-casing
// into a reused buffer at lookup) and id -> text, all reserved up front, as the name
// space's maps are sized from the stored size figures.
//
// Load and save: a model file with those strings and 3,000,000 usages (three roles
// per object, strings shared at random) is generated once per run. The name space's
// Init (full, and with the usage load deferred) is measured against a raw
// sqlite3_step scan of the same four tables; its Save (all four tables, then the
// commit) against prepared 64-row INSERTs of the same rows in one transaction.
//
// Memory: heap bytes per interned string (mallinfo2 before and after interning), for
// the name space and for the baseline maps.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "namespace/name_space_mgr.h"
#include "support/bench_support.h"

namespace {

using tessmeta::bench::OpenRaw;
using tessmeta::bench::ScratchFile;

constexpr size_t kStrings = 1000000;
constexpr size_t kUsages = 3000000;

// ---- datasets -------------------------------------------------------------------------

struct STexts {
    std::vector<std::string> text;    // as interned
    std::vector<std::string> folded;  // the same texts, lower-cased
    std::vector<CString> cText;       // the same as CString, for the name space
    std::vector<CString> cFolded;
    std::vector<uint32_t> order;  // a shuffled order of indexes
    size_t longCount = 0;
};

const STexts& Texts() {
    static const STexts texts = [] {
        static const char* const words[] = {"Customer", "order",   "LINE", "Item",   "product",
                                            "Account",  "ADDRESS", "city", "Region", "code"};
        STexts t;
        std::mt19937 rng(42);
        t.text.reserve(kStrings);
        for (size_t i = 0; i < kStrings; ++i) {
            std::string s = words[rng() % 10];
            s += '_';
            s += words[rng() % 10];
            s += '_';
            s += std::to_string(i);
            if (rng() % 10 == 0) {
                // Definitions and code bodies: 255 to 1,254 bytes.
                const size_t length = 255 + rng() % 1000;
                while (s.size() < length)
                    s += " and more text";
                s.resize(length);
                ++t.longCount;
            }
            t.text.push_back(std::move(s));
        }
        for (const std::string& s : t.text) {
            std::string f = s;
            for (char& c : f)
                c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
            t.folded.push_back(std::move(f));
            t.cText.emplace_back(std::string_view(s));
            t.cFolded.emplace_back(std::string_view(t.folded.back()));
        }
        t.order.resize(kStrings);
        for (uint32_t i = 0; i < kStrings; ++i)
            t.order[i] = i;
        std::shuffle(t.order.begin(), t.order.end(), rng);
        return t;
    }();
    return texts;
}

size_t HeapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// An in-memory model file whose string tables carry the size figures a model with
// these strings stores, so that a fresh name space sizes its maps for them.
std::unique_ptr<CZmfFile> SizedMemoryFile() {
    auto file = CZmfFile::OpenMemory();
    file->GetEmptyTable("SmallString")->SetSizeEstimate(static_cast<LONG>(kStrings));
    file->GetEmptyTable("LargeString")->SetSizeEstimate(static_cast<LONG>(Texts().longCount));
    file->Commit();
    return file;
}

std::unique_ptr<CNameSpaceMgr> InternAll(CZmfFile* file) {
    auto ns = std::make_unique<CNameSpaceMgr>(file);
    ns->Init(0, 0, 1, 0, 0);
    // A first lookup without case files the (empty) no-case map, so that interning
    // keeps all three maps up to date, as the baseline does.
    ns->GetStringIdFromStringNoCase("");
    for (const CString& text : Texts().cText)
        ns->AddToStringTable(text);
    return ns;
}

// The baseline interner.
struct SStdNameSpace {
    std::unordered_map<std::string, uint32_t> byText;
    std::unordered_map<std::string, uint32_t> byUpper;
    std::unordered_map<uint32_t, std::string> byId;
    std::string buffer;
    uint32_t next = 0;

    SStdNameSpace() {
        byText.reserve(kStrings);
        byUpper.reserve(kStrings);
        byId.reserve(kStrings);
    }
    const std::string& Upper(const std::string& text) {
        buffer.assign(text);
        for (char& c : buffer)
            c = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
        return buffer;
    }
    uint32_t Intern(const std::string& text) {
        auto [it, added] = byText.try_emplace(text, next + 1);
        if (!added) return it->second;
        ++next;
        byUpper[Upper(text)] = next;
        byId.emplace(next, text);
        return next;
    }
};

std::unique_ptr<SStdNameSpace> InternAllStd() {
    auto ns = std::make_unique<SStdNameSpace>();
    for (const std::string& text : Texts().text)
        ns->Intern(text);
    return ns;
}

// ---- interning and lookups -------------------------------------------------------------

void BM_InternNameSpace(benchmark::State& state) {
    Texts();
    double bytesPerString = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto file = SizedMemoryFile();
        const size_t before = HeapInUse();
        state.ResumeTiming();
        auto ns = InternAll(file.get());
        state.PauseTiming();
        bytesPerString = static_cast<double>(HeapInUse() - before) / kStrings;
        if (ns->GetStringTablePair().GetSmallTable().GetCount() != static_cast<int>(kStrings))
            state.SkipWithError("count");
        ns.reset();
        state.ResumeTiming();
    }
    state.counters["heap_bytes_per_string"] = bytesPerString;
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kStrings));
}

void BM_InternStd(benchmark::State& state) {
    Texts();
    double bytesPerString = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const size_t before = HeapInUse();
        state.ResumeTiming();
        auto ns = InternAllStd();
        state.PauseTiming();
        bytesPerString = static_cast<double>(HeapInUse() - before) / kStrings;
        ns.reset();
        state.ResumeTiming();
    }
    state.counters["heap_bytes_per_string"] = bytesPerString;
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kStrings));
}

// Only a text -> id map: the least an interner can keep.
void BM_InternStdTextMapOnly(benchmark::State& state) {
    const auto& texts = Texts();
    double bytesPerString = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const size_t before = HeapInUse();
        state.ResumeTiming();
        auto map = std::make_unique<std::unordered_map<std::string, uint32_t>>();
        map->reserve(kStrings);
        uint32_t next = 0;
        for (const std::string& text : texts.text)
            map->try_emplace(text, ++next);
        state.PauseTiming();
        bytesPerString = static_cast<double>(HeapInUse() - before) / kStrings;
        map.reset();
        state.ResumeTiming();
    }
    state.counters["heap_bytes_per_string"] = bytesPerString;
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kStrings));
}

CNameSpaceMgr& InternedNameSpace() {
    static auto file = SizedMemoryFile();
    static auto ns = InternAll(file.get());
    return *ns;
}

SStdNameSpace& InternedStd() {
    static auto ns = InternAllStd();
    return *ns;
}

enum ELookup { kByText, kNoCase, kById, kByIdView };

// A text read in place: its length and its last byte, so that the text itself is
// reached and not only the length its holder keeps beside the pointer.
inline uint64_t Read(std::string_view text) {
    return text.size() + (text.empty() ? 0 : static_cast<unsigned char>(text.back()));
}

void BM_LookupNameSpace(benchmark::State& state) {
    const auto& texts = Texts();
    CNameSpaceMgr& ns = InternedNameSpace();
    const auto kind = static_cast<ELookup>(state.range(0));
    CString out;
    for (auto _ : state) {
        uint64_t sum = 0;
        for (uint32_t i : texts.order) {
            switch (kind) {
                case kByText:
                    sum += ns.GetStringIdFromString(texts.cText[i]);
                    break;
                case kNoCase:
                    sum += ns.GetStringIdFromStringNoCase(texts.cFolded[i]);
                    break;
                case kById:
                    ns.GetStringFromNameSpace(out, static_cast<LONG>(i + 1));
                    sum += static_cast<uint64_t>(out.GetLength());
                    break;
                case kByIdView:
                    sum += Read(ns.GetStringView(static_cast<LONG>(i + 1)));
                    break;
            }
        }
        benchmark::DoNotOptimize(sum);
        if (sum == 0) state.SkipWithError("nothing found");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kStrings));
}

void BM_LookupStd(benchmark::State& state) {
    const auto& texts = Texts();
    SStdNameSpace& ns = InternedStd();
    const auto kind = static_cast<ELookup>(state.range(0));
    std::string out;
    for (auto _ : state) {
        uint64_t sum = 0;
        for (uint32_t i : texts.order) {
            switch (kind) {
                case kByText:
                    sum += ns.byText.find(texts.text[i])->second;
                    break;
                case kNoCase:
                    sum += ns.byUpper.find(ns.Upper(texts.folded[i]))->second;
                    break;
                case kById:
                    out.assign(ns.byId.find(i + 1)->second);
                    sum += out.size();
                    break;
                case kByIdView:
                    sum += Read(ns.byId.find(i + 1)->second);
                    break;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kStrings));
}

// ---- load and save ---------------------------------------------------------------------

struct SUsage {
    DWORD id, object, usageType, string;
};

const std::vector<SUsage>& Usages() {
    static const std::vector<SUsage> usages = [] {
        std::vector<SUsage> u;
        u.reserve(kUsages);
        std::mt19937 rng(7);
        for (DWORD i = 0; i < kUsages; ++i)
            u.push_back({i + 1, i / 3 + 1, i % 3 + 1, 1 + static_cast<DWORD>(rng() % kStrings)});
        return u;
    }();
    return usages;
}

// The model file the load and save benchmarks share, written once per run.
const std::string& ModelFile() {
    static const std::string path = [] {
        const auto& texts = Texts();
        std::string p = ScratchFile("namespace.zmf");
        auto file = CZmfFile::Create(p);
        CTableBase* small = file->GetEmptyTable("SmallString");
        CTableBase* large = file->GetEmptyTable("LargeString");
        small->SetSizeEstimate(static_cast<LONG>(kStrings));
        large->SetSizeEstimate(static_cast<LONG>(texts.longCount));
        for (DWORD id = 1; id <= kStrings; ++id) {
            const std::string& text = texts.text[id - 1];
            const bool isLong = text.size() >= CStringTablePair::kLargeTextLength;
            CSmallStringBase row(id);
            row.Text = isLong ? "" : text.c_str();
            row.Large_Flag = isLong ? 1 : 0;
            small->Insert(&row);
            if (isLong) {
                CLargeStringBase longRow(id);
                longRow.Text = text.c_str();
                large->Insert(&longRow);
            }
        }
        CTableBase* usage = file->GetEmptyTable("StringUsage");
        usage->SetSizeEstimate(static_cast<LONG>(kUsages));
        for (const SUsage& u : Usages()) {
            CStringUsageBase row(u.id);
            row.Object_ID = u.object;
            row.String_Usage_Type_ID = u.usageType;
            row.String_ID = u.string;
            usage->Insert(&row);
        }
        CTableBase* types = file->GetEmptyTable("StringUsageType");
        types->SetSizeEstimate(tessmeta::kStringUsageTypeCount);
        for (int i = 0; i < tessmeta::kStringUsageTypeCount; ++i) {
            CStringUsageTypeBase row(static_cast<ULONG>(i + 1));
            row.Name = tessmeta::kStringUsageTypeNames[i];
            types->Insert(&row);
        }
        if (!file->Commit()) std::abort();
        return p;
    }();
    return path;
}

void BM_LoadNameSpace(benchmark::State& state) {
    auto file = CZmfFile::Open(ModelFile());
    const int defer = static_cast<int>(state.range(0));
    for (auto _ : state) {
        auto ns = std::make_unique<CNameSpaceMgr>(file.get());
        ns->Init(0, 0, 0, 0, defer);
        state.PauseTiming();
        if (ns->GetStringTablePair().GetSmallTable().GetCount() != static_cast<int>(kStrings) ||
            (!defer && ns->GetStringUsageTable().GetCount() != static_cast<int>(kUsages)))
            state.SkipWithError("row count");
        ns.reset();
        state.ResumeTiming();
    }
}

// The two halves of the load on their own: the string tables, the usage table.
void BM_LoadStringTables(benchmark::State& state) {
    auto file = CZmfFile::Open(ModelFile());
    for (auto _ : state) {
        auto pair = std::make_unique<CStringTablePair>(file.get());
        pair->Init(0);
        state.PauseTiming();
        pair.reset();
        state.ResumeTiming();
    }
}

void BM_LoadUsageTable(benchmark::State& state) {
    auto file = CZmfFile::Open(ModelFile());
    for (auto _ : state) {
        auto usages = std::make_unique<CEnhStringUsageTable>(file.get());
        usages->Init(0);
        state.PauseTiming();
        usages.reset();
        state.ResumeTiming();
    }
}

void BM_LoadRawSqlite(benchmark::State& state) {
    sqlite3* db = OpenRaw(ModelFile());
    struct SRow {
        int64_t a = 0, b = 0, c = 0, d = 0;
        std::string text, text2;
    } row;
    auto scan = [&](const char* sql, int ints, int textColumn, int text2Column) {
        sqlite3_stmt* stmt = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
        size_t n = 0;
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            int64_t* fields[] = {&row.a, &row.b, &row.c, &row.d};
            for (int c = 0, f = 0; f < ints; ++c) {
                if (c == textColumn || c == text2Column) continue;
                *fields[f++] = sqlite3_column_int64(stmt, c);
            }
            if (textColumn >= 0)
                row.text.assign(
                    reinterpret_cast<const char*>(sqlite3_column_text(stmt, textColumn)),
                    static_cast<size_t>(sqlite3_column_bytes(stmt, textColumn)));
            if (text2Column >= 0)
                row.text2.assign(
                    reinterpret_cast<const char*>(sqlite3_column_text(stmt, text2Column)),
                    static_cast<size_t>(sqlite3_column_bytes(stmt, text2Column)));
            ++n;
        }
        sqlite3_finalize(stmt);
        return n;
    };
    // range(0): 0 every table, 1 the string tables, 2 the usage table
    const int part = static_cast<int>(state.range(0));
    for (auto _ : state) {
        size_t n = 0;
        if (part != 2) {
            n += scan("SELECT String_ID, Text, Large_Flag FROM SmallString ORDER BY rowid", 2, 1,
                      -1);
            n += scan("SELECT String_ID, Text FROM LargeString ORDER BY rowid", 1, 1, -1);
        }
        if (part != 1) {
            n += scan(
                "SELECT String_Usage_ID, Object_ID, String_Usage_Type_ID, String_ID"
                " FROM StringUsage ORDER BY rowid",
                4, -1, -1);
        }
        if (part == 0) {
            n += scan(
                "SELECT String_Usage_Type_ID, Name, Description FROM StringUsageType"
                " ORDER BY rowid",
                1, 1, 2);
        }
        const size_t strings = kStrings + Texts().longCount;
        const size_t expected = part == 1   ? strings
                                : part == 2 ? kUsages
                                            : strings + kUsages + tessmeta::kStringUsageTypeCount;
        if (n != expected) state.SkipWithError("row count");
        benchmark::DoNotOptimize(row);
    }
    sqlite3_close(db);
}

// Each save writes into a fresh model file, as the first save of a new model does.
std::string FreshSaveTarget(const char* name) {
    std::string path = ScratchFile(name);
    std::filesystem::remove(path);
    CZmfFile::Create(path).reset();
    return path;
}

void BM_SaveNameSpace(benchmark::State& state) {
    auto source = CZmfFile::Open(ModelFile());
    CNameSpaceMgr ns(source.get());
    ns.Init(0, 0, 0, 0, 0);
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("save.zmf");
        state.ResumeTiming();
        auto file = CZmfFile::Open(path);
        ns.Save(file.get(), 1, 0);
        ns.ReleaseStorageTables(0);
        if (!file->Commit()) state.SkipWithError("commit");
    }
}

sqlite3_stmt* PrepareInsert(sqlite3* db, const char* table, const char* columns, int columnCount,
                            int rows) {
    std::string values = "(";
    for (int c = 0; c < columnCount; ++c)
        values += c ? ",?" : "?";
    values += ")";
    std::string sql = std::string("INSERT INTO ") + table + " (" + columns + ") VALUES ";
    for (int r = 0; r < rows; ++r)
        sql += r ? "," + values : values;
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
    return stmt;
}

// Inserts `count` rows, `bind(stmt, firstParameter, row)` filling one row's values,
// 64 rows per statement and the rest one by one.
template <class Bind>
void InsertRows(sqlite3* db, const char* table, const char* columns, int columnCount, size_t count,
                Bind&& bind) {
    constexpr int kBatch = 64;
    sqlite3_stmt* many = PrepareInsert(db, table, columns, columnCount, kBatch);
    sqlite3_stmt* one = PrepareInsert(db, table, columns, columnCount, 1);
    size_t i = 0;
    for (; i + kBatch <= count; i += kBatch) {
        for (int r = 0; r < kBatch; ++r)
            bind(many, r * columnCount + 1, i + static_cast<size_t>(r));
        sqlite3_step(many);
        sqlite3_reset(many);
    }
    for (; i < count; ++i) {
        bind(one, 1, i);
        sqlite3_step(one);
        sqlite3_reset(one);
    }
    sqlite3_finalize(many);
    sqlite3_finalize(one);
}

void BM_SaveRawSqlite(benchmark::State& state) {
    const auto& texts = Texts();
    const auto& usages = Usages();
    std::vector<uint32_t> longIds;
    for (uint32_t i = 0; i < kStrings; ++i)
        if (texts.text[i].size() >= CStringTablePair::kLargeTextLength) longIds.push_back(i + 1);
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("raw.zmf");
        state.ResumeTiming();
        sqlite3* db = OpenRaw(path);
        sqlite3_exec(db,
                     "BEGIN IMMEDIATE; DELETE FROM SmallString; DELETE FROM LargeString;"
                     " DELETE FROM StringUsage; DELETE FROM StringUsageType;",
                     nullptr, nullptr, nullptr);
        InsertRows(db, "SmallString", "String_ID, Text, Large_Flag", 3, kStrings,
                   [&](sqlite3_stmt* s, int p, size_t i) {
                       const std::string& text = texts.text[i];
                       const bool isLong = text.size() >= CStringTablePair::kLargeTextLength;
                       sqlite3_bind_int64(s, p, static_cast<int64_t>(i + 1));
                       sqlite3_bind_text(s, p + 1, isLong ? "" : text.data(),
                                         isLong ? 0 : static_cast<int>(text.size()), SQLITE_STATIC);
                       sqlite3_bind_int64(s, p + 2, isLong ? 1 : 0);
                   });
        InsertRows(db, "LargeString", "String_ID, Text", 2, longIds.size(),
                   [&](sqlite3_stmt* s, int p, size_t i) {
                       const std::string& text = texts.text[longIds[i] - 1];
                       sqlite3_bind_int64(s, p, longIds[i]);
                       sqlite3_bind_text(s, p + 1, text.data(), static_cast<int>(text.size()),
                                         SQLITE_STATIC);
                   });
        InsertRows(db, "StringUsage", "String_Usage_ID, Object_ID, String_Usage_Type_ID, String_ID",
                   4, usages.size(), [&](sqlite3_stmt* s, int p, size_t i) {
                       sqlite3_bind_int64(s, p, usages[i].id);
                       sqlite3_bind_int64(s, p + 1, usages[i].object);
                       sqlite3_bind_int64(s, p + 2, usages[i].usageType);
                       sqlite3_bind_int64(s, p + 3, usages[i].string);
                   });
        InsertRows(db, "StringUsageType", "String_Usage_Type_ID, Name, Description", 3,
                   tessmeta::kStringUsageTypeCount, [&](sqlite3_stmt* s, int p, size_t i) {
                       sqlite3_bind_int64(s, p, static_cast<int64_t>(i + 1));
                       sqlite3_bind_text(s, p + 1, tessmeta::kStringUsageTypeNames[i], -1,
                                         SQLITE_STATIC);
                       sqlite3_bind_text(s, p + 2, "", 0, SQLITE_STATIC);
                   });
        if (sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK)
            state.SkipWithError("commit");
        sqlite3_close(db);
    }
}

BENCHMARK(BM_InternNameSpace)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_InternStd)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_InternStdTextMapOnly)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_LookupNameSpace)
    ->ArgName("kind")
    ->Arg(kByText)
    ->Arg(kNoCase)
    ->Arg(kById)
    ->Arg(kByIdView)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2)
    ->UseRealTime();
BENCHMARK(BM_LookupStd)
    ->ArgName("kind")
    ->Arg(kByText)
    ->Arg(kNoCase)
    ->Arg(kById)
    ->Arg(kByIdView)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2)
    ->UseRealTime();
BENCHMARK(BM_LoadNameSpace)
    ->ArgName("defer")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();
BENCHMARK(BM_LoadStringTables)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_LoadUsageTable)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_LoadRawSqlite)
    ->ArgName("tables")
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();
BENCHMARK(BM_SaveNameSpace)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_SaveRawSqlite)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace
