// CDictObjectMgr: the data dictionary of one open model, and the only way the
// application creates, finds, renames and deletes dictionary items.
//
// A dictionary item is two rows: one in the registry ("Dictionary_Object": its kind
// and the data dictionary that holds it, CEnhDictObjectTable) and one in the table
// of its kind, whose Dictionary_Object_ID is the registry id. The manager owns the
// data dictionaries, the constant table of kinds, the registry and the kinds'
// tables, in this order, which is also the order of Init, Save and
// ReleaseStorageTables:
//
//    1 data dictionaries          "Data_Dictionary"          21
//    2 kinds (constant)           "Dictionary_Object_Type"   34
//    3 registry                   "Dictionary_Object"        32
//    4 libraries                  "Dictionary_Library"       31
//    5 triggers                   "Dictionary_Trigger"       35
//    6 reusable procedures        "Reusable_Procedure"       85
//    7 reference values           "Reference_Value"          83
//    8 attachment types           "Attachment_Type"          11
//    9 valid attachment types     "Valid_Attachment_Type"   106
//   10 attachments                "Attachment"               10
//   11 dictionary object links    "Dictionary_Object_Link"   33
//
// (the number is the table id GetTablePtr answers to). Slots 4 to 6 and 8 to 10
// hold the programmable items and the attachments; until their tables are attached
// the manager runs without them.
//
// Kinds are found by name, never by a stored id. Defaults, rules, user datatypes
// and domains have no table here: their bodies live with the application's model
// objects, and their registry row ties the object's global id to a data dictionary.
//
// Creating an item of kind K (every Insert<Kind>, arguments ending in
// `dataDictionaryId, dictObjectId, useGivenId`): K's kind row must exist (else 0 and
// nothing is made); a registry row is added (with `dictObjectId` when `useGivenId`
// is set, else a new id written back to `dictObjectId`); the row of K's table is
// added under that id with a new key and a new unique object; the registry row takes
// that object's id; the object joins the data dictionary's object domain. The result
// is the key of the kind's row.
//
// Deleting an item: its row (with its strings' usages and its unique object), then
// its registry row. Each kind's delete says what else goes.
//
// Uniqueness tests Is<Kind>Unique are three-way: 0 the name is free in the data
// dictionary (0 means the diagram-specific one); a positive key: an item of that
// name with the same defining fields exists and can be reused; -1: the name is
// taken. Names compare without case; the first item in table order with the name
// decides. GetNameForUnique<Kind> takes the same arguments in the same order and
// tries the name, then name_1, name_2, ... until the test says anything but -1.
//
// Walks: the first/next walks of one kind share one cursor (the registry's tree),
// and so do the walks of each other index; one walk of each at a time.
//
// Nothing here throws (but out-of-memory) or shows a message: missing rows give 0,
// FALSE or null and change nothing.
#pragma once

#include <memory>

#include "dictionary/data_dictionary_table.h"
#include "dictionary/dict_kinds.h"
#include "dictionary/dict_object_link_table.h"
#include "dictionary/dict_object_table.h"
#include "dictionary/reference_value_table.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cmap.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "references/ref_object_mgr.h"
#include "zmflib/zmf_file.h"

// Value overrides of bound dictionary objects, by the binding's key.
using CDictOverrideMap = CMap<DWORD, DWORD, CString, const CString&>;

