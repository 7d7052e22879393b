// The delayed check-out table: one request per object, its keys, the sizing of the
// map by object, load and save (the cleaning when an object is deleted: the
// inter-model tests).
#include <gtest/gtest.h>

#include "repository/delay_checkout_table.h"
#include "repository_test_util.h"
#include "support/test_support.h"

using tessmeta::test::ReadAll;
using tessmeta::test::SRepoModel;
using tessmeta::test::Store;
using tessmeta::test::TempDir;

namespace {

CDelayed_CheckoutBase Request(ULONG key, ULONG objectId, ULONG value) {
    CDelayed_CheckoutBase row(key);
    row.Object_ID = objectId;
    row.Request_Value = value;
    row.Reserved_1 = key * 10 + 1;  // columns the library only carries
    row.Reserved_2 = key * 10 + 2;
    row.Reserved_3 = key * 10 + 3;
    row.Reserved_4 = key * 10 + 4;
    return row;
}

std::vector<ULONG> ObjectsInOrder(const CEnhDelayCheckoutTable& table) {
    std::vector<ULONG> objects;
    for (POSITION pos = table.GetFirstRowPosition(); pos;)
        objects.push_back(table.GetNextRow(pos)->Object_ID);
    return objects;
}

TEST(DelayCheckout, OneRequestPerObjectAndKeysNeverRepeat) {
    auto file = CZmfFile::OpenMemory();
    CEnhDelayCheckoutTable table(file.get(), nullptr);
    table.Init(0);
    EXPECT_EQ(table.Insert(100, 5, 7), 7u);  // a given key is kept
    EXPECT_EQ(table.Insert(100, 6, 9), 7u);  // a second request changes nothing
    EXPECT_EQ(table.GetFKRow(100)->Request_Value, 5u);
    const ULONG a = table.Insert(200, 1, 0), b = table.Insert(300, 1, 0);
    EXPECT_GT(a, 7u);
    EXPECT_GT(b, a);
    EXPECT_EQ(table.GetRowCount(), 3);

    table.DeleteFKRow(999);  // no request: nothing happens
    table.DeleteFKRow(200);
    EXPECT_EQ(ObjectsInOrder(table), (std::vector<ULONG>{100, 300}));
    EXPECT_EQ(table.GetFKRow(200), nullptr);
    EXPECT_GT(table.Insert(200, 1, 0), b);  // a removed key is not handed out again

    table.RemoveAllRows();
    EXPECT_EQ(table.GetRowCount(), 0);
    EXPECT_EQ(table.GetFKRow(100), nullptr);
    EXPECT_EQ(table.Insert(100, 2, 0), b + 2);
}

TEST(DelayCheckout, SaveWritesEveryColumnBackInOrder) {
    TempDir dir;
    const std::string path = dir.File("checkout.zmf");
    {
        auto file = CZmfFile::Create(path);
        ASSERT_TRUE(Store(*file, "Delayed_Checkout",
                          std::vector{Request(3, 30, 1), Request(4, 50, 1), Request(5, 50, 2),
                                      Request(0, 60, 3)}));
    }
    {
        auto file = CZmfFile::Open(path);
        CEnhDelayCheckoutTable table(file.get(), nullptr);
        table.Init(0);
        // Two requests of one object both stay, the later one is found; a key 0 gets a new one.
        EXPECT_EQ(table.GetRowCount(), 4);
        EXPECT_EQ(table.GetFKRow(50)->Delayed_Checkout_ID, 5u);
        EXPECT_EQ(table.GetFKRow(60)->Delayed_Checkout_ID, 6u);
        EXPECT_EQ(table.Insert(50, 7, 0), 5u);
        EXPECT_EQ(table.Insert(70, 8, 0), 7u);
        table.DeleteFKRow(30);
        EXPECT_EQ(table.Save(file.get()), 1);
        file->ReleaseTable(table.GetTablePtrAddr(), 0);
        ASSERT_TRUE(file->Commit());
    }
    auto file = CZmfFile::Open(path);
    const auto rows = ReadAll<CDelayed_CheckoutBase>(*file, "Delayed_Checkout");
    ASSERT_EQ(rows.size(), 4u);
    const CDelayed_CheckoutBase kept = Request(5, 50, 2);
    EXPECT_EQ(tessmeta::test::RowText(CDelayed_CheckoutBase::Desc(), rows[1]),
              tessmeta::test::RowText(CDelayed_CheckoutBase::Desc(), kept));
    EXPECT_EQ(rows[3].Object_ID, 70u);
    EXPECT_EQ(rows[3].Request_Value, 8u);
    EXPECT_EQ(rows[3].Reserved_1 + rows[3].Reserved_4, 0u);
}

}  // namespace
