// The tessmeta command on models kept on a PostgreSQL server: every subcommand
// takes a URI, and push / pull move models between files and the server without
// losing anything.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/command_run.h"
#include "support/pg_test.h"
#include "support/store_checks.h"
#include "support/test_support.h"

namespace {

using tessmeta::test::SRun;

class ServerCommandTest : public ::testing::Test {
  protected:
    SRun Tessmeta(const std::string& args) {
        return tessmeta::test::RunProgram(TESSMETA_COMMAND, args, dir.Path());
    }
    // The output of a subcommand with the location it names replaced by "@".
    std::string Output(const std::string& command, const std::string& where,
                       const std::string& more = "") {
        const SRun result = Tessmeta(command + " '" + where + "' " + more);
        EXPECT_EQ(result.status, 0) << command << " " << where << ": " << result.err;
        std::string text;
        std::size_t from = 0;
        for (std::size_t at; (at = result.out.find(where, from)) != std::string::npos;
             from = at + where.size())
            text.append(result.out, from, at - from).append("@");
        return text.append(result.out, from);
    }
    static std::string Quoted(const std::string& text) { return "'" + text + "'"; }

    tessmeta::test::TempDir dir;
};

TEST_F(ServerCommandTest, EverySubcommandSeesTheSameModelOnTheServerAsInTheFile) {
    const std::string path = dir.File("demo.zmf");
    const std::string uri = tessmeta::test::NewModelUri("same");
    ASSERT_EQ(Tessmeta("demo " + path).status, 0);
    const SRun push = Tessmeta("push " + path + " " + Quoted(uri));
    ASSERT_EQ(push.status, 0) << push.err;

    for (const char* command : {"info", "dump", "check"})
        EXPECT_EQ(Output(command, uri), Output(command, path)) << command;
    EXPECT_EQ(Output("dump", uri, "--format json"), Output("dump", path, "--format json"));

    // A load and save through every manager, and a purge, on each side; then the
    // server's model pulled back into a file holds what the file holds.
    for (const char* command : {"upgrade", "purge"})
        EXPECT_EQ(Output(command, uri), Output(command, path)) << command;
    const std::string back = dir.File("back.zmf");
    const SRun pull = Tessmeta("pull " + Quoted(uri) + " " + back);
    ASSERT_EQ(pull.status, 0) << pull.err;
    auto original = tessmeta::test::OpenOk(path);
    auto pulled = tessmeta::test::OpenOk(back);
    ASSERT_TRUE(original && pulled);
    EXPECT_EQ(tessmeta::test::StoreDifference(*original, *pulled), "");
    EXPECT_EQ(Output("dump", back, "--format json"), Output("dump", path, "--format json"));
}

TEST_F(ServerCommandTest, PushAndPullRefuseToOverwriteAndShowNoPassword) {
    const std::string path = dir.File("m.zmf");
    const std::string uri = tessmeta::test::NewModelUri("refuse");
    ASSERT_EQ(Tessmeta("new " + Quoted(uri)).status, 0);
    ASSERT_EQ(Tessmeta("gen " + path + " --objects 50").status, 0);

    SRun result = Tessmeta("push " + path + " " + Quoted(uri));
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("already exists (use --replace)"), std::string::npos) << result.err;
    result = Tessmeta("push --replace " + path + " " + Quoted(uri));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(Output("info", uri).find("UniqueObject"), std::string::npos);

    result = Tessmeta("pull " + Quoted(uri) + " " + path);
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("already exists"), std::string::npos) << result.err;
    const std::string missing = tessmeta::test::NewModelUri("missing");
    result = Tessmeta("pull " + Quoted(missing) + " " + dir.File("none.zmf"));
    EXPECT_EQ(result.status, 2);
    EXPECT_FALSE(std::filesystem::exists(dir.File("none.zmf")));

    const std::string secret = "postgresql://ann:Pa55word!@/postgres/x?host=/nonexistent";
    for (const std::string& args : {"info " + Quoted(secret), "push " + path + " " + Quoted(secret),
                                    "new " + Quoted(secret)}) {
        result = Tessmeta(args);
        EXPECT_EQ(result.status, 2) << args;
        EXPECT_NE(result.err.find("ann:***@"), std::string::npos) << result.err;
        EXPECT_EQ((result.out + result.err).find("Pa55word"), std::string::npos) << result.err;
    }
}

}  // namespace
