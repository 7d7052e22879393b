// The identity manager: loading by file version, map sizing, saving with its
// repairs, round trips through .zmf files, object creation and deletion, lookups.
#include "identity/guid_mgr.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "identity/guid_text.h"
#include "identity_test_util.h"
#include "support/row_values.h"
#include "support/test_support.h"

using namespace tessmeta::test;

namespace {

const int kEntity = StandardTypeId("Entity");  // a diagram type
const int kDomain = StandardTypeId("Domain");  // a dictionary type
const int kDataDictionary = StandardTypeId("Data Dictionary");

// Ten objects of every kind of value: ids 1..10, GUIDs from GuidTextFor.
std::vector<CUniqueObjectBase> TenObjects() {
    std::vector<CUniqueObjectBase> rows;
    for (ULONG id = 1; id <= 10; ++id) {
        auto row = StoredObject(id, id % 2 ? kEntity : kDomain, 0x102 + id, GuidTextFor(id).c_str(),
                                GuidTextFor(id + 100).c_str());
        row.Model_ID = id * 3;
        row.Object_Domain_ID = id % 3;
        row.Plex_ID_1 = -static_cast<LONG>(id);
        row.Plex_ID_2 = static_cast<LONG>(id) << 20;
        row.Modification_Date = COleDateTime(44000.25 + id);
        row.Creation_Time = 1600000000u + id;
        row.Reserved = 0xFFFFFFF0u + id;
        rows.push_back(row);
    }
    rows[3].Modification_Date = COleDateTime();  // 1899-12-30 00:00: set to now at save
    return rows;
}

std::unique_ptr<CZmfFile> ModelWith(const std::vector<CUniqueObjectBase>& objects) {
    auto file = CZmfFile::OpenMemory();
    StoreDefinitions(*file, StandardDefinitions());
    StoreObjects(*file, objects);
    return file;
}

TEST(GuidMgr, LoadByFileVersion) {
    auto rows = TenObjects();
    rows[0].Creation_Time = 0;
    rows[0].Modification_Date = COleDateTime(2020, 1, 2, 3, 4, 5);
    auto file = ModelWith(rows);
    for (ULONG version : {499u, 500u, 501u, 510u, 530u}) {
        SCOPED_TRACE(version);
        auto mgr = LoadGuids(*file, version);
        ASSERT_EQ(mgr->GetUniqueObjCount(), 10);
        EXPECT_FALSE(mgr->IsNilGUIDStored());
        if (version < 500) {
            // No GUIDs stored then: fresh ones, status New, creation time from the
            // modification date (local time, UTC here) where there was none.
            EXPECT_EQ(mgr->GetRepoStatus(7), 1u);
            EXPECT_NE(ObjectGuid(*mgr, 1), GuidTextFor(1).c_str());
            EXPECT_EQ(ObjectGuid(*mgr, 1).GetLength(), 32);
            EXPECT_EQ(mgr->GetUniqueObjectID(ObjectGuid(*mgr, 1)), 1u);
            EXPECT_EQ(mgr->GetUniqueObjectID(GuidTextFor(1).c_str()), 0u);
            EXPECT_EQ(mgr->GetUniqueObjectTable()->GetRow(1)->Creation_Time, 1577934245u);
        } else {
            EXPECT_EQ(mgr->GetRepoStatus(7), 0x109u);
            EXPECT_EQ(ObjectGuid(*mgr, 1), GuidTextFor(1).c_str());
            EXPECT_EQ(mgr->GetUniqueObjectTable()->GetRow(1)->Creation_Time, 0u);
        }
        EXPECT_EQ(mgr->GetUniqueObjectTable()->GetRow(2)->Creation_Time, 1600000002u);
        // The next id goes past every id loaded.
        EXPECT_EQ(mgr->GetNewUniqueId(kEntity, 0, 0, 0), 11);
    }

    // Empty and malformed GUID texts load as nil and flag the model for repair.
    rows[1].Object_GUID = "";
    rows[2].Version_GUID = "not a guid";
    StoreObjects(*file, rows);
    auto mgr = LoadGuids(*file);
    EXPECT_TRUE(mgr->IsNilGUIDStored());
    EXPECT_EQ(ObjectGuid(*mgr, 2), "");
    CString version("x");
    mgr->GetVersionGUID(3, version);
    EXPECT_EQ(version, "");
    EXPECT_EQ(mgr->GetUniqueObjectID(""), 0u);  // empty text is no GUID
}

// Load, save into a real .zmf, reopen: every column of all three tables as stored.
TEST(GuidMgr, RoundTripThroughAModelFile) {
    TempDir dir;
    const std::string path = dir.File("model.zmf");
    const auto rows = TenObjects();
    const std::vector<CObject_DomainBase> domains = {
        StoredDomain(4, "Main", "DIAGRAM", GuidTextFor(40).c_str()),
        StoredDomain(2, "Dictionary", "DATA DICTIONARY", "")};
    {
        auto file = CZmfFile::Create(path);
        StoreDefinitions(*file, {{30, "Entity"}, {12, "Domain"}, {31, "Attribute"}});
        StoreObjects(*file, rows);
        ASSERT_TRUE(Store(*file, "Object_Domain", domains));
    }
    const std::time_t before = std::time(nullptr);
    for (int pass = 0; pass < 2; ++pass) {
        auto file = CZmfFile::Open(path);
        ASSERT_NE(file, nullptr);
        auto mgr = LoadGuids(*file);
        ASSERT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 1);
        mgr->ReleaseStorageTables(0);
        ASSERT_TRUE(file->Commit());
    }
    auto file = CZmfFile::Open(path);
    const auto saved = ReadObjects(*file);
    ASSERT_EQ(saved.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        auto expected = rows[i];
        if (i == 3) {  // a zero date became the time of the first save
            EXPECT_NEAR(saved[i].Modification_Date.GetValue().m_dt, COleDateTime(before).m_dt,
                        10.0 / 86400);
            expected.Modification_Date = saved[i].Modification_Date;
        }
        EXPECT_EQ(RowText(expected.Desc(), saved[i]), RowText(expected.Desc(), expected));
    }
    const auto defs = ReadAll<CObjectDefinitionBase>(*file, "ObjectDefinition");
    ASSERT_EQ(defs.size(), 3u);
    EXPECT_STREQ(defs[2].Name, "Attribute");
    const auto savedDomains = ReadAll<CObject_DomainBase>(*file, "Object_Domain");
    ASSERT_EQ(savedDomains.size(), 2u);
    for (size_t i = 0; i < 2; ++i)
        EXPECT_EQ(RowText(domains[i].Desc(), savedDomains[i]),
                  RowText(domains[i].Desc(), domains[i]));
}

