// The catalogue: names, both numberings, and the generated row classes.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/row_values.h"
#include "zmflib.h"

using tessmeta::test::MakeRow;
using tessmeta::test::RowText;

TEST(Catalogue, NamesNumbersAndKeyKindsAreUnique) {
    std::set<std::string> names;
    std::set<int> numbers, kinds;
    for (const SZmfTableDesc* t : zmf::AllTables()) {
        EXPECT_TRUE(names.insert(t->name).second) << t->name;
        EXPECT_TRUE(numbers.insert(t->tableNumber).second) << t->name;
        EXPECT_TRUE(kinds.insert(t->keyKind).second) << t->name;
        ASSERT_FALSE(t->columns.empty());
        EXPECT_EQ(t->columns[0].type, EZmfColumnType::Key) << t->name;
        EXPECT_EQ(zmf::FindTableByName(t->name), t);
        EXPECT_EQ(zmf::FindTableByNumber(t->tableNumber), t);
    }
    EXPECT_EQ(zmf::FindTableByName("NoSuchTable"), nullptr);
    EXPECT_EQ(zmf::FindTableByName(nullptr), nullptr);
    EXPECT_EQ(zmf::FindTableByNumber(0), nullptr);
    // Every table a model file holds: name space, identity, meta and property
    // tables, dictionary, references, code objects, repository, layout, views and
    // property overrides.
    EXPECT_EQ(names.size(), 54u);
}

TEST(Catalogue, CopyTakesEveryColumnButNotTheListSlot) {
    for (const SZmfTableDesc* t : zmf::AllTables()) {
        auto source = MakeRow(*t, 77, 5);
        std::unique_ptr<CDbObjectBase> target(t->createRow());
        int marker = 0;
        target->SetListPosition(reinterpret_cast<POSITION>(&marker));
        target->Copy(source.get());
        EXPECT_EQ(RowText(*t, *target), RowText(*t, *source)) << t->name;
        EXPECT_EQ(target->GetListPosition(), reinterpret_cast<POSITION>(&marker)) << t->name;
        EXPECT_TRUE(target->MatchKey(source.get()));
    }
}
