// Layout settings: the constant tables completed at load, parameter values per
// submodel and algorithm, their removal, and their persistence.
#include "layout/auto_layout_data_mgr.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "model/model_check.h"
#include "model/model_file.h"
#include "support/test_support.h"
#include "zmflib.h"

using tessmeta::kLayoutPropertyNames;
using tessmeta::test::TempDir;

namespace {

using NameRow = std::pair<ULONG, std::string>;  // id, name

// Replaces "Layout_Property_Name" with `rows` (description "stored <name>") and commits.
void StorePropertyNames(CZmfFile& file, const std::vector<NameRow>& rows) {
    CTableBase* table = file.GetEmptyTable("Layout_Property_Name");
    ASSERT_NE(table, nullptr);
    for (const auto& [id, name] : rows) {
        CLayout_Property_NameBase row(id);
        row.Name = name.c_str();
        row.Description = ("stored " + name).c_str();
        ASSERT_NE(table->Insert(&row), 0);
    }
    ASSERT_TRUE(file.Commit());
}

// The parameter-name rows in list order, as (id, name, description).
std::vector<std::tuple<ULONG, std::string, std::string>> PropertyNames(CAutoLayoutDataMgr& mgr) {
    std::vector<std::tuple<ULONG, std::string, std::string>> rows;
    CEnhLayoutPropertyNameTable& table = mgr.GetLayoutPropertyNameTable();
    for (POSITION pos = table.GetFirstRowPosition(); pos;) {
        const CKelLayoutPropertyName* row = table.GetNextRow(pos);
        rows.emplace_back(row->Layout_Property_Name_ID, std::string(row->Name),
                          std::string(row->Description));
    }
    return rows;
}

ULONG AlgorithmId(CAutoLayoutDataMgr& mgr, const char* name) {
    const CKelLayoutAlgorithm* row = mgr.GetLayoutAlgorithmRow(CString(name));
    return row ? row->Layout_Algorithm_ID : 0;
}

// Every parameter value of a submodel as "algorithm/parameter/type=value", in walk order.
std::vector<std::string> Settings(CAutoLayoutDataMgr& mgr, ULONG submodel) {
    std::vector<std::string> out;
    for (const char* algorithm : {"Force", "Layered", "Circle", "Random"}) {
        const CKelSubmodelAlgorithm* pair =
            mgr.GetSubmodelAlgorithmRow(submodel, AlgorithmId(mgr, algorithm));
        if (!pair) continue;
        for (const CKelAlgorithmProperty* v =
                 mgr.GetFirstAlgorithmPropertyFKRow(pair->Submodel_Algorithm_ID);
             v; v = mgr.GetNextAlgorithmPropertyFKRow()) {
            out.push_back(
                std::string(algorithm) + "/" +
                std::string(mgr.GetLayoutPropertyNameRow(v->Layout_Property_Name_ID)->Name) + "/" +
                std::string(mgr.GetDataTypeRow(v->Data_Type_ID)->Name) + "=" +
                std::string(v->Value));
        }
    }
    return out;
}

// A file written before some parameters existed keeps its rows as they are and gains
// the missing names, appended in list order under new keys.
TEST(AutoLayout, PartialAndNewFilesGainTheNamesAndKeepSettingsAcrossSaves) {
    TempDir dir;
    const std::string path = dir.File("partial.zmf");
    std::vector<NameRow> stored;
    for (ULONG i = 0; i < 16; ++i)
        stored.emplace_back(101 + i, kLayoutPropertyNames[i].name);  // the FORCE family
    stored.emplace_back(140, "CIRCLE_DENSITY");
    stored.emplace_back(120, "FORCE_RETIRED");  // not in the list: stays
    {
        auto file = CZmfFile::Create(path);
        StorePropertyNames(*file, stored);
    }
    std::vector<std::tuple<ULONG, std::string, std::string>> expected;
    for (const auto& [id, name] : stored)
        expected.emplace_back(id, name, "stored " + name);
    ULONG next = 140;
    for (const auto& constant : kLayoutPropertyNames) {
        const std::string name = constant.name;
        if (name.rfind("FORCE_", 0) != 0 && name != "CIRCLE_DENSITY")
            expected.emplace_back(++next, name, constant.description);
    }
    ASSERT_EQ(expected.size(), 18u + 38u);

    for (int pass = 0; pass < 2; ++pass) {  // the second load finds nothing missing
        SCOPED_TRACE(pass);
        auto file = CZmfFile::Open(path);
        ASSERT_NE(file, nullptr);
        CAutoLayoutDataMgr mgr(file.get(), nullptr);
        mgr.Init();
        EXPECT_EQ(PropertyNames(mgr), expected);
        EXPECT_EQ(mgr.GetLayoutPropertyNameRow(CString("FORCE_RETIRED"))->Layout_Property_Name_ID,
                  120u);
        ASSERT_EQ(mgr.Save(file.get()), 1);
        mgr.ReleaseStorageTables(0);
        ASSERT_TRUE(file->Commit());
    }

    // Through the model: a new model file holds the constant tables; settings survive
    // a save and a reopen.
    const std::string modelPath = dir.File("model.zmf");
    std::string error;
    {
        auto model = tessmeta::CModelFile::Create(modelPath, &error);
        ASSERT_TRUE(model) << error;
        CTableBase* names = model->GetFile().GetTable("Layout_Property_Name");
        EXPECT_EQ(names->GetCount(), 55u);
        model->GetFile().ReleaseTable(&names, 0);
        CAutoLayoutDataMgr& mgr = model->GetAutoLayoutDataMgr();
        mgr.UpdateSubmodelAlgorithmProperty(5, 2, "LAYERED_STEP_V", "Float", "1.25");
        mgr.UpdateSubmodelAlgorithmProperty(5, 2, "LAYERED_STEP_V_MAX", "Float", "");
        mgr.UpdateSubmodelAlgorithmProperty(6, 4, "RANDOM_MAX_H", "Integer", "800 px");
        ASSERT_TRUE(model->Save());
    }
    auto model = tessmeta::CModelFile::Open(modelPath, &error);
    ASSERT_TRUE(model) << error;
    CAutoLayoutDataMgr& mgr = model->GetAutoLayoutDataMgr();
    EXPECT_EQ(Settings(mgr, 5), (std::vector<std::string>{"Layered/LAYERED_STEP_V/Float=1.25",
                                                          "Layered/LAYERED_STEP_V_MAX/Float="}));
    EXPECT_EQ(Settings(mgr, 6), std::vector<std::string>{"Random/RANDOM_MAX_H/Integer=800 px"});
    EXPECT_EQ(mgr.GetLayoutPropertyNameTable().GetCount(), 55);
    EXPECT_EQ(tessmeta::CheckModelFile(model->GetFile()).ErrorCount(), 0u);
}

// Updates, and the tables GetTablePtr hands out (1 and 94, only while held).
TEST(AutoLayout, UpdatesKeepOneRowPerParameterAndTheTablesAreHandedOut) {
    auto file = CZmfFile::OpenMemory();
    CAutoLayoutDataMgr mgr(file.get(), nullptr);
    mgr.Init();
    EXPECT_EQ(mgr.GetTablePtr(1), nullptr);  // given back at load
    const ULONG force = AlgorithmId(mgr, "Force"), layered = AlgorithmId(mgr, "Layered");
    EXPECT_EQ(std::vector<ULONG>({force, layered, AlgorithmId(mgr, "Circle"),
                                  AlgorithmId(mgr, "Random"), AlgorithmId(mgr, "force")}),
              std::vector<ULONG>({1, 2, 3, 4, 0}));  // in list order; names match exactly

    const int first =
        mgr.UpdateSubmodelAlgorithmProperty(7, force, "FORCE_NODE_DIST", "Integer", "40");
    EXPECT_GT(first, 0);
    EXPECT_STREQ(mgr.GetAlgorithmPropertyTable().GetRow(static_cast<ULONG>(first))->Value, "40");
    EXPECT_EQ(mgr.UpdateSubmodelAlgorithmProperty(7, force, "FORCE_NODE_DIST", "Integer", "60"), 1);
    EXPECT_EQ(mgr.GetAlgorithmPropertyTable().GetCount(), 1);
    EXPECT_EQ(Settings(mgr, 7), std::vector<std::string>{"Force/FORCE_NODE_DIST/Integer=60"});

    // Another parameter, data type, algorithm or submodel: each a row of its own.
    mgr.UpdateSubmodelAlgorithmProperty(7, force, "FORCE_FLAGS", "Integer", "3");
    mgr.UpdateSubmodelAlgorithmProperty(7, force, "FORCE_NODE_DIST", "Float", "60.5");
    mgr.UpdateSubmodelAlgorithmProperty(7, layered, "LAYERED_FLAGS", "Integer", "2");
    mgr.UpdateSubmodelAlgorithmProperty(8, force, "FORCE_NODE_DIST", "Integer", "10");
    EXPECT_EQ(Settings(mgr, 7),
              (std::vector<std::string>{
                  "Force/FORCE_NODE_DIST/Integer=60", "Force/FORCE_FLAGS/Integer=3",
                  "Force/FORCE_NODE_DIST/Float=60.5", "Layered/LAYERED_FLAGS/Integer=2"}));
    EXPECT_EQ(Settings(mgr, 8), std::vector<std::string>{"Force/FORCE_NODE_DIST/Integer=10"});
    EXPECT_EQ(mgr.GetSubmodelAlgorithmTable().GetCount(), 3);
    EXPECT_EQ(mgr.GetSubmodelAlgorithmRow(7, force)->Reserved, 0u);

    // Unknown names, types or algorithms change nothing, not even the pair table.
    EXPECT_EQ(mgr.UpdateSubmodelAlgorithmProperty(9, force, "NO_SUCH", "Integer", "1"), 0);
    EXPECT_EQ(mgr.UpdateSubmodelAlgorithmProperty(9, 99, "FORCE_FLAGS", "Integer", "1"), 0);
    EXPECT_EQ(mgr.GetSubmodelAlgorithmTable().GetCount(), 3);
    EXPECT_EQ(mgr.GetAlgorithmPropertyTable().GetCount(), 5);

    mgr.Save(file.get());
    ASSERT_NE(mgr.GetTablePtr(1), nullptr);
    EXPECT_STREQ(mgr.GetTablePtr(1)->GetName(), "Algorithm_Property");
    ASSERT_NE(mgr.GetTablePtr(94), nullptr);
    EXPECT_STREQ(mgr.GetTablePtr(94)->GetName(), "Submodel_Algorithm");
    EXPECT_EQ(mgr.GetTablePtr(2), nullptr);
    mgr.ReleaseStorageTables(0);
    EXPECT_EQ(mgr.GetTablePtr(1), nullptr);
    EXPECT_EQ(mgr.GetTablePtr(94), nullptr);
}

// Removal against a reference: which submodels keep settings after each step.
TEST(AutoLayout, DeletingSubmodelsAndDeadRowsKeepsOnlyTheLiveSettings) {
    auto file = CZmfFile::OpenMemory();
    CAutoLayoutDataMgr mgr(file.get(), nullptr);
    mgr.Init();
    const ULONG force = AlgorithmId(mgr, "Force"), circle = AlgorithmId(mgr, "Circle");
    std::map<ULONG, std::vector<std::string>> reference;  // submodel -> settings
    for (ULONG submodel = 1; submodel <= 6; ++submodel) {
        mgr.UpdateSubmodelAlgorithmProperty(submodel, force, "FORCE_FLAGS", "Integer",
                                            std::to_string(submodel).c_str());
        if (submodel % 2 == 0)
            mgr.UpdateSubmodelAlgorithmProperty(submodel, circle, "CIRCLE_DENSITY", "Float", "0.5");
        reference[submodel] = Settings(mgr, submodel);
    }
    // A value whose submodel algorithm is gone.
    mgr.GetAlgorithmPropertyTable().Insert(1, 1, 999, 0, "orphan");
    auto expectOnly = [&](std::vector<ULONG> live) {
        int values = 0, pairs = 0;
        for (ULONG submodel = 1; submodel <= 6; ++submodel) {
            const bool kept = std::find(live.begin(), live.end(), submodel) != live.end();
            EXPECT_EQ(Settings(mgr, submodel),
                      kept ? reference[submodel] : std::vector<std::string>{})
                << submodel;
            if (kept) values += static_cast<int>(reference[submodel].size());
            if (kept) pairs += submodel % 2 == 0 ? 2 : 1;
        }
        EXPECT_EQ(mgr.GetSubmodelAlgorithmTable().GetCount(), pairs);
        return values;
    };

    EXPECT_EQ(mgr.DeleteSubmodelData(2), 1);
    EXPECT_EQ(mgr.DeleteSubmodelData(2), 0);
    EXPECT_EQ(mgr.DeleteSubmodelData(77), 0);
    EXPECT_EQ(expectOnly({1, 3, 4, 5, 6}) + 1, mgr.GetAlgorithmPropertyTable().GetCount());

    EXPECT_EQ(mgr.RemoveDeadRows(nullptr), 0);
    CList<ULONG> live;
    for (ULONG id : {4u, 5u, 42u})
        live.AddTail(id);
    // Submodels 1, 3 (one pair, one value each) and 6 (two of each), and the orphan.
    EXPECT_EQ(mgr.RemoveDeadRows(&live), 2 + 2 + 4 + 1);
    EXPECT_EQ(expectOnly({4, 5}), mgr.GetAlgorithmPropertyTable().GetCount());
    EXPECT_EQ(mgr.RemoveDeadRows(&live), 0);

    live.RemoveAll();
    mgr.RemoveDeadRows(&live);
    EXPECT_EQ(mgr.GetAlgorithmPropertyTable().GetCount(), 0);
    EXPECT_EQ(mgr.GetSubmodelAlgorithmTable().GetCount(), 0);
    EXPECT_EQ(mgr.GetLayoutPropertyNameTable().GetCount(), 55);  // constants stay
}

}  // namespace
