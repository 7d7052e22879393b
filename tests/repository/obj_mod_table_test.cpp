// Object modifications: the kind rule, the two lists and the lookup order (against
// a walk of the lists), the clearing operations, saves with their two flags, and
// write-through reaching the file before any save.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "repository_test_util.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::SModelSaveOptions;
using tessmeta::test::CIdList;
using tessmeta::test::ModRows;
using tessmeta::test::ReadAll;
using tessmeta::test::SRepoModel;
using tessmeta::test::TempDir;

namespace {

using CRows = std::vector<std::pair<ULONG, LONG>>;
constexpr LONG kDel = CEnhRepoObjModTable::kDeleted;
constexpr LONG kMod = CEnhRepoObjModTable::kModified;

TEST(ObjectModifications, KindRuleAndClearing) {
    struct SCase {
        LONG first, second;  // 0: no first insert
        bool secondAccepted;
        LONG kind;
    };
    const SCase cases[] = {
        {0, kMod, true, kMod},     {0, kDel, true, kDel},    {kMod, kDel, true, kDel},
        {kDel, kMod, false, kDel}, {kMod, kMod, true, kMod}, {kDel, kDel, false, kDel},
        {7, kMod, false, 7},       {kMod, 7, true, 7},       {0, 7, true, 7},
    };
    for (const SCase& c : cases) {
        SRepoModel m;
        const ULONG object = m.Diagram();
        const ULONG key = c.first ? m.repo.InsertObjectModificationRow(object, c.first, 0) : 0;
        const ULONG second = m.repo.InsertObjectModificationRow(object, c.second, 0);
        const std::string label = std::to_string(c.first) + " then " + std::to_string(c.second);
        EXPECT_EQ(second != 0, c.secondAccepted) << label;
        if (key && second) {
            EXPECT_EQ(second, key) << label;
        }
        EXPECT_EQ(ModRows(m.mods), (CRows{{object, c.kind}})) << label;
        EXPECT_EQ(m.repo.IsObjectModified(object), c.kind == kMod) << label;
        EXPECT_EQ(m.repo.IsObjectDeleted(object), c.kind == kDel) << label;
    }
    SRepoModel m;
    EXPECT_EQ(m.repo.InsertObjectModificationRow(0, kMod, 0), 0u);
    EXPECT_EQ(m.mods.GetDiagObjCount() + m.mods.GetDataDictObjCount(), 0);
    EXPECT_EQ(m.repo.IsObjectModified(12345) + m.repo.IsObjectDeleted(12345), 0);

    // Clearing removes rows, then deletes the objects of deletions.
    const ULONG domainA = m.guids.CreateObjectDomain(0, "A", "DATA_DICTIONARY", "", 0);
    const ULONG domainB = m.guids.CreateObjectDomain(0, "B", "DATA_DICTIONARY", "", 0);
    const ULONG diagDel = m.Diagram(), diagMod = m.Diagram();
    const ULONG dictDelA = m.Dictionary(), dictDelB = m.Dictionary(), dictMod = m.Dictionary();
    m.guids.SetUniqueObjectObjectDomainID(dictDelA, domainA);
    m.guids.SetUniqueObjectObjectDomainID(dictDelB, domainB);
    auto record = [&] {
        for (ULONG id : {diagDel, dictDelA, dictDelB})
            m.repo.InsertObjectModificationRow(id, kDel, 0);
        for (ULONG id : {diagMod, dictMod})
            m.repo.InsertObjectModificationRow(id, kMod, 0);
    };
    record();
    EXPECT_EQ(m.repo.IsDeletedDDObjFound(), 1);

    m.repo.ClearDiagDeletedRows();
    EXPECT_FALSE(m.Exists(diagDel));
    EXPECT_EQ(ModRows(m.mods),
              (CRows{{diagMod, kMod}, {dictDelA, kDel}, {dictDelB, kDel}, {dictMod, kMod}}));
    m.repo.ClearDataDictDeletedRows(domainB);
    EXPECT_TRUE(m.Exists(dictDelA));
    EXPECT_FALSE(m.Exists(dictDelB));
    EXPECT_EQ(ModRows(m.mods), (CRows{{diagMod, kMod}, {dictDelA, kDel}, {dictMod, kMod}}));
    m.repo.ClearDataDictDeletedRows(0);
    EXPECT_FALSE(m.Exists(dictDelA));
    EXPECT_EQ(m.repo.IsDeletedDDObjFound(), 0);
    EXPECT_EQ(ModRows(m.mods), (CRows{{diagMod, kMod}, {dictMod, kMod}}));

    m.repo.ClearDataDictModsAndDels();
    EXPECT_EQ(ModRows(m.mods), (CRows{{diagMod, kMod}}));
    m.repo.ClearDiagModsAndDels();
    EXPECT_TRUE(ModRows(m.mods).empty());
    EXPECT_TRUE(m.Exists(diagMod) && m.Exists(dictMod));  // only deletions delete objects
}

// Rows with repeated objects in both lists, removed in every way; after each step
// the object lookup must agree with a walk of the diagram list, then the
// data-dictionary list, that stops at the first row of the object.
TEST(ObjectModifications, LookupAgreesWithAWalkOfBothLists) {
    SRepoModel m;
    std::vector<ULONG> objects;
    for (int i = 0; i < 6; ++i)
        objects.push_back(i % 2 ? m.Dictionary() : m.Diagram());
    auto walkIn = [](const CEnhRepoObjModTable& mods, ULONG objectId) -> CKelObjectModifications* {
        for (POSITION pos = mods.GetFirstRowPositionDiagObj(); pos;)
            if (auto* row = mods.GetNextRowDiagObj(pos); row->Object_ID == objectId) return row;
        for (POSITION pos = mods.GetFirstRowPositionDataDictObj(); pos;)
            if (auto* row = mods.GetNextRowDataDictObj(pos); row->Object_ID == objectId) return row;
        return nullptr;
    };
    auto walk = [&](ULONG objectId) { return walkIn(m.mods, objectId); };
    const int entity = m.guids.GetObjectTypeId(CString("Entity"));
    const int dictionary = m.guids.GetObjectTypeId(CString("Default"));
    std::mt19937 random(7);
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int step = 0; step < 3000; ++step) {
        const ULONG object = objects[static_cast<size_t>(pick(6))];
        switch (pick(5)) {
            case 0:
            case 1: {
                // Objects change class now and then, so their rows end up in both lists.
                m.guids.SetObjectTypeId(object, pick(2) ? entity : dictionary);
                auto row = std::make_unique<CKelObjectModifications>();
                row->Object_ID = object;
                row->Modification_Kind = 1 + pick(3);
                if (m.mods.Insert(row.get())) row.release();
                break;
            }
            case 2:
                m.mods.RemoveUniqueID(object);
                break;
            case 3:
                if (auto* row = walk(object))
                    (row->IsInDataDictionaryList() ? m.mods.RemoveDataDictObj(row)
                                                   : m.mods.RemoveDiagObj(row));
                if (pick(40) == 0)
                    pick(2) ? m.mods.RemoveAllDiagObjBaseList()
                            : m.mods.RemoveAllDataDictObjBaseList();
                break;
            default:
                m.repo.InsertObjectModificationRow(object, 1 + pick(2), 0);
        }
        for (ULONG id : objects)
            ASSERT_EQ(m.mods.GetFKRow(id), walk(id)) << "step " << step << ", object " << id;
    }
    // Loaded back, with a stored row repeating a key: that row is dropped, and the
    // lookups of the loaded table agree with a walk of its lists.
    auto file = CZmfFile::OpenMemory();
    ASSERT_EQ(m.mods.Save(file.get(), 0, 0), 1);
    file->ReleaseTable(m.mods.GetTablePtrAddr(), 0);
    const int rows = m.mods.GetDiagObjCount() + m.mods.GetDataDictObjCount();
    ASSERT_GT(rows, 1);
    // The highest key: the load has seen it by the time the repeated row comes.
    ULONG highest = 0;
    for (POSITION pos = m.mods.GetFirstRowPositionDiagObj(); pos;)
        highest = std::max(highest, m.mods.GetNextRowDiagObj(pos)->GetTechKey());
    for (POSITION pos = m.mods.GetFirstRowPositionDataDictObj(); pos;)
        highest = std::max(highest, m.mods.GetNextRowDataDictObj(pos)->GetTechKey());
    CObjectModificationBase repeated(highest);
    repeated.Object_ID = objects[0];
    file->GetTable("ObjectModification")->Insert(&repeated);
    CEnhRepoObjModTable loaded(file.get(), &m.guids);
    loaded.Init(0);
    EXPECT_EQ(loaded.GetDiagObjCount() + loaded.GetDataDictObjCount(), rows);
    for (ULONG id : objects)
        EXPECT_EQ(loaded.GetFKRow(id), walkIn(loaded, id)) << "object " << id;

