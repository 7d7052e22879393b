// Persistence of model stores through close and reopen, run against both stores
// that persist: .zmf files and models on a PostgreSQL server.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/command_run.h"
#include "support/pg_test.h"
#include "support/row_values.h"
#include "support/store_checks.h"
#include "support/test_support.h"
#include "zmflib.h"
#include "zmflib/pg_uri.h"

using tessmeta::test::ExpectObjects;
using tessmeta::test::MakeRow;
using tessmeta::test::OpenOk;
using tessmeta::test::RowText;
using tessmeta::test::SaveObjects;

namespace {

enum class Backend { Sqlite, Postgres };

class StoreTest : public ::testing::TestWithParam<Backend> {
  protected:
    // A place for a new model: a file path or a server URI.
    std::string NewLocation(const std::string& name) {
        return GetParam() == Backend::Sqlite ? dir.File(name + ".zmf")
                                             : tessmeta::test::NewModelUri(name);
    }

    // Drops a table behind the store's back.
    void DropTable(const std::string& location, const char* table) {
        const std::string quoted = std::string("\"") + table + "\"";
        if (GetParam() == Backend::Sqlite) {
            ASSERT_EQ(tessmeta::test::Sql(location, "DROP TABLE " + quoted), "");
            return;
        }
        zmf::SPgLocation where;
        std::string error;
        ASSERT_TRUE(zmf::ParsePgLocation(location, where, error)) << error;
        const std::string schema = tessmeta::test::ServerSql(
            "SELECT schema_name FROM zmf.models WHERE name = '" + where.model + "'");
        tessmeta::test::ServerSql("DROP TABLE " + schema + "." + quoted);
    }

    tessmeta::test::TempDir dir;
};

TEST_P(StoreTest, EveryTableSurvivesCloseAndReopen) {
    const std::string path = NewLocation("all");
    std::vector<std::vector<std::string>> expected;
    {
        auto file = CZmfFile::Create(path, 510);
        ASSERT_TRUE(file);
        for (const SZmfTableDesc* desc : zmf::AllTables()) {
            CTableBase* t = file->GetEmptyTable(desc->name);
            expected.emplace_back();
            for (int i = 0; i < 5; ++i) {
                auto row = MakeRow(*desc, i == 3 ? 1 : 1 + i, i);  // a duplicate key too
                ASSERT_EQ(t->Insert(row.get()), 1);
                expected.back().push_back(RowText(*desc, *row));
            }
            t->SetSizeEstimate(5 + static_cast<LONG>(desc->tableNumber));
        }
        file->GetIdentityMgr()->SetKeyValue(77, 1234);
        ASSERT_TRUE(file->Commit()) << file->GetLastError();
    }
    auto file = OpenOk(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->GetFormatVersion(), 510u);
    EXPECT_EQ(file->GetIdentityMgr()->GetKeyValue(77), 1234u);
    EXPECT_EQ(file->GetIdentityMgr()->AllocKeyValue(77), 1235u);
    size_t i = 0;
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* t = file->GetTable(desc->name);
        EXPECT_EQ(t->GetSizeEstimate(), 5 + desc->tableNumber) << desc->name;
        std::unique_ptr<CDbObjectBase> row(desc->createRow());
        CIteratorBase it(t);
        for (const std::string& text : expected[i]) {
            ASSERT_EQ(it.GetNext(row.get()), 1) << desc->name;
            EXPECT_EQ(RowText(*desc, *row), text);
        }
        EXPECT_EQ(it.GetNext(row.get()), 0);
        ++i;
    }
}

TEST_P(StoreTest, CommitsWritesThroughAndAbsentTables) {
    const std::string path = NewLocation("v");
    {
        auto file = CZmfFile::Create(path);
        EXPECT_EQ(file->GetFormatVersion(), 530u);
        file->SetFormatVersion(499);
        file->GetIdentityMgr()->AllocKeyValue(5);
    }  // closed without Commit
    {
        auto file = OpenOk(path);
        EXPECT_EQ(file->GetFormatVersion(), 530u);
        EXPECT_EQ(file->GetIdentityMgr()->GetKeyValue(5), 0u);
        file->SetFormatVersion(502);
        file->GetIdentityMgr()->AllocKeyValue(5);
        EXPECT_TRUE(file->Commit());
    }
    auto file = OpenOk(path);
    EXPECT_EQ(file->GetFormatVersion(), 502u);
    EXPECT_EQ(file->GetIdentityMgr()->GetKeyValue(5), 1u);

    // Inserts outside a save reach the store at once.
    const std::string written = NewLocation("w");
    auto store = CZmfFile::Create(written);
    CTableBase* t = store->GetTable("ObjectModification");
    const int kind = CObjectModificationBase::Desc().keyKind;
    CObjectModificationBase row(store->GetIdentityMgr()->AllocKeyValue(kind));
    row.Object_ID = 42;
    row.Modification_Kind = 2;
    ASSERT_EQ(t->Insert(&row), 1);

    // Seen by another reader before any commit; the key counter came along.
    auto reader = OpenOk(written);
    CObjectModificationIterator it(reader->GetTable("ObjectModification"));
    CObjectModificationBase read;
    ASSERT_EQ(it.GetNext(&read), 1);
    EXPECT_EQ(read.Object_ID, 42u);
    EXPECT_EQ(read.Modification_Kind, 2);
    EXPECT_EQ(reader->GetIdentityMgr()->GetKeyValue(kind), row.ObjectModification_ID);

    read.Modification_Kind = 1;
    ASSERT_EQ(reader->GetTable("ObjectModification")->Update(&read), 1);
    CObjectModificationBase probe(row.ObjectModification_ID);
    ASSERT_EQ(store->GetTable("ObjectModification")->Get(&probe), 1);
    EXPECT_EQ(probe.Modification_Kind, 1);

    // A table absent from the store reads as empty.
    const std::string partial = NewLocation("a");
    {
        auto file = CZmfFile::Create(partial);
        SaveObjects(*file, 3, 0);
    }
    DropTable(partial, "Proc");
    {
        auto file = OpenOk(partial);
        CTableBase* t = file->GetTable("Proc");
        EXPECT_EQ(t->GetCount(), 0u);
        EXPECT_EQ(t->GetStartPosition(), nullptr);
        CProcBase row(1);
        EXPECT_EQ(t->Get(&row), 0);
        EXPECT_EQ(CProcIterator(t).GetNext(&row), 0);
        EXPECT_FALSE(file->HasError());
        // Saving recreates it.
        t = file->GetEmptyTable("Proc");
        ASSERT_NE(t, nullptr);
        EXPECT_EQ(t->Insert(&row), 1);
        EXPECT_TRUE(file->Commit());
    }
    EXPECT_EQ(OpenOk(partial)->GetTable("Proc")->GetCount(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Backends, StoreTest, ::testing::Values(Backend::Sqlite, Backend::Postgres),
                         [](const auto& info) {
                             return info.param == Backend::Sqlite ? "Sqlite" : "Postgres";
                         });

}  // namespace
