// The reusable code of the data dictionary, three kinds of item with a name, a
// description and a body text:
//
//   CEnhDictLibraryTbl ("Dictionary_Library"): libraries of macro code;
//   CEnhDictTriggerTbl ("Dictionary_Trigger"): triggers, with the statements they
//     fire on (Event: 1 insert, 2 update, 4 delete) and two numeric attributes;
//   CEnhReusableProcTbl ("Reusable_Procedure"): reusable procedures, with a numeric
//     attribute.
//
// Each item is a registry row plus a row here whose Dictionary_Object_ID is the
// registry id. Texts live in the name space, owned by the item's unique object
// (types "Dictionary Library", "Dictionary Trigger", "Reusable Procedure"). The
// integer field is 1 for the system libraries and triggers made from macro files;
// it and the numeric attributes are otherwise stored and returned as given.
//
// Unlike the other item tables, these know the dictionary manager: every insert,
// in every form, files the new item's unique object under the object domain of its
// data dictionary itself.
#pragma once

#include <memory>
#include <utility>

#include "dictionary/dict_item_table.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "zmflib/rows.h"

class CDictObjectMgr;
class CEnhDictLibraryTbl;
class CEnhDictTriggerTbl;
class CEnhReusableProcTbl;

// CDictObjectMgr::AssignDictObjToObjectDomain, for the tables below (which see the
// manager only as a declared class). Does nothing without a manager.
void AssignCodeItemToObjectDomain(CDictObjectMgr* dict, DWORD dictObjectId, DWORD globalId);

// What the three tables share: construction with the dictionary manager, and
// inserts that assign the object domain.
template <class Traits>
class CEnhCodeItemTable : public CEnhDictItemTable<Traits> {
  public:
    using Row = typename Traits::Row;
    // Tells the manager's creation pattern that the table assigns the domain.
    static constexpr bool kAssignsObjectDomain = true;

    // All pointers borrowed; `dict`, `names` and `guids` may be null.
    CEnhCodeItemTable(CDictObjectMgr* dict, CNameSpaceMgr* names, CZmfFile* file, CGuidMgr* guids)
        : CEnhDictItemTable<Traits>(names, nullptr, guids, file), m_pDict(dict) {}

    // The row form: `row` holds the columns, its texts as string ids (re-attached to
    // its unique object); key 0 and Global_User_ID 0 ask for new ones. Returns the
    // key.
    ULONG Insert(std::unique_ptr<Row> row, ULONG key) {
        return Assigned(this->InsertIds(std::move(row), key));
    }

  protected:
    // The texts form.
    template <class... Texts>
    ULONG InsertWithTexts(std::unique_ptr<Row> row, ULONG key, const Texts&... texts) {
        return Assigned(this->InsertTexts(std::move(row), key, texts...));
    }

  private:
    ULONG Assigned(ULONG key) {
        if (const Row* row = this->GetRow(key))
            AssignCodeItemToObjectDomain(m_pDict, row->Dictionary_Object_ID, row->Global_User_ID);
        return key;
    }

    CDictObjectMgr* m_pDict;  // not owned; may be null
};

// ---- libraries -------------------------------------------------------------------------

// One library: Dictionary_Library_ID (key), Dictionary_Object_ID, Name, Description,
// Integer_Field, Value (the body; string ids but the integer), Global_User_ID.
class CKelDictLibrary final : public CKelDictItem<CDictionary_LibraryBase, CEnhDictLibraryTbl> {
  public:
    CString GetName() const { return ReadText(0); }
    CString GetDescription() const { return ReadText(1); }
    CString GetValue() const { return ReadText(2); }
};

struct SDictLibraryTraits : CEnhDictItemTraits<CKelDictLibrary> {
    static constexpr std::array kTexts{Text{&Row::Name, "Dictionary Library Name"},
                                       Text{&Row::Description, "Dictionary Library Description"},
                                       Text{&Row::Value, "Dictionary Library Value"}};
    static constexpr const char* kObjectType = "Dictionary Library";
};

class CEnhDictLibraryTbl : public CEnhCodeItemTable<SDictLibraryTraits> {
  public:
    using CEnhCodeItemTable::CEnhCodeItemTable;
    using CEnhCodeItemTable::Insert;

