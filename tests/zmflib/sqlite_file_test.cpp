// Model files on disk: persistence through close and reopen, atomic saves, and
// every kind of bad input.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/row_values.h"
#include "support/test_support.h"
#include "zmflib.h"

using tessmeta::test::MakeRow;
using tessmeta::test::RowText;
using tessmeta::test::TempDir;

namespace {

std::unique_ptr<CZmfFile> OpenOk(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    EXPECT_TRUE(file) << error;
    return file;
}

std::string OpenError(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    EXPECT_FALSE(file);
    return error;
}

void RunSql(const std::string& path, const char* sql) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
}

// Writes `count` unique objects (keys 1..count, Model_ID = key + offset) in one save.
void SaveObjects(CZmfFile& file, ULONG count, ULONG offset) {
    CTableBase* t = file.GetEmptyTable("UniqueObject");
    ASSERT_NE(t, nullptr) << file.GetLastError();
    t->SetSizeEstimate(static_cast<LONG>(count));
    for (ULONG k = 1; k <= count; ++k) {
        CUniqueObjectBase row(k);
        row.Model_ID = k + offset;
        row.Object_GUID = "0123456789abcdef0123456789abcdef";
        ASSERT_EQ(t->Insert(&row), 1);
    }
    ASSERT_TRUE(file.Commit()) << file.GetLastError();
}

// Checks that the file holds exactly the objects SaveObjects(count, offset) wrote.
void ExpectObjects(const std::string& path, ULONG count, ULONG offset) {
    auto file = OpenOk(path);
    ASSERT_TRUE(file);
    CUniqueObjectIterator it(file->GetTable("UniqueObject"));
    CUniqueObjectBase row;
    ULONG n = 0;
    while (it.GetNext(&row)) {
        ++n;
        ASSERT_EQ(row.Unique_Object_ID, n);
        ASSERT_EQ(row.Model_ID, n + offset);
    }
    EXPECT_EQ(n, count);
    EXPECT_FALSE(file->HasError()) << file->GetLastError();
}

