// Saving and loading the name space: round trips through real .zmf files, the purge
// rules, strings-only loads, giving the storage tables back, and a failed insert in
// each table's save.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "name_space_fixtures.h"
#include "support/test_support.h"

using namespace tessmeta::test;

namespace {

const std::string kLong1(300, 'p'), kLong2(255, 'q');

// Strings of every kind: ids 1 to 8 in this order.
void Populate(CNameSpaceMgr& ns) {
    const int name = ns.GetEntityNameUsageId(), def = ns.GetEntityDefinitionUsageId();
    ns.AddString("Customer", 1, name);     // 1 used
    ns.AddString(kLong1.c_str(), 1, def);  // 2 long, used
    ns.AddConstString("tiny");             // 3 four bytes, unused
    ns.AddConstString("fiveB");            // 4 five bytes, unused
    ns.AddConstString("sixsix");           // 5 six bytes, unused
    ns.AddConstString(kLong2.c_str());     // 6 long, unused
    ns.AddString("Order", 2, name);        // 7 used
    ns.AddString("CUSTOMER", 3, name);     // 8 case variant of 1, used
}

void SaveAndCommit(CNameSpaceMgr& ns, CZmfFile& file, int writeUsages, int purge) {
    ns.Save(&file, writeUsages, purge);
    ns.ReleaseStorageTables(0);
    ASSERT_TRUE(file.Commit()) << file.GetLastError();
}

TEST(NameSpacePersistence, RoundTripThroughAFile) {
    TempDir dir;
    const std::string path = dir.File("model.zmf");
    std::vector<std::pair<LONG, std::string>> strings;
    {
        auto file = CZmfFile::Create(path);
        CNameSpaceMgr ns(file.get());
        ns.Init(0, 0, 0, 1, 0);
        Populate(ns);
        ns.AddString("Order", 4, ns.GetTableNameUsageId());
        ns.DeleteString(3, ns.GetEntityNameUsageId());  // the usage goes, the string stays
        strings = AllStrings(ns);
        SaveAndCommit(ns, *file, 1, 0);
    }
    auto file = CZmfFile::Open(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(ReadSmall(*file), (std::vector<SmallRow>{{1, "Customer", 0},
                                                       {2, "", 1},
                                                       {3, "tiny", 0},
                                                       {4, "fiveB", 0},
                                                       {5, "sixsix", 0},
                                                       {6, "", 1},
                                                       {7, "Order", 0},
                                                       {8, "CUSTOMER", 0}}));
    EXPECT_EQ(ReadLarge(*file), (std::vector<LargeRow>{{2, kLong1}, {6, kLong2}}));
    EXPECT_EQ(ReadUsages(*file),
              (std::vector<UsageRow>{{1, 1, 1, 1}, {2, 1, 3, 2}, {3, 2, 1, 7}, {5, 4, 2, 7}}));
    const auto types = ReadUsageTypes(*file);
    ASSERT_EQ(types.size(), 121u);
    EXPECT_EQ(types.back(), TypeRow(121, "Default Constraint Name"));

    CNameSpaceMgr ns(file.get());
    ns.Init(0, 0, 0, 1, 0);
    EXPECT_EQ(AllStrings(ns), strings);
    EXPECT_EQ(ns.GetStringIdFromStringNoCase("customer"), 8u);
    EXPECT_EQ(ns.GetStringIdFromObjectAndUsageTypeIds(1, ns.GetEntityDefinitionUsageId()), 2);
    EXPECT_EQ(ObjectsUsing(ns, ns.GetTableNameUsageId(), 7), (std::vector<int>{4}));
    // Counters continue past the loaded ids.
    EXPECT_EQ(ns.AddString("fresh", 9, 1), 9);
    EXPECT_NE(ns.GetStringUsageTable().GetRow(6), nullptr);
}

TEST(NameSpacePersistence, PurgeRules) {
    TempDir dir;
    auto file = CZmfFile::Create(dir.File("purge.zmf"));
    CNameSpaceMgr ns(file.get());
    ns.Init(0, 0, 0, 0, 0);
    Populate(ns);
    // Usages are not written, yet the ones in memory keep their strings.
    SaveAndCommit(ns, *file, 0, 1);
    EXPECT_EQ(ReadSmall(*file), (std::vector<SmallRow>{{1, "Customer", 0},
                                                       {2, "", 1},
                                                       {3, "tiny", 0},
                                                       {4, "fiveB", 0},
                                                       {7, "Order", 0},
                                                       {8, "CUSTOMER", 0}}));
    EXPECT_EQ(ReadLarge(*file), (std::vector<LargeRow>{{2, kLong1}}));
    EXPECT_TRUE(ReadUsages(*file).empty());
    // Purged strings are gone from memory too, and their ids are not handed out again.
    EXPECT_EQ(TextOf(ns, 5), kInvalid);
    EXPECT_EQ(TextOf(ns, 6), kInvalid);
    EXPECT_EQ(ns.GetStringIdFromStringNoCase(kLong2.c_str()), 0u);
    EXPECT_EQ(ns.AddConstString("sixsix"), 9);
    // With the last long string purged, the empty text finds the earlier one.
    EXPECT_EQ(ns.GetStringIdFromString(""), 2u);

    // Once their usages are removed, the 6-byte and the long strings go as well.
    ns.DeleteString(1, ns.GetEntityDefinitionUsageId());
    ns.DeleteString(1, ns.GetEntityNameUsageId());
    ns.DeleteString(3, ns.GetEntityNameUsageId());
    SaveAndCommit(ns, *file, 1, 1);
    EXPECT_EQ(ReadSmall(*file),
              (std::vector<SmallRow>{{3, "tiny", 0}, {4, "fiveB", 0}, {7, "Order", 0}}));
    EXPECT_TRUE(ReadLarge(*file).empty());
    EXPECT_EQ(ReadUsages(*file), (std::vector<UsageRow>{{3, 2, 1, 7}}));
    EXPECT_EQ(ns.GetStringIdFromString(""), 0u);
    // Without purging every string is written, used or not.
    ns.AddConstString("unused long enough");
    SaveAndCommit(ns, *file, 1, 0);
    EXPECT_EQ(ReadSmall(*file).size(), 4u);
}

// "Flush to zmflib Failure at line: <a line number>\n"
bool IsFlushFailure(const std::string& trace) {
    const std::string prefix = "Flush to zmflib Failure at line: ";
    return trace.size() > prefix.size() + 1 && trace.starts_with(prefix) && trace.back() == '\n' &&
           trace[prefix.size()] != '0' &&
           std::all_of(trace.begin() + static_cast<long>(prefix.size()), trace.end() - 1,
                       [](char c) { return c >= '0' && c <= '9'; });
}

// A failed insert ends the save of its own table only: traced, result 0, the rows
// written before it stay; the other tables are saved in full, memory keeps all.
TEST(NameSpacePersistence, FailedInsertInEachTableSave) {
    const std::vector<std::pair<std::string, size_t>> tables{
        {"SmallString", 8}, {"LargeString", 2}, {"StringUsage", 4}, {"StringUsageType", 121}};
    for (const auto& [failing, rows] : tables) {
        SCOPED_TRACE(failing);
        auto file = CZmfFile::OpenMemory();
        CNameSpaceMgr ns(file.get());
        ns.Init(0, 0, 0, 0, 0);
        Populate(ns);
        file->GetTable(failing.c_str())->FailInsertCalls({2});
        CapturedOutput output;
        ns.Save(file.get(), 1, 0);
        ASSERT_EQ(output.Traces().size(), 1u);
        EXPECT_TRUE(IsFlushFailure(output.Traces()[0])) << output.Traces()[0];
        const std::vector<size_t> counts{ReadSmall(*file).size(), ReadLarge(*file).size(),
                                         ReadUsages(*file).size(), ReadUsageTypes(*file).size()};
        for (size_t i = 0; i < tables.size(); ++i)
            EXPECT_EQ(counts[i], tables[i].first == failing ? 1u : tables[i].second);
        file->GetTable(failing.c_str())->FailInsertCalls({});
        ns.Save(file.get(), 1, 0);
        EXPECT_EQ(ReadSmall(*file).size() + ReadUsageTypes(*file).size(), 8u + 121u);
    }
}

}  // namespace
