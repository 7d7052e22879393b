// Texts read in place: the view of an id agrees with the copy for loaded, added,
// long, empty and unknown ids, and stays valid while the table grows.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "name_space_fixtures.h"

using namespace tessmeta::test;

TEST(StringView, AgreesWithTheCopyAndOutlivesGrowth) {
    const std::string longText(300, 'L');
    SLoaded m({{{1, "loaded", 0}, {2, "", 1}, {3, "x", 0}}, {{2, longText}}, {}, {}});
    CNameSpaceMgr& ns = *m.ns;
    ns.AddToStringTable("added");
    ns.AddToStringTable(std::string(256, 'A').c_str());
    std::vector<std::string_view> views;
    std::vector<std::string> copies;
    for (LONG id : {0, 1, 2, 3, 4, 5, 6, 99, -1}) {
        views.push_back(ns.GetStringView(id));
        copies.push_back(TextOf(ns, id));
        EXPECT_EQ(views.back(), copies.back()) << id;
    }
    EXPECT_EQ(views[2], longText);
    EXPECT_EQ(views[7], kInvalid);
    for (int i = 0; i < 20000; ++i)  // rehashes every map
        ns.AddToStringTable(("grown " + std::to_string(i)).c_str());
    for (std::size_t i = 0; i < views.size(); ++i)
        EXPECT_EQ(views[i], copies[i]) << i;
}

// Ids copied in out of order, close to and far beyond the ones handed out, then
// more interning over them: every id answers as a reference map says.
TEST(StringView, CopiedIdsNearAndFarMatchAReferenceMap) {
    SLoaded m;
    CNameSpaceMgr& ns = *m.ns;
    std::map<LONG, std::string> expected;
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        const std::string text = "text " + std::to_string(round);
        if (round % 3) {
            expected[ns.AddToStringTable(text.c_str())] = text;
            continue;
        }
        const LONG id = static_cast<LONG>(round % 2 ? random() % 20000 + 1 : random() % 4000000);
        if (ns.CopyToStringTable(text.c_str(), id) && id && !expected.count(id))
            expected[id] = text;
    }
    for (const auto& [id, text] : expected)
        ASSERT_EQ(ns.GetStringView(id), text) << id;
    EXPECT_EQ(ns.GetStringView(4000001), kInvalid);
}
