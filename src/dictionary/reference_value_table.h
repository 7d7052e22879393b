// CEnhReferenceValueTable ("Reference_Value"): reference values, the named value
// constraints of the data dictionary: a single value with its description, or a
// range from a minimum to a maximum, possibly inverted (not between).
//
// Each reference value is a dictionary item of kind "Reference Value": a registry
// row plus a row here whose Dictionary_Object_ID is the registry id. Its six texts
// live in the name space, owned by its unique object (type "Reference Value") under
// usage types of their own. Range bounds are stored as given, never compared.
#pragma once

#include "dictionary/dict_item_table.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "zmflib/rows.h"

class CEnhReferenceValueTable;

// One reference value: Reference_Value_ID (key), Dictionary_Object_ID, the string
// ids Name, Description, Value, Value_Description, Min_Value, Max_Value, the flags
// IsNotBetween and IsRange, Global_User_ID. Its getters read the texts through the
// owning table.
class CKelReferenceValue final
    : public CKelDictItem<CReference_ValueBase, CEnhReferenceValueTable> {
  public:
    CString GetName() const { return ReadText(0); }
    CString GetDescription() const { return ReadText(1); }
    CString GetValue() const { return ReadText(2); }
    CString GetValueDescription() const { return ReadText(3); }
    CString GetMinValue() const { return ReadText(4); }
    CString GetMaxValue() const { return ReadText(5); }
};

struct SReferenceValueTraits : CEnhDictItemTraits<CKelReferenceValue> {
    static constexpr std::array kTexts{
        Text{&Row::Name, "Reference Value Name"},
        Text{&Row::Description, "Reference Value Description"},
        Text{&Row::Value, "Reference Value Value"},
        Text{&Row::Value_Description, "Reference Value Value Description"},
        Text{&Row::Min_Value, "Reference Value Min Value"},
        Text{&Row::Max_Value, "Reference Value Max Value"}};
    static constexpr const char* kObjectType = "Reference Value";
};

class CEnhReferenceValueTable : public CEnhDictItemTable<SReferenceValueTraits> {
  public:
    enum EColumn { kName, kDescription, kValue, kValueDescription, kMinValue, kMaxValue };

    // All pointers borrowed; `names` and `guids` may be null.
    CEnhReferenceValueTable(CNameSpaceMgr* names, CIdentityMgr* keys, CGuidMgr* guids,
                            CZmfFile* file)
        : CEnhDictItemTable(names, keys, guids, file) {}

    // Adds a reference value under key `referenceValueId` (0: a new one) for unique
    // object `globalUserId` (0: a new one); each text becomes a new string of that
    // object. Returns the key.
    ULONG Insert(DWORD dictObjectId, const CString& name, const CString& description,
                 const CString& value, const CString& valueDescription, const CString& minValue,
                 const CString& maxValue, BOOL isNotBetween, BOOL isRange, DWORD globalUserId,
                 DWORD referenceValueId);
    // The same with string ids, each re-attached to the unique object.
    ULONG Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId, DWORD valueId,
                 DWORD valueDescriptionId, DWORD minValueId, DWORD maxValueId, BOOL isNotBetween,
                 BOOL isRange, DWORD globalUserId, DWORD referenceValueId);

    // Texts by row or by key (column as EColumn); 0 for an unknown key.
    int GetField(ULONG key, EColumn column, CString& out) const {
        return GetText(key, column, out);
    }
    int GetField(const CKelReferenceValue* row, EColumn column, CString& out) const {
        return GetText(row, column, out);
    }
    int SetField(ULONG key, EColumn column, const CString& text) {
        return SetText(key, column, text);
    }
    int SetField(CKelReferenceValue* row, EColumn column, const CString& text) {
        return SetText(row, column, text);
    }
    // Sets both flags; 0 for an unknown key.
    int SetFlags(ULONG key, BOOL isNotBetween, BOOL isRange);
};
