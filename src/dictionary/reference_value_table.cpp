#include "dictionary/reference_value_table.h"

#include <memory>

namespace {

std::unique_ptr<CKelReferenceValue> NewRow(DWORD dictObjectId, BOOL isNotBetween, BOOL isRange,
                                           DWORD globalUserId) {
    auto row = std::make_unique<CKelReferenceValue>();
    row->Dictionary_Object_ID = dictObjectId;
    row->IsNotBetween = isNotBetween;
    row->IsRange = isRange;
    row->Global_User_ID = globalUserId;
    return row;
}

}  // namespace

ULONG CEnhReferenceValueTable::Insert(DWORD dictObjectId, const CString& name,
                                      const CString& description, const CString& value,
                                      const CString& valueDescription, const CString& minValue,
                                      const CString& maxValue, BOOL isNotBetween, BOOL isRange,
                                      DWORD globalUserId, DWORD referenceValueId) {
    return InsertTexts(NewRow(dictObjectId, isNotBetween, isRange, globalUserId), referenceValueId,
                       name, description, value, valueDescription, minValue, maxValue);
}

ULONG CEnhReferenceValueTable::Insert(DWORD dictObjectId, DWORD nameId, DWORD descriptionId,
                                      DWORD valueId, DWORD valueDescriptionId, DWORD minValueId,
                                      DWORD maxValueId, BOOL isNotBetween, BOOL isRange,
                                      DWORD globalUserId, DWORD referenceValueId) {
    auto row = NewRow(dictObjectId, isNotBetween, isRange, globalUserId);
    row->Name = nameId;
    row->Description = descriptionId;
    row->Value = valueId;
    row->Value_Description = valueDescriptionId;
    row->Min_Value = minValueId;
    row->Max_Value = maxValueId;
    return InsertIds(std::move(row), referenceValueId);
}

int CEnhReferenceValueTable::SetFlags(ULONG key, BOOL isNotBetween, BOOL isRange) {
    return UpdateRow(key, [&](CKelReferenceValue& row) {
        row.IsNotBetween = isNotBetween;
        row.IsRange = isRange;
    });
}
