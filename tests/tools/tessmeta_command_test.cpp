// The tessmeta command, run as a program on temporary model files.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "support/command_run.h"
#include "support/test_support.h"

using namespace tessmeta::test;

namespace {

class CommandTest : public ::testing::Test {
  protected:
    SRun Run(const std::string& args) { return RunProgram(TESSMETA_COMMAND, args, dir.Path()); }
    static void Sql(const std::string& path, const std::string& sql) {
        ASSERT_EQ(tessmeta::test::Sql(path, sql), "");
    }
    // A demo model: two entities, attributes, a relationship, a diagram domain.
    std::string Demo(const char* name = "demo.zmf") {
        const std::string path = dir.File(name);
        const SRun run = Run("demo " + path);
        EXPECT_EQ(run.status, 0) << run.err;
        return path;
    }
    // A "name  count" line of `info`.
    static std::string CountLine(const char* name, int count) {
        char line[80];
        std::snprintf(line, sizeof line, "  %-26s %10d\n", name, count);
        return line;
    }
    static bool OneLine(const std::string& text) {
        return !text.empty() && text.find('\n') == text.size() - 1;
    }
    // Every one of `parts` occurs in `text`.
    static void ExpectAll(const std::string& text, std::initializer_list<std::string> parts) {
        for (const std::string& part : parts)
            EXPECT_NE(text.find(part), std::string::npos) << part << " in:\n" << text;
    }

