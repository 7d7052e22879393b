// CEnhDataDictionaryTable ("Data_Dictionary"): the data dictionaries of a model.
//
// Every dictionary item lies in exactly one data dictionary. One of them is marked
// diagram specific (bit 0 of Flags): the model's own dictionary, the default scope
// of the uniqueness tests and the home of the system libraries and triggers. Each
// data dictionary is a unique object of type "Data Dictionary" and heads an object
// domain of type "DATA_DICTIONARY", which its items join.
//
// Loading older files (the file version is given at construction):
//   - below 501 every data dictionary is diagram specific;
//   - below 502 each gets its object domain at load;
//   - below 500 a model without any gets the diagram-specific one, named "Main".
// Rows stay in list order (load order, then inserts) with a map by key; lookups by
// name walk the few rows.
#pragma once

#include "foundation/enh_table.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"

class CEnhDataDictionaryTable;

// One data dictionary: Data_Dictionary_ID (key), Name and Description (string ids),
// Flags, Signature_GUID (text), Global_User_ID.
class CKelDataDictionary final : public CEnhRow<CData_DictionaryBase, CEnhDataDictionaryTable> {};

struct SDataDictionaryTraits : CEnhTableTraits<CKelDataDictionary> {
    static constexpr std::array kTexts{Text{&Row::Name, "Data Dictionary Name"},
                                       Text{&Row::Description, "Data Dictionary Description"}};
    static constexpr const char* kObjectType = "Data Dictionary";
};

class CEnhDataDictionaryTable : public CEnhTable<SDataDictionaryTraits> {
  public:
    static constexpr DWORD kDiagramSpecificFlag = 1;
    static constexpr const char* kDefaultName = "Main";
    static constexpr const char* kDefaultDescription = "Diagram specific data dictionary.";
    static constexpr const char* kDomainType = "DATA_DICTIONARY";

    // All pointers borrowed; `names` and `guids` may be null.
    CEnhDataDictionaryTable(ULONG fileVersion, CNameSpaceMgr* names, CGuidMgr* guids,
                            CZmfFile* file);

    using CEnhTable::Init;
    // Loads every row, applying the load rules of the file version (see above).
    void Init(unsigned int bucketCount) override;

    // Adds a data dictionary (Flags 0) under key `dataDictionaryId` (0: a new one)
    // with unique object `globalUserId` (0: a new one); the texts are interned for
    // it. Returns the key.
    ULONG Insert(const CString& name, const CString& description, DWORD globalUserId,
                 DWORD dataDictionaryId);
    // The same with string ids, re-attached to the unique object.
    ULONG Insert(DWORD nameId, DWORD descriptionId, DWORD globalUserId, DWORD dataDictionaryId);
    // Removes the row, its two strings' usages and its unique object (passing
    // `reallyDelete` to CGuidMgr::DeleteObject). 0 for an unknown id.
    int Delete(DWORD dataDictionaryId, int reallyDelete);

    using CEnhTable::GetRow;
    // The first data dictionary in list order whose name equals `name` without
    // case; null when none.
    CKelDataDictionary* GetRow(const CString& name) const;

    POSITION GetDataDictionaryStartPosition() const { return GetFirstRowPosition(); }
    CKelDataDictionary* GetNextDataDictionary(POSITION& position) const {
        return GetNextRow(position);
    }
    int GetNumOfDataDictionary() const { return GetCount(); }

    int GetName(const CKelDataDictionary* row, CString& out) const { return GetText(row, 0, out); }
    int GetName(DWORD id, CString& out) const { return GetText(id, 0, out); }
    int SetName(CKelDataDictionary* row, const CString& text) { return SetText(row, 0, text); }
    int SetName(DWORD id, const CString& text) { return SetText(id, 0, text); }
    int GetDescription(const CKelDataDictionary* row, CString& out) const {
        return GetText(row, 1, out);
    }
    int GetDescription(DWORD id, CString& out) const { return GetText(id, 1, out); }
    int SetDescription(CKelDataDictionary* row, const CString& text) {
        return SetText(row, 1, text);
    }
    int SetDescription(DWORD id, const CString& text) { return SetText(id, 1, text); }
    int SetSignatureGUID(CKelDataDictionary* row, const CString& guid);
    int SetSignatureGUID(DWORD id, const CString& guid) {
        return SetSignatureGUID(GetRow(id), guid);
    }

    // Bit 0 of Flags; FALSE for an unknown id.
    BOOL IsDiagramSpecificDataDictionary(DWORD id) const;
    static BOOL IsDiagramSpecificDataDictionary(const CKelDataDictionary* row) {
        return row && (row->Flags & kDiagramSpecificFlag) ? TRUE : FALSE;
    }
    // Of the first diagram-specific row in list order; 0 when there is none.
    DWORD GetDiagramSpecificData_Dictionary_ID() const;
    DWORD GetDiagramSpecificDataDictionaryGlobal_User_ID() const;
    // Marks the first row diagram specific; FALSE when the table is empty.
    BOOL UpdateDataDictionaryToDiagramSpecific();
    // Renames the diagram-specific data dictionary to `name` (when not empty) or,
    // when there is none, creates it ("Main" when `name` is empty, described as
    // "Diagram specific data dictionary.") with its object domain. FALSE only when
    // no row could be made.
    BOOL CreateDiagramSpecificDataDictionary(const CString& name);
    // Adds the object domain of a data dictionary (its name, type "DATA_DICTIONARY",
    // its unique object's GUID). Returns the domain id; 0 without an identity manager.
    ULONG CreateObjectDomain(const CKelDataDictionary& row);
    // "Name.text" when the data dictionary has a non-empty name; else unchanged.
    void PrependDataDictionaryName(DWORD id, CString& text) const;

  private:
    const CKelDataDictionary* FirstDiagramSpecific() const;

    ULONG m_nFileVersion;
    CGuidMgr* m_pGuids;  // not owned; may be null
};
