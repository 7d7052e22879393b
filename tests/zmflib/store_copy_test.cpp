// Copying whole stores between backends: file -> server -> file loses nothing.
#include <gtest/gtest.h>

#include "support/pg_test.h"
#include "support/row_values.h"
#include "support/store_checks.h"
#include "support/test_support.h"
#include "zmflib.h"
#include "zmflib/store_copy.h"

namespace {

TEST(StoreCopy, AFileThroughTheServerAndBackLosesNothing) {
    tessmeta::test::TempDir dir;
    const std::string original = dir.File("original.zmf");
    {
        auto file = CZmfFile::Create(original, 502);
        ASSERT_TRUE(file);
        int seed = 0;
        for (const SZmfTableDesc* desc : zmf::AllTables()) {
            CTableBase* t = file->GetEmptyTable(desc->name);
            // Every column type and status, a duplicate key, an empty table now and then.
            for (int i = 0; i < seed % 5; ++i)
                t->Insert(tessmeta::test::MakeRow(*desc, i == 2 ? 1 : 1 + i, seed + i).get());
            if (seed % 3) t->SetSizeEstimate(seed);
            ++seed;
        }
        file->GetIdentityMgr()->SetKeyValue(62, 4000000000u);
        ASSERT_TRUE(file->Commit()) << file->GetLastError();
    }
    const std::string uri = tessmeta::test::NewModelUri("copy");
    const std::string back = dir.File("back.zmf");
    std::string error;
    {
        auto from = tessmeta::test::OpenOk(original);
        auto server = CZmfFile::Create(uri, 530, &error);
        ASSERT_TRUE(from && server) << error;
        ASSERT_TRUE(zmf::CopyStore(*from, *server, error)) << error;
    }
    {
        auto server = tessmeta::test::OpenOk(uri);
        auto to = CZmfFile::Create(back, 530, &error);
        ASSERT_TRUE(server && to) << error;
        ASSERT_TRUE(zmf::CopyStore(*server, *to, error)) << error;
    }
    auto a = tessmeta::test::OpenOk(original);
    auto b = tessmeta::test::OpenOk(back);
    auto s = tessmeta::test::OpenOk(uri);
    EXPECT_EQ(tessmeta::test::StoreDifference(*a, *s), "");
    EXPECT_EQ(tessmeta::test::StoreDifference(*a, *b), "");
    EXPECT_EQ(b->GetFormatVersion(), 502u);
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* left = a->GetTable(desc->name);
        CTableBase* right = b->GetTable(desc->name);
        EXPECT_EQ(left->HasStoredSizeEstimate(), right->HasStoredSizeEstimate()) << desc->name;
        EXPECT_EQ(left->GetSizeEstimate(), right->GetSizeEstimate()) << desc->name;
    }
}

TEST(StoreCopy, AFailedCopyLeavesTheTargetAsItWas) {
    auto from = CZmfFile::OpenMemory(510);
    CTableBase* t = from->GetEmptyTable("MetaTable");
    for (ULONG k = 1; k <= 3; ++k) {
        CMetaTableBase row(k);
        t->Insert(&row);
    }
    from->Commit();
    const std::string uri = tessmeta::test::NewModelUri("failed");
    std::string error;
    auto to = CZmfFile::Create(uri, 530, &error);
    ASSERT_TRUE(to) << error;
    tessmeta::test::SaveObjects(*to, 4, 0);
    to->GetTable("MetaTable")->FailInsertCalls({2});
    EXPECT_FALSE(zmf::CopyStore(*from, *to, error));
    EXPECT_NE(error.find("a row was refused"), std::string::npos) << error;
    EXPECT_FALSE(to->IsSaving());
    tessmeta::test::ExpectObjects(uri, 4, 0);
    EXPECT_EQ(tessmeta::test::OpenOk(uri)->GetFormatVersion(), 530u);
}

}  // namespace