    // Adds a library under key `libraryId` (0: a new one) for unique object
    // `globalUserId` (0: a new one). Returns the key.
    ULONG Insert(DWORD dictObjectId, const CString& name, const CString& description,
                 int integerField, const CString& text, DWORD globalUserId, DWORD libraryId);
    ULONG Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId, int integerField,
                 DWORD textId, DWORD globalUserId, DWORD libraryId);
    // 0 for an unknown key.
    int SetIntegerField(ULONG libraryId, int integerField);
};

// ---- triggers --------------------------------------------------------------------------

// One trigger: Dictionary_Trigger_ID (key), Dictionary_Object_ID, Name, Description,
// Integer_Field, Numeric_Attribute_1, Event, Value (the body), Numeric_Attribute_2,
// Global_User_ID.
class CKelDictTrigger final : public CKelDictItem<CDictionary_TriggerBase, CEnhDictTriggerTbl> {
  public:
    CString GetName() const { return ReadText(0); }
    CString GetDescription() const { return ReadText(1); }
    CString GetValue() const { return ReadText(2); }
};

struct SDictTriggerTraits : CEnhDictItemTraits<CKelDictTrigger> {
    static constexpr std::array kTexts{Text{&Row::Name, "Dictionary Trigger Name"},
                                       Text{&Row::Description, "Dictionary Trigger Description"},
                                       Text{&Row::Value, "Dictionary Trigger Value"}};
    static constexpr const char* kObjectType = "Dictionary Trigger";
};

// The numbers of a trigger, in column order.
struct SDictTriggerNumbers {
    int integerField = 0;
    DWORD firstAttribute = 0;
    DWORD event = 0;  // 1 insert, 2 update, 4 delete, or a combination
    DWORD secondAttribute = 0;
};

class CEnhDictTriggerTbl : public CEnhCodeItemTable<SDictTriggerTraits> {
  public:
    using CEnhCodeItemTable::CEnhCodeItemTable;
    using CEnhCodeItemTable::Insert;

    // Adds a trigger under key `triggerId` (0: a new one) for unique object
    // `globalUserId` (0: a new one). Returns the key.
    ULONG Insert(DWORD dictObjectId, const CString& name, const CString& description,
                 const SDictTriggerNumbers& numbers, const CString& text, DWORD globalUserId,
                 DWORD triggerId);
    ULONG Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId,
                 const SDictTriggerNumbers& numbers, DWORD textId, DWORD globalUserId,
                 DWORD triggerId);
    // 0 for an unknown key.
    int SetNumbers(ULONG triggerId, const SDictTriggerNumbers& numbers);
    static SDictTriggerNumbers NumbersOf(const CKelDictTrigger& row) {
        return {row.Integer_Field, row.Numeric_Attribute_1, row.Event, row.Numeric_Attribute_2};
    }
};

// ---- reusable procedures -----------------------------------------------------------------

// One procedure: Reusable_Procedure_ID (key), Dictionary_Object_ID, Name,
// Description, Value (the body), Numeric_Attribute, Global_User_ID.
class CKelReusableProc final : public CKelDictItem<CReusable_ProcedureBase, CEnhReusableProcTbl> {
  public:
    CString GetName() const { return ReadText(0); }
    CString GetDescription() const { return ReadText(1); }
    CString GetValue() const { return ReadText(2); }
};

struct SReusableProcTraits : CEnhDictItemTraits<CKelReusableProc> {
    static constexpr std::array kTexts{Text{&Row::Name, "Reusable Procedure Name"},
                                       Text{&Row::Description, "Reusable Procedure Description"},
                                       Text{&Row::Value, "Reusable Procedure Value"}};
    static constexpr const char* kObjectType = "Reusable Procedure";
};

class CEnhReusableProcTbl : public CEnhCodeItemTable<SReusableProcTraits> {
  public:
    using CEnhCodeItemTable::CEnhCodeItemTable;
    using CEnhCodeItemTable::Insert;

    // Adds a procedure under key `procedureId` (0: a new one) for unique object
    // `globalUserId` (0: a new one). Returns the key.
    ULONG Insert(DWORD dictObjectId, const CString& name, const CString& description,
                 const CString& text, DWORD numericAttribute, DWORD globalUserId,
                 DWORD procedureId);
    ULONG Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId, DWORD textId,
                 DWORD numericAttribute, DWORD globalUserId, DWORD procedureId);
    // 0 for an unknown key.
    int SetNumericAttribute(ULONG procedureId, DWORD numericAttribute);
};
