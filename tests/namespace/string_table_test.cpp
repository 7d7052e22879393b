// The string table: the hashes of its maps, the long-string boundary, case and
// duplicates, ids, and a property test against a model made of std::maps.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "name_space_fixtures.h"
#include "namespace/name_space_maps.h"

using namespace tessmeta::test;
using tessmeta::EqualNoCase;
using tessmeta::HashStringUsage;
using tessmeta::HashText;
using tessmeta::HashTextNoCase;

namespace {

TEST(NameSpaceHash, FixedInputs) {
    // Usage key: usage type * 33 + object id, wrapping.
    EXPECT_EQ(HashStringUsage(7, 3), 3u * 33 + 7);
    EXPECT_EQ(HashStringUsage(1, 0x80000000u), 0x80000001u);

    // Against the platform's text hash and MakeUpper, over random bytes and every
    // length around the hash's eight-byte steps.
    std::mt19937 rng(5);
    for (int n = 0; n < 2000; ++n) {
        std::string text(rng() % 40, '\0');
        for (char& c : text)
            c = static_cast<char>(rng() % 256);
        CString upper(std::string_view{text});
        upper.MakeUpper();
        ASSERT_EQ(HashText(text), CMapHashText(text));
        ASSERT_EQ(HashTextNoCase(text), CMapHashText(upper.View()));
        // Every other case flips only letters, so that both answers come up.
        std::string other = text;
        for (char& c : other) {
            const bool letter = (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
            if (rng() % 2 && (letter || n % 2)) c = static_cast<char>(c ^ 0x20);
        }
        CString otherUpper(std::string_view{other});
        otherUpper.MakeUpper();
        ASSERT_EQ(EqualNoCase(text, other), upper == otherUpper) << n;
        ASSERT_TRUE(n % 2 || EqualNoCase(text, other)) << n;
    }
}

TEST(StringTable, LongStringBoundaryAndTheEmptyText) {
    SLoaded m;
    CNameSpaceMgr& ns = *m.ns;
    // The empty text before any long string: nothing to find, nothing interned.
    EXPECT_EQ(ns.GetStringIdFromString(""), 0u);
    EXPECT_EQ(ns.AddConstString(""), 0);
    EXPECT_EQ(ns.AddConstString(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(ns.GetStringTablePair().GetSmallTable().GetCount(), 0);

    const std::string s254(254, 'x'), l255(255, 'y'), l300 = std::string(299, 'z') + "Q";
    EXPECT_EQ(ns.AddToStringTable(s254.c_str()), 1);
    EXPECT_EQ(ns.AddToStringTable(CString(l255.c_str())), 2);
    EXPECT_EQ(ns.AddConstString(l300.c_str()), 3);
    EXPECT_EQ(ns.AddToStringTable(l255.c_str()), 2);

    // 254 bytes stay small; from 255 on the small row is empty, flagged, and the
    // text is a large row of the same id.
    const CStringTablePair& pair = ns.GetStringTablePair();
    for (LONG id : {1, 2}) {
        ASSERT_NE(pair.GetSmallTable().FindById(id), nullptr);
        EXPECT_EQ(pair.GetSmallTable().FindById(id)->GetText(), id == 1 ? s254 : "");
        EXPECT_EQ(pair.GetSmallTable().FindById(id)->Large_Flag, id - 1);
        EXPECT_EQ(pair.GetLargeTable().FindById(id) != nullptr, id == 2);
    }
    EXPECT_EQ(pair.GetLargeTable().FindById(2)->GetText(), l255);
    EXPECT_EQ(pair.GetLargeTable().GetCount(), 2);

    EXPECT_EQ(TextOf(ns, 1), s254);
    EXPECT_EQ(TextOf(ns, 3), l300);
    CString lower(l300.c_str());
    lower.MakeLower();
    EXPECT_EQ(ns.GetStringIdFromString(lower), 0u);
    EXPECT_EQ(ns.GetStringIdFromStringNoCase(lower), 3u);

    // Long strings' small rows carry the empty text: the empty text finds the most
    // recently added long string. (Case and duplicates: against a model below.)
    const int long4 = ns.AddToStringTable(std::string(260, 'a').c_str());
    EXPECT_EQ(ns.GetStringIdFromString(""), static_cast<ULONG>(long4));
    const int long5 = ns.AddToStringTable(std::string(270, 'b').c_str());
    EXPECT_EQ(ns.GetStringIdFromStringNoCase(""), static_cast<ULONG>(long5));
    EXPECT_EQ(ns.AddConstString(""), 0);
    EXPECT_EQ(ns.DeleteConstString(s254.c_str()), 0);
    EXPECT_EQ(ns.GetStringIdFromString(s254.c_str()), 1u);

    EXPECT_EQ(TextOf(ns, 0), "");
    EXPECT_EQ(TextOf(ns, -1), kInvalid);
}

TEST(StringTable, IdsLoadedCopiedAndIterated) {
    const std::string longText(400, 'L');
    SStoredRows rows;
    rows.small = {{5, "five", 0}, {9, "", 1},    {3, "three", 0}, {7, "Three", 0},
                  {2, "dup", 0},  {4, "dup", 0}, {8, "first", 0}, {8, "second", 0}};
    rows.large = {{9, longText}};
    SLoaded m(rows, 0, 0, 101);
    CNameSpaceMgr& ns = *m.ns;
    // The counter stands past the largest id loaded, whatever the load order.
    EXPECT_EQ(ns.AddToStringTable("new"), 10);
    EXPECT_EQ(ns.GetStringIdFromString(longText.c_str()), 9u);
    // Among loaded rows with equal keys the later row is found.
    EXPECT_EQ(ns.GetStringIdFromStringNoCase("THREE"), 7u);
    EXPECT_EQ(ns.GetStringIdFromString("dup"), 4u);
    EXPECT_EQ(TextOf(ns, 8), "second");

    // Copying: a taken id changes nothing; a free id is used as given; 0 is refused.
    EXPECT_EQ(ns.CopyToStringTable("other", 5), 1);
    EXPECT_EQ(ns.CopyToStringTable(CString("copied"), 40), 1);
    EXPECT_EQ(ns.CopyToStringTable("zero", 0), 0);
    const std::vector<std::pair<LONG, std::string>> expected{
        {5, "five"}, {9, longText}, {3, "three"},  {7, "Three"}, {2, "dup"},
        {4, "dup"},  {8, "first"},  {8, "second"}, {10, "new"},  {40, "copied"}};
    EXPECT_EQ(AllStrings(ns), expected);
}

// An id far beyond the row count, loaded first, makes the load file the id map
// while it still reads: the maps still get the stored row count (or the size asked).
TEST(StringTable, MapsFiledDuringTheLoadAreSizedAsAfterIt) {
    SStoredRows rows;
    rows.small = {{100000, "far", 0}, {1, "one", 0}, {2, "two", 0}};
    for (const unsigned int buckets : {0u, 7u}) {
        SLoaded m(rows, 0, 0, buckets);
        const auto& table = m.ns->GetStringTablePair().GetSmallTable();
        EXPECT_EQ(table.GetIdMap().GetHashTableSize(), buckets ? buckets : 3u);
        EXPECT_EQ(table.GetTextMap().GetHashTableSize(), buckets ? buckets : 3u);
        EXPECT_EQ(TextOf(*m.ns, 100000) + TextOf(*m.ns, 1) + TextOf(*m.ns, 2), "faronetwo");
    }
}

// A long string is found by id from the mark in its slot, from the map while its id
// lies beyond the slots, and from the slot again once the slots grow over it.
TEST(StringTable, LongStringsFoundByIdInAndBeyondTheSlots) {
    const std::string far(300, 'F'), near(260, 'N'), nearer(261, 'M');
    SStoredRows rows;
    rows.small = {{100000, "", 1}, {5000, "", 1}};  // both beyond the first slots
    for (ULONG id = 1; id <= 600; ++id)
        rows.small.push_back({id, std::to_string(id), 0});
    rows.small.push_back({4999, "", 1});  // the slots grow over 5000 here
    rows.large = {{100000, far}, {5000, near}, {4999, nearer}};
    SLoaded m(rows);
    EXPECT_EQ(
        TextOf(*m.ns, 100000) + TextOf(*m.ns, 5000) + TextOf(*m.ns, 4999) + TextOf(*m.ns, 600),
        far + near + nearer + "600");
}

// Random interning and lookups against a model made of std::maps.
TEST(StringTable, MatchesAReferenceModel) {
    std::mt19937 rng(20240611);
    SLoaded m;
    CNameSpaceMgr& ns = *m.ns;
    std::map<std::string, ULONG> exact, noCase;  // text (upper-cased) -> id, last wins
    std::map<ULONG, std::string> byId;
    auto upper = [](std::string s) {
        for (char& c : s)
            c = tessmeta::ToUpperAscii(c);
        return s;
    };
    for (int step = 0; step < 4000; ++step) {
        // A tiny alphabet collides in case often; some texts cross 255 bytes.
        std::string text;
        const int length = rng() % 4 ? 1 + rng() % 3 : 250 + static_cast<int>(rng() % 10);
        for (int i = 0; i < length; ++i)
            text += "aAbB\xE9"[rng() % 5];
        if (rng() % 3 == 0) {
            auto it = exact.find(text);
            ASSERT_EQ(ns.GetStringIdFromString(text.c_str()), it == exact.end() ? 0 : it->second);
            auto nc = noCase.find(upper(text));
            ASSERT_EQ(ns.GetStringIdFromStringNoCase(text.c_str()),
                      nc == noCase.end() ? 0 : nc->second);
            continue;
        }
        const auto id = static_cast<ULONG>(ns.AddToStringTable(text.c_str()));
        auto [it, added] = exact.emplace(text, static_cast<ULONG>(byId.size() + 1));
        ASSERT_EQ(id, it->second) << "step " << step;
        if (added) {
            noCase[upper(text)] = id;
            byId[id] = text;
        }
    }
    for (const auto& [id, text] : byId)
        ASSERT_EQ(TextOf(ns, static_cast<LONG>(id)), text);
    EXPECT_EQ(AllStrings(ns).size(), byId.size());
}

}  // namespace
