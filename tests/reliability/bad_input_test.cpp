// The bad-input matrix of docs/reliability.md: each kind of bad file, what the
// library says when opening it and what the command does with it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>

#include "model/model_check.h"
#include "reliability_support.h"
#include "support/command_run.h"
#include "support/test_support.h"

namespace tessmeta::test {
namespace {

void Exec(const std::string& path, const std::string& sql) {
    EXPECT_EQ(Sql(path, sql), "");
}

void Bytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

void Truncate(const std::string& path, double keep) {
    std::filesystem::resize_file(
        path, static_cast<std::uintmax_t>(std::filesystem::file_size(path) * keep));
}

struct SBadInput {
    const char* kind;
    // Turns a valid model file at the path into the bad input (a missing path
    // stays missing).
    std::function<void(const std::string&)> make;
    const char* openError;  // in the library's message; null: the model opens
    int infoStatus;         // exit status of `tessmeta info`
    int checkStatus;        // exit status of `tessmeta check`
};

TEST(BadInput, Matrix) {
    const std::string huge(1 << 20, 'h');
    const SBadInput cases[] = {
        {"missing file", [](auto& p) { std::filesystem::remove(p); }, "cannot open: no such file",
         2, 2},
        {"folder",
         [](auto& p) { std::filesystem::remove(p), std::filesystem::create_directory(p); },
         "cannot open: not a regular file", 2, 2},
        {"empty file", [](auto& p) { Bytes(p, ""); }, "not a model file", 2, 2},
        {"not SQLite", [](auto& p) { Bytes(p, std::string(5000, 'z')); },
         "not a model file (not an SQLite database)", 2, 2},
        {"SQLite, not a model",
         [](auto& p) { std::filesystem::remove(p), Exec(p, "CREATE TABLE t(a)"); },
         "not a model file", 2, 2},
        {"truncated", [](auto& p) { Truncate(p, 0.5); }, "damaged", 2, 2},
        {"damaged page",
         [](auto& p) {
             std::fstream f(p, std::ios::in | std::ios::out | std::ios::binary);
             f.seekp(16384 * 3);
             f << std::string(4000, '\xA5');
         },
         "malformed", 2, 2},
        {"missing column",
         [](auto& p) { Exec(p, "ALTER TABLE UniqueObject DROP COLUMN Model_ID"); }, "UniqueObject",
         2, 2},
        {"renamed column",
         [](auto& p) { Exec(p, "ALTER TABLE StringUsage RENAME COLUMN String_ID TO Other"); },
         "StringUsage", 2, 2},
        {"missing table", [](auto& p) { Exec(p, "DROP TABLE UniqueObject"); }, nullptr, 0, 1},
        {"future format version",
         [](auto& p) { Exec(p, "UPDATE zmf_meta SET value=9999 WHERE key='format_version'"); },
         "format version 9999 is not one this library reads", 2, 2},
        {"missing format version", [](auto& p) { Exec(p, "DELETE FROM zmf_meta"); },
         "not a model file (no format version)", 2, 2},
        {"dangling usage", [](auto& p) { Exec(p, "UPDATE StringUsage SET String_ID=999999"); },
         nullptr, 0, 1},
        {"duplicate key",
         [](auto& p) { Exec(p, "INSERT INTO UniqueObject SELECT * FROM UniqueObject LIMIT 1"); },
         nullptr, 0, 1},
        {"text in an id column", [](auto& p) { Exec(p, "UPDATE StringUsage SET Object_ID='abc'"); },
         nullptr, 0, 1},
        {"maximal and negative ids",
         [](auto& p) { Exec(p, "UPDATE UniqueObject SET Model_ID=4294967295, Object_Type_ID=-1"); },
         nullptr, 0, 1},
        {"oversized values",
         [&](auto& p) {
             Exec(p, "UPDATE SmallString SET Text='" + huge +
                         "'; UPDATE UniqueObject SET Model_ID=9223372036854775807");
         },
         nullptr, 0, 0},
    };
    TempDir dir;
    const std::string valid = dir.File("valid.zmf");
    WriteBaseModel(valid, 60);
    for (const SBadInput& bad : cases) {
        SCOPED_TRACE(bad.kind);
        const std::string path = dir.File("bad.zmf");
        std::filesystem::remove_all(path);
        CopyFile(valid, path);
        bad.make(path);
        std::string error;
        auto model = CModelFile::Open(path, &error);
        if (bad.openError) {
            EXPECT_FALSE(model);
            EXPECT_NE(error.find(path + ": "), std::string::npos) << error;
            EXPECT_NE(error.find(bad.openError), std::string::npos) << error;
        } else {
            ASSERT_TRUE(model) << error;
            CheckModelFile(model->GetFile());
            model.reset();
        }
        const SRun info = RunProgram(TESSMETA_COMMAND, "info " + path, dir.Path());
        EXPECT_EQ(info.status, bad.infoStatus) << info.err;
        if (bad.openError) {
            EXPECT_NE(info.err.find(bad.openError), std::string::npos) << info.err;
        }
        EXPECT_EQ(RunProgram(TESSMETA_COMMAND, "check " + path, dir.Path()).status,
                  bad.checkStatus);
    }
}

}  // namespace
}  // namespace tessmeta::test
