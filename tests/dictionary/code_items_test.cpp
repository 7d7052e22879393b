// Libraries, triggers and reusable procedures: creation, walks, updates, deletes,
// uniqueness with every defining field and the overrides of bindings.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "dictionary_test_util.h"

using tessmeta::test::SDictFixture;

namespace {

// A trigger's defining fields, to vary one at a time.
struct STrigger {
    const char* description = "d";
    const char* text = "body";
    int integerField = 0;
    DWORD first = 1, event = 2, second = 3;
};

struct SCodeFixture : SDictFixture {
    DWORD Library(const char* name, DWORD dataDictionary, const char* description = "",
                  int integerField = 0, const char* text = "", DWORD* item = nullptr) {
        CString n(name), d(description), t(text);
        DWORD id = 0;
        const DWORD key = dict.InsertLibrary(n, d, integerField, t, dataDictionary, id, FALSE);
        if (item) *item = id;
        return key;
    }
    DWORD Trigger(const char* name, const STrigger& t, DWORD* item = nullptr) {
        CString n(name), d(t.description), body(t.text);
        DWORD id = 0;
        const DWORD key = dict.InsertTrigger(n, d, t.integerField, t.first, t.event, body, t.second,
                                             main, id, FALSE);
        if (item) *item = id;
        return key;
    }
    LONG TriggerUnique(const char* name, const STrigger& t, CDictOverrideMap& overrides) {
        CString n(name), d(t.description), body(t.text);
        return dict.IsDictTriggerUnique(n, d, t.integerField, t.first, t.event, body, t.second,
                                        overrides, 0);
    }
};

TEST(CodeItems, LibrariesLiveInTheirDictionaryAndGoWithEverything) {
    SCodeFixture f;
    const DWORD sales = f.dict.CreateDataDictionary("Sales", "");
    DWORD item = 0;
    const DWORD lib = f.Library("Audit", sales, "desc", 7, "Sub Main\r\n", &item);
    const DWORD globalId = f.dict.GetGlobalIDUsingDictID(item);
    EXPECT_EQ(f.dict.GetLibraryRow(lib)->Global_User_ID, globalId);
    EXPECT_EQ(f.guids.GetObjectTypeId(globalId), f.guids.GetDictionaryLibraryObjectTypeId());
    EXPECT_EQ(f.guids.GetUniqueObjectObjectDomainID(globalId),
              f.dict.GetDataDictionaryObjectDomainID(sales));
    EXPECT_EQ(f.dict.GetLibraryFKRow(item), f.dict.GetLibraryRow(lib));

    CString name, description, text;
    int integerField = 0;
    ASSERT_TRUE(f.dict.GetLibraryData(lib, name, description, integerField, text));
    EXPECT_EQ(name + "|" + description + "|" + text, CString("Audit|desc|Sub Main\r\n"));
    EXPECT_EQ(integerField, 7);
    name = "Audit2";
    text = "new";
    ASSERT_TRUE(f.dict.UpdateLibrary(lib, name, description, 8, text));
    EXPECT_TRUE(f.dict.GetLibraryValue(lib, text));
    EXPECT_EQ(text, CString("new"));
    EXPECT_EQ(f.dict.GetLibraryRow(lib)->GetName(), CString("Audit2"));
    EXPECT_FALSE(f.dict.UpdateLibrary(9999, name, description, 8, text));

    EXPECT_TRUE(f.dict.DeleteLibrary(lib));
    EXPECT_FALSE(f.dict.DeleteLibrary(lib));
    EXPECT_FALSE(f.dict.IsDictionaryObjectIDValid(item));
    EXPECT_FALSE(f.guids.IsUniqueObjectIdValid(static_cast<LONG>(globalId)));
    EXPECT_EQ(f.names.GetStringIdFromObjectAndUsageTypeIds(
                  static_cast<int>(globalId), f.names.GetDictionaryLibraryNameUsageId()),
              0);
}

// Each defining field of a trigger, changed alone, makes the name taken; the
// unique-name loops of triggers and procedures.
TEST(CodeItems, TriggersAndProceduresAreIdenticalOnlyInEveryDefiningField) {
    SCodeFixture f;
    DWORD item = 0;
    const STrigger base;
    const DWORD key = f.Trigger("Audit", base, &item);
    CDictOverrideMap none;
    EXPECT_EQ(f.TriggerUnique("AUDIT", base, none), static_cast<LONG>(key));
    STrigger caseOnly = base;
    caseOnly.description = "D";
    caseOnly.text = "BODY";
    EXPECT_EQ(f.TriggerUnique("audit", caseOnly, none), static_cast<LONG>(key));
    const std::vector<std::function<void(STrigger&)>> changes = {
        [](STrigger& t) { t.description = "e"; }, [](STrigger& t) { t.text = "other"; },
        [](STrigger& t) { t.integerField = 1; },  [](STrigger& t) { t.first = 9; },
        [](STrigger& t) { t.event = 4; },         [](STrigger& t) { t.second = 9; }};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        STrigger changed = base;
        changes[i](changed);
        EXPECT_EQ(f.TriggerUnique("Audit", changed, none), -1) << "field " << i;
    }
    // Bindings on meta table 8 must match the caller's overrides exactly.
    const DWORD b1 = f.refs.InsertBoundDictObject(item, 8, 10, "on");
    f.refs.InsertBoundDictObject(item, 3, 11, "ignored");
    EXPECT_EQ(f.TriggerUnique("Audit", base, none), -1);
    CDictOverrideMap overrides;
    overrides.SetAt(b1, "on");
    EXPECT_EQ(f.TriggerUnique("Audit", base, overrides), static_cast<LONG>(key));
    overrides.SetAt(b1, "ON");
    EXPECT_EQ(f.TriggerUnique("Audit", base, overrides), -1);

