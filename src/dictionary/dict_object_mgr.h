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
// (the number is the table id GetTablePtr answers to).
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

#include "dictionary/attachment_tables.h"
#include "dictionary/code_item_tables.h"
#include "dictionary/data_dictionary_table.h"
#include "dictionary/dict_kinds.h"
#include "dictionary/dict_object_link_table.h"
#include "dictionary/dict_object_table.h"
#include "dictionary/reference_value_table.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cmap.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "references/ref_object_mgr.h"
#include "zmflib/zmf_file.h"

// Value overrides of bound dictionary objects, by the binding's key.
using CDictOverrideMap = CMap<DWORD, DWORD, CString, const CString&>;
// Valid attachment types of an attachment type being copied, by Meta_Table_ID.
using CValidAttTypeMap = CMap<DWORD, DWORD, CKelValidAttachmentType*, CKelValidAttachmentType*>;

class CDictObjectMgr {
  public:
    // The system trigger libraries and triggers made from the macro files (see
    // InsertSystemTriggerLibs): by platform code 1, 2, 3, for update, delete and
    // insert triggers.
    static constexpr const char* SSUPDTRIGLIBNAME = "SSUpdtTrigLib";
    static constexpr const char* SSDELTRIGLIBNAME = "SSDelTrigLib";
    static constexpr const char* SSINSTRIGLIBNAME = "SSInsTrigLib";
    static constexpr const char* ORAUPDTRIGLIBNAME = "OraUpdtTrigLib";
    static constexpr const char* ORADELTRIGLIBNAME = "OraDelTrigLib";
    static constexpr const char* ORAINSTRIGLIBNAME = "OraInsTrigLib";
    static constexpr const char* DB2UPDTRIGLIBNAME = "Db2UpdtTrigLib";
    static constexpr const char* DB2DELTRIGLIBNAME = "Db2DelTrigLib";
    static constexpr const char* DB2INSTRIGLIBNAME = "Db2InsTrigLib";
    static constexpr const char* SSUPDTRIGNAME = "SSUpdtTrigger";
    static constexpr const char* SSDELTRIGNAME = "SSDelTrigger";
    static constexpr const char* SSINSTRIGNAME = "SSInsTrigger";
    static constexpr const char* ORAUPDTRIGNAME = "OraUpdtTrigger";
    static constexpr const char* ORADELTRIGNAME = "OraDelTrigger";
    static constexpr const char* ORAINSTRIGNAME = "OraInsTrigger";
    static constexpr const char* DB2UPDTRIGNAME = "Db2UpdtTrigger";
    static constexpr const char* DB2DELTRIGNAME = "Db2DelTrigger";
    static constexpr const char* DB2INSTRIGNAME = "Db2InsTrigger";

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

    // ---- libraries (kind "Library") -------------------------------------------------------

