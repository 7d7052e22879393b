// Model files on disk: bad input named by file and cause, damage found by reading
// and verifying, and read-only files.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "support/command_run.h"
#include "support/row_values.h"
#include "support/store_checks.h"
#include "support/test_support.h"
#include "zmflib.h"

using tessmeta::test::ExpectObjects;
using tessmeta::test::MakeRow;
using tessmeta::test::OpenError;
using tessmeta::test::OpenOk;
using tessmeta::test::RowText;
using tessmeta::test::SaveObjects;
using tessmeta::test::Sql;
using tessmeta::test::TempDir;

namespace {

TEST(SqliteFile, BadReadOnlyTruncatedAndDamagedFilesGiveErrorsNamingTheFileAndCause) {
    TempDir dir;
    const std::string missing = dir.File("missing.zmf");
    EXPECT_EQ(OpenError(missing), missing + ": cannot open: no such file");
    EXPECT_NE(OpenError(dir.Path()).find("not a regular file"), std::string::npos);

    const std::string text = dir.File("text.zmf");
    std::ofstream(text) << std::string(4096, 'x');
    EXPECT_EQ(OpenError(text), text + ": not a model file (not an SQLite database)");

    const std::string plain = dir.File("plain.db");
    ASSERT_EQ(Sql(plain, "CREATE TABLE t(x)"), "");
    EXPECT_NE(OpenError(plain).find(plain + ": not a model file"), std::string::npos);

    const std::string good = dir.File("good.zmf");
    CZmfFile::Create(good).reset();
    std::string error;
    EXPECT_FALSE(CZmfFile::Create(good, 530, &error));
    EXPECT_EQ(error, good + ": cannot create: the file already exists");
    EXPECT_FALSE(CZmfFile::Create(dir.File("no/such/dir.zmf"), 530, &error));
    EXPECT_NE(error.find("cannot create"), std::string::npos);

    const std::string noColumn = dir.File("nocol.zmf");
    CZmfFile::Create(noColumn).reset();
    ASSERT_EQ(Sql(noColumn, "ALTER TABLE \"UniqueObject\" DROP COLUMN \"Model_ID\""), "");
    EXPECT_EQ(OpenError(noColumn),
              noColumn + ": damaged: table \"UniqueObject\" has no column \"Model_ID\"");

    // Saving to a read-only file fails cleanly; the file still loads.
    const std::string readOnly = dir.File("ro.zmf");
    {
        auto created = CZmfFile::Create(readOnly);
        SaveObjects(*created, 5, 0);
    }
    ASSERT_EQ(::chmod(readOnly.c_str(), 0444), 0);
    auto roFile = OpenOk(readOnly);
    ASSERT_TRUE(roFile);
    EXPECT_TRUE(roFile->IsReadOnly());
    EXPECT_EQ(roFile->GetTable("UniqueObject")->GetCount(), 5u);  // it still loads
    EXPECT_EQ(roFile->GetEmptyTable("UniqueObject"), nullptr);
    EXPECT_EQ(roFile->GetLastError(), readOnly + ": cannot save: the file is read-only");
    roFile->SetFormatVersion(500);
    EXPECT_FALSE(roFile->Commit());
    roFile.reset();
    ::chmod(readOnly.c_str(), 0644);
    ExpectObjects(readOnly, 5, 0);

    // Truncated and overwritten files never crash.
    const std::string big = dir.File("big.zmf");
    {
        auto file = CZmfFile::Create(big);
        SaveObjects(*file, 20000, 0);
    }
    const auto size = std::filesystem::file_size(big);

    const std::string truncated = dir.File("truncated.zmf");
    std::filesystem::copy_file(big, truncated);
    std::filesystem::resize_file(truncated, size / 2);
    EXPECT_NE(OpenError(truncated).find(truncated + ": damaged: "), std::string::npos);
    // Only the last page gone: the schema still reads, the header gives it away.
    const std::string tail = dir.File("tail.zmf");
    std::filesystem::copy_file(big, tail);
    std::filesystem::resize_file(tail, size - 100);
    EXPECT_EQ(OpenError(tail), tail + ": damaged: the file is truncated (" +
                                   std::to_string(size - 100) + " of " + std::to_string(size) +
                                   " bytes)");

    // Garbage over the middle pages: opening may succeed, but reading reports the
    // damage instead of returning made-up rows, and Verify finds it.
    const std::string corrupted = dir.File("corrupted.zmf");
    std::filesystem::copy_file(big, corrupted);
    {
        std::fstream f(corrupted, std::ios::in | std::ios::out | std::ios::binary);
        f.seekp(static_cast<std::streamoff>(size / 2));
        const std::string junk(64 * 1024, '\x5A');
        f.write(junk.data(), static_cast<std::streamsize>(junk.size()));
    }
    auto damaged = CZmfFile::Open(corrupted, &error);
    if (damaged) {
        CUniqueObjectIterator it(damaged->GetTable("UniqueObject"));
        CUniqueObjectBase row;
        while (it.GetNext(&row)) {
        }
        EXPECT_FALSE(damaged->Verify());
        EXPECT_NE(damaged->GetLastError().find(corrupted + ": "), std::string::npos);
    } else {
        EXPECT_NE(error.find(corrupted + ": "), std::string::npos);
    }
}

// A helper thread reads through a read lane while the file's own thread reads:
// each reads its table whole, and the lane's rows and error reach the file when it
// closes. No lane is given where it could not read what the file reads.
TEST(SqliteFile, ReadLanesReadBesideTheFileAndHandBackRowsAndErrors) {
    TempDir dir;
    const std::string path = dir.File("lane.zmf");
    {
        auto file = CZmfFile::Create(path);
        SaveObjects(*file, 50, 0);
        CTableBase* tables = file->GetEmptyTable("MetaTable");
        for (CMetaTableBase row(1); row.MetaTable_ID <= 30; ++row.MetaTable_ID)
            tables->Insert(&row);
        ASSERT_TRUE(file->Commit());
    }
    auto file = CZmfFile::Open(path);
    std::vector<std::uint64_t> calls;
    file->SetProgressHook([&](std::uint64_t rows) { calls.push_back(rows); }, 40);
    auto lane = file->OpenReadLane();
    ASSERT_TRUE(lane);
    std::thread helper([&] {
        const CZmfReadLane::CEntry entry(*lane);
        CUniqueObjectIterator it(file->GetTable("UniqueObject"));
        for (CUniqueObjectBase row; it.GetNext(&row);) {
        }
        file->GetTable("NoSuchTable");
    });
    CMetaTableIterator it(file->GetTable("MetaTable"));
    for (CMetaTableBase row; it.GetNext(&row);) {
    }
    helper.join();
    EXPECT_EQ(file->GetRowsMoved(), 30u);  // the lane's 50 rows and error are still its own
    EXPECT_FALSE(file->HasError());
    lane.reset();
    EXPECT_EQ(file->GetRowsMoved(), 80u);
    EXPECT_EQ(calls, (std::vector<std::uint64_t>{80}));
    EXPECT_NE(file->GetLastError().find(path + ": unknown table \"NoSuchTable\""),
              std::string::npos);

    EXPECT_FALSE(CZmfFile::OpenMemory()->OpenReadLane());
    ASSERT_TRUE(file->GetEmptyTable("MetaTable"));
    EXPECT_FALSE(file->OpenReadLane());  // a save is open
    file->Rollback();
    EXPECT_TRUE(file->OpenReadLane());
    std::filesystem::rename(path, dir.File("moved.zmf"));
    std::filesystem::copy_file(dir.File("moved.zmf"), path);
    EXPECT_FALSE(file->OpenReadLane());  // the path names another file now
}

}  // namespace