    CString name("Audit"), d("d"), text("other");
    EXPECT_EQ(f.dict.GetNameForUniqueDictTrigger(name, d, 0, 1, 2, text, 3, none, 0), 0);
    EXPECT_EQ(name, CString("Audit_1"));
    EXPECT_TRUE(f.dict.DeleteTrigger(key));
    EXPECT_EQ(f.TriggerUnique("Audit", base, none), 0);

    // Procedures: the same loop for a unique name.
    DWORD procItem = 0;
    CString proc("Stamp"), body("SET x = 1"), empty;
    const DWORD procKey = f.dict.InsertProcedure(proc, empty, body, 5, f.main, procItem, FALSE);
    CDictOverrideMap procOverrides;
    EXPECT_EQ(f.dict.IsReusableProcUnique(proc, empty, body, 5, procOverrides, 0),
              static_cast<LONG>(procKey));
    EXPECT_EQ(f.dict.IsReusableProcUnique(proc, empty, body, 6, procOverrides, 0), -1);
    const DWORD binding = f.refs.InsertBoundDictObject(procItem, 8, 1, "");
    EXPECT_EQ(f.dict.GetNameForUniqueReusableProc(proc, empty, body, 5, procOverrides, 0), 0);
    EXPECT_EQ(proc, CString("Stamp_1"));
    procOverrides.SetAt(binding, "");
    proc = "Stamp";
    EXPECT_EQ(f.dict.IsReusableProcUnique(proc, empty, body, 5, procOverrides, 0),
              static_cast<LONG>(procKey));
    CString text2("SET x = 2");
    EXPECT_TRUE(f.dict.UpdateProcedure(procKey, proc, empty, text2, 6));
    DWORD number = 0;
    ASSERT_TRUE(f.dict.GetProcedureData(procKey, proc, empty, body, number));
    EXPECT_EQ(body + "/" + CString(std::to_string(number).c_str()), CString("SET x = 2/6"));
    EXPECT_TRUE(f.dict.DeleteProcedure(procKey));
    EXPECT_EQ(f.dict.GetProcedureCount(), 0);
}

}  // namespace
