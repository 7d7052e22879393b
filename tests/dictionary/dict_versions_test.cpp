// Files of older format versions, written with what those versions stored, loaded
// through the model: data-dictionary flags and domains, the shared global ids of
// items and their registry rows (both passes, every kind with a table), and the
// removal of registry rows left without their item.
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
    EXPECT_TRUE(Store(*file, "Data_Dictionary", dictionaries));
    EXPECT_TRUE(Store(*file, "Object_Domain", std::vector<CObject_DomainBase>{}));
    auto values = ReadAll<CReference_ValueBase>(*file, "Reference_Value");
    std::erase_if(values,
                  [&](const auto& row) { return row.Dictionary_Object_ID == old.orphanItem; });
    EXPECT_TRUE(Store(*file, "Reference_Value", values));
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

    // Only the oldest files without any data dictionary get a diagram-specific one.
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

// The global id of the row of an item of a kind with a table; 0 when missing.
DWORD RowGlobalId(CDictObjectMgr& dict, DWORD item) {
    int kind = 0;
    DWORD key = 0;
    if (!dict.GetBoundDictObject(item, kind, key)) return 0;
    switch (kind) {
        case tessmeta::kDictTrigger:
            return dict.GetTriggerRow(key)->Global_User_ID;
        case tessmeta::kDictLibrary:
            return dict.GetLibraryRow(key)->Global_User_ID;
        case tessmeta::kDictProcedure:
            return dict.GetProcedureRow(key)->Global_User_ID;
        case tessmeta::kDictAttachmentType:
            return dict.GetAttachmentTypeRow(key)->Global_User_ID;
        case tessmeta::kDictValidAttachmentType:
            return dict.GetValidAttachmentTypeRow(key)->Global_User_ID;
        case tessmeta::kDictAttachment:
            return dict.GetAttachmentRow(key)->Global_User_ID;
        default:
            return 0;
    }
}

// The first pass (triggers, procedures, libraries) and the second (attachment types,
// valid attachment types, attachments) end alike: the item takes over the generic id
// its registry row carried, typed by its kind, with the item's texts, in the data
// dictionary's domain; the item's own former object is gone.
TEST(DictionaryVersions, BothPassesOfTheSharedIdUpgradeEndAlike) {
    TempDir dir;
    const std::string path = dir.File("kinds.zmf");
    struct SItem {
        DWORD item = 0, own = 0, generic = 0;
        int typeId = 0, nameUsage = 0;  // expected object type; name usage (0: no texts)
    };
    std::vector<SItem> items;
    {
        auto model = CModelFile::Create(path, nullptr);
        CDictObjectMgr& dict = model->GetDictObjectMgr();
        CGuidMgr& guids = model->GetGuidMgr();
        CNameSpaceMgr& names = model->GetNameSpaceMgr();
        const DWORD main = dict.GetDiagramSpecificData_Dictionary_ID();
        CString n("Item"), e;
        SItem t, l, p, at, vt, a;
        dict.InsertTrigger(n, e, 0, 0, 1, e, 0, main, t.item, FALSE);
        t.typeId = guids.GetDictionaryTriggerObjectTypeId();
        t.nameUsage = names.GetDictionaryTriggerNameUsageId();
        dict.InsertLibrary(n, e, 0, e, main, l.item, FALSE);
        l.typeId = guids.GetDictionaryLibraryObjectTypeId();
        l.nameUsage = names.GetDictionaryLibraryNameUsageId();
        dict.InsertProcedure(n, e, e, 0, main, p.item, FALSE);
        p.typeId = guids.GetReusableProcObjectTypeId();
        p.nameUsage = names.GetReusableProcedureNameUsageId();
        const DWORD type = dict.InsertAttachmentType(n, e, 0, main, at.item, FALSE);
        at.typeId = guids.GetAttachmentTypeObjectTypeId();
        at.nameUsage = names.GetAttachmentTypeNameUsageId();
        dict.InsertValidAttachmentType(type, 1, 0, 0, vt.item, FALSE);
        vt.typeId = guids.GetValidAttachmentTypeObjectTypeId();
        dict.InsertAttachment(type, n, e, e, 0, a.item, FALSE);
        a.typeId = guids.GetAttachmentObjectTypeId();
        a.nameUsage = names.GetAttachmentNameUsageId();
        for (SItem* it : {&t, &p, &l, &at, &vt, &a}) {
            it->own = dict.GetGlobalIDUsingDictID(it->item);
            it->generic =
                static_cast<DWORD>(guids.GetNewUniqueId(CString("Dictionary Object"), 0, 0, 0));
            dict.UpdateDictObj(it->item, it->generic);
            items.push_back(*it);
        }
        ASSERT_TRUE(model->Save());
    }
    for (DWORD version : {502u, 530u}) {
        SCOPED_TRACE(version);
        auto model = OpenAs(dir, path, version);
        ASSERT_TRUE(model);
        CDictObjectMgr& dict = model->GetDictObjectMgr();
        CGuidMgr& guids = model->GetGuidMgr();
        for (const SItem& it : items) {
            SCOPED_TRACE(dict.GetDictObjectType(it.item));
            const DWORD shared = version == 502 ? it.generic : it.own;
            EXPECT_EQ(RowGlobalId(dict, it.item), shared);
            EXPECT_EQ(dict.GetGlobalIDUsingDictID(it.item), it.generic);  // kept at 530
            EXPECT_EQ(guids.GetObjectTypeId(shared), it.typeId);
            EXPECT_EQ(guids.IsUniqueObjectIdValid(static_cast<LONG>(it.own)), version != 502);
            EXPECT_EQ(guids.GetUniqueObjectObjectDomainID(shared),
                      dict.GetDictObjObjectDomainID(it.item));
            if (it.nameUsage) {
                EXPECT_NE(model->GetNameSpaceMgr().GetStringIdFromObjectAndUsageTypeIds(
                              static_cast<int>(shared), it.nameUsage),
                          0);
            }
        }
        ASSERT_TRUE(model->Save());
        EXPECT_EQ(tessmeta::CheckModelFile(model->GetFile())
                      .Count(tessmeta::ECheckKind::UsageWithoutObject),
                  0u);
    }
}

}  // namespace