TEST(SqliteFile, EveryTableSurvivesCloseAndReopen) {
    TempDir dir;
    const std::string path = dir.File("all.zmf");
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

TEST(SqliteFile, VersionAndCountersPersistOnlyAtCommit) {
    TempDir dir;
    const std::string path = dir.File("v.zmf");
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
}

TEST(SqliteFile, AnUncommittedSaveLeavesThePreviousContent) {
    TempDir dir;
    const std::string path = dir.File("s.zmf");
    {
        auto file = CZmfFile::Create(path);
        SaveObjects(*file, 10, 0);
        CTableBase* t = file->GetEmptyTable("UniqueObject");
        CUniqueObjectBase row(99);
        t->Insert(&row);
        EXPECT_EQ(t->GetCount(), 1u);  // the save sees its own rows
    }
    ExpectObjects(path, 10, 0);
}

TEST(SqliteFile, InsertsOutsideASaveReachTheFileAtOnce) {
    TempDir dir;
    const std::string path = dir.File("w.zmf");
    auto file = CZmfFile::Create(path);
    CTableBase* t = file->GetTable("ObjectModification");
    const int kind = CObjectModificationBase::Desc().keyKind;
    CObjectModificationBase row(file->GetIdentityMgr()->AllocKeyValue(kind));
    row.Object_ID = 42;
    row.Modification_Kind = 2;
    ASSERT_EQ(t->Insert(&row), 1);

    // Seen by another reader before any commit; the key counter came along.
    auto reader = OpenOk(path);
    CObjectModificationIterator it(reader->GetTable("ObjectModification"));
    CObjectModificationBase read;
    ASSERT_EQ(it.GetNext(&read), 1);
    EXPECT_EQ(read.Object_ID, 42u);
    EXPECT_EQ(read.Modification_Kind, 2);
    EXPECT_EQ(reader->GetIdentityMgr()->GetKeyValue(kind), row.ObjectModification_ID);

    read.Modification_Kind = 1;
    ASSERT_EQ(reader->GetTable("ObjectModification")->Update(&read), 1);
    CObjectModificationBase probe(row.ObjectModification_ID);
    ASSERT_EQ(file->GetTable("ObjectModification")->Get(&probe), 1);
    EXPECT_EQ(probe.Modification_Kind, 1);
}

TEST(SqliteFile, ATableAbsentFromTheFileReadsAsEmpty) {
    TempDir dir;
    const std::string path = dir.File("a.zmf");
    {
        auto file = CZmfFile::Create(path);
        SaveObjects(*file, 3, 0);
    }
    RunSql(path, "DROP TABLE \"Proc\"");
    {
        auto file = OpenOk(path);
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
    EXPECT_EQ(OpenOk(path)->GetTable("Proc")->GetCount(), 1u);
}

TEST(SqliteFile, BadInputGivesAnErrorNamingTheFileAndCause) {
    TempDir dir;
    const std::string missing = dir.File("missing.zmf");
    EXPECT_EQ(OpenError(missing), missing + ": cannot open: no such file");
    EXPECT_NE(OpenError(dir.Path()).find("not a regular file"), std::string::npos);

    const std::string text = dir.File("text.zmf");
    std::ofstream(text) << std::string(4096, 'x');
    EXPECT_EQ(OpenError(text), text + ": not a model file (not an SQLite database)");

    const std::string plain = dir.File("plain.db");
    RunSql(plain, "CREATE TABLE t(x)");
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
    RunSql(noColumn, "ALTER TABLE \"UniqueObject\" DROP COLUMN \"Model_ID\"");
    EXPECT_EQ(OpenError(noColumn),
              noColumn + ": damaged: table \"UniqueObject\" has no column \"Model_ID\"");
}

TEST(SqliteFile, TruncatedAndCorruptedFilesNeverCrash) {
    TempDir dir;
    const std::string path = dir.File("big.zmf");
    {
        auto file = CZmfFile::Create(path);
        SaveObjects(*file, 20000, 0);
    }
    const auto size = std::filesystem::file_size(path);

    const std::string truncated = dir.File("truncated.zmf");
    std::filesystem::copy_file(path, truncated);
    std::filesystem::resize_file(truncated, size / 2);
    EXPECT_NE(OpenError(truncated).find(truncated + ": damaged: "), std::string::npos);
    // Only the last page gone: the schema still reads, the header gives it away.
    const std::string tail = dir.File("tail.zmf");
    std::filesystem::copy_file(path, tail);
    std::filesystem::resize_file(tail, size - 100);
    EXPECT_EQ(OpenError(tail), tail + ": damaged: the file is truncated (" +
                                   std::to_string(size - 100) + " of " + std::to_string(size) +
                                   " bytes)");

    // Garbage over the middle pages: opening may succeed, but reading reports the
    // damage instead of returning made-up rows, and Verify finds it.
    const std::string corrupted = dir.File("corrupted.zmf");
    std::filesystem::copy_file(path, corrupted);
    {
        std::fstream f(corrupted, std::ios::in | std::ios::out | std::ios::binary);
        f.seekp(static_cast<std::streamoff>(size / 2));
        const std::string junk(64 * 1024, '\x5A');
        f.write(junk.data(), static_cast<std::streamsize>(junk.size()));
    }
    std::string error;
    auto file = CZmfFile::Open(corrupted, &error);
    if (file) {
        CUniqueObjectIterator it(file->GetTable("UniqueObject"));
        CUniqueObjectBase row;
        while (it.GetNext(&row)) {
        }
        EXPECT_FALSE(file->Verify());
        EXPECT_NE(file->GetLastError().find(corrupted + ": "), std::string::npos);
    } else {
        EXPECT_NE(error.find(corrupted + ": "), std::string::npos);
    }

    // A damaged header is not taken for a model file.
    const std::string header = dir.File("header.zmf");
    std::filesystem::copy_file(path, header);
    {
        std::fstream f(header, std::ios::in | std::ios::out | std::ios::binary);
        f.write("garbage!", 8);
    }
    EXPECT_NE(OpenError(header).find("not a model file"), std::string::npos);
}

TEST(SqliteFile, SavingToAReadOnlyFileFailsCleanly) {
    TempDir dir;
    const std::string path = dir.File("ro.zmf");
    {
        auto file = CZmfFile::Create(path);
        SaveObjects(*file, 5, 0);
    }
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    auto file = OpenOk(path);
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->IsReadOnly());
    EXPECT_EQ(file->GetTable("UniqueObject")->GetCount(), 5u);  // it still loads
    EXPECT_EQ(file->GetEmptyTable("UniqueObject"), nullptr);
    EXPECT_EQ(file->GetLastError(), path + ": cannot save: the file is read-only");
    file->SetFormatVersion(500);
    EXPECT_FALSE(file->Commit());
    file.reset();
    ::chmod(path.c_str(), 0644);
    ExpectObjects(path, 5, 0);
}

// A child process starts a large save and is killed with SIGKILL in the middle of
// it; the parent then finds the previous content intact. Once Commit has returned,
// the new content survives a kill.
TEST(SqliteFile, AKilledSaveLeavesThePreviousContent) {
    TempDir dir;
    const std::string path = dir.File("crash.zmf");
    {
        auto file = CZmfFile::Create(path);
        SaveObjects(*file, 1000, 0);
    }
    for (bool killBeforeCommit : {true, false}) {
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(ready[0]);
            std::string error;
            auto file = CZmfFile::Open(path, &error);
            if (!file) _exit(3);
            CTableBase* t = file->GetEmptyTable("UniqueObject");
            const ULONG count = killBeforeCommit ? 2000000 : 3000;
            for (ULONG k = 1; k <= count; ++k) {
                CUniqueObjectBase row(k);
                row.Model_ID = k + 7;
                t->Insert(&row);
                if (killBeforeCommit && k == 300000) (void)!write(ready[1], "x", 1);
            }
            if (!killBeforeCommit && file->Commit()) (void)!write(ready[1], "x", 1);
            pause();
            _exit(0);
        }
        close(ready[1]);
        char signal = 0;
        ASSERT_EQ(read(ready[0], &signal, 1), 1);
        close(ready[0]);
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        if (killBeforeCommit)
            ExpectObjects(path, 1000, 0);
        else
            ExpectObjects(path, 3000, 7);
    }
}

}  // namespace
