// The dictionary-object manager: kinds, the registry, uniqueness and names, links,
// cascades of deletes, and persistence.
#include "dictionary/dict_object_mgr.h"

#include <gtest/gtest.h>

#include <random>

#include "dictionary_test_util.h"
#include "model/model_check.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::SDictFixture;
using tessmeta::test::StoredRows;
using tessmeta::test::TempDir;

namespace {

TEST(DictObjectMgr, KindsRegistryBoundObjectsAndDeletes) {
    SDictFixture f;
    EXPECT_EQ(f.dict.GetDictObjectTypeFromEnum(0), 0u);
    EXPECT_EQ(f.dict.GetDictObjectTypeFromEnum(13), 0u);
    const DWORD d1 = f.dict.InsertDefault(f.main, 500);
    const DWORD r1 = f.dict.InsertRule(f.main, 501);
    const DWORD d2 = f.dict.InsertDefault(f.main, 502);
    EXPECT_EQ(f.dict.GetDictObjectType(r1), DWORD{tessmeta::kDictRule});
    EXPECT_EQ(f.dict.GetFirstDefaultDictObjId(), d1);
    EXPECT_EQ(f.dict.GetNextDefaultDictObjId(), d2);
    EXPECT_EQ(f.dict.GetNextDefaultDictObjId(), 0u);

    DWORD item = 0;
    const DWORD rv = f.RefValue("Limit", "1", f.main, &item);
    const DWORD link = f.dict.CreateDictionaryObjectLinkRoot(item);
    // Kind and row key of an item; links and kinds without a table answer no key.
    auto bound = [&](DWORD id) {
        int kind = -1;
        DWORD key = 99;
        EXPECT_TRUE(f.dict.GetBoundDictObject(id, kind, key)) << id;
        return std::pair(kind, key);
    };
    EXPECT_EQ(bound(item), std::pair(8, rv));
    EXPECT_EQ(bound(d1), std::pair(4, DWORD{0}));
    EXPECT_EQ(bound(f.dict.GetDictionaryObjectLinkRow(link)->Dictionary_Object_ID),
              std::pair(12, DWORD{0}));
    int kind = -1;
    DWORD key = 0;
    EXPECT_FALSE(f.dict.GetBoundDictObject(9999, kind, key));
    EXPECT_EQ(kind, -1);

    // The registry row shares the item's global id, which joined the domain.
    const DWORD globalId = f.dict.GetRefValueRow(rv)->Global_User_ID;
    EXPECT_EQ(f.dict.GetGlobalIDUsingDictID(item), globalId);
    EXPECT_NE(f.dict.GetDataDictionaryObjectDomainID(f.main), 0u);
    EXPECT_EQ(f.guids.GetUniqueObjectObjectDomainID(globalId),
              f.dict.GetDataDictionaryObjectDomainID(f.main));
    EXPECT_EQ(f.guids.GetObjectTypeId(globalId), f.guids.GetReferenceValueObjectTypeId());

    EXPECT_TRUE(f.dict.DeleteDictObj(d1));
    EXPECT_FALSE(f.dict.DeleteDictObj(d1));
    EXPECT_FALSE(f.dict.IsDictionaryObjectIDValid(d1));

    // Deletes take the strings, the object and the registry row.
    item = 0;
    CString name("Range"), description("d"), value("v"), vd("vd"), lo("1"), hi("9");
    const DWORD range = f.dict.InsertRefValue(name, description, value, vd, lo, hi, TRUE, TRUE,
                                              f.main, item, FALSE);
    const DWORD rangeId = f.dict.GetRefValueRow(range)->Global_User_ID;
    const int nameUsage = f.names.GetReferenceValueNameUsageId();
    EXPECT_NE(f.names.GetStringIdFromObjectAndUsageTypeIds(static_cast<int>(rangeId), nameUsage),
              0);
    f.refs.InsertBoundDictObject(item, 8, 1000, "");
    EXPECT_TRUE(f.dict.DeleteRefValue(range));
    EXPECT_FALSE(f.dict.DeleteRefValue(range));
    EXPECT_FALSE(f.dict.IsDictionaryObjectIDValid(item));
    EXPECT_FALSE(f.guids.IsUniqueObjectIdValid(static_cast<LONG>(rangeId)));
    for (int usage = nameUsage; usage < nameUsage + 6; ++usage)
        EXPECT_EQ(f.names.GetStringIdFromObjectAndUsageTypeIds(static_cast<int>(rangeId), usage),
                  0);
    // Bindings are the reference manager's to remove.
    EXPECT_EQ(f.refs.GetBoundDictObjectTable()->DeleteAllDictObjectReferences(item), 1);
    EXPECT_FALSE(f.dict.SetReferenceValueIsRange(range, TRUE));

    // A data dictionary goes only when empty and not the diagram's own.
    const DWORD sales = f.dict.CreateDataDictionary("Sales", "");
    const DWORD inSales = f.RefValue("x", "1", sales);
    EXPECT_FALSE(f.dict.DeleteDataDictionary(sales));
    EXPECT_FALSE(f.dict.DeleteDataDictionary(f.main));
    EXPECT_TRUE(f.dict.DeleteRefValue(inSales));
    EXPECT_TRUE(f.dict.DeleteDataDictionary(sales));
    EXPECT_EQ(f.dict.GetNumOfDataDictionary(), 1);
}

TEST(DictObjectMgr, WithoutKindsNothingIsCreatedAndTableIdsAreFixed) {
    auto file = CZmfFile::OpenMemory(530);
    CDictObjectMgr dict(nullptr, nullptr, file.get(), nullptr, 530);  // not loaded: no kinds
    DWORD item = 5;
    CString name("x");
    EXPECT_EQ(dict.InsertDefault(1, 1), 0u);
    EXPECT_EQ(dict.InsertRefValue(name, name, name, name, name, name, 0, 0, 1, item, TRUE), 0u);
    EXPECT_EQ(item, 5u);
    EXPECT_EQ(dict.GetFirstDefaultDictObjId(), 0u);
    EXPECT_NE(dict.GetTablePtr(21), nullptr);  // held from construction to the load
    EXPECT_NE(dict.GetTablePtr(83), nullptr);
    EXPECT_EQ(dict.GetTablePtr(34), nullptr);  // the kinds are never handed out
    EXPECT_EQ(dict.GetTablePtr(999), nullptr);
    dict.Init();
    EXPECT_EQ(dict.GetTablePtr(21), nullptr);  // released by the load
    EXPECT_NE(dict.InsertDefault(1, 1), 0u);
}

TEST(DictObjectMgr, MissingKindsAreAddedAtLoad) {
    TempDir dir;
    const std::string path = dir.File("kinds.zmf");
    ASSERT_TRUE(CModelFile::Create(path, nullptr));
    {
        auto file = CZmfFile::Open(path);
        CTableBase* kinds = file->GetEmptyTable("Dictionary_Object_Type");
        CDictionary_Object_TypeBase row(40);
        row.Name = "Reference Value";
        row.Kind_Code = 8;
        kinds->Insert(&row);
        ASSERT_TRUE(file->Commit());
    }
    auto model = CModelFile::Open(path, nullptr);
    EXPECT_EQ(model->GetDictObjectMgr().GetDictObjectTypeFromEnum(8), 40u);  // kept
    ASSERT_TRUE(model->Save());
    std::vector<std::string> stored;
    for (const auto& kind : tessmeta::test::ReadAll<CDictionary_Object_TypeBase>(
             model->GetFile(), "Dictionary_Object_Type"))
        stored.push_back(std::string(kind.Name) + "=" + std::to_string(kind.Kind_Code));
    EXPECT_EQ(stored,
              (std::vector<std::string>{"Reference Value=8", "Trigger=1", "Library=2",
                                        "Procedure=3", "Default=4", "Rule=5", "UserDatatype=6",
                                        "Domain=7", "Attachment Type=9", "Valid Attachment Type=10",
                                        "Attachment=11", "Dictionary Object Link=12"}));
}

// The indexed test against a walk of every item in table order, over random edits.
TEST(DictObjectMgr, UniquenessAgreesWithAWalkOverRandomEdits) {
    SDictFixture f;
    const DWORD dictionaries[] = {f.main, f.dict.CreateDataDictionary("B", "")};
    const char* pool[] = {"a", "A", "b", "B_1", "b_1", "c"};
    const char* values[] = {"1", "2"};
    std::mt19937 random(5);
    auto pick = [&](std::size_t n) { return random() % n; };
    std::vector<DWORD> keys;
    auto walk = [&](const CString& name, const char* value, DWORD dd) -> LONG {
        for (POSITION pos = f.dict.GetFirstRefValueRowPosition(); pos;) {
            const CKelReferenceValue* row = f.dict.GetNextRefValueRow(pos);
            if (f.dict.GetData_Dictionary_ID(row->Dictionary_Object_ID) != dd ||
                row->GetName().CompareNoCase(name) != 0)
                continue;
            return row->GetValue() == CString(value) ? static_cast<LONG>(row->Reference_Value_ID)
                                                     : -1;
        }
        return 0;
    };
    for (int step = 0; step < 400; ++step) {
        const DWORD dd = dictionaries[pick(2)];
        const char* value = values[pick(2)];
        switch (pick(4)) {
            case 0:
            case 1:
                keys.push_back(f.RefValue(pool[pick(6)], value, dd));
                break;
            case 2:
                if (!keys.empty()) {
                    CString name(pool[pick(6)]);
                    f.dict.SetReferenceValueName(keys[pick(keys.size())], name);
                }
                break;
            default:
                if (!keys.empty()) {
                    const std::size_t at = pick(keys.size());
                    EXPECT_TRUE(f.dict.DeleteRefValue(keys[at]));
                    keys.erase(keys.begin() + static_cast<long>(at));
                }
        }
        CString name(pool[pick(6)]);
        ASSERT_EQ(f.Unique(name, value, dd), walk(name, value, dd)) << step;
        CString looped = name;
        LONG expected = walk(looped, value, dd);
        for (int n = 1; expected == -1; ++n) {
            looped.Format("%s_%d", name.GetString(), n);
            expected = walk(looped, value, dd);
        }
        ASSERT_EQ(f.Unique(name, value, dd, true, nullptr, true), expected);
        ASSERT_EQ(name, looped);
    }
}

TEST(DictObjectMgr, LinksFollowTheirParentsStoredLevel) {
    SDictFixture f;
    EXPECT_EQ(f.dict.CreateDictionaryObjectLinkRoot(0), 0u);
    EXPECT_EQ(f.dict.CreateDictionaryObjectLink(0, 5), 0u);
    DWORD p = 0, a = 0, b = 0, c = 0;
    f.RefValue("p", "", f.main, &p);
    f.RefValue("a", "", f.main, &a);
    f.RefValue("b", "", f.main, &b);
    f.RefValue("c", "", f.main, &c);
    EXPECT_EQ(f.dict.GetDictObjLinkCount(), 0);
    const DWORD orphan = f.dict.CreateDictionaryObjectLink(a, p);  // p has no link of its own
    EXPECT_EQ(f.dict.GetDictionaryObjectLinkRow(orphan)->Level, 0u);
    EXPECT_EQ(f.dict.LookupDictObjLinkUltimateParentID(a), 0u);
    const DWORD l1 = f.dict.CreateDictionaryObjectLink(b, a);
    const DWORD l2 = f.dict.CreateDictionaryObjectLink(c, a);
    for (DWORD link : {l1, l2}) {
        const CKelDictionaryObjectLink* row = f.dict.GetDictionaryObjectLinkRow(link);
        EXPECT_EQ(row->Level, 1u);
        EXPECT_EQ(row->Parent_ID, a);
        EXPECT_EQ(static_cast<LONG>(row->Leaf), 1);
    }
    EXPECT_EQ(static_cast<LONG>(f.dict.GetDictionaryObjectLinkRow(orphan)->Leaf), 0);
    std::vector<DWORD> children;
    for (auto* row = f.dict.GetFirstDictObjLinkParentFKRow(a); row;
         row = f.dict.GetNextDictObjLinkParentFKRow())
        children.push_back(row->Child_ID);
    EXPECT_EQ(children, (std::vector<DWORD>{b, c}));
    EXPECT_EQ(f.dict.LookupDictObjLinkParentID(p), 0u);

    // A second link of one child: the newer one answers, until it goes.
    const DWORD again = f.dict.CreateDictionaryObjectLink(b, p);
    EXPECT_EQ(f.dict.LookupDictObjLinkParentID(b), p);
    EXPECT_TRUE(f.dict.DeleteDictionaryObjectLink(again));
    EXPECT_EQ(f.dict.GetDictObjLinkChildAKRow(b), nullptr);
    EXPECT_TRUE(f.dict.DeleteDictionaryObjectLink(l1));  // children are not touched
    EXPECT_NE(f.dict.GetDictionaryObjectLinkRow(l2), nullptr);
    EXPECT_EQ(f.dict.HasDictionaryObjectLinkRoot(a), 0u);
}

TEST(DictObjectMgr, EveryTableSurvivesSaveAndReopen) {
    TempDir dir;
    const std::string path = dir.File("dict.zmf");
    std::vector<std::string> before;
    DWORD range = 0, item = 0, type = 0, first = 0;
    {
        auto model = CModelFile::Create(path, nullptr);
        CDictObjectMgr& dict = model->GetDictObjectMgr();
        const DWORD sales = dict.CreateDataDictionary("Sales", "For sales");
        CString n("Range"), d("desc"), v, vd("vd"), lo("1"), hi("9");
        range = dict.InsertRefValue(n, d, v, vd, lo, hi, TRUE, TRUE, sales, item, FALSE);
        dict.CreateDictionaryObjectLink(item, 0);
        dict.InsertDefault(sales, 0);
        model->GetRefObjectMgr().InsertBoundDictObject(item, 8, 3, "over");
        model->GetRefObjectMgr().InsertReferencedObject(2, 3, 4);
        CString owner("Owner"), who("Who"), none, lines("line 1\r\nline 2\r\n");
        type = dict.InsertAttachmentType(owner, who, 4, sales, item, FALSE);
        dict.InsertValidAttachmentType(type, 17, 1, 2, item, FALSE);
        for (CString an : {"x", "y", "z"}) {
            const DWORD key = dict.InsertAttachment(type, an, none, d, 3, item, FALSE);
            if (!first) first = key;
            model->GetRefObjectMgr().InsertBoundDictObject(item, 8, 50, "");
        }
        dict.InsertLibrary(owner, who, 1, lines, sales, item, FALSE);
        dict.InsertTrigger(owner, who, 1, 2, 6, lines, 4, sales, item, FALSE);
        dict.InsertProcedure(owner, who, lines, 9, sales, item, FALSE);
        ASSERT_TRUE(model->Save());
        before = StoredRows(model->GetFile(), tessmeta::test::kDictionaryTables);
    }
    auto model = CModelFile::Open(path, nullptr);
    ASSERT_TRUE(model);
    CDictObjectMgr& dict = model->GetDictObjectMgr();
    CString n, d, v, vd, lo, hi;
    BOOL notBetween = 0, isRange = 0;
    ASSERT_TRUE(dict.GetRefValueData(range, n, d, v, vd, lo, hi, notBetween, isRange));
    EXPECT_EQ(n + d + v + vd + lo + hi, CString("Rangedescvd19"));
    EXPECT_TRUE(notBetween && isRange);
    EXPECT_EQ(dict.GetRefValueRow(CString("RANGE"), dict.GetData_Dictionary_ID(item)),
              dict.GetRefValueRow(range));
    int integerField = 0;
    ASSERT_TRUE(dict.GetAttachmentTypeData(type, n, d, integerField));
    EXPECT_EQ(n + "/" + d, CString("Owner/Who"));
    EXPECT_EQ(integerField, 4);
    EXPECT_EQ(dict.GetFirstAttachmentFKRow(type)->Attachment_ID, first);  // filed at first use
    EXPECT_TRUE(dict.IsAttachmentValidForType(first, 8));
    ASSERT_TRUE(model->Save());
    EXPECT_EQ(StoredRows(model->GetFile(), tessmeta::test::kDictionaryTables), before);
    EXPECT_EQ(tessmeta::CheckModelFile(model->GetFile()).ErrorCount(), 0u);
}

}  // namespace
