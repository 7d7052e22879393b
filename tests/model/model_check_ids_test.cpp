// The check's id set answers as a std::set does, dense or sparse, across the move
// from bits to a hash set; the tables the check reads once report their repeated
// keys and purgeable strings as a second reading did, row by row and in order.
#include "model/model_check_ids.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "model/model_check.h"
#include "zmflib.h"

namespace {

using tessmeta::CIdSet;

TEST(CheckIdSet, AnswersAsASetDoes) {
    std::vector<DWORD> counting, wide, late, negative;
    for (DWORD id = 1; id <= 100000; ++id)
        counting.push_back(id % 3 ? id : id / 3);  // dense, with repeats
    for (DWORD id = 0; id < 2000; ++id)
        wide.push_back(id * 2654435761u);  // spread over all 32 bits: goes sparse at once
    for (DWORD id = 1; id <= 70000; ++id)
        late.push_back(id);
    late.push_back(0xffffffffu);  // one far id after many dense ones
    late.push_back(63);
    late.push_back(64);
    for (int id = -5; id < 5; ++id)
        negative.push_back(static_cast<DWORD>(id));
    for (const auto& ids : {counting, wide, late, negative}) {
        CIdSet set;
        std::set<DWORD> model;
        for (const DWORD id : ids)
            ASSERT_EQ(set.Insert(id), model.insert(id).second) << id;
        for (const DWORD id : ids)
            for (const DWORD probe : {id, id + 1, id - 1, id ^ 64u})
                ASSERT_EQ(set.Contains(probe), model.count(probe) != 0) << probe;
    }
}

TEST(CheckIdSet, RepeatedKeysAndPurgeableStringsInStoredOrder) {
    auto file = CZmfFile::OpenMemory();
    auto put = [&](const char* table, std::vector<CDbObjectBase*> rows) {
        CTableBase* t = file->GetEmptyTable(table);
        for (CDbObjectBase* row : rows)
            ASSERT_EQ(t->Insert(row), 1);
    };
    CObjectDefinitionBase type(1);
    CUniqueObjectBase object1(1), object2(2), object1again(1);
    for (CUniqueObjectBase* o : {&object1, &object2, &object1again})
        o->Object_Type_ID = 1;
    CSmallStringBase kept(10), unusedLater(12), unused(11), unusedAgain(11), shortText(13);
    kept.Text = "Customer";
    unusedLater.Text = "sixsix";
    unused.Text = "Account";
    unusedAgain.Text = "Account";
    shortText.Text = "abc";
    CStringUsageTypeBase usageType(1);
    CStringUsageBase usage7(7), usage3(3), usage7again(7);
    for (CStringUsageBase* u : {&usage7, &usage3, &usage7again}) {
        u->Object_ID = 1;
        u->String_Usage_Type_ID = 1;
        u->String_ID = 10;
    }
    put("ObjectDefinition", {&type});
    put("UniqueObject", {&object1, &object2, &object1again, &object2});
    put("SmallString", {&unusedLater, &kept, &unused, &shortText, &unusedAgain});
    put("StringUsageType", {&usageType});
    put("StringUsage", {&usage7, &usage3, &usage7again, &usage7});

    std::vector<std::string> shown;
    for (const auto& f : tessmeta::CheckModelFile(*file).findings)
        shown.push_back(std::string(tessmeta::CheckKindName(f.kind)) + " " + f.table + ": " +
                        f.detail);
    const std::vector<std::string> expected = {
        "purgeable-string SmallString: string 12 has no usage",
        "purgeable-string SmallString: string 11 has no usage",
        "purgeable-string SmallString: string 11 has no usage",
        "duplicate-key SmallString: key 11 is used by more than one row",
        "duplicate-key StringUsage: key 7 is used by more than one row",
        "duplicate-key StringUsage: key 7 is used by more than one row",
        "duplicate-key UniqueObject: key 1 is used by more than one row",
        "duplicate-key UniqueObject: key 2 is used by more than one row",
    };
    EXPECT_EQ(shown, expected);
}

}  // namespace
