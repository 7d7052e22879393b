// Files of older format versions, written with what those versions stored, loaded
// through the model: data-dictionary flags and domains, the shared global ids of
// items and their registry rows, and the removal of registry rows left without
// their item.
#include <gtest/gtest.h>

#include <filesystem>

#include "dictionary_test_util.h"
#include "model/model_check.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::ReadAll;
using tessmeta::test::Store;
using tessmeta::test::TempDir;

namespace {

struct SOldModel {
    std::string path;
    DWORD limit = 0, limitItem = 0, limitObject = 0;  // the reference value and its own id
    DWORD generic = 0;     // the registry row's generic "Dictionary Object" id
    DWORD orphanItem = 0;  // a registry row whose reference value is gone
};

// Two data dictionaries without flags or domains (none at all with
// `withDictionaries` false), a reference value whose registry row carries a generic
// id of its own, and a registry row without its reference value.
SOldModel WriteOldModel(const TempDir& dir, bool withDictionaries) {
    SOldModel old;
    old.path = dir.File(withDictionaries ? "old.zmf" : "bare.zmf");
    {
        auto model = CModelFile::Create(old.path, nullptr);
        CDictObjectMgr& dict = model->GetDictObjectMgr();
        const DWORD main = dict.GetDiagramSpecificData_Dictionary_ID();
        dict.CreateDataDictionary("Sales", "");
        CString n("Limit"), v("10"), e, gone("Gone");
        old.limit = dict.InsertRefValue(n, e, v, e, e, e, 0, 0, main, old.limitItem, FALSE);
        old.limitObject = dict.GetRefValueRow(old.limit)->Global_User_ID;
        old.generic = static_cast<DWORD>(
            model->GetGuidMgr().GetNewUniqueId(CString("Dictionary Object"), 0, 0, 0));
        dict.UpdateDictObj(old.limitItem, old.generic);
        dict.InsertRefValue(gone, e, e, e, e, e, 0, 0, main, old.orphanItem, FALSE);
        EXPECT_TRUE(model->Save());
    }
    auto file = CZmfFile::Open(old.path);
    auto dictionaries = ReadAll<CData_DictionaryBase>(*file, "Data_Dictionary");
    for (auto& row : dictionaries)
        row.Flags = 0;
    if (!withDictionaries) dictionaries.clear();
    Store(*file, "Data_Dictionary", dictionaries);
    Store(*file, "Object_Domain", std::vector<CObject_DomainBase>{});
    auto values = ReadAll<CReference_ValueBase>(*file, "Reference_Value");
    std::erase_if(values,
                  [&](const auto& row) { return row.Dictionary_Object_ID == old.orphanItem; });
    Store(*file, "Reference_Value", values);
    EXPECT_TRUE(file->Commit());
    return old;
}

std::unique_ptr<CModelFile> OpenAs(const TempDir& dir, const std::string& path, DWORD version) {
    const std::string copy =
        dir.File(std::to_string(version) + "-" + std::filesystem::path(path).filename().string());
    std::filesystem::copy_file(path, copy);
    {
        auto file = CZmfFile::Open(copy);
        file->SetFormatVersion(version);
        EXPECT_TRUE(file->Commit());
    }
    return CModelFile::Open(copy, nullptr);
}

int DictionaryDomains(CGuidMgr& guids) {
    int count = 0;
    CEnhObjectDomainTable* domains = guids.GetEnhObjectDomainTable();
    for (POSITION pos = domains->GetFirstRowPosition(); pos;)
        count += domains->GetNextRow(pos)->Domain_Type.GetValue() == CString("DATA_DICTIONARY");
    return count;
}

TEST(DictionaryVersions, EachVersionRunsItsUpgrades) {
    TempDir dir;
    const SOldModel old = WriteOldModel(dir, true);
    for (DWORD version : {499u, 500u, 501u, 502u, 529u, 530u}) {
        SCOPED_TRACE(version);
        auto model = OpenAs(dir, old.path, version);
        ASSERT_TRUE(model);
        CDictObjectMgr& dict = model->GetDictObjectMgr();
        CGuidMgr& guids = model->GetGuidMgr();
        int diagramSpecific = 0;
        for (POSITION pos = dict.GetDataDictionaryStartPosition(); pos;)
            diagramSpecific +=
                dict.IsDiagramSpecificDataDictionary(dict.GetNextDataDictionary(pos));
        EXPECT_EQ(diagramSpecific, version < 501 ? 2 : 0);
        EXPECT_EQ(DictionaryDomains(guids), version < 502 ? 2 : 0);

        const CKelReferenceValue* limit = dict.GetRefValueRow(old.limit);
        ASSERT_TRUE(limit);
        CString name;
        dict.GetRefValueName(old.limit, name);
        EXPECT_EQ(name, CString("Limit"));
        if (version <= 502) {  // the item takes over the registry row's id
            EXPECT_EQ(limit->Global_User_ID, old.generic);
            EXPECT_EQ(dict.GetGlobalIDUsingDictID(old.limitItem), old.generic);
            EXPECT_EQ(guids.GetObjectTypeId(old.generic), guids.GetReferenceValueObjectTypeId());
            EXPECT_FALSE(guids.IsUniqueObjectIdValid(static_cast<LONG>(old.limitObject)));
            EXPECT_NE(model->GetNameSpaceMgr().GetStringIdFromObjectAndUsageTypeIds(
                          static_cast<int>(old.generic),
                          model->GetNameSpaceMgr().GetReferenceValueNameUsageId()),
                      0);
            if (version < 502) {
                EXPECT_EQ(guids.GetUniqueObjectObjectDomainID(old.generic),
                          dict.GetDictObjObjectDomainID(old.limitItem));
            }
        } else {
            EXPECT_EQ(limit->Global_User_ID, old.limitObject);
            EXPECT_EQ(dict.GetGlobalIDUsingDictID(old.limitItem), old.generic);
        }
        EXPECT_EQ(dict.IsDictionaryObjectIDValid(old.orphanItem), version >= 530);
        ASSERT_TRUE(model->Save());
        const auto report = tessmeta::CheckModelFile(model->GetFile());
        EXPECT_EQ(report.Count(tessmeta::ECheckKind::UsageWithoutObject), 0u);
    }
}

TEST(DictionaryVersions, OnlyTheOldestFilesGetADiagramSpecificDictionary) {
    TempDir dir;
    const SOldModel bare = WriteOldModel(dir, false);
    auto v499 = OpenAs(dir, bare.path, 499);
    CDictObjectMgr& dict = v499->GetDictObjectMgr();
    ASSERT_EQ(dict.GetNumOfDataDictionary(), 1);
    CString name, description;
    const DWORD id = dict.GetDiagramSpecificData_Dictionary_ID();
    dict.GetDataDictionaryName(id, name);
    dict.GetDataDictionaryDescription(id, description);
    EXPECT_EQ(name, CString("Main"));
    EXPECT_EQ(description, CString("Diagram specific data dictionary."));
    EXPECT_NE(dict.GetDataDictionaryObjectDomainID(id), 0u);
    EXPECT_EQ(OpenAs(dir, bare.path, 500)->GetDictObjectMgr().GetNumOfDataDictionary(), 0);
}

}  // namespace
