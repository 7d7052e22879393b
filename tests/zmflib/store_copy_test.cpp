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

}  // namespace