    // Rising keys, then a repeat: the first row with the key stays.
    auto small = CZmfFile::OpenMemory();
    std::vector<CObjectModificationBase> stored;
    for (ULONG key : {5u, 9u, 9u, 2u}) {
        stored.emplace_back(key);
        stored.back().Object_ID = 100 + static_cast<ULONG>(stored.size());
    }
    ASSERT_TRUE(tessmeta::test::Store(*small, "ObjectModification", stored));
    CEnhRepoObjModTable three(small.get(), nullptr);
    three.Init(0);
    EXPECT_EQ(ModRows(three), (CRows{{101, 0}, {102, 0}, {104, 0}}));
    EXPECT_EQ(three.GetRow(9)->Object_ID, 102u);
}

TEST(ObjectModifications, SaveFlagsAgainstTheStoredTable) {
    TempDir dir;
    const std::string path = dir.File("mods.zmf");
    std::vector<ULONG> ids;
    {
        SRepoModel m(CModelFile::Create(path, nullptr));
        ids = {m.Dictionary(), m.Diagram(), m.Dictionary(), m.Diagram()};
        for (ULONG id : ids)
            m.repo.InsertObjectModificationRow(id, kMod, 0);
        m.repo.InsertObjectModificationRow(ids[1], 9, 0);
        ASSERT_TRUE(m.model->Save());
    }
    auto stored = [&] {
        std::vector<std::pair<ULONG, LONG>> rows;
        auto file = CZmfFile::Open(path);
        for (const auto& row : ReadAll<CObjectModificationBase>(*file, "ObjectModification"))
            rows.emplace_back(row.Object_ID, row.Modification_Kind);
        return rows;
    };
    // Diagram list first, then the data-dictionary list, each in insertion order.
    const CRows all{{ids[1], 9}, {ids[3], kMod}, {ids[0], kMod}, {ids[2], kMod}};
    EXPECT_EQ(stored(), all);

    SModelSaveOptions keep;
    keep.keepModifications = 1;
    keep.emptyModifications = 1;  // keeping wins
    {
        SRepoModel m(CModelFile::Open(path, nullptr));
        EXPECT_EQ(ModRows(m.mods), all);
        m.repo.RemoveObjectModificationFKRow(ids[1]);
        const ULONG extra = m.Diagram();
        m.repo.InsertIMObjectLink(
            extra, m.repo.InsertIMRelationship(m.Object("InterModelRelationship"), ""));
        ASSERT_TRUE(m.model->Save(keep));
        EXPECT_EQ(stored(), all);  // untouched
        EXPECT_EQ(m.mods.GetDiagObjCount(), 1);
        auto file = CZmfFile::Open(path);
        EXPECT_EQ(ReadAll<CInterModelObjectLinkBase>(*file, "InterModelObjectLink").size(), 1u);
        EXPECT_EQ(ReadAll<CInterModelRelationshipBase>(*file, "InterModelRelationship").size(), 1u);
    }
    SModelSaveOptions empty;
    empty.emptyModifications = 1;
    SRepoModel m(CModelFile::Open(path, nullptr));
    ASSERT_TRUE(m.model->Save(empty));
    EXPECT_TRUE(stored().empty());
    EXPECT_TRUE(ModRows(m.mods).empty());
}

}  // namespace
