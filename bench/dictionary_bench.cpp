// The data dictionary against baselines measured in the same run:
//  - loading 1,000,000 registry rows and 500,000 reference values from a .zmf file
//    into their in-memory tables, against a raw sqlite3_step scan of the same rows;
//  - saving them, against the best raw insert loop (prepared 64-row INSERTs in one
//    transaction), both ending with the commit;
//  - loading and saving 500,000 attachments, against the same raw baselines;
//  - deleting an attachment type with N attachments, each bound to 10 model objects
//    (through two valid types), at N = 1,000 and 10,000: the time per removed row
//    (types, valid types, attachments, registry rows, bindings) must not grow with
//    N. The objects are distinct per attachment, or the same 10 objects carry every
//    attachment;
//  - importing N reference values into one data dictionary, each named with
//    GetNameForUniqueReferenceValue and then inserted, at N = 10,000 and 200,000:
//    the time per item must not grow with N. For contrast, the same import where
//    the uniqueness test walks every reference value, as a plain reading of the
//    rule would, at N = 2,000 and 10,000.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "dictionary/dict_object_mgr.h"
#include "model/model_file.h"
#include "support/bench_support.h"

namespace {

using tessmeta::bench::CRawTableScan;
using tessmeta::bench::FreshSaveTarget;

constexpr DWORD kRegistryRows = 1000000;
constexpr DWORD kReferenceValues = 500000;
constexpr DWORD kAttachments = 500000;

template <class Row>
std::vector<const CDbObjectBase*> Pointers(const std::vector<Row>& rows) {
    std::vector<const CDbObjectBase*> pointers;
    pointers.reserve(rows.size());
    for (const Row& row : rows)
        pointers.push_back(&row);
    return pointers;
}

const std::vector<CDictionary_ObjectBase>& RegistryRows() {
    static const auto rows = [] {
        std::vector<CDictionary_ObjectBase> r(kRegistryRows);
        for (DWORD k = 1; k <= kRegistryRows; ++k) {
            auto& row = r[k - 1];
            row.Dictionary_Object_ID = k;
            row.Data_Dictionary_ID = 1 + k % 4;
            row.Dictionary_Object_Type_ID = 1 + k % 12;
            row.Global_User_ID = kRegistryRows + k;
        }
        return r;
    }();
    return rows;
}

const std::vector<CReference_ValueBase>& ReferenceValueRows() {
    static const auto rows = [] {
        std::vector<CReference_ValueBase> r(kReferenceValues);
        for (DWORD k = 1; k <= kReferenceValues; ++k) {
            auto& row = r[k - 1];
            row.Reference_Value_ID = k;
            row.Dictionary_Object_ID = k;
            row.Name = 6 * k;
            row.Description = 6 * k + 1;
            row.Value = k % 3 ? 6 * k + 2 : 0;
            row.Value_Description = 0;
            row.Min_Value = k % 3 ? 0 : 6 * k + 4;
            row.Max_Value = k % 3 ? 0 : 6 * k + 5;
            row.IsNotBetween = static_cast<LONG>(k % 7 == 0);
            row.IsRange = static_cast<LONG>(k % 3 == 0);
            row.Global_User_ID = 2 * kRegistryRows + k;
        }
        return r;
    }();
    return rows;
}

const std::vector<CAttachmentBase>& AttachmentRows() {
    static const auto rows = [] {
        std::vector<CAttachmentBase> r(kAttachments);
        for (DWORD k = 1; k <= kAttachments; ++k) {
            auto& row = r[k - 1];
            row.Attachment_ID = k;
            row.Dictionary_Object_ID = k;
            row.Attachment_Type_ID = 1 + k % 50;
            row.Name = 3 * k;
            row.Description = k % 4 ? 0 : 3 * k + 1;
            row.Value = 3 * k + 2;
            row.Numeric_Attribute = k % 5;
            row.Global_User_ID = 3 * kRegistryRows + k;
        }
        return r;
    }();
    return rows;
}

template <class Row>
const std::string& TableFile(const std::vector<Row>& rows) {
    static const std::string path = tessmeta::bench::CreateTableFile(
        std::string(Row::Desc().name) + ".zmf", Row::Desc(), Pointers(rows));
    return path;
}

// The in-memory table of each benchmarked record-store table, without services.
std::unique_ptr<CEnhDictObjectTable> MakeTable(const std::vector<CDictionary_ObjectBase>&,
                                               CZmfFile* file) {
    return std::make_unique<CEnhDictObjectTable>(nullptr, file);
}
std::unique_ptr<CEnhReferenceValueTable> MakeTable(const std::vector<CReference_ValueBase>&,
                                                   CZmfFile* file) {
    return std::make_unique<CEnhReferenceValueTable>(nullptr, nullptr, nullptr, file);
}

std::unique_ptr<CEnhAttachmentTable> MakeTable(const std::vector<CAttachmentBase>&,
                                               CZmfFile* file) {
    return std::make_unique<CEnhAttachmentTable>(nullptr, nullptr, nullptr, file);
}

template <class Row>
void Load(benchmark::State& state, const std::vector<Row>& rows) {
    auto file = CZmfFile::Open(TableFile(rows));
    for (auto _ : state) {
        auto table = MakeTable(rows, file.get());
        table->Init(0);
        if (static_cast<size_t>(table->GetCount()) != rows.size()) state.SkipWithError("count");
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * rows.size()));
}

