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

TEST(Catalogue, TheTwoNumberingsStayApart) {
    struct Expected {
        const char* name;
        int number;
        int kind;
    };
    const Expected fixed[] = {
        {"MetaTable", 63, 55},
        {"MetaClass_Member", 62, 54},
        {"ObjectModification", 71, 62},
        {"Data_Dictionary", 21, 20},
        {"Object_Domain", 69, 60},
        {"Delayed_Checkout", 28, 25},
        {"Reference_Value", 83, 74},
        {"Valid_Attachment_Type", 106, 88},
        {"Attachment", 10, 10},
        {"Attachment_Type", 11, 11},
        {"Dictionary_Library", 31, 27},
        {"Dictionary_Trigger", 35, 31},
        {"Dictionary_Object", 32, 28},
        {"Dictionary_Object_Type", 34, 30},
        {"Dictionary_Object_Link", 33, 29},
        {"Reusable_Procedure", 85, 76},
        {"InterModelObjectLink", 56, 49},
        {"InterModelRelationship", 57, 50},
        {"Submodel_Algorithm", 94, 80},
        {"Algorithm_Property", 1, 1},
    };
    for (const Expected& e : fixed) {
        const SZmfTableDesc* t = zmf::FindTableByName(e.name);
        ASSERT_NE(t, nullptr) << e.name;
        EXPECT_EQ(t->tableNumber, e.number) << e.name;
        EXPECT_EQ(t->keyKind, e.kind) << e.name;
    }
    const std::pair<const char*, int> kindsOnly[] = {
        {"Bound_Dictionary_Object", 13}, {"DbTrigger", 22},     {"DbPackage", 23},
        {"Object_Color_Override", 59},   {"Proc", 67},          {"Referenced_Object", 73},
        {"Storage_Object", 77},          {"Templated_Proc", 86}};
    for (auto [name, kind] : kindsOnly)
        EXPECT_EQ(zmf::FindTableByName(name)->keyKind, kind);

    auto file = CZmfFile::OpenMemory();
    EXPECT_STREQ(file->GetTableName(69), "Object_Domain");
    EXPECT_STREQ(file->GetTableName(62), "MetaClass_Member");
    // 55 is MetaTable's key kind, not a table number.
    EXPECT_EQ(file->GetTableName(55), nullptr);
    EXPECT_EQ(file->GetTableName(-1), nullptr);
}

TEST(Catalogue, StringIdColumnsAreMarked) {
    auto typeOf = [](const char* table, const char* column) {
        for (const SZmfColumnDesc& c : zmf::FindTableByName(table)->columns)
            if (std::string(c.name) == column) return c.type;
        ADD_FAILURE() << table << "." << column;
        return EZmfColumnType::Key;
    };
    EXPECT_EQ(typeOf("Reference_Value", "Max_Value"), EZmfColumnType::StringId);
    EXPECT_EQ(typeOf("DbPackage", "Body_Value"), EZmfColumnType::StringId);
    EXPECT_EQ(typeOf("StringUsage", "String_ID"), EZmfColumnType::StringId);
    EXPECT_EQ(typeOf("Reference_Value", "Global_User_ID"), EZmfColumnType::U32);
    EXPECT_EQ(typeOf("SmallString", "Text"), EZmfColumnType::String);
    EXPECT_EQ(typeOf("UniqueObject", "Modification_Date"), EZmfColumnType::Date);
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