TEST(GuidMgr, SaveRepairsNilGuidsOnceAndRenewsIdentities) {
    auto rows = TenObjects();
    rows[0].Object_GUID = "";
    rows[1].Version_GUID = "";
    rows[2].Object_GUID = "0123456789ABCDEF0123456789ABCDEF";  // upper case loads too
    rows[5].Object_Type_ID = kDataDictionary;
    rows[5].Object_Domain_ID = 2;
    rows[5].Repository_Status = 0x11A;
    auto file = ModelWith(rows);
    ASSERT_TRUE(Store(*file, "Object_Domain",
                      std::vector{StoredDomain(2, "Dict", "DATA DICTIONARY", "old")}));
    auto mgr = LoadGuids(*file);
    ASSERT_TRUE(mgr->IsNilGUIDStored());

    ASSERT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 1);
    EXPECT_FALSE(mgr->IsNilGUIDStored());
    auto saved = ReadObjects(*file);
    EXPECT_EQ(mgr->GetUniqueObjectID(saved[0].Object_GUID.GetValue()), 1u);
    EXPECT_EQ(saved[1].Version_GUID.GetLength(), 32);
    EXPECT_STREQ(saved[2].Object_GUID, "0123456789abcdef0123456789abcdef");
    EXPECT_STREQ(saved[5].Object_GUID, rows[5].Object_GUID);
    EXPECT_EQ(mgr->GetObjectDomainGUID(2), "old");

    // New identities: every object New without side bits and a new object GUID;
    // version GUIDs stay; a domain root hands its new GUID to its domain.
    ASSERT_EQ(mgr->Save(file.get(), nullptr, 1, 0), 1);
    const auto renewed = ReadObjects(*file);
    for (size_t i = 0; i < renewed.size(); ++i) {
        EXPECT_STRNE(renewed[i].Object_GUID, saved[i].Object_GUID);
        EXPECT_STREQ(renewed[i].Version_GUID, saved[i].Version_GUID);
        EXPECT_EQ(renewed[i].Repository_Status & 0x1F, 1u);
        EXPECT_EQ(mgr->GetUniqueObjectID(renewed[i].Object_GUID.GetValue()), i + 1);
    }
    EXPECT_EQ(renewed[5].Repository_Status, 1u);  // 0x11A: 0x100 and side bits gone
    EXPECT_EQ(mgr->GetObjectDomainGUID(2), renewed[5].Object_GUID.GetValue());
    EXPECT_EQ(mgr->GetUniqueObjectID(saved[0].Object_GUID.GetValue()), 0u);

    // keepIdentity wins over newIdentity.
    ASSERT_EQ(mgr->Save(file.get(), nullptr, 1, 1), 1);
    EXPECT_STREQ(ReadObjects(*file)[7].Object_GUID, renewed[7].Object_GUID);
}