template <class Row>
void ScanRaw(benchmark::State& state, const std::vector<Row>& rows) {
    CRawTableScan scan(TableFile(rows), Row::Desc());
    for (auto _ : state)
        if (scan.Run() != rows.size()) state.SkipWithError("count");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * rows.size()));
}

template <class Row>
void Save(benchmark::State& state, const std::vector<Row>& rows) {
    auto source = CZmfFile::Open(TableFile(rows));
    auto table = MakeTable(rows, source.get());
    table->Init(0);
    for (auto _ : state) {
        state.PauseTiming();
        auto target = CZmfFile::Open(FreshSaveTarget("save.zmf"));
        state.ResumeTiming();
        table->Save(target.get());
        target->ReleaseTable(table->GetTablePtrAddr(), 0);
        if (!target->Commit()) state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * rows.size()));
}

template <class Row>
void SaveRaw(benchmark::State& state, const std::vector<Row>& rows) {
    const auto pointers = Pointers(rows);
    for (auto _ : state) {
        state.PauseTiming();
        const std::string path = FreshSaveTarget("raw.zmf");
        state.ResumeTiming();
        if (!tessmeta::bench::RawSaveRows(path, Row::Desc(), pointers, 64))
            state.SkipWithError("commit");
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * rows.size()));
}

void BM_LoadRegistry(benchmark::State& s) {
    Load(s, RegistryRows());
}
void BM_ScanRegistryRaw(benchmark::State& s) {
    ScanRaw(s, RegistryRows());
}
void BM_SaveRegistry(benchmark::State& s) {
    Save(s, RegistryRows());
}
void BM_SaveRegistryRaw(benchmark::State& s) {
    SaveRaw(s, RegistryRows());
}
void BM_LoadReferenceValues(benchmark::State& s) {
    Load(s, ReferenceValueRows());
}
void BM_ScanReferenceValuesRaw(benchmark::State& s) {
    ScanRaw(s, ReferenceValueRows());
}
void BM_SaveReferenceValues(benchmark::State& s) {
    Save(s, ReferenceValueRows());
}
void BM_SaveReferenceValuesRaw(benchmark::State& s) {
    SaveRaw(s, ReferenceValueRows());
}

void BM_LoadAttachments(benchmark::State& s) {
    Load(s, AttachmentRows());
}
void BM_ScanAttachmentsRaw(benchmark::State& s) {
    ScanRaw(s, AttachmentRows());
}
void BM_SaveAttachments(benchmark::State& s) {
    Save(s, AttachmentRows());
}
void BM_SaveAttachmentsRaw(benchmark::State& s) {
    SaveRaw(s, AttachmentRows());
}

// Adds an attachment type valid for meta tables 16 (bindings on 8) and 3, with
// `count` attachments each bound to 10 objects, five on each meta table: the same
// 10 objects for every attachment when `shared`, else objects of its own. Returns
// the type.
DWORD AddBoundAttachments(tessmeta::CModelFile& model, DWORD count, bool shared,
                          DWORD firstObject) {
    CDictObjectMgr& dict = model.GetDictObjectMgr();
    CRefObjectMgr& refs = model.GetRefObjectMgr();
    const DWORD dd = dict.GetDiagramSpecificData_Dictionary_ID();
    CString name, description("bench"), none;
    DWORD item = 0;
    char text[32];
    std::snprintf(text, sizeof text, "Owner%u", firstObject);
    name = text;
    const DWORD type = dict.InsertAttachmentType(name, description, 0, dd, item, FALSE);
    dict.InsertValidAttachmentType(type, 16, 0, 0, item, FALSE);
    dict.InsertValidAttachmentType(type, 3, 0, 0, item, FALSE);
    for (DWORD i = 0; i < count; ++i) {
        std::snprintf(text, sizeof text, "A%u_%u", firstObject, i);
        name = text;
        dict.InsertAttachment(type, name, none, name, i, item, FALSE);
        for (DWORD j = 0; j < 10; ++j)
            refs.InsertBoundDictObject(item, j < 5 ? 8 : 3, firstObject + (shared ? j : i * 10 + j),
                                       none);
    }
    return type;
}

// Rows of the data dictionary and the bindings.
int DictionaryRows(tessmeta::CModelFile& model) {
    CDictObjectMgr& dict = model.GetDictObjectMgr();
    return dict.GetDictObjectCountIn(dict.GetDiagramSpecificData_Dictionary_ID()) +
           model.GetRefObjectMgr().GetBoundDictObjectTable()->GetCount() +
           dict.GetAttachmentTypeCount() + dict.GetValidAttachmentTypeCount() +
           dict.GetAttachmentCount();
}