    TempDir dir;
};

// new, demo, and what the reading commands print about the demo: info, check, dump,
// layout, repo, props.
TEST_F(CommandTest, NewDemoAndTheReadingCommands) {
    const std::string fresh = dir.File("new.zmf");
    ASSERT_EQ(Run("new " + fresh).status, 0);
    SRun info = Run("info " + fresh);
    ASSERT_EQ(info.status, 0) << info.err;
    // The 121 built-in usage types and the 7 the view texts add.
    ExpectAll(info.out, {"format version 530", CountLine("ObjectDefinition", 74),
                         CountLine("StringUsageType", 128), "objects per type (1 objects)"});

    const SRun again = Run("new " + fresh);
    EXPECT_EQ(again.status, 2);
    EXPECT_TRUE(OneLine(again.err)) << again.err;
    EXPECT_NE(again.err.find("already exists"), std::string::npos);

    const std::string demo = dir.File("demo.zmf");
    ExpectAll(Run("demo " + demo).out, {"verified: saved, reopened and identical"});
    ExpectAll(Run("info " + demo).out, {CountLine("Entity", 2), CountLine("Attribute", 2),
                                        "DIAGRAM", "(model domain)", "Entity Name"});

    SRun clean = Run("check " + demo);
    EXPECT_EQ(clean.status, 0) << clean.out;
    EXPECT_NE(clean.out.find("0 problems"), std::string::npos);

    const std::pair<const char*, const char*> damages[] = {
        {"UPDATE StringUsage SET String_ID = 999 WHERE String_Usage_ID = 1",
         "usage-without-string"},
        {"UPDATE Algorithm_Property SET Submodel_Algorithm_ID = 99",
         "algorithm-property-without-submodel-algorithm"},
        {"UPDATE Algorithm_Property SET Layout_Property_Name_ID = 99",
         "algorithm-property-without-name"},
        {"UPDATE Algorithm_Property SET Data_Type_ID = 99", "algorithm-property-without-data-type"},
        {"DELETE FROM View_Table", "view-row-without-view"},
        {"UPDATE InterModelObjectLink SET InterModelRelationship_ID = 99",
         "link-without-relationship"},
        {"UPDATE InterModelRelationship SET Global_User_ID = 999", "relationship-without-object"},
        {"UPDATE ObjectModification SET Object_ID = 999", "modification-of-unknown-object"},
        {"UPDATE Delayed_Checkout SET Object_ID = 999", "checkout-of-unknown-object"},
        {"UPDATE MetaClass_Member SET MetaTable_ID = 999", "member-without-meta-table"},
        {"UPDATE Property_Usage SET Property_ID = 999 WHERE Property_Usage_ID = 1",
         "property-value-without-property"},
        {"DELETE FROM Property WHERE Name = 'Status'", "property-value-without-property"},
        {"UPDATE DbPackage SET Model_ID = 999", "code-object-without-model"},
    };
    int n = 0;
    for (auto [sql, kind] : damages) {
        const std::string copy = dir.File("damaged" + std::to_string(++n) + ".zmf");
        std::filesystem::copy_file(demo, copy);
        Sql(copy, sql);
        const SRun run = Run("check " + copy);
        EXPECT_EQ(run.status, 1) << kind;
        EXPECT_NE(run.out.find(std::string(kind) + ": "), std::string::npos) << run.out;
    }
    // A string nobody uses is reported, but is no error.
    const std::string unused = dir.File("unused.zmf");
    std::filesystem::copy_file(demo, unused);
    Sql(unused, "INSERT INTO SmallString VALUES (500, 'nobody uses me', 0)");
    const SRun unusedRun = Run("check " + unused);
    EXPECT_EQ(unusedRun.status, 0);
    EXPECT_NE(unusedRun.out.find("purgeable-string: SmallString: string 500 has no usage"),
              std::string::npos);

    SRun text = Run("dump " + demo + " --table StringUsage");
    ASSERT_EQ(text.status, 0) << text.err;
    ExpectAll(text.out, {"== StringUsage", ":\"CUSTOMER\""});
    EXPECT_EQ(text.out.find("== UniqueObject"), std::string::npos);

    SRun json = Run("dump " + demo + " --format json");
    ASSERT_EQ(json.status, 0) << json.err;
    const auto doc = nlohmann::json::parse(json.out);
    EXPECT_EQ(doc["format_version"], 530);
    const auto& objects = doc["tables"]["UniqueObject"];
    ASSERT_EQ(objects.size(), std::stoul(SqlValue(demo, "SELECT count(*) FROM UniqueObject")));
    EXPECT_EQ(objects[0]["Object_GUID"].get<std::string>().size(), 32u);
    bool resolved = false;
    for (const auto& usage : doc["tables"]["StringUsage"])
        resolved |= usage["String_ID"]["text"] == "ORDER";
    EXPECT_TRUE(resolved);

    const SRun all = Run("layout " + demo);
    ASSERT_EQ(all.status, 0) << all.err;
    const std::string submodel =
        SqlValue(demo, "SELECT Submodel_ID FROM Submodel_Algorithm WHERE Layout_Algorithm_ID = 1");
    ExpectAll(all.out,
              {"submodel " + submodel + ": 1 algorithm\n", "  Layered (Layered Layout Algorithm)\n",
               "    FORCE_NODE_DIST            Integer  60\n"});

    const SRun one = Run("layout " + demo + " --submodel " + submodel);
    ASSERT_EQ(one.status, 0) << one.err;
    EXPECT_NE(one.out.find("FORCE_NODE_DIST_MAX"), std::string::npos);
    EXPECT_EQ(one.out.find("Layered"), std::string::npos);

    const SRun none = Run("layout " + demo + " --submodel 9999");
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(OneLine(none.err)) << none.err;
    EXPECT_EQ(Run("layout " + demo + " --submodel 0").status, 2);
    EXPECT_EQ(Run("layout " + dir.File("missing.zmf")).status, 2);

    // repo: what an exchange would carry.
    const std::string modified =
        SqlValue(demo, "SELECT Object_ID FROM ObjectModification WHERE Modification_Kind = 2");
    const std::string guid =
        SqlValue(demo, "SELECT Object_GUID FROM UniqueObject WHERE Unique_Object_ID = " + modified);
    const SRun repo = Run("repo " + demo);
    ASSERT_EQ(repo.status, 0) << repo.err;
    ExpectAll(repo.out,
              {"modified objects (1):", "deleted objects (1):", "inter-model relationships (1):",
               "pending check-outs (1):", modified + " ", guid});
    EXPECT_EQ(Run("repo " + dir.File("missing.zmf")).status, 2);
    EXPECT_NE(Run("info " + demo).out.find(CountLine("pending check-outs", 1)), std::string::npos);

    const std::string entity = SqlValue(demo, "SELECT TableRow_ID FROM MetaClass_Member");
    const SRun run = Run("props " + demo + " " + entity);
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectAll(run.out, {"(Entity \"CUSTOMER\")", "Table (meta table Entity",
                        "Governance / Status (Text) = \"Approved\"\n",
                        "font 0 = \"Arial\" 10.0 pt bold", "3 properties, 2 display overrides"});

    // A value the definitions no longer accept is still listed, and says so.
    Sql(demo, "UPDATE Property_Usage SET Value = 'Lost' WHERE Value = 'Approved'");
    EXPECT_NE(Run("props " + demo + " " + entity).out.find("\"Lost\"  (no longer accepted)"),
              std::string::npos);
    EXPECT_NE(Run("props " + demo + " 999").out.find("0 properties, 0 display overrides"),
              std::string::npos);
    EXPECT_EQ(Run("props " + demo + " 0").status, 2);
    EXPECT_EQ(Run("props " + dir.File("missing.zmf") + " 1").status, 2);
}

TEST_F(CommandTest, PurgeUpgradeAndBadInputOnTheDemo) {
    const std::string demo = Demo();
    const std::string large = SqlValue(demo, "SELECT count(*) FROM LargeString");
    Sql(demo,
        "INSERT INTO SmallString VALUES (500, 'nobody uses me', 0), (501, 'tiny', 0),"
        " (502, '', 1); INSERT INTO LargeString VALUES (502, '" +
            std::string(260, 'x') + "')");
    const SRun run = Run("purge " + demo);
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectAll(run.out,
              {"dropped string 500: \"nobody uses me\"",
               "dropped string 502: \"" + std::string(60, 'x') + "...\"", "2 strings dropped"});
    EXPECT_EQ(run.out.find("dropped string 501"), std::string::npos);  // under 6 bytes
    EXPECT_EQ(SqlValue(demo, "SELECT count(*) FROM SmallString WHERE String_ID = 500"), "0");
    EXPECT_EQ(SqlValue(demo, "SELECT count(*) FROM LargeString"), large);  // the demo's own
    EXPECT_NE(Run("check " + demo).out.find("0 strings a purge would drop"), std::string::npos);

    // upgrade: older versions, to a new file or in place.
    const std::string guid =
        SqlValue(demo, "SELECT Object_GUID FROM UniqueObject WHERE Unique_Object_ID = 4");
    for (int version : {499, 500, 502}) {
        const std::string old = dir.File("v" + std::to_string(version) + ".zmf");
        std::filesystem::copy_file(demo, old);
        Sql(old, "UPDATE zmf_meta SET value = " + std::to_string(version) +
                     " WHERE key = 'format_version'");
        const std::string upgraded = old + ".new";
        const SRun run = Run("upgrade " + old + " -o " + upgraded);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find("format version " + std::to_string(version) + ", saved as 530"),
                  std::string::npos);
        EXPECT_EQ(SqlValue(upgraded, "SELECT value FROM zmf_meta WHERE key='format_version'"),
                  "530");
        EXPECT_EQ(SqlValue(old, "SELECT value FROM zmf_meta WHERE key='format_version'"),
                  std::to_string(version));  // the original is untouched
        // Files before GUIDs get fresh ones.
        EXPECT_EQ(
            SqlValue(upgraded, "SELECT Object_GUID FROM UniqueObject WHERE Unique_Object_ID = 4") ==
                guid,
            version >= 500);
        EXPECT_EQ(Run("check " + upgraded).status, 0);
    }
    // In place.
    Sql(demo, "UPDATE zmf_meta SET value = 510 WHERE key = 'format_version'");
    ASSERT_EQ(Run("upgrade " + demo).status, 0);
    EXPECT_EQ(SqlValue(demo, "SELECT value FROM zmf_meta WHERE key='format_version'"), "530");