    DWORD InsertLibrary(CString& name, CString& description, int integerField, CString& text,
                        DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    DWORD InsertLibrary(DWORD nameId, DWORD descriptionId, int integerField, DWORD textId,
                        DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateLibrary(DWORD libraryId, CString& name, CString& description, int integerField,
                       CString& text);
    // The library's row (texts, unique object), then its registry row.
    BOOL DeleteLibrary(DWORD libraryId);
    // The libraries in the registry's order of the kind (sharing the walk of one
    // kind with the other first/next walks of kinds): TRUE with the library's fields,
    // FALSE at the end.
    BOOL GetFirstLibrary(DWORD& libraryId, CString& name, CString& description, int& integerField,
                         CString& text, DWORD& dictObjectId);
    BOOL GetNextLibrary(DWORD& libraryId, CString& name, CString& description, int& integerField,
                        CString& text, DWORD& dictObjectId);
    // The rows in table order; null at the end. One walk at a time.
    CKelDictLibrary* GetFirstLibraryRow();
    CKelDictLibrary* GetNextLibraryRow();
    CKelDictLibrary* GetLibraryRow(DWORD libraryId) const;
    CKelDictLibrary* GetLibraryFKRow(DWORD dictObjectId) const;
    BOOL GetLibraryData(DWORD libraryId, CString& name, CString& description, int& integerField,
                        CString& text) const;
    BOOL GetLibraryName(DWORD libraryId, CString& name) const;
    BOOL GetLibraryDesc(DWORD libraryId, CString& description) const;
    BOOL GetLibraryValue(DWORD libraryId, CString& text) const;
    int GetLibraryCount() const;
    // Compares description (without case), integer field (exactly) and text (without
    // case).
    LONG IsDictLibraryUnique(CString& name, CString& description, int integerField, CString& text,
                             DWORD dataDictionaryId);
    LONG GetNameForUniqueDictLibrary(CString& name, CString& description, int integerField,
                                     CString& text, DWORD dataDictionaryId);

    // ---- triggers (kind "Trigger") ---------------------------------------------------------

    DWORD InsertTrigger(CString& name, CString& description, int integerField, DWORD firstAttribute,
                        DWORD event, CString& text, DWORD secondAttribute, DWORD dataDictionaryId,
                        DWORD& dictObjectId, BOOL useGivenId);
    DWORD InsertTrigger(DWORD nameId, DWORD descriptionId, int integerField, DWORD firstAttribute,
                        DWORD event, DWORD textId, DWORD secondAttribute, DWORD dataDictionaryId,
                        DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateTrigger(DWORD triggerId, CString& name, CString& description, int integerField,
                       DWORD firstAttribute, DWORD event, CString& text, DWORD secondAttribute);
    BOOL DeleteTrigger(DWORD triggerId);
    BOOL GetFirstTrigger(DWORD& triggerId, CString& name, CString& description, int& integerField,
                         DWORD& firstAttribute, DWORD& event, CString& text, DWORD& secondAttribute,
                         DWORD& dictObjectId);
    BOOL GetNextTrigger(DWORD& triggerId, CString& name, CString& description, int& integerField,
                        DWORD& firstAttribute, DWORD& event, CString& text, DWORD& secondAttribute,
                        DWORD& dictObjectId);
    CKelDictTrigger* GetFirstTriggerRow();
    CKelDictTrigger* GetNextTriggerRow();
    CKelDictTrigger* GetTriggerRow(DWORD triggerId) const;
    CKelDictTrigger* GetTriggerFKRow(DWORD dictObjectId) const;
    BOOL GetTriggerData(DWORD triggerId, CString& name, CString& description, int& integerField,
                        DWORD& firstAttribute, DWORD& event, CString& text,
                        DWORD& secondAttribute) const;
    BOOL GetTriggerName(DWORD triggerId, CString& name) const;
    BOOL GetTriggerDesc(DWORD triggerId, CString& description) const;
    BOOL GetTriggerValue(DWORD triggerId, CString& text) const;
    int GetTriggerCount() const;
    // Compares description, integer field, first attribute, event, text, second
    // attribute, then the value overrides of the bindings on meta table 8 (as for
    // reference values).
    LONG IsDictTriggerUnique(CString& name, CString& description, int integerField,
                             DWORD firstAttribute, DWORD event, CString& text,
                             DWORD secondAttribute, CDictOverrideMap& overrides,
                             DWORD dataDictionaryId);
    LONG GetNameForUniqueDictTrigger(CString& name, CString& description, int integerField,
                                     DWORD firstAttribute, DWORD event, CString& text,
                                     DWORD secondAttribute, CDictOverrideMap& overrides,
                                     DWORD dataDictionaryId);

    // ---- reusable procedures (kind "Procedure") --------------------------------------------

    DWORD InsertProcedure(CString& name, CString& description, CString& text,
                          DWORD numericAttribute, DWORD dataDictionaryId, DWORD& dictObjectId,
                          BOOL useGivenId);
    DWORD InsertProcedure(DWORD nameId, DWORD descriptionId, DWORD textId, DWORD numericAttribute,
                          DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateProcedure(DWORD procedureId, CString& name, CString& description, CString& text,
                         DWORD numericAttribute);
    BOOL DeleteProcedure(DWORD procedureId);
    BOOL GetFirstProcedure(DWORD& procedureId, CString& name, CString& description, CString& text,
                           DWORD& numericAttribute, DWORD& dictObjectId);
    BOOL GetNextProcedure(DWORD& procedureId, CString& name, CString& description, CString& text,
                          DWORD& numericAttribute, DWORD& dictObjectId);
    CKelReusableProc* GetFirstProcedureRow();
    CKelReusableProc* GetNextProcedureRow();
    CKelReusableProc* GetProcedureRow(DWORD procedureId) const;
    CKelReusableProc* GetProcedureFKRow(DWORD dictObjectId) const;
    BOOL GetProcedureData(DWORD procedureId, CString& name, CString& description, CString& text,
                          DWORD& numericAttribute) const;
    BOOL GetProcedureName(DWORD procedureId, CString& name) const;
    BOOL GetProcedureDesc(DWORD procedureId, CString& description) const;
    BOOL GetProcedureValue(DWORD procedureId, CString& text) const;
    int GetProcedureCount() const;
    // Compares description, text and numeric attribute, then the value overrides of
    // the bindings on meta table 8.
    LONG IsReusableProcUnique(CString& name, CString& description, CString& text,
                              DWORD numericAttribute, CDictOverrideMap& overrides,
                              DWORD dataDictionaryId);
    LONG GetNameForUniqueReusableProc(CString& name, CString& description, CString& text,
                                      DWORD numericAttribute, CDictOverrideMap& overrides,
                                      DWORD dataDictionaryId);

    // ---- system libraries and triggers from macro files -----------------------------------
    //
    // Platform codes 1, 2 and 3 each have three libraries and three triggers (for
    // update, delete and insert statements), read from .bas files in the macro
    // folder. A missing file shows "Macro File: <path> not found" and is skipped.
    // Names match exactly, case counting, in every data dictionary; an item found is
    // only given the file's body, a new one goes into the diagram-specific data
    // dictionary with integer field 1. Other platform codes do nothing. Both return
    // TRUE and append the keys of the items they created to `newIds`.
    BOOL InsertSystemTriggerLibs(int platformCode, CList<DWORD, DWORD>& newIds);
    BOOL InsertSystemTriggers(int platformCode, CList<DWORD, DWORD>& newIds);
    // The body of the first library / trigger named exactly `name`; FALSE (and
    // `text` untouched) when there is none.
    BOOL FindSystemLib(const char* name, CString& text);
    BOOL FindSystemTrigger(const char* name, CString& text);
    // The folder the macro files are read from, ending in '/': the one set, else
    // "SysMacros/" beside the module that holds the library (the program or shared
    // object), or "SysMacros/" of the current directory when that path is unknown.
    CString GetMacroFolder() const;
    // Reads the macro files from `folder` instead (a trailing '/' is added when
    // missing); empty: back to the folder beside the module.
    void SetMacroFolder(const CString& folder);

    // ---- attachment types (kind "Attachment Type") -----------------------------------------

    DWORD InsertAttachmentType(CString& name, CString& description, int integerField,
                               DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    DWORD InsertAttachmentType(DWORD nameId, DWORD descriptionId, int integerField,
                               DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateAttachmentType(DWORD attachmentTypeId, CString& name, CString& description,
                              int integerField);
    // Collects the type's attachments and valid types, deletes the type (row and
    // registry row), then each valid type and each attachment as their own deletes
    // do. FALSE when the type or its registry row is missing, or when there is no
    // reference manager and the type has attachments or valid types (nothing then
    // changes).
    BOOL DeleteAttachmentType(DWORD attachmentTypeId);
    CKelAttachmentType* GetAttachmentTypeRow(DWORD attachmentTypeId) const;
    CKelAttachmentType* GetAttachmentTypeDictObjIDFKRow(DWORD dictObjectId) const;
    BOOL GetAttachmentTypeName(DWORD attachmentTypeId, CString& name) const;
    BOOL GetAttachmentTypeData(DWORD attachmentTypeId, CString& name, CString& description,
                               int& integerField) const;
    POSITION GetFirstAttTypeRowPosition() const;
    CKelAttachmentType* GetNextAttTypeRow(POSITION& position) const;
    int GetAttachmentTypeCount() const;
    // The first type in table order of data dictionary `dataDictionaryId` (as given)
    // named `name` without case; null when none.
    CKelAttachmentType* GetAttachmentTypeByName(DWORD dataDictionaryId, CString& name) const;
    // The type of the first attachment whose unique object is `globalUserId`; null
    // when there is no such attachment or its type is missing.
    CKelAttachmentType* GetAttachmentTypeByAttGlobalUserId(DWORD globalUserId) const;
    // Compares description (without case) and integer field, then the type's valid
    // types against `validTypes` (by Meta_Table_ID: each must be there with the same
    // two attributes, and every entry must be matched).
    LONG IsAttachmentTypeUnique(CString& name, CString& description, int integerField,
                                CValidAttTypeMap& validTypes, DWORD dataDictionaryId,
                                bool compareContents);
    LONG GetNameForUniqueAttachmentType(CString& name, CString& description, int integerField,
                                        CValidAttTypeMap& validTypes, DWORD dataDictionaryId,
                                        bool compareContents);

    // ---- valid attachment types (kind "Valid Attachment Type") -------------------------------

    // The registry row goes into the attachment type's data dictionary. 0 when the
    // attachment type is missing.
    DWORD InsertValidAttachmentType(DWORD attachmentTypeId, DWORD metaTableId, DWORD firstAttribute,
                                    DWORD secondAttribute, DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateValidAttachmentType(DWORD validTypeId, DWORD firstAttribute, DWORD secondAttribute);
    // Unbinds every attachment of the type from the valid type's class (the bindings
    // on its mapped meta table), then deletes the valid type and its registry row.
    // FALSE without a reference manager or when a row is missing.
    BOOL DeleteValidAttachmentType(DWORD validTypeId);
    CKelValidAttachmentType* GetValidAttachmentTypeRow(DWORD validTypeId) const;
    CKelValidAttachmentType* GetValidAttachmentTypeDictObjIDFKRow(DWORD dictObjectId) const;
    POSITION GetFirstValidAttachmentTypeRowPosition() const;
    CKelValidAttachmentType* GetNextValidAttachmentTypeRow(POSITION& position) const;
    int GetValidAttachmentTypeCount() const;
    // The valid types of an attachment type / of a meta table; one walk of each.
    CKelValidAttachmentType* GetFirstValidAttTypeAttTypeIDFKRow(DWORD attachmentTypeId);
    CKelValidAttachmentType* GetNextValidAttTypeAttTypeIDFKRow();
    CKelValidAttachmentType* GetFirstValidAttTypeMetaTableIDFKRow(DWORD metaTableId);
    CKelValidAttachmentType* GetNextValidAttTypeMetaTableIDFKRow();
    // The meta-table key bindings use for a valid type's Meta_Table_ID: 16 to 20
    // become 8, every other value is returned unchanged.
    static int ValidAttTypeToBoundDictObjMetaTableID(int metaTableId) {
        return tessmeta::BoundMetaTableOfValidType(metaTableId);
    }

    // ---- attachments (kind "Attachment") -------------------------------------------------

    // The attachment goes into its type's data dictionary. 0 when the type is missing.
    DWORD InsertAttachment(DWORD attachmentTypeId, CString& name, CString& description,
                           CString& value, DWORD numericAttribute, DWORD& dictObjectId,
                           BOOL useGivenId);
    DWORD InsertAttachment(DWORD attachmentTypeId, DWORD nameId, DWORD descriptionId, DWORD valueId,
                           DWORD numericAttribute, DWORD& dictObjectId, BOOL useGivenId);
    BOOL UpdateAttachment(DWORD attachmentId, CString& name, CString& description, CString& value,
                          DWORD numericAttribute);
    // Removes every binding of the attachment, then its row and its registry row.
    // FALSE without a reference manager or when a row is missing.
    BOOL DeleteAttachment(DWORD attachmentId);
    CKelAttachment* GetAttachmentRow(DWORD attachmentId) const;
    CKelAttachment* GetAttachmentDictObjIDFKRow(DWORD dictObjectId) const;
    BOOL GetAttachmentName(DWORD attachmentId, CString& name) const;
    BOOL GetAttachmentData(DWORD attachmentId, CString& name, CString& description, CString& value,
                           DWORD& numericAttribute) const;
    POSITION GetFirstAttachmentRowPosition() const;
    CKelAttachment* GetNextAttachmentRow(POSITION& position) const;
    int GetAttachmentCount() const;
    // The attachments of a type; one walk at a time.
    CKelAttachment* GetFirstAttachmentFKRow(DWORD attachmentTypeId);
    CKelAttachment* GetNextAttachmentFKRow();
    // The first attachment of the type (in table order) named `name` without case.
    CKelAttachment* GetAttachmentRowByName(CString& name, DWORD attachmentTypeId) const;
    // TRUE when the attachment exists, has a type, and one of the type's valid types
    // maps to `boundMetaTableId` (ValidAttTypeToBoundDictObjMetaTableID).
    BOOL IsAttachmentValidForType(DWORD attachmentId, DWORD boundMetaTableId) const;
    // Among the attachments of the same type: compares description and value
    // (without case) and the numeric attribute (exactly).
    LONG IsAttachmentUnique(DWORD attachmentTypeId, CString& name, CString& description,
                            CString& value, DWORD numericAttribute, bool compareContents);
    LONG GetNameForUniqueAttachment(DWORD attachmentTypeId, CString& name, CString& description,
                                    CString& value, DWORD numericAttribute, bool compareContents);

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
    // The creation pattern for an item of an attachment type, in the type's data
    // dictionary; 0 when the type is missing.
    template <class Table, class InsertRow>
    DWORD CreateInTypesDictionary(DWORD code, Table& table, DWORD attachmentTypeId,
                                  DWORD& dictObjectId, BOOL useGivenId, InsertRow&& insertRow);
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
    // Reads / writes text columns 0 to n-1 of a row.
    template <class Table, std::size_t N>
    static void ReadTexts(const Table& table, const typename Table::Row& row,
                          CString* const (&texts)[N]);
    template <class Table, std::size_t N>
    static void WriteTexts(Table& table, typename Table::Row& row,
                           const CString* const (&texts)[N]);
    // Whether the bindings of an item on a meta table carry exactly the overrides.
    bool SameOverrides(DWORD dictObjectId, DWORD metaTableKey, CDictOverrideMap& overrides);
    // The row of the next registry row of the kind walk that has one in `table`,
    // starting with registry id `dictObjectId`; null at the end of the walk.
    template <class Table>
    typename Table::Row* ItemOfKindWalk(Table& table, DWORD dictObjectId);
    // A row walk in table order with a cursor of the manager.
    template <class Table>
    static typename Table::Row* NextRowOf(const Table& table, POSITION& cursor);
    // Fills the outputs of a library / trigger / procedure walk from `row`.
    BOOL LibraryFields(const CKelDictLibrary* row, DWORD& libraryId, CString& name,
                       CString& description, int& integerField, CString& text,
                       DWORD& dictObjectId) const;
    BOOL TriggerFields(const CKelDictTrigger* row, DWORD& triggerId, CString& name,
                       CString& description, int& integerField, DWORD& firstAttribute, DWORD& event,
                       CString& text, DWORD& secondAttribute, DWORD& dictObjectId) const;
    BOOL ProcedureFields(const CKelReusableProc* row, DWORD& procedureId, CString& name,
                         CString& description, CString& text, DWORD& numericAttribute,
                         DWORD& dictObjectId) const;
    // Reads a macro file into `text` (lines joined with CR LF). A file that cannot be
    // opened shows "Macro File: <path> not found" and gives false.
    bool ReadMacroFile(CString& path, CString& text);
    // The first library / trigger of the kind walk named exactly `name`: its key (0:
    // none) and its other fields.
    DWORD ExactLibrary(const char* name, CString& description, int& integerField, CString& body);
    DWORD ExactTrigger(const char* name, CString& description, SDictTriggerNumbers& numbers,
                       CString& body);
    // The first library / trigger named exactly `name` gets `text` as its body (0),
    // else a new system one is made (its key).
    DWORD InsertOrUpdateSysLib(const char* name, CString& text);
    DWORD InsertOrUpdateSysTrigger(const char* name, CString& text, DWORD event);
    // Reads the platform's three library (or trigger) files and calls `apply(name,
    // text, event)` for each one read, appending the non-zero keys to `newIds`.
    template <class Apply>
    void ApplySystemMacros(int platformCode, bool triggers, CList<DWORD, DWORD>& newIds,
                           Apply&& apply);
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
    std::unique_ptr<CEnhDictLibraryTbl> m_pLibraries;
    std::unique_ptr<CEnhDictTriggerTbl> m_pTriggers;
    std::unique_ptr<CEnhReusableProcTbl> m_pProcedures;
    std::unique_ptr<CEnhReferenceValueTable> m_pReferenceValues;
    std::unique_ptr<CEnhAttachmentTypeTable> m_pAttachmentTypes;
    std::unique_ptr<CEnhValidAttachmentTypeTable> m_pValidAttachmentTypes;
    std::unique_ptr<CEnhAttachmentTable> m_pAttachments;
    std::unique_ptr<CEnhDictionaryObjectLinkTable> m_pLinks;

    bool m_bKindWalk = false;                 // a first/next walk of one kind is under way
    POSITION m_libraryRowCursor = nullptr;    // GetFirstLibraryRow / GetNextLibraryRow
    POSITION m_triggerRowCursor = nullptr;    // ... triggers
    POSITION m_procedureRowCursor = nullptr;  // ... procedures
    CString m_macroFolder;                    // empty: beside the module
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
    // The tables of code items assign the domain inside their own insert.
    if constexpr (!requires { Table::kAssignsObjectDomain; })
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

template <class Table, std::size_t N>
void CDictObjectMgr::ReadTexts(const Table& table, const typename Table::Row& row,
                               CString* const (&texts)[N]) {
    for (std::size_t i = 0; i < N; ++i)
        table.GetText(&row, static_cast<int>(i), *texts[i]);
}

template <class Table, std::size_t N>
void CDictObjectMgr::WriteTexts(Table& table, typename Table::Row& row,
                                const CString* const (&texts)[N]) {
    for (std::size_t i = 0; i < N; ++i)
        table.SetText(&row, static_cast<int>(i), *texts[i]);
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

template <class Table>
typename Table::Row* CDictObjectMgr::ItemOfKindWalk(Table& table, DWORD dictObjectId) {
    for (; dictObjectId; dictObjectId = NextOfKind())
        if (typename Table::Row* row = table.GetDictObjIDFKRow(dictObjectId)) return row;
    return nullptr;
}

template <class Table>
typename Table::Row* CDictObjectMgr::NextRowOf(const Table& table, POSITION& cursor) {
    return cursor ? table.GetNextRow(cursor) : nullptr;
}