// Deletes a type of N attachments (argument 0), removing 12 N + 6 rows: the type,
// its two valid types, the attachments, their registry rows and the bindings.
// Argument 1: whether all attachments are bound to the same 10 objects. Argument 2:
// 1 when the model always holds types of 1,000 and 10,000 attachments and one of
// them is deleted, so that both sizes are measured in the same model; 0 when the
// model holds the deleted type alone, so that the larger size also works on larger
// structures.
void BM_DeleteAttachmentType(benchmark::State& state) {
    const auto count = static_cast<DWORD>(state.range(0));
    const bool shared = state.range(1) != 0;
    const bool sameModel = state.range(2) != 0;
    std::int64_t removed = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto model = tessmeta::CModelFile::CreateInMemory();
        DWORD type = 0;
        for (DWORD size : {1000u, 10000u}) {
            if (!sameModel && size != count) continue;
            const DWORD added = AddBoundAttachments(*model, size, shared, size * 100);
            if (size == count) type = added;
        }
        // A first delete files the indexes a load or a new model leaves to first use,
        // as any earlier edit of a session would have.
        const DWORD warm = AddBoundAttachments(*model, 1, shared, 1);
        model->GetDictObjectMgr().DeleteAttachmentType(warm);
        const int before = DictionaryRows(*model);
        state.ResumeTiming();
        if (!model->GetDictObjectMgr().DeleteAttachmentType(type)) state.SkipWithError("delete");
        state.PauseTiming();
        removed += before - DictionaryRows(*model);
        model.reset();
        state.ResumeTiming();
    }
    state.counters["rows"] = static_cast<double>(removed) / static_cast<double>(state.iterations());
    state.counters["ns_per_row"] = benchmark::Counter(
        static_cast<double>(removed), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The rule read plainly: walk every reference value in table order and let the
// first of the name in the data dictionary decide.
LONG WalkingTest(CDictObjectMgr& dict, const CString& name, const CString& value, DWORD dd) {
    for (POSITION pos = dict.GetFirstRefValueRowPosition(); pos;) {
        const CKelReferenceValue* row = dict.GetNextRefValueRow(pos);
        if (dict.GetData_Dictionary_ID(row->Dictionary_Object_ID) != dd ||
            row->GetName().CompareNoCase(name) != 0)
            continue;
        return row->GetValue().CompareNoCase(value) == 0 ? static_cast<LONG>(row->GetTechKey())
                                                         : -1;
    }
    return 0;
}

// N reference values named RV_<i mod N/2> with values that differ, so that every
// second one needs a suffix.
template <bool kWalk>
void Import(benchmark::State& state) {
    const auto count = static_cast<DWORD>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto model = tessmeta::CModelFile::CreateInMemory();
        CDictObjectMgr& dict = model->GetDictObjectMgr();
        const DWORD dd = dict.GetDiagramSpecificData_Dictionary_ID();
        state.ResumeTiming();
        CString name, description("imported"), value, empty;
        CDictOverrideMap none;
        char text[32];
        for (DWORD i = 0; i < count; ++i) {
            std::snprintf(text, sizeof text, "RV_%u", i % (count / 2));
            name = text;
            std::snprintf(text, sizeof text, "%u", i);
            value = text;
            if constexpr (kWalk) {
                const CString base = name;
                for (int n = 1; WalkingTest(dict, name, value, dd) == -1; ++n)
                    name.Format("%s_%d", base.GetString(), n);
            } else {
                dict.GetNameForUniqueReferenceValue(name, description, value, empty, empty, empty,
                                                    FALSE, FALSE, none, dd, true);
            }
            DWORD item = 0;
            dict.InsertRefValue(name, description, value, empty, empty, empty, FALSE, FALSE, dd,
                                item, FALSE);
        }
        state.PauseTiming();
        if (dict.GetReferenceValueCount() != static_cast<int>(count)) state.SkipWithError("count");
        model.reset();
        state.ResumeTiming();
    }
    state.counters["ns_per_item"] =
        benchmark::Counter(static_cast<double>(state.iterations() * count),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(BM_LoadRegistry)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_ScanRegistryRaw)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_SaveRegistry)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SaveRegistryRaw)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_LoadReferenceValues)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_ScanReferenceValuesRaw)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_SaveReferenceValues)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SaveReferenceValuesRaw)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_LoadAttachments)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_ScanAttachmentsRaw)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(BM_SaveAttachments)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SaveAttachmentsRaw)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_DeleteAttachmentType)
    ->ArgNames({"attachments", "shared", "same_model"})
    ->Args({1000, 0, 1})
    ->Args({10000, 0, 1})
    ->Args({1000, 1, 1})
    ->Args({10000, 1, 1})
    ->Args({1000, 0, 0})
    ->Args({10000, 0, 0})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5)
    ->UseRealTime();
BENCHMARK_TEMPLATE(Import, false)
    ->Arg(10000)
    ->Arg(200000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();
BENCHMARK_TEMPLATE(Import, true)
    ->Arg(2000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseRealTime();

}  // namespace
