// tessmeta demo: the data dictionary part. A second data dictionary, reference
// values (a single value, a range, a name made unique), a tree of links, a default,
// bindings with value overrides and a referenced object; attachment types with
// their valid types and attachments, bound to the demo entity, one valid type and
// one whole type deleted with their bindings; the system libraries and triggers of
// platform 1 from the macro templates. After reopening, each is read back and
// compared.
#include <cstdio>
#include <string>
#include <utility>
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
    // Attachments: Owner (valid on meta tables 1 and 17) with DBA and Analyst;
    // Analyst lost its binding on meta table 5 with that valid type; the type
    // Retired went with its attachment Legacy and Legacy's two bindings.
    DWORD ownerType = 0, dba = 0, analyst = 0, legacyItem = 0;
    int bindingsLeft = 0;  // bindings of attachments after the deletes
    // System items made from the templates, with their bodies.
    std::vector<std::pair<std::string, std::string>> systemLibraries, systemTriggers;
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

void BuildAttachments(CModelFile& model, SDictionaryDemo& demo, ULONG objectId) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    CRefObjectMgr& refs = model.GetRefObjectMgr();
    const DWORD main = dictionary.GetDiagramSpecificData_Dictionary_ID();
    DWORD item = 0, dbaItem = 0, analystItem = 0;
    CString owner("Owner"), ownerText("Who answers for the object"), retired("Retired"), none;
    demo.ownerType = dictionary.InsertAttachmentType(owner, ownerText, 0, main, item, FALSE);
    dictionary.InsertValidAttachmentType(demo.ownerType, 1, 0, 0, item, FALSE);
    dictionary.InsertValidAttachmentType(demo.ownerType, 17, 0, 0, item, FALSE);
    const DWORD onFive = dictionary.InsertValidAttachmentType(demo.ownerType, 5, 0, 0, item, FALSE);
    CString dba("DBA"), dbaText("Data team"), analyst("Analyst"), analystText("Reporting");
    demo.dba = dictionary.InsertAttachment(demo.ownerType, dba, none, dbaText, 0, dbaItem, FALSE);
    demo.analyst = dictionary.InsertAttachment(demo.ownerType, analyst, none, analystText, 0,
                                               analystItem, FALSE);
    refs.InsertBoundDictObject(dbaItem, 1, objectId, "");
    refs.InsertBoundDictObject(analystItem, 8, objectId, "");
    refs.InsertBoundDictObject(analystItem, 5, objectId, "");
    dictionary.DeleteValidAttachmentType(onFive);  // unbinds Analyst from meta table 5

    const DWORD retiredType = dictionary.InsertAttachmentType(retired, none, 0, main, item, FALSE);
    dictionary.InsertValidAttachmentType(retiredType, 1, 0, 0, item, FALSE);
    CString legacy("Legacy");
    dictionary.InsertAttachment(retiredType, legacy, none, none, 0, demo.legacyItem, FALSE);
    refs.InsertBoundDictObject(demo.legacyItem, 1, objectId, "");
    refs.InsertBoundDictObject(demo.legacyItem, 8, objectId, "");
    dictionary.DeleteAttachmentType(retiredType);  // with Legacy and its bindings
    demo.bindingsLeft = 2;                         // DBA on 1, Analyst on 8
}

void BuildSystemItems(CDictObjectMgr& dictionary, SDictionaryDemo& demo) {
    CList<DWORD, DWORD> libraries, triggers;
    dictionary.InsertSystemTriggerLibs(1, libraries);
    dictionary.InsertSystemTriggers(1, triggers);
    for (POSITION pos = libraries.GetHeadPosition(); pos;) {
        CString name, description, body;
        int integerField = 0;
        dictionary.GetLibraryData(libraries.GetNext(pos), name, description, integerField, body);
        demo.systemLibraries.emplace_back(name.GetString(), body.GetString());
    }
    for (POSITION pos = triggers.GetHeadPosition(); pos;) {
        CString name, body;
        const DWORD key = triggers.GetNext(pos);
        dictionary.GetTriggerName(key, name);
        dictionary.GetTriggerValue(key, body);
        demo.systemTriggers.emplace_back(name.GetString(), body.GetString());
    }
}

int AttachmentBindings(CModelFile& model) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    CEnhBoundDictObjectTbl* bound = model.GetRefObjectMgr().GetBoundDictObjectTable();
    int count = 0;
    for (POSITION pos = bound->GetFirstRowPosition(); pos;)
        count += dictionary.GetDictObjectType(bound->GetNextRow(pos)->Dictionary_Object_ID) ==
                 kDictAttachment;
    return count;
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
    BuildAttachments(model, *demo, objectId);
    BuildSystemItems(dictionary, *demo);
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

    CString dba, dbaValue, dbaDescription;
    DWORD number = 0;
    expect(dictionary.GetAttachmentData(expected.dba, dba, dbaDescription, dbaValue, number) &&
               dba == CString("DBA") && dbaValue == CString("Data team"),
           "attachment DBA differs");
    expect(dictionary.IsAttachmentValidForType(expected.dba, 1) &&
               dictionary.IsAttachmentValidForType(expected.analyst, 8) &&
               !dictionary.IsAttachmentValidForType(expected.analyst, 5),
           "the valid types of Owner differ");
    expect(dictionary.GetAttachmentTypeCount() == 1 && dictionary.GetAttachmentCount() == 2 &&
               !dictionary.IsDictionaryObjectIDValid(expected.legacyItem),
           "the deleted attachment type left rows behind");
    expect(AttachmentBindings(model) == expected.bindingsLeft,
           "bindings of deleted attachments or valid types remain");
    for (const auto& [name, body] : expected.systemLibraries) {
        CString text;
        expect(dictionary.FindSystemLib(name.c_str(), text) && body == text.GetString(),
               "system library " + name + " differs");
    }
    for (const auto& [name, body] : expected.systemTriggers) {
        CString text;
        expect(dictionary.FindSystemTrigger(name.c_str(), text) && body == text.GetString(),
               "system trigger " + name + " differs");
    }
    return problems;
}

void PrintDictionarySummary(CModelFile& model) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    std::printf("  data dictionaries  %d\n", dictionary.GetNumOfDataDictionary());
    std::printf("  reference values   %d\n", dictionary.GetReferenceValueCount());
    std::printf("  dictionary links   %d\n", dictionary.GetDictObjLinkCount());
    std::printf("  attachment types   %d (%d valid types, %d attachments)\n",
                dictionary.GetAttachmentTypeCount(), dictionary.GetValidAttachmentTypeCount(),
                dictionary.GetAttachmentCount());
    std::printf("  system items       %d libraries, %d triggers (from %s)\n",
                dictionary.GetLibraryCount(), dictionary.GetTriggerCount(),
                dictionary.GetMacroFolder().GetString());
    std::printf("  bindings           %d\n",
                model.GetRefObjectMgr().GetBoundDictObjectTable()->GetCount());
}

}  // namespace tessmeta::tool
