// tessmeta demo: the data dictionary part. A second data dictionary, reference
// values (a single value, a range, a name made unique), a tree of links, a default,
// bindings with value overrides and a referenced object; after reopening, each is
// read back and compared.
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"

namespace tessmeta::tool {

struct SRefValue {
    DWORD key;
    std::string name, value, min, max;
    BOOL notBetween, range;
    DWORD dataDictionary;
};

struct SDictionaryDemo {
    DWORD sales = 0;  // the second data dictionary
    std::vector<SRefValue> refValues;
    DWORD parentItem = 0, childItem = 0, childLink = 0;
    DWORD binding = 0;
    std::string bindingOverride;
    DWORD defaultItem = 0;
};

namespace {

DWORD AddRefValue(CDictObjectMgr& dictionary, SDictionaryDemo& demo, const char* name,
                  const char* value, const char* min, const char* max, BOOL notBetween,
                  DWORD dataDictionary, DWORD& dictObjectId) {
    CString n(name), description("demo"), v(value), vd, lo(min), hi(max);
    CDictOverrideMap none;
    const BOOL range = *min || *max;
    // A name already taken by different content gets a suffix.
    dictionary.GetNameForUniqueReferenceValue(n, description, v, vd, lo, hi, notBetween, range,
                                              none, dataDictionary, true);
    const DWORD key = dictionary.InsertRefValue(n, description, v, vd, lo, hi, notBetween, range,
                                                dataDictionary, dictObjectId, FALSE);
    demo.refValues.push_back(
        {key, n.GetString(), value, min, max, notBetween, range, dataDictionary});
    return key;
}

}  // namespace

std::shared_ptr<SDictionaryDemo> BuildDictionaryDemo(CModelFile& model, ULONG objectId) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    auto demo = std::make_shared<SDictionaryDemo>();
    demo->sales = dictionary.CreateDataDictionary("Sales", "Shared with the sales models.");

    const DWORD main = dictionary.GetDiagramSpecificData_Dictionary_ID();
    DWORD status = 0, percent = 0, share = 0, other = 0;
    AddRefValue(dictionary, *demo, "Status", "A", "", "", FALSE, main, status);
    AddRefValue(dictionary, *demo, "Percent", "", "0", "100", FALSE, main, percent);
    AddRefValue(dictionary, *demo, "Share", "", "0", "1", FALSE, main, share);
    AddRefValue(dictionary, *demo, "Status", "I", "", "", FALSE, main, other);  // Status_1
    AddRefValue(dictionary, *demo, "Status", "A", "", "", FALSE, demo->sales, other);
    AddRefValue(dictionary, *demo, "Outlier", "", "10", "90", TRUE, demo->sales, other);

    // Status heads a tree: Percent below it, Share below Percent. A root link has
    // no child, so Percent's link finds no link of Status and starts at level 0.
    dictionary.CreateDictionaryObjectLinkRoot(status);
    dictionary.CreateDictionaryObjectLink(percent, status);
    demo->childLink = dictionary.CreateDictionaryObjectLink(share, percent);
    demo->parentItem = percent;
    demo->childItem = share;

    demo->bindingOverride = "0..50";
    demo->binding = model.GetRefObjectMgr().InsertBoundDictObject(
        percent, kReferenceValueBindingMetaTable, objectId, demo->bindingOverride.c_str());
    model.GetRefObjectMgr().InsertReferencedObject(0, objectId, 1);

    const int defaultObject = model.GetGuidMgr().GetNewUniqueId(CString("Default"), 0, 0, 0);
    demo->defaultItem = dictionary.InsertDefault(main, static_cast<DWORD>(defaultObject));
    return demo;
}

int VerifyDictionaryDemo(CModelFile& model, const SDictionaryDemo& expected) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    int problems = 0;
    auto expect = [&](bool ok, const std::string& what) {
        if (!ok) {
            std::printf("dictionary: %s\n", what.c_str());
            ++problems;
        }
    };
    expect(dictionary.GetNumOfDataDictionary() == 2, "two data dictionaries expected");
    for (const SRefValue& want : expected.refValues) {
        CString name, description, value, valueDescription, min, max;
        BOOL notBetween = 0, range = 0;
        const bool found = dictionary.GetRefValueData(
            want.key, name, description, value, valueDescription, min, max, notBetween, range);
        const CKelReferenceValue* row = dictionary.GetRefValueRow(want.key);
        expect(
            found && row && want.name == name.GetString() && want.value == value.GetString() &&
                want.min == min.GetString() && want.max == max.GetString() &&
                want.notBetween == notBetween && want.range == range &&
                dictionary.GetData_Dictionary_ID(row->Dictionary_Object_ID) == want.dataDictionary,
            "reference value " + want.name + " differs");
    }
    const CKelDictionaryObjectLink* link =
        dictionary.GetDictionaryObjectLinkRow(expected.childLink);
    const CKelDictionaryObjectLink* parent =
        dictionary.GetDictObjLinkChildAKRow(expected.parentItem);
    expect(link && parent && link->Parent_ID == expected.parentItem && link->Level == 1 &&
               link->Leaf == 1 && parent->Level == 0 && parent->Leaf == 0 &&
               dictionary.LookupDictObjLinkParentID(expected.childItem) == expected.parentItem,
           "links of the Status tree differ");
    CString text;
    CEnhBoundDictObjectTbl* bound = model.GetRefObjectMgr().GetBoundDictObjectTable();
    expect(bound->GetValueOverride(expected.binding, text) &&
               expected.bindingOverride == text.GetString(),
           "binding override differs");
    // The same range with the same override is recognised as the existing item.
    CString name("Percent"), description("demo"), value, valueDescription, min("0"), max("100");
    CDictOverrideMap overrides;
    overrides.SetAt(expected.binding, CString(expected.bindingOverride.c_str()));
    expect(dictionary.IsReferenceValueUnique(name, description, value, valueDescription, min, max,
                                             FALSE, TRUE, overrides, 0,
                                             true) == static_cast<LONG>(expected.refValues[1].key),
           "an identical reference value is not recognised");
    expect(dictionary.GetDictObjectType(expected.defaultItem) == kDictDefault,
           "the default's registry row is missing");
    return problems;
}

void PrintDictionarySummary(CModelFile& model) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    std::printf("  data dictionaries  %d\n", dictionary.GetNumOfDataDictionary());
    std::printf("  reference values   %d\n", dictionary.GetReferenceValueCount());
    std::printf("  dictionary links   %d\n", dictionary.GetDictObjLinkCount());
    std::printf("  bindings           %d\n",
                model.GetRefObjectMgr().GetBoundDictObjectTable()->GetCount());
}

}  // namespace tessmeta::tool
