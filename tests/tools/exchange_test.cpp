// tessmeta export, import and diff, run as a program on temporary files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "support/command_run.h"
#include "support/test_support.h"

using Json = nlohmann::ordered_json;
using namespace tessmeta::test;

namespace {

class ExchangeTest : public ::testing::Test {
  protected:
    SRun Run(const std::string& args) { return RunProgram(TESSMETA_COMMAND, args, dir.Path()); }
    std::string Write(const std::string& name, const std::string& text) {
        const std::string path = dir.File(name);
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    Json Export(const std::string& model) {
        const SRun run = Run("export " + model);
        EXPECT_EQ(run.status, 0) << run.err;
        return Json::parse(run.out);
    }
    // Imports `doc` as a new model file and returns its path.
    std::string Import(const Json& doc, const std::string& name) {
        const std::string model = dir.File(name + ".zmf");
        const SRun run = Run("import " + Write(name + ".json", doc.dump()) + " -o " + model);
        EXPECT_EQ(run.status, 0) << run.err;
        return model;
    }
    // export -> import -> export gives the same bytes, the same rows and no diff.
    void ExpectRoundTrip(const std::string& model) {
        const std::string json = dir.File("first.json"), copy = dir.File("copy.zmf");
        ASSERT_EQ(Run("export " + model + " -o " + json).status, 0);
        ASSERT_EQ(Run("import " + json + " -o " + copy).status, 0) << ReadText(dir.File("stderr"));
        const SRun again = Run("export " + copy);
        EXPECT_EQ(again.out, ReadText(json));
        EXPECT_EQ(Run("dump " + copy).out, Run("dump " + model).out);
        EXPECT_EQ(Run("diff " + model + " " + copy).status, 0);
        std::filesystem::remove(copy);
    }
    std::string Demo() {
        const std::string path = dir.File("demo.zmf");
        if (!std::filesystem::exists(path)) {
            EXPECT_EQ(Run("demo " + path).status, 0);
        }
        return path;
    }

    TempDir dir;
};

// Every row of `table` whose column holds `from` gets `to`.
void Replace(Json& doc, const char* table, const char* column, const Json& from, const Json& to) {
    for (Json& row : doc["tables"][table])
        if (row[column] == from) row[column] = to;
}

TEST_F(ExchangeTest, RoundTripsAreLosslessAndDiffReportsWhatChanged) {
    ExpectRoundTrip(Demo());

    // Every table filled: the demo leaves these empty.
    Json doc = Export(Demo());
    const Json text = {{"id", 1}, {"text", doc["tables"]["SmallString"][0]["Text"]}};
    doc["tables"]["Configuration_Option"].push_back(
        {{"Configuration_Option_ID", 1}, {"Name", "Wrap"}, {"Description", "\u00e9t\u00e9"}});
    doc["tables"]["MetaTableConfiguration"].push_back({{"MetaTableConfiguration_ID", 1},
                                                       {"MetaTable_ID", 1},
                                                       {"Configuration_Option_ID", 1},
                                                       {"Value", "on"}});
    doc["tables"]["Valid_Property_Value"].push_back(
        {{"Valid_Property_Value_ID", 1}, {"Valid_Property_ID", 1}, {"Property_Value_ID", 1}});
    doc["tables"]["Reusable_Procedure"].push_back({{"Reusable_Procedure_ID", 1},
                                                   {"Dictionary_Object_ID", 1},
                                                   {"Name", text},
                                                   {"Description", 0},
                                                   {"Value", text},
                                                   {"Numeric_Attribute", 4294967295u},
                                                   {"Global_User_ID", 0}});
    for (const auto& [name, rows] : doc["tables"].items())
        EXPECT_FALSE(rows.empty()) << name;
    ExpectRoundTrip(Import(doc, "full"));

    // diff reports what changed.
    const Json base = Export(Demo());
    const std::string original = Import(base, "base");
    const Json& object = base["tables"]["UniqueObject"].back();
    const std::string guid = object["Object_GUID"];

    Json deleted = base;
    deleted["tables"]["UniqueObject"].erase(deleted["tables"]["UniqueObject"].size() - 1);

    Json renamed = base;  // one text changed, wherever it is used inline
    const Json& first = base["tables"]["SmallString"][0];
    const Json oldText = {{"id", first["String_ID"]}, {"text", first["Text"]}};
    const Json newText = {{"id", first["String_ID"]}, {"text", "Renamed"}};
    renamed["tables"]["SmallString"][0]["Text"] = "Renamed";
    for (auto& [table, rows] : renamed["tables"].items())
        for (Json& row : rows)
            for (auto& [column, value] : row.items())
                if (value == oldText) value = newText;

    Json added = base;  // one dictionary item more
    Json item = added["tables"]["Reference_Value"][0];
    item["Reference_Value_ID"] = 999;
    item["Global_User_ID"] = 0;
    added["tables"]["Reference_Value"].push_back(item);

    Json moved = base;  // a new version of one object
    Replace(moved, "UniqueObject", "Version_GUID", object["Version_GUID"],
            "00000000000000000000000000000001");

    const struct {
        const char* name;
        const Json* doc;
        std::string expected;
    } cases[] = {
        {"deleted", &deleted, "object removed " + guid},
        {"renamed", &renamed, oldText["text"].dump() + " -> \"Renamed\""},
        {"added", &added, "Reference_Value added key 999"},
        {"moved", &moved, "object changed " + guid + ": version GUID moved"},
    };
    for (const auto& c : cases) {
        const std::string other = Import(*c.doc, c.name);
        const SRun run = Run("diff " + original + " " + other);
        EXPECT_EQ(run.status, 1) << c.name;
        EXPECT_NE(run.out.find(c.expected), std::string::npos) << c.name << ":\n" << run.out;
        const SRun json = Run("diff --format json " + original + " " + other);
        EXPECT_EQ(json.status, 1);
        EXPECT_FALSE(Json::parse(json.out)["equal"].get<bool>()) << c.name;
    }
    EXPECT_EQ(Run("diff " + original + " " + dir.File("missing.zmf")).status, 2);
}

// Two models with the same objects under other keys and string ids are equal;
// a reference moved to the other object is not.
TEST_F(ExchangeTest, DiffMatchesByGuidNotByKey) {
    auto model = [](int k1, int k2, int attachment, int string, int owner) {
        auto object = [](int key, const char* guid, int model) {
            return Json{{"Unique_Object_ID", key},
                        {"Object_Type_ID", 1},
                        {"Model_ID", model},
                        {"Object_Domain_ID", 0},
                        {"Plex_ID_1", 0},
                        {"Plex_ID_2", 0},
                        {"Modification_Date", "null"},
                        {"Creation_Time", 0},
                        {"Repository_Status", 0},
                        {"Reserved", 0},
                        {"Object_GUID", guid},
                        {"Version_GUID", guid}};
        };
        const Json text = {{"id", string}, {"text", "Note"}};
        return Json{
            {"format_version", 530},
            {"key_counters", Json::array()},
            {"tables",
             {{"SmallString", {{{"String_ID", string}, {"Text", "Note"}, {"Large_Flag", 0}}}},
              {"UniqueObject", {object(k1, "g1", 0), object(k2, "g2", k1)}},
              {"Attachment",
               {{{"Attachment_ID", attachment},
                 {"Dictionary_Object_ID", 0},
                 {"Attachment_Type_ID", 0},
                 {"Name", text},
                 {"Description", 0},
                 {"Value", text},
                 {"Numeric_Attribute", 0},
                 {"Global_User_ID", owner}}}}}}};
    };
    const std::string a = Import(model(1, 2, 1, 1, 2), "a");
    const std::string b = Import(model(7, 3, 5, 9, 3), "b");
    const SRun same = Run("diff " + a + " " + b);
    EXPECT_EQ(same.status, 0) << same.out;
    const std::string c = Import(model(7, 3, 5, 9, 7), "c");
    const SRun moved = Run("diff " + a + " " + c);
    EXPECT_EQ(moved.status, 1);
    EXPECT_NE(moved.out.find("Attachment added g1"), std::string::npos) << moved.out;
}

// Bad documents: exit status 2, one line naming the place, no file.
TEST_F(ExchangeTest, ImportRefusesBadDocuments) {
    const std::string good =
        R"({"format_version":530,"key_counters":[[216,1]],"tables":{"SmallString":[)"
        R"({"String_ID":1,"Text":"a","Large_Flag":0}],"Attachment":[{"Attachment_ID":1,)"
        R"("Dictionary_Object_ID":0,"Attachment_Type_ID":0,"Name":{"id":1,"text":"a"},)"
        R"("Description":0,"Value":0,"Numeric_Attribute":0,"Global_User_ID":0}]}})";
    auto with = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        const auto at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return text.replace(at, from.size(), to);
    };
    const struct {
        std::string doc, message;
    } cases[] = {
        {"{\"format_version\": 530,", "bad JSON at byte"},
        {"[]", ": /: expected an object"},
        {with(R"("key_counters":[[216,1]],)", ""), "/: missing member key_counters"},
        {with(R"("tables":{)", R"("extra":1,"tables":{)"), "/extra: unknown member"},
        {with("[216,1]", "[999999,1]"), "/key_counters/0/0: expected an integer from 0 to"},
        {with("\"SmallString\"", "\"Small/String\""), "/tables/Small~1String: unknown table"},
        {with(R"("Large_Flag":0)", R"("Large_Flag":0,"Size":1)"),
         "/tables/SmallString/0/Size: no such column"},
        {with(R"(,"Large_Flag":0)", ""), "/tables/SmallString/0: missing column Large_Flag"},
        {with(R"("Attachment_ID":1)", R"("Attachment_ID":4294967296)"),
         "/tables/Attachment/0/Attachment_ID: expected an integer from 0 to 4294967295"},
        {with(R"("Attachment_ID":1)", R"("Attachment_ID":1.5)"),
         "/tables/Attachment/0/Attachment_ID: expected an integer"},
        {with(R"("Text":"a")", R"("Text":"€")"),
         "/tables/SmallString/0/Text: has a character outside Latin-1"},
        {with(R"("id":1)", R"("id":2)"), "/tables/Attachment/0/Name/id: no string 2"},
        {with(R"("text":"a")", R"("text":"b")"),
         "/tables/Attachment/0/Name/text: differs from the text of string 1"},
        {with(R"("Description":0)", R"("Description":"x")"),
         "/tables/Attachment/0/Description: expected 0 or"},
    };
    ASSERT_EQ(Run("import " + Write("good.json", good) + " -o " + dir.File("good.zmf")).status, 0);
    for (const auto& c : cases) {
        const std::string model = dir.File("bad.zmf");
        const SRun run = Run("import " + Write("bad.json", c.doc) + " -o " + model);
        EXPECT_EQ(run.status, 2) << c.message;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_FALSE(std::filesystem::exists(model)) << c.message;
    }
    EXPECT_EQ(Run("import " + dir.File("none.json") + " -o " + dir.File("x.zmf")).status, 2);
}

}  // namespace