class CDictObjectMgr {
  public:
    // Builds the tables on `file` (each opens its record-store table); loads nothing.
    // All pointers borrowed; `names`, `guids` and `refs` may be null (`refs` can be
    // set later). `fileVersion` steers the upgrades of Init.
    CDictObjectMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file, CRefObjectMgr* refs,
                   ULONG fileVersion);
    ~CDictObjectMgr();
    CDictObjectMgr(const CDictObjectMgr&) = delete;
    CDictObjectMgr& operator=(const CDictObjectMgr&) = delete;

    // ---- persistence ---------------------------------------------------------------

    // Loads every table, completing the kinds, and upgrades older files: below 530
    // the identity manager collects the registry ids found invalid (a table kind's
    // id without its row, an unknown kind's id that no table row carries, a
    // default/rule/user datatype/domain whose object is gone) for
    // CleanupInvalidDictionaryObjectIDs; at 502 and below the items and their
    // registry rows come to share one global id (UpdateDictObjectGlobalUserIDs).
    // Always non-zero.
    int Init();
    // Loads / writes back the kind table alone.
    void InitConstantTables();
    int SaveConstantTables(CZmfFile* file);
    // Writes back every table in table order into `file`; a failure does not stop
    // the tables after it. 1 when every table was written.
    int Save(CZmfFile* file);
    // Gives back the record-store tables the tables hold since the last Save.
    void ReleaseStorageTables();
    // Removes the registry rows the identity manager collected as invalid, then
    // ends the collection. Does nothing when no collection runs.
    void CleanupInvalidDictionaryObjectIDs();
    // Gives each item of kinds Trigger, Procedure, Library, then Reference Value,
    // Attachment Type, Valid Attachment Type, Attachment one global id shared with
    // its registry row, typed by its kind and in its data dictionary's domain.
    void UpdateDictObjectGlobalUserIDs();

    // ---- accessors -------------------------------------------------------------------

    CZmfFile* GetZmfFile() const { return m_pFile; }
    CEnhDataDictionaryTable* GetEnhDataDictionaryTable() const { return m_pDataDictionaries.get(); }
    void SetRefObjMgr(CRefObjectMgr* refs) { m_pRefs = refs; }
    CRefObjectMgr* GetRefObjMgr() const { return m_pRefs; }
    // The record-store table of table id `tableId` (see the top), or null: always for
    // 34 (the kinds) and unknown ids, and whenever the table holds none.
    CTableBase* GetTablePtr(int tableId) const;

    // ---- kinds and the registry --------------------------------------------------------

    // The kind code (1-12) of a registry row; 0 when it or its kind row is missing.
    DWORD GetDictObjectType(DWORD dictObjectId) const;
    // The key of kind `code`'s row; 0 outside 1-12 or when the kind row is missing.
    DWORD GetDictObjectTypeFromEnum(DWORD code) const;
    DWORD GetData_Dictionary_ID(DWORD dictObjectId) const;
    DWORD GetGlobalIDUsingDictID(DWORD dictObjectId) const;
    BOOL IsDictionaryObjectIDValid(DWORD dictObjectId) const;
    // Number of registry rows of kind `code` (0 when the kind row is missing).
    int GetDictObjectCount(DWORD code);
    // Number of registry rows in a data dictionary.
    int GetDictObjectCountIn(DWORD dataDictionaryId) const;
    // The kind code and the key of the item's row in its kind's table (0 for
    // defaults, rules, user datatypes, domains and links). FALSE when the registry
    // row, its kind row or the item's row is missing; the outputs are then untouched.
    BOOL GetBoundDictObject(DWORD dictObjectId, int& kindCode, DWORD& rowKey);

    // A registry row of that kind for global id `globalUserId` (no table row);
    // returns its new id, 0 when the kind row is missing.
    DWORD InsertDefault(DWORD dataDictionaryId, DWORD globalUserId);
    DWORD InsertRule(DWORD dataDictionaryId, DWORD globalUserId);
    DWORD InsertUserDatatype(DWORD dataDictionaryId, DWORD globalUserId);
    DWORD InsertDomain(DWORD dataDictionaryId, DWORD globalUserId);
    // The registry ids of one kind in the registry's order; 0 ends the walk.
    DWORD GetFirstDefaultDictObjId() { return FirstOfKind(tessmeta::kDictDefault); }
    DWORD GetNextDefaultDictObjId() { return NextOfKind(); }
    DWORD GetFirstRuleDictObjId() { return FirstOfKind(tessmeta::kDictRule); }
    DWORD GetNextRuleDictObjId() { return NextOfKind(); }
    DWORD GetFirstUserDatatypeDictObjId() { return FirstOfKind(tessmeta::kDictUserDatatype); }
    DWORD GetNextUserDatatypeDictObjId() { return NextOfKind(); }
    DWORD GetFirstDomainDictObjId() { return FirstOfKind(tessmeta::kDictDomain); }
    DWORD GetNextDomainDictObjId() { return NextOfKind(); }
    // Sets / removes a registry row (nothing else).
    BOOL UpdateDictObj(DWORD dictObjectId, DWORD globalUserId);
    BOOL DeleteDictObj(DWORD dictObjectId);

    // ---- data dictionaries and object domains ------------------------------------------

    POSITION GetDataDictionaryStartPosition() const;
    CKelDataDictionary* GetNextDataDictionary(POSITION& position) const;
    BOOL GetDataDictionaryName(DWORD dataDictionaryId, CString& name) const;
    BOOL GetDataDictionaryName(const CKelDataDictionary* row, CString& name) const;
    BOOL GetDataDictionaryDescription(DWORD dataDictionaryId, CString& description) const;
    BOOL GetDataDictionaryDescription(const CKelDataDictionary* row, CString& description) const;
    bool SetDataDictionaryName(DWORD dataDictionaryId, const CString& name);
    bool SetDataDictionaryName(CKelDataDictionary* row, const CString& name);
    bool SetDataDictionaryDescription(DWORD dataDictionaryId, const CString& description);
    bool SetDataDictionaryDescription(CKelDataDictionary* row, const CString& description);
    BOOL IsDiagramSpecificDataDictionary(DWORD dataDictionaryId) const;
    BOOL IsDiagramSpecificDataDictionary(const CKelDataDictionary* row) const;
    CKelDataDictionary* GetDataDictionary(DWORD dataDictionaryId) const;
    CKelDataDictionary* GetDataDictionary(const CString& name) const;
    int GetNumOfDataDictionary() const;
    DWORD GetDiagramSpecificData_Dictionary_ID() const;
    DWORD GetDiagramSpecificDataDictionaryGlobal_User_ID() const;
    BOOL IsInDiagramSpecificDataDictionary(DWORD dictObjectId) const;
    BOOL CreateDiagramSpecificDataDictionary(const CString& name);
    void PrependDataDictionaryName(DWORD dataDictionaryId, CString& text) const;
    // A new (not diagram-specific) data dictionary with its object domain. Returns
    // its id.
    DWORD CreateDataDictionary(const CString& name, const CString& description);
    // Removes a data dictionary that holds no item and is not the diagram-specific
    // one, with its strings' usages and its unique object. FALSE otherwise.
    BOOL DeleteDataDictionary(DWORD dataDictionaryId);

    // The object domain of a data dictionary / of the data dictionary holding an item.
    DWORD GetDataDictionaryObjectDomainID(DWORD dataDictionaryId) const;
    DWORD GetDictObjObjectDomainID(DWORD dictObjectId) const;
    // Files `globalId` under the object domain of the item's data dictionary, unless
    // it has a domain already (or there is none to join).
    void AssignDictObjToObjectDomain(DWORD dictObjectId, DWORD globalId);

    // ---- reference values ----------------------------------------------------------------

    DWORD InsertRefValue(CString& name, CString& description, CString& value,
                         CString& valueDescription, CString& minValue, CString& maxValue,
                         BOOL isNotBetween, BOOL isRange, DWORD dataDictionaryId,
                         DWORD& dictObjectId, BOOL useGivenId);
    DWORD InsertRefValue(DWORD nameId, DWORD descriptionId, DWORD valueId, DWORD valueDescriptionId,
                         DWORD minValueId, DWORD maxValueId, BOOL isNotBetween, BOOL isRange,
                         DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateRefValue(DWORD referenceValueId, CString& name, CString& description, CString& value,
                        CString& valueDescription, CString& minValue, CString& maxValue,
                        BOOL isNotBetween, BOOL isRange);
    BOOL SetReferenceValueName(DWORD referenceValueId, CString& name);
    BOOL SetReferenceValueDescription(DWORD referenceValueId, CString& description);
    BOOL SetReferenceValueValue(DWORD referenceValueId, CString& value);
    BOOL SetReferenceValueValueDescription(DWORD referenceValueId, CString& valueDescription);
    BOOL SetReferenceValueMinValue(DWORD referenceValueId, CString& minValue);
    BOOL SetReferenceValueMaxValue(DWORD referenceValueId, CString& maxValue);
    BOOL SetReferenceValueIsNotBetween(DWORD referenceValueId, BOOL isNotBetween);
    BOOL SetReferenceValueIsRange(DWORD referenceValueId, BOOL isRange);
    BOOL GetRefValueName(DWORD referenceValueId, CString& name) const;
    BOOL GetRefValueData(DWORD referenceValueId, CString& name, CString& description,
                         CString& value, CString& valueDescription, CString& minValue,
                         CString& maxValue, BOOL& isNotBetween, BOOL& isRange) const;
    // The reference value's row, then its registry row; FALSE when either is missing.
    // Its bindings stay: the reference manager removes them.
    BOOL DeleteRefValue(DWORD referenceValueId);
    CKelReferenceValue* GetRefValueRow(DWORD referenceValueId) const;
    CKelReferenceValue* GetRefValueDictObjIDFKRow(DWORD dictObjectId) const;
    // The first reference value in table order of data dictionary `dataDictionaryId`
    // (0 is no translated id here) named `name` without case; null when none.
    CKelReferenceValue* GetRefValueRow(CString name, DWORD dataDictionaryId) const;
    POSITION GetFirstRefValueRowPosition() const;
    CKelReferenceValue* GetNextRefValueRow(POSITION& position) const;
    // The next reference value of that data dictionary; null at the end.
    CKelReferenceValue* GetNextRefValueRow(POSITION& position, DWORD dataDictionaryId) const;
    int GetReferenceValueCount() const;
    // Compares description, value, value description, minimum, maximum (without
    // case), the two flags (exactly) and the value overrides of the bindings on meta
    // table 8 (each binding's key must be in `overrides` with the same text, case
    // counting, and every entry must be matched).
    LONG IsReferenceValueUnique(CString& name, CString& description, CString& value,
                                CString& valueDescription, CString& minValue, CString& maxValue,
                                BOOL isNotBetween, BOOL isRange, CDictOverrideMap& overrides,
                                DWORD dataDictionaryId, bool compareContents);
    LONG GetNameForUniqueReferenceValue(CString& name, CString& description, CString& value,
                                        CString& valueDescription, CString& minValue,
                                        CString& maxValue, BOOL isNotBetween, BOOL isRange,
                                        CDictOverrideMap& overrides, DWORD dataDictionaryId,
                                        bool compareContents);

    // ---- dictionary object links ------------------------------------------------------------

    DWORD InsertDictionaryObjectLink(DWORD parent, DWORD child, DWORD ultimateParent,
                                     DWORD nodeNameId, DWORD level, int leaf,
                                     DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    DWORD InsertDictionaryObjectLink(DWORD parent, DWORD child, DWORD ultimateParent,
                                     const CString& nodeName, DWORD level, int leaf,
                                     DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    // The link and its registry row; children are not touched.
    BOOL DeleteDictionaryObjectLink(DWORD linkId);
    CKelDictionaryObjectLink* GetDictionaryObjectLinkRow(DWORD linkId) const;
    CKelDictionaryObjectLink* GetDictObjLinkDictionaryObjectAKRow(DWORD dictObjectId) const;
    CKelDictionaryObjectLink* GetDictObjLinkChildAKRow(DWORD child) const;
    CKelDictionaryObjectLink* GetFirstDictObjLinkParentFKRow(DWORD parent);
    CKelDictionaryObjectLink* GetNextDictObjLinkParentFKRow();
    POSITION GetFirstDictObjLinkRowPosition() const;
    CKelDictionaryObjectLink* GetNextDictObjLinkRow(POSITION& position) const;
    int GetDictObjLinkCount() const;
    // Of the link found by child `item`; 0 when none.
    DWORD LookupDictObjLinkParentID(DWORD item) const;
    DWORD LookupDictObjLinkUltimateParentID(DWORD item) const;
    // The link found by child `item` when its parent is `item` itself; else 0.
    DWORD HasDictionaryObjectLinkRoot(DWORD item) const;
    // A root link for `item` (parent and ultimate parent `item`, child 0, level 0,
    // leaf) in the item's data dictionary; 0 for item 0.
    DWORD CreateDictionaryObjectLinkRoot(DWORD item);
    // Links `child` under `parent` (parent 0: a root), one level below the parent's
    // own link and under its root, marking that link no leaf; 0 for child 0.
    DWORD CreateDictionaryObjectLink(DWORD child, DWORD parent);

  private:
    // Calls f(table) for each table in table order.
    template <class F>
    void ForEachTable(F&& f) const;

    DWORD InsertBodyless(DWORD code, DWORD dataDictionaryId, DWORD globalUserId);
    DWORD FirstOfKind(DWORD code);
    DWORD NextOfKind();
    DWORD NextOfKindFrom(const CKelDictObject* row);
    // The data dictionary of a registry id; false when the registry lacks it.
    bool DataDictionaryOf(DWORD dictObjectId, DWORD& dataDictionaryId) const;
    // 0 stands for the diagram-specific data dictionary.
    DWORD ScopeOf(DWORD dataDictionaryId) const;

    // The creation pattern: `insertRow(dictObjectId)` adds the kind's row and
    // returns its key.
    template <class Table, class InsertRow>
    DWORD CreateItem(DWORD code, Table& table, DWORD dataDictionaryId, DWORD& dictObjectId,
                     BOOL useGivenId, InsertRow&& insertRow);
    // The deletion pattern.
    template <class Table>
    BOOL DeleteItem(Table& table, DWORD key);
    // The first item of `table` in table order named `name` in data dictionary
    // `dataDictionaryId` (taken as given).
    template <class Table>
    typename Table::Row* FirstNamedIn(Table& table, const CString& name,
                                      DWORD dataDictionaryId) const;
    // Whether the texts of `row` equal the given ones without case (columns 1 to n).
    template <class Table, std::size_t N>
    static bool TextsEqualNoCase(const Table& table, const typename Table::Row& row,
                                 const CString* const (&texts)[N]);
    // Whether the bindings of an item on a meta table carry exactly the overrides.
    bool SameOverrides(DWORD dictObjectId, DWORD metaTableKey, CDictOverrideMap& overrides);
    // Repeats `test` with name, name_1, name_2, ... while it answers -1.
    template <class Test>
    static LONG UniqueName(CString& name, Test&& test);

    // Calls f(table) with the table of kind `code`; false when the kind has none.
    template <class F>
    bool WithKindTable(DWORD code, F&& f) const;
    template <class Table>
    void ShareGlobalIds(DWORD code, Table& table);
    void CollectInvalidDictionaryObjectIDs();

    CNameSpaceMgr* m_pNames;  // not owned; may be null
    CGuidMgr* m_pGuids;       // not owned; may be null
    CZmfFile* m_pFile;        // not owned; the file loaded or last saved to
    CRefObjectMgr* m_pRefs;   // not owned; may be null
    ULONG m_nFileVersion;
    int m_nDictObjectTypeId;  // object type "Dictionary Object"; 0 without identity

    std::unique_ptr<CEnhDataDictionaryTable> m_pDataDictionaries;
    std::unique_ptr<CEnhDictObjectTypeTable> m_pKinds;
    std::unique_ptr<CEnhDictObjectTable> m_pRegistry;
    std::unique_ptr<CEnhReferenceValueTable> m_pReferenceValues;
    std::unique_ptr<CEnhDictionaryObjectLinkTable> m_pLinks;

    bool m_bKindWalk = false;  // a first/next walk of one kind is under way
};

// ---- templates shared by the kinds' operations ----------------------------------------

template <class Table, class InsertRow>
DWORD CDictObjectMgr::CreateItem(DWORD code, Table& table, DWORD dataDictionaryId,
                                 DWORD& dictObjectId, BOOL useGivenId, InsertRow&& insertRow) {
    const DWORD kindId = GetDictObjectTypeFromEnum(code);
    if (!kindId) return 0;
    dictObjectId = m_pRegistry->Insert(dataDictionaryId, kindId, 0, useGivenId ? dictObjectId : 0);
    const DWORD key = insertRow(dictObjectId);
    const typename Table::Row* row = table.GetRow(key);
    const DWORD globalId = row ? row->Global_User_ID : 0;
    UpdateDictObj(dictObjectId, globalId);
    AssignDictObjToObjectDomain(dictObjectId, globalId);
    return key;
}

template <class Table>
BOOL CDictObjectMgr::DeleteItem(Table& table, DWORD key) {
    const typename Table::Row* row = table.GetRow(key);
    if (!row) return FALSE;
    const DWORD dictObjectId = row->Dictionary_Object_ID;
    if (!m_pRegistry->GetRow(dictObjectId)) return FALSE;
    table.Delete(key);
    m_pRegistry->Delete(dictObjectId);
    return TRUE;
}

template <class Table>
typename Table::Row* CDictObjectMgr::FirstNamedIn(Table& table, const CString& name,
                                                  DWORD dataDictionaryId) const {
    return table.FindFirstByName(name.View(), [&](const typename Table::Row& row) {
        DWORD holder = 0;
        return DataDictionaryOf(row.Dictionary_Object_ID, holder) && holder == dataDictionaryId;
    });
}

template <class Table, std::size_t N>
bool CDictObjectMgr::TextsEqualNoCase(const Table& table, const typename Table::Row& row,
                                      const CString* const (&texts)[N]) {
    CString stored;
    for (std::size_t i = 0; i < N; ++i) {
        table.GetText(&row, static_cast<int>(i + 1), stored);
        if (stored.CompareNoCase(*texts[i]) != 0) return false;
    }
    return true;
}

template <class Test>
LONG CDictObjectMgr::UniqueName(CString& name, Test&& test) {
    const CString base = name;
    LONG result = test();
    for (int counter = 1; result == -1; ++counter) {
        name.Format("%s_%d", base.GetString(), counter);
        result = test();
    }
    return result;
}
