// Table operations, run against every backend: the in-memory store, .zmf files and
// models on a PostgreSQL server (every column type is stored through a reopen in
// the persistence tests).
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/pg_test.h"
#include "support/test_support.h"
#include "zmflib.h"

using tessmeta::test::TempDir;

namespace {

enum class Backend { Memory, Sqlite, Postgres };

class TableTest : public ::testing::TestWithParam<Backend> {
  protected:
    void SetUp() override {
        std::string error;
        if (GetParam() == Backend::Memory)
            file = CZmfFile::OpenMemory();
        else if (GetParam() == Backend::Sqlite)
            file = CZmfFile::Create(dir.File("t.zmf"), 530, &error);
        else
            file = CZmfFile::Create(tessmeta::test::NewModelUri("table"), 530, &error);
        ASSERT_TRUE(file) << error;
    }

    // Inserts usage rows (key, object id) in order.
    void InsertUsages(CTableBase* t, std::vector<std::pair<ULONG, ULONG>> rows) {
        for (auto [key, object] : rows) {
            CStringUsageBase row(key);
            row.Object_ID = object;
            ASSERT_EQ(t->Insert(&row), 1);
        }
    }

    std::vector<ULONG> ObjectsInOrder(CTableBase* t) {
        std::vector<ULONG> objects;
        CStringUsageIterator it(t);
        CStringUsageBase row;
        while (it.GetNext(&row))
            objects.push_back(row.Object_ID);
        return objects;
    }

    TempDir dir;
    std::unique_ptr<CZmfFile> file;
};

TEST_P(TableTest, StoredOrderFirstMatchWalksAndIterators) {
    CTableBase* t = file->GetEmptyTable("StringUsage");
    ASSERT_NE(t, nullptr);
    InsertUsages(t, {{5, 50}, {3, 30}, {5, 51}, {9, 90}});
    EXPECT_EQ(t->GetCount(), 4u);
    EXPECT_EQ(ObjectsInOrder(t), (std::vector<ULONG>{50, 30, 51, 90}));

    CStringUsageBase probe(5);
    ASSERT_EQ(t->Get(&probe), 1);
    EXPECT_EQ(probe.Object_ID, 50u);

    probe.Object_ID = 55;
    ASSERT_EQ(t->Update(&probe), 1);  // the first of the two rows with key 5
    EXPECT_EQ(ObjectsInOrder(t), (std::vector<ULONG>{55, 30, 51, 90}));

    ASSERT_EQ(t->Delete(&probe), 1);
    EXPECT_EQ(ObjectsInOrder(t), (std::vector<ULONG>{30, 51, 90}));
    ASSERT_EQ(t->Get(&probe), 1);
    EXPECT_EQ(probe.Object_ID, 51u);

    CStringUsageBase absent(4);
    EXPECT_EQ(t->Get(&absent), 0);
    EXPECT_EQ(t->Update(&absent), 0);
    EXPECT_EQ(t->Delete(&absent), 0);
    EXPECT_EQ(t->GetCount(), 3u);
    EXPECT_TRUE(file->Commit()) << file->GetLastError();

    // The positional walk and iterators see rows in order.
    t = file->GetEmptyTable("StringUsage");
    EXPECT_EQ(t->GetStartPosition(), nullptr);
    InsertUsages(t, {{1, 10}, {2, 20}, {3, 30}});

    std::vector<ULONG> seen;
    CStringUsageBase row;
    for (POSITION pos = t->GetStartPosition(); pos;) {
        t->GetNext(pos, &row);
        seen.push_back(row.Object_ID);
    }
    EXPECT_EQ(seen, (std::vector<ULONG>{10, 20, 30}));

    // Two iterators over one table advance independently.
    CStringUsageIterator a(t), b(t);
    ASSERT_EQ(a.GetNext(&row), 1);
    ASSERT_EQ(a.GetNext(&row), 1);
    EXPECT_EQ(row.Object_ID, 20u);
    ASSERT_EQ(b.GetNext(&row), 1);
    EXPECT_EQ(row.Object_ID, 10u);

    CStringUsageIterator none(nullptr);
    EXPECT_EQ(none.GetNext(&row), 0);
}

INSTANTIATE_TEST_SUITE_P(Backends, TableTest,
                         ::testing::Values(Backend::Memory, Backend::Sqlite, Backend::Postgres),
                         [](const auto& info) {
                             return std::string(info.param == Backend::Memory   ? "Memory"
                                                : info.param == Backend::Sqlite ? "Sqlite"
                                                                                : "Postgres");
                         });

TEST(ZmfFileProgress, TheHookSeesRowsReadAndInserted) {
    auto file = CZmfFile::OpenMemory();
    std::vector<std::uint64_t> calls;
    file->SetProgressHook([&](std::uint64_t rows) { calls.push_back(rows); }, 3);
    CTableBase* t = file->GetEmptyTable("MetaTable");
    for (ULONG k = 1; k <= 4; ++k) {
        CMetaTableBase row(k);
        t->Insert(&row);
    }
    CMetaTableIterator it(t);
    CMetaTableBase row;
    while (it.GetNext(&row)) {
    }
    EXPECT_EQ(file->GetRowsMoved(), 8u);
    EXPECT_EQ(calls, (std::vector<std::uint64_t>{3, 6}));
    file->SetProgressHook(nullptr);
    EXPECT_EQ(it.GetNext(&row), 0);
}

}  // namespace
