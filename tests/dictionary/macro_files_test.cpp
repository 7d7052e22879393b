// System libraries and triggers from macro template files: line ends, missing
// files, platform codes, refreshing, exact names, and the folder beside the
// program.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "dictionary/macro_files.h"
#include "dictionary_test_util.h"
#include "platform/module.h"
#include "support/test_support.h"

using tessmeta::test::CapturedOutput;
using tessmeta::test::SDictFixture;
using tessmeta::test::TempDir;

namespace {

const char* const kPlatformFiles[3][6] = {
    {"SSUpdtTrigLib.bas", "SSDelTrigLib.bas", "SSInsTrigLib.bas", "SSUpdtTrig.bas", "SSDelTrig.bas",
     "SSInsTrig.bas"},
    {"OraUpdtTrigLib.bas", "OraDelTrigLib.bas", "OraInsTrigLib.bas", "OraUpdtTrig.bas",
     "OraDelTrig.bas", "OraInsTrig.bas"},
    {"Db2UpdtTrigLib.bas", "Db2DelTrigLib.bas", "Db2InsTrigLib.bas", "Db2UpdtTrig.bas",
     "Db2DelTrig.bas", "Db2InsTrig.bas"}};

void Write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::vector<DWORD> Keys(const CList<DWORD, DWORD>& list) {
    std::vector<DWORD> keys;
    for (POSITION pos = list.GetHeadPosition(); pos;)
        keys.push_back(list.GetNext(pos));
    return keys;
}

// A model whose macro folder is a scratch folder holding the files of a platform,
// each with its own name as its one line.
struct SMacroFixture : SDictFixture {
    TempDir dir;
    CapturedOutput output;
    explicit SMacroFixture(int platform = 0) {
        dict.SetMacroFolder(dir.Path().c_str());  // without the trailing '/'
        if (platform)
            for (const char* file : kPlatformFiles[platform - 1])
                Write(dir.File(file), std::string(file) + "\n");
    }
    CString Library(DWORD key) {
        CString text;
        dict.GetLibraryValue(key, text);
        return text;
    }
};

TEST(MacroFiles, LinesEndInCarriageReturnLineFeed) {
    TempDir dir;
    const struct {
        const char* bytes;
        const char* text;
    } cases[] = {{"", ""},
                 {"one", "one\r\n"},
                 {"a\nb", "a\r\nb\r\n"},
                 {"a\r\nb\r\n", "a\r\nb\r\n"},
                 {"a\n\n", "a\r\n\r\n"},
                 {"\n", "\r\n"},
                 {"tab\there\r\n", "tab\there\r\n"}};
    for (const auto& c : cases) {
        const std::string path = dir.File("case.bas");
        Write(path, c.bytes);
        CString text("stale");
        ASSERT_TRUE(tessmeta::ReadMacroText(path.c_str(), text)) << c.bytes;
        EXPECT_EQ(text, CString(c.text)) << c.bytes;
    }
}

TEST(MacroFiles, PlatformTwoMakesThreeLibrariesThenRefreshesThem) {
    SMacroFixture f(2);
    CList<DWORD, DWORD> newIds;
    EXPECT_TRUE(f.dict.InsertSystemTriggerLibs(2, newIds));
    const std::vector<DWORD> keys = Keys(newIds);
    ASSERT_EQ(keys.size(), 3u);
    const char* names[] = {"OraUpdtTrigLib", "OraDelTrigLib", "OraInsTrigLib"};
    for (int i = 0; i < 3; ++i) {
        const CKelDictLibrary* row = f.dict.GetLibraryRow(keys[i]);
        ASSERT_TRUE(row);
        EXPECT_EQ(row->GetName(), CString(names[i]));
        EXPECT_EQ(row->GetValue(), CString(kPlatformFiles[1][i]) + "\r\n");
        EXPECT_EQ(static_cast<LONG>(row->Integer_Field), 1);
        EXPECT_EQ(f.dict.GetData_Dictionary_ID(row->Dictionary_Object_ID), f.main);
    }
    Write(f.dir.File("OraDelTrigLib.bas"), "changed");
    CString description("kept");
    CString name(names[1]), text;
    f.dict.UpdateLibrary(keys[1], name, description, 5, text);
    EXPECT_TRUE(f.dict.InsertSystemTriggerLibs(2, newIds));
    EXPECT_EQ(Keys(newIds), keys);  // nothing new
    EXPECT_EQ(f.Library(keys[1]), CString("changed\r\n"));
    CString stored;
    EXPECT_TRUE(f.dict.GetLibraryDesc(keys[1], stored));
    EXPECT_EQ(stored, CString("kept"));
    EXPECT_EQ(static_cast<LONG>(f.dict.GetLibraryRow(keys[1])->Integer_Field), 5);
    EXPECT_TRUE(f.dict.FindSystemLib("OraDelTrigLib", stored));
    EXPECT_EQ(stored, CString("changed\r\n"));
    EXPECT_TRUE(f.output.MessageBoxes().empty());
}

TEST(MacroFiles, AMissingFileIsReportedAndSkipped) {
    SMacroFixture f(1);
    std::filesystem::remove(f.dir.File("SSDelTrig.bas"));
    CList<DWORD, DWORD> newIds;
    EXPECT_TRUE(f.dict.InsertSystemTriggers(1, newIds));
    ASSERT_EQ(f.output.MessageBoxes(), (std::vector<std::string>{"Macro File: " + f.dir.Path() +
                                                                 "/SSDelTrig.bas not found"}));
    const std::vector<DWORD> keys = Keys(newIds);
    ASSERT_EQ(keys.size(), 2u);
    CString name, description, text;
    int integerField = 0;
    DWORD first = 0, event = 0, second = 0;
    ASSERT_TRUE(f.dict.GetTriggerData(keys[0], name, description, integerField, first, event, text,
                                      second));
    EXPECT_EQ(name, CString("SSUpdtTrigger"));
    EXPECT_EQ(integerField * 100 + static_cast<int>(first * 10 + event), 112);
    ASSERT_TRUE(f.dict.GetTriggerData(keys[1], name, description, integerField, first, event, text,
                                      second));
    EXPECT_EQ(name, CString("SSInsTrigger"));
    EXPECT_EQ(event, 1u);
    EXPECT_FALSE(f.dict.FindSystemTrigger("SSDelTrigger", text));
}

// The shipped templates are copied beside the test program by the build, where the
// library looks for them by default.
TEST(MacroFiles, TheShippedTemplatesAreFoundBesideTheProgram) {
    SDictFixture f;
    char program[300] = {};
    GetModuleFileNameA(nullptr, program, sizeof program);
    const std::string expected =
        std::filesystem::path(program).parent_path().string() + "/SysMacros/";
    EXPECT_EQ(std::string(f.dict.GetMacroFolder().GetString()), expected);
    CapturedOutput output;
    for (int platform = 1; platform <= 3; ++platform) {
        CList<DWORD, DWORD> libraries, triggers;
        f.dict.InsertSystemTriggerLibs(platform, libraries);
        f.dict.InsertSystemTriggers(platform, triggers);
        EXPECT_EQ(libraries.GetCount() + triggers.GetCount(), 6) << platform;
    }
    EXPECT_TRUE(output.MessageBoxes().empty());
    CString text;
    ASSERT_TRUE(f.dict.FindSystemTrigger(CDictObjectMgr::DB2INSTRIGNAME, text));
    EXPECT_EQ(text.Find("'#Uses Db2InsTrigLib\r\n"), 0);
    f.dict.SetMacroFolder("");
    EXPECT_EQ(std::string(f.dict.GetMacroFolder().GetString()), expected);
}

}  // namespace