    // Bad input: one line and status 2, nothing written.
    const std::string missing = dir.File("missing.zmf");
    const std::string text = dir.File("text.zmf");
    std::ofstream(text) << "this is not a model file\n";
    const std::string truncated = dir.File("truncated.zmf");
    std::filesystem::copy_file(demo, truncated);
    std::filesystem::resize_file(truncated, std::filesystem::file_size(demo) - 1000);

    const std::string cases[] = {"info " + missing,
                                 "check " + missing,
                                 "dump " + missing,
                                 "purge " + text,
                                 "upgrade " + text,
                                 "info " + truncated,
                                 "dump " + demo + " --table NoSuchTable",
                                 "dump " + demo + " --format xml",
                                 "info " + demo + " --bogus",
                                 "bogus",
                                 "",
                                 "gen " + dir.File("g.zmf") + " --objects many"};
    for (const std::string& args : cases) {
        const SRun run = Run(args);
        EXPECT_EQ(run.status, 2) << args;
        EXPECT_TRUE(OneLine(run.err)) << args << ": " << run.err;
        EXPECT_TRUE(run.out.empty()) << args;
    }
    EXPECT_EQ(ReadText(text), "this is not a model file\n");  // nothing written
    EXPECT_FALSE(std::filesystem::exists(dir.File("g.zmf")));
    EXPECT_EQ(Run("info --help").status, 0);
}

TEST_F(CommandTest, GenBuildsASoundModel) {
    const std::string path = dir.File("gen.zmf");
    const SRun run = Run("gen " + path + " --objects 3000 --seed 7");
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectAll(run.out, {"3000 objects"});
    EXPECT_EQ(SqlValue(path, "SELECT count(*) FROM UniqueObject"), "3000");
    EXPECT_EQ(Run("check " + path).status, 0);
    EXPECT_EQ(Run("gen " + dir.File("bad.zmf") + " --objects 1").status, 2);
}

// The system items of a platform come from the templates beside the command; a
// copy of the command without them reports each missing file.
TEST_F(CommandTest, SysMacrosCreatesThenRefreshes) {
    const std::string model = dir.File("sys.zmf");
    ASSERT_EQ(Run("new " + model).status, 0);
    SRun run = Run("sysmacros " + model + " --platform 3");
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectAll(run.out, {"new library ", "Db2InsTrigger", "6 created, 0 refreshed, 0 missing"});
    ExpectAll(Run("sysmacros " + model + " --platform 3").out,
              {"0 created, 6 refreshed, 0 missing"});
    EXPECT_EQ(Run("check " + model).status, 0);
    EXPECT_EQ(Run("sysmacros " + model + " --platform 4").status, 2);

#ifndef TESSMETA_SHARED_LIBS  // a shared library finds its templates beside itself
    const std::string alone = dir.File("tessmeta");
    std::filesystem::copy_file(TESSMETA_COMMAND, alone);
    ASSERT_EQ(Run("new " + dir.File("bare.zmf")).status, 0);
    const SRun bare =
        RunProgram(alone, "sysmacros " + dir.File("bare.zmf") + " --platform 1", dir.Path());
    EXPECT_EQ(bare.status, 1);
    EXPECT_NE(bare.err.find("Macro File: " + dir.Path() + "/SysMacros/SSUpdtTrigLib.bas not found"),
              std::string::npos)
        << bare.err;
#endif
}

}  // namespace