// Files up to 510 with global id maps: shared objects of the maps' types are
// checked with the repository, and every object is kept.
TEST(GuidMgr, SaveAsksTheRepositoryAboutSharedObjectsAndKeepsThemAll) {
    auto rows = TenObjects();
    rows[1].Model_ID = 0;  // id 2, type Domain: a candidate
    rows[3].Model_ID = 0;  // id 4, type Domain: a candidate
    rows[0].Model_ID = 0;  // id 1, type Entity: not one of the maps' types
    auto file = ModelWith(rows);
    CGlobalIdMaps maps;
    maps.SetDomainObjectTypeId(kDomain);
    for (ULONG version : {499u, 500u, 501u, 510u, 530u}) {
        SCOPED_TRACE(version);
        auto mgr = LoadGuids(*file, version);
        CRepositoryStandIn repo;
        repo.modified = {2};
        mgr->SetRepoTableMgr(&repo);
        ASSERT_EQ(mgr->Save(file.get(), &maps, 0, 0), 1);
        EXPECT_EQ(mgr->GetUniqueObjectTable()->GetCleanedObjCount(), 0);
        EXPECT_EQ(ReadObjects(*file).size(), 10u);
        const std::vector<std::string> asked =
            version <= 510 ? std::vector<std::string>{"Modified?(2)", "Modified?(4)", "Deleted?(4)"}
                           : std::vector<std::string>{};
        EXPECT_EQ(repo.log, asked);
        repo.log.clear();
        ASSERT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 1);  // no maps, no questions
        EXPECT_TRUE(repo.log.empty());
    }
}

