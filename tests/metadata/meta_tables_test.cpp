// Meta tables and meta-class members: completion of the name list, lookups, the
// composite walk, and the load repairs, through real .zmf files written row by row.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "identity/identity_test_util.h"
#include "metadata/meta_class_member_table.h"
#include "metadata/meta_table_table.h"
#include "support/test_support.h"
#include "zmflib.h"

using namespace tessmeta::test;

namespace {

constexpr int kMemberKind = 54;  // key kind of MetaClass_Member

CMetaTableBase StoredMetaTable(ULONG key, const char* name) {
    CMetaTableBase row(key);
    row.Name = name;
    return row;
}

CMetaClass_MemberBase StoredMember(ULONG key, ULONG metaTable, ULONG tableRow, ULONG uniqueId) {
    CMetaClass_MemberBase row(key);
    row.MetaTable_ID = metaTable;
    row.Name = "Table";
    row.TableRow_ID = tableRow;
    row.Global_User_ID = uniqueId;
    return row;
}

std::vector<std::string> Names(const CEnhMetaTableTbl& table) {
    std::vector<std::string> names;
    for (POSITION pos = table.GetFirstRowPosition(); pos;)
        names.emplace_back(table.GetNextRow(pos)->Name);
    return names;
}

// The member keys and unique ids under one pair, in walk order.
std::vector<std::pair<ULONG, ULONG>> Walk(CEnhMetaClassMemberTbl& members, ULONG metaTable,
                                          ULONG tableRow) {
    std::vector<std::pair<ULONG, ULONG>> out;
    for (auto* row = members.GetFirstRow(metaTable, tableRow); row; row = members.GetNextRow())
        out.emplace_back(row->MetaClass_Member_ID, row->Global_User_ID);
    return out;
}

TEST(MetaTable, InitCompletesTheNamesAndAnswersBothWays) {
    TempDir dir;
    const std::string path = dir.File("m.zmf");
    {
        auto file = CZmfFile::Create(path);
        // Not "Graphic Object"; an unknown name; "Entity" twice (the first answers).
        ASSERT_TRUE(
            Store(*file, "MetaTable",
                  std::vector{StoredMetaTable(40, "Entity"), StoredMetaTable(41, "Custom Thing"),
                              StoredMetaTable(42, "Entity"), StoredMetaTable(7, "Attribute")}));
    }
    auto file = CZmfFile::Open(path);
    auto table = std::make_unique<CEnhMetaTableTbl>(file.get());
    table->Init(0);

    ASSERT_EQ(table->GetCount(), 4 + 26);
    const auto names = Names(*table);
    EXPECT_EQ(names[4], "Indexes");  // the missing names follow, in list order
    EXPECT_EQ(names.back(), "Graphic Object");
    EXPECT_EQ(table->GetTechKey(CEnhMetaTableTbl::Entity), 40u);
    EXPECT_EQ(table->GetTechKey(CEnhMetaTableTbl::Attribute), 7u);
    const ULONG graphic = table->GetTechKey(27);
    EXPECT_GT(graphic, 42u);  // a fresh key, past every loaded one
    for (int bad : {28, -1, 1000})
        EXPECT_EQ(table->GetTechKey(bad), 0u) << bad;

    EXPECT_EQ(table->GetStringEnum(42), 0);
    EXPECT_EQ(table->GetStringEnum(41), -1);
    EXPECT_EQ(table->GetRow(CString("entity")), nullptr);  // exact case

    // Saved in list order; the next load finds every name and adds nothing.
    ASSERT_EQ(table->Save(file.get()), 1);
    file->ReleaseTable(table->GetTablePtrAddr(), 0);
    ASSERT_TRUE(file->Commit());
    table.reset();
    file.reset();
    file = CZmfFile::Open(path);
    const auto stored = ReadAll<CMetaTableBase>(*file, "MetaTable");
    ASSERT_EQ(stored.size(), 30u);
    EXPECT_EQ(stored[2].MetaTable_ID, 42u);
    auto again = std::make_unique<CEnhMetaTableTbl>(file.get());
    again->Init(0);
    EXPECT_EQ(again->GetCount(), 30);
    EXPECT_EQ(again->GetTechKey(27), graphic);
}

// A model file with the standard object definitions, unique objects 100 (New),
// 101 (New) and 102, 103 (stored in the repository, state 2), and the members given.
std::string WriteMemberFile(TempDir& dir, const std::vector<CMetaClass_MemberBase>& members) {
    const std::string path = dir.File("members.zmf");
    auto file = CZmfFile::Create(path);
    StoreDefinitions(*file, StandardDefinitions());
    const int type = StandardTypeId("MetaClass Member");
    StoreObjects(*file, {StoredObject(100, type, 1, GuidTextFor(100).c_str()),
                         StoredObject(101, type, 1, GuidTextFor(101).c_str()),
                         StoredObject(102, type, 2, GuidTextFor(102).c_str()),
                         StoredObject(103, type, 2, GuidTextFor(103).c_str())});
    EXPECT_TRUE(Store(*file, "MetaClass_Member", members));
    return path;
}

TEST(MetaClassMember, LoadDropsRowlessMembersAndRenumbersRepeatedObjects) {
    TempDir dir;
    const std::string path = WriteMemberFile(
        dir, {StoredMember(1, 5, 10, 100), StoredMember(2, 5, 0, 101), StoredMember(3, 6, 10, 100),
              StoredMember(4, 5, 10, 0), StoredMember(5, 5, 0, 103), StoredMember(6, 5, 11, 102)});
    auto file = CZmfFile::Open(path);
    CGuidMgr guids(file.get(), 1);
    guids.Init(0, 530);
    const int memberType = guids.GetMetaClassMemberObjectTypeId();
    auto members = std::make_unique<CEnhMetaClassMemberTbl>(file.get(), &guids);
    members->Init(0);

    EXPECT_EQ(members->GetCount(), 4);
    EXPECT_EQ(members->GetRow(2), nullptr);
    EXPECT_EQ(members->GetRow(5), nullptr);
    EXPECT_FALSE(guids.IsUniqueObjectIdValid(101));  // was New: deleted
    EXPECT_TRUE(guids.IsUniqueObjectIdValid(103));   // in the repository: stays
    const ULONG renumbered = members->GetRow(3)->Global_User_ID;
    const ULONG created = members->GetRow(4)->Global_User_ID;
    EXPECT_GT(renumbered, 103u);
    EXPECT_EQ(created, renumbered + 1);  // in load order
    EXPECT_TRUE(guids.VerifyObjectType(memberType, static_cast<int>(created)));
    EXPECT_EQ(Walk(*members, 5, 10),
              (std::vector<std::pair<ULONG, ULONG>>{{1, 100}, {4, created}}));
    EXPECT_EQ(Walk(*members, 6, 10), (std::vector<std::pair<ULONG, ULONG>>{{3, renumbered}}));
    EXPECT_TRUE(Walk(*members, 10, 5).empty());
    {  // without identity the repeated object becomes 0, and inserts get none
        CEnhMetaClassMemberTbl bare(file.get(), nullptr);
        bare.Init(0);
        EXPECT_EQ(bare.GetCount(), 4);
        EXPECT_EQ(bare.GetRow(3)->Global_User_ID, 0u);
        EXPECT_EQ(bare.GetRow(bare.Insert(5, "View", 12, nullptr, 9))->Global_User_ID, 0u);
    }

    // The dropped rows are not written back; the next load repairs nothing.
    ASSERT_EQ(members->Save(file.get()), 1);
    file->ReleaseTable(members->GetTablePtrAddr(), 0);
    ASSERT_TRUE(file->Commit());
    const auto stored = ReadAll<CMetaClass_MemberBase>(*file, "MetaClass_Member");
    ASSERT_EQ(stored.size(), 4u);
    EXPECT_EQ(stored[1].Global_User_ID, renumbered);
    auto again = std::make_unique<CEnhMetaClassMemberTbl>(file.get(), &guids);
    const int objects = guids.GetUniqueObjCount();
    again->Init(0);
    EXPECT_EQ(guids.GetUniqueObjCount(), objects);
    EXPECT_EQ(again->GetRow(3)->Global_User_ID, renumbered);
}

TEST(MetaClassMember, InsertAndDeleteManageTheMemberObject) {
    TempDir dir;
    const std::string path = WriteMemberFile(dir, {StoredMember(8, 5, 10, 102)});
    auto file = CZmfFile::Open(path);
    CGuidMgr guids(file.get(), 1);
    guids.Init(0, 530);
    CEnhMetaClassMemberTbl members(file.get(), &guids);
    members.Init(0);

    const ULONG a = members.Insert(5, "Index", 10, "second", 77);
    const ULONG b = members.Insert(5, "Index", 10, nullptr, 0);
    EXPECT_EQ(a, 9u);  // past the loaded key
    EXPECT_EQ(file->GetIdentityMgr()->GetKeyValue(kMemberKind), 10u);
    const CKelMetaClassMember* row = members.GetRow(a);
    EXPECT_EQ(std::string(row->Description), "second");
    EXPECT_EQ(std::string(members.GetRow(b)->Description), "");
    EXPECT_EQ(row->Member_Value, 77u);
    EXPECT_TRUE(guids.VerifyObjectType(guids.GetMetaClassMemberObjectTypeId(),
                                       static_cast<int>(row->Global_User_ID)));
    EXPECT_EQ(Walk(members, 5, 10).size(), 3u);

    // A New object goes with its member; one stored in the repository stays.
    const ULONG newObject = row->Global_User_ID;
    EXPECT_EQ(members.Delete(a), 1);
    EXPECT_FALSE(guids.IsUniqueObjectIdValid(static_cast<LONG>(newObject)));
    EXPECT_EQ(members.Delete(8), 1);
    EXPECT_TRUE(guids.IsUniqueObjectIdValid(102));
    EXPECT_EQ(members.Delete(8), 0);
    EXPECT_EQ(Walk(members, 5, 10),
              (std::vector<std::pair<ULONG, ULONG>>{{b, members.GetRow(b)->Global_User_ID}}));
}

}  // namespace