// A failed save goes on and holds the storage tables; new objects after it.
TEST(GuidMgr, SaveFailuresStorageTablesAndNewObjects) {
    auto file = ModelWith(TenObjects());
    ASSERT_TRUE(Store(*file, "Object_Domain", std::vector{StoredDomain(6, "Model", "DIAGRAM")}));
    auto mgr = LoadGuids(*file);
    EXPECT_EQ(static_cast<CTableBase*>(*mgr->GetUniqueObjectTable()), nullptr);  // released
    file->GetTable("UniqueObject")->FailInsertCalls({3});
    EXPECT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 0);
    EXPECT_EQ(ReadObjects(*file).size(), 9u);  // the loop went on after the failure
    EXPECT_NE(static_cast<CTableBase*>(*mgr->GetUniqueObjectTable()), nullptr);
    EXPECT_NE(static_cast<CTableBase*>(*mgr->GetObjectDefinitionTable()), nullptr);
    mgr->ReleaseStorageTables(0);
    EXPECT_EQ(static_cast<CTableBase*>(*mgr->GetUniqueObjectTable()), nullptr);
    EXPECT_EQ(static_cast<CTableBase*>(*mgr->GetObjectDefinitionTable()), nullptr);
    EXPECT_EQ(mgr->Save(file.get(), nullptr, 0, 0), 1);

    const std::time_t before = std::time(nullptr);
    const int a = mgr->GetNewUniqueId(kEntity, 5, 6, 7);
    const int b = mgr->GetNewUniqueId(CString("Domain"), 8, 0, 0);
    const int c = mgr->GetNewUniqueId(CString("No Such Type"), 0, 0, 0);
    EXPECT_EQ((std::vector<int>{a, b, c}), (std::vector<int>{11, 12, 13}));
    EXPECT_GE(mgr->GetUniqueObjectTable()->GetRow(11)->Creation_Time, static_cast<DWORD>(before));
    EXPECT_EQ(mgr->GetUniqueObjectTable()->GetRow(12)->Creation_Time, 0u);  // name form
    EXPECT_EQ(mgr->GetRepoStatus(11), 1u);
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(11), 6u);  // a diagram type
    EXPECT_EQ(mgr->GetUniqueObjectObjectDomainID(12), 0u);
    EXPECT_EQ(mgr->GetObjectTypeId(13u), 0);
    CString g1, v1;
    mgr->GetGUIDs(12, g1, v1);
    EXPECT_NE(g1, v1);
    EXPECT_EQ(mgr->GetUniqueObjectID(g1), 12u);
}

TEST(GuidMgr, DeleteObjectFollowsTheNewRuleAndCleansTheRepository) {
    auto rows = TenObjects();
    rows[0].Repository_Status = 0x101;  // New
    auto file = ModelWith(rows);
    auto mgr = LoadGuids(*file);
    CRepositoryStandIn repo;
    mgr->SetRepoTableMgr(&repo);
    mgr->SetEnhDelayedCheckOutTable(&repo);

    EXPECT_EQ(mgr->DeleteObject(2, 0), 1);  // not New: only its links go
    EXPECT_TRUE(mgr->IsUniqueObjectIdValid(2));
    EXPECT_EQ(mgr->DeleteObject(1, 0), 1);  // New: deleted outright
    EXPECT_FALSE(mgr->IsUniqueObjectIdValid(1));
    EXPECT_EQ(mgr->GetUniqueObjectID(GuidTextFor(1).c_str()), 0u);
    EXPECT_EQ(mgr->DeleteObject(10, 1), 1);
    EXPECT_EQ(mgr->DeleteObject(99, 1), 0);
    EXPECT_EQ(repo.log, (std::vector<std::string>{"Link(2,0)", "Link(1,1)", "Mod(1)", "Checkout(1)",
                                                  "Link(10,1)", "Mod(10)", "Checkout(10)",
                                                  "Link(99,1)", "Mod(99)", "Checkout(99)"}));
    EXPECT_EQ(mgr->GetNewUniqueId(kEntity, 0, 0, 0), 11);  // ids are never reused

    // Marked objects go in list order; a deletion that deletes another marked
    // object through the repository does not upset the walk.
    repo.log.clear();
    repo.onLinkDelete = [&](ULONG id) {
        if (id == 4) mgr->DeleteObject(6, 1);
    };
    for (ULONG id : {6u, 4u, 8u, 0u, 77u})
        mgr->MarkForRemoval(id, 1);
    mgr->MarkForRemoval(8, 0);
    mgr->RemoveMarkedObjects();
    EXPECT_EQ(repo.log,
              (std::vector<std::string>{"Link(4,1)", "Link(6,1)", "Mod(6)", "Checkout(6)", "Mod(4)",
                                        "Checkout(4)", "Link(6,1)", "Mod(6)", "Checkout(6)"}));
    EXPECT_EQ(mgr->GetUniqueObjCount(), 7);
    EXPECT_TRUE(mgr->IsUniqueObjectIdValid(8));

    // Without hooks the manager works alone.
    mgr->SetRepoTableMgr(nullptr);
    mgr->SetEnhDelayedCheckOutTable(nullptr);
    repo.log.clear();
    EXPECT_EQ(mgr->DeleteObject(3, 1), 1);
    EXPECT_TRUE(repo.log.empty());
}

}  // namespace
