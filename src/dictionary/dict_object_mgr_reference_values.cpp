// The manager's reference-value operations.
#include "dictionary/dict_object_mgr.h"

using EColumn = CEnhReferenceValueTable::EColumn;

DWORD CDictObjectMgr::InsertRefValue(CString& name, CString& description, CString& value,
                                     CString& valueDescription, CString& minValue,
                                     CString& maxValue, BOOL isNotBetween, BOOL isRange,
                                     DWORD dataDictionaryId, DWORD& dictObjectId, BOOL useGivenId) {
    return CreateItem(tessmeta::kDictReferenceValue, *m_pReferenceValues, dataDictionaryId,
                      dictObjectId, useGivenId, [&](DWORD id) {
                          return m_pReferenceValues->Insert(id, name, description, value,
                                                            valueDescription, minValue, maxValue,
                                                            isNotBetween, isRange, 0, 0);
                      });
}

DWORD CDictObjectMgr::InsertRefValue(DWORD nameId, DWORD descriptionId, DWORD valueId,
                                     DWORD valueDescriptionId, DWORD minValueId, DWORD maxValueId,
                                     BOOL isNotBetween, BOOL isRange, DWORD dataDictionaryId,
                                     DWORD& dictObjectId, BOOL useGivenId) {
    return CreateItem(tessmeta::kDictReferenceValue, *m_pReferenceValues, dataDictionaryId,
                      dictObjectId, useGivenId, [&](DWORD id) {
                          return m_pReferenceValues->Insert(
                              id, nameId, descriptionId, valueId, valueDescriptionId, minValueId,
                              maxValueId, isNotBetween, isRange, 0, 0);
                      });
}

BOOL CDictObjectMgr::UpdateRefValue(DWORD referenceValueId, CString& name, CString& description,
                                    CString& value, CString& valueDescription, CString& minValue,
                                    CString& maxValue, BOOL isNotBetween, BOOL isRange) {
    CKelReferenceValue* row = m_pReferenceValues->GetRow(referenceValueId);
    if (!row) return FALSE;
    const CString* texts[] = {&name, &description, &value, &valueDescription, &minValue, &maxValue};
    for (int column = 0; column < 6; ++column)
        m_pReferenceValues->SetField(row, static_cast<EColumn>(column), *texts[column]);
    m_pReferenceValues->SetFlags(referenceValueId, isNotBetween, isRange);
    return TRUE;
}

BOOL CDictObjectMgr::SetReferenceValueName(DWORD referenceValueId, CString& name) {
    return m_pReferenceValues->SetField(referenceValueId, EColumn::kName, name);
}
BOOL CDictObjectMgr::SetReferenceValueDescription(DWORD referenceValueId, CString& description) {
    return m_pReferenceValues->SetField(referenceValueId, EColumn::kDescription, description);
}
BOOL CDictObjectMgr::SetReferenceValueValue(DWORD referenceValueId, CString& value) {
    return m_pReferenceValues->SetField(referenceValueId, EColumn::kValue, value);
}
BOOL CDictObjectMgr::SetReferenceValueValueDescription(DWORD referenceValueId,
                                                       CString& valueDescription) {
    return m_pReferenceValues->SetField(referenceValueId, EColumn::kValueDescription,
                                        valueDescription);
}
BOOL CDictObjectMgr::SetReferenceValueMinValue(DWORD referenceValueId, CString& minValue) {
    return m_pReferenceValues->SetField(referenceValueId, EColumn::kMinValue, minValue);
}
BOOL CDictObjectMgr::SetReferenceValueMaxValue(DWORD referenceValueId, CString& maxValue) {
    return m_pReferenceValues->SetField(referenceValueId, EColumn::kMaxValue, maxValue);
}

BOOL CDictObjectMgr::SetReferenceValueIsNotBetween(DWORD referenceValueId, BOOL isNotBetween) {
    const CKelReferenceValue* row = m_pReferenceValues->GetRow(referenceValueId);
    return row ? m_pReferenceValues->SetFlags(referenceValueId, isNotBetween, row->IsRange) : FALSE;
}

BOOL CDictObjectMgr::SetReferenceValueIsRange(DWORD referenceValueId, BOOL isRange) {
    const CKelReferenceValue* row = m_pReferenceValues->GetRow(referenceValueId);
    return row ? m_pReferenceValues->SetFlags(referenceValueId, row->IsNotBetween, isRange) : FALSE;
}

BOOL CDictObjectMgr::GetRefValueName(DWORD referenceValueId, CString& name) const {
    return m_pReferenceValues->GetField(referenceValueId, EColumn::kName, name);
}

BOOL CDictObjectMgr::GetRefValueData(DWORD referenceValueId, CString& name, CString& description,
                                     CString& value, CString& valueDescription, CString& minValue,
                                     CString& maxValue, BOOL& isNotBetween, BOOL& isRange) const {
    const CKelReferenceValue* row = m_pReferenceValues->GetRow(referenceValueId);
    if (!row) return FALSE;
    CString* texts[] = {&name, &description, &value, &valueDescription, &minValue, &maxValue};
    for (int column = 0; column < 6; ++column)
        m_pReferenceValues->GetField(row, static_cast<EColumn>(column), *texts[column]);
    isNotBetween = row->IsNotBetween;
    isRange = row->IsRange;
    return TRUE;
}

BOOL CDictObjectMgr::DeleteRefValue(DWORD referenceValueId) {
    return DeleteItem(*m_pReferenceValues, referenceValueId);
}

CKelReferenceValue* CDictObjectMgr::GetRefValueRow(DWORD referenceValueId) const {
    return m_pReferenceValues->GetRow(referenceValueId);
}

CKelReferenceValue* CDictObjectMgr::GetRefValueDictObjIDFKRow(DWORD dictObjectId) const {
    return m_pReferenceValues->GetDictObjIDFKRow(dictObjectId);
}

CKelReferenceValue* CDictObjectMgr::GetRefValueRow(CString name, DWORD dataDictionaryId) const {
    return FirstNamedIn(*m_pReferenceValues, name, dataDictionaryId);
}

POSITION CDictObjectMgr::GetFirstRefValueRowPosition() const {
    return m_pReferenceValues->GetFirstRowPosition();
}

CKelReferenceValue* CDictObjectMgr::GetNextRefValueRow(POSITION& position) const {
    return m_pReferenceValues->GetNextRow(position);
}

CKelReferenceValue* CDictObjectMgr::GetNextRefValueRow(POSITION& position,
                                                       DWORD dataDictionaryId) const {
    while (position) {
        CKelReferenceValue* row = m_pReferenceValues->GetNextRow(position);
        DWORD holder = 0;
        if (DataDictionaryOf(row->Dictionary_Object_ID, holder) && holder == dataDictionaryId)
            return row;
    }
    return nullptr;
}

int CDictObjectMgr::GetReferenceValueCount() const {
    return m_pReferenceValues->GetCount();
}

bool CDictObjectMgr::SameOverrides(DWORD dictObjectId, DWORD metaTableKey,
                                   CDictOverrideMap& overrides) {
    int matched = 0;
    if (CEnhBoundDictObjectTbl* bound = m_pRefs ? m_pRefs->GetBoundDictObjectTable() : nullptr) {
        CString text;
        for (const CKelBoundDictObject* binding =
                 bound->GetFirstBoundObjectMetaTableFKRow(dictObjectId, metaTableKey);
             binding; binding = bound->GetNextBoundObjectMetaTableFKRow()) {
            const CDictOverrideMap::CPair* expected =
                overrides.PLookup(binding->Bound_Dictionary_Object_ID);
            bound->GetValueOverride(binding, text);
            if (!expected || !(text == expected->value)) return false;
            ++matched;
        }
    }
    return matched == overrides.GetCount();
}

LONG CDictObjectMgr::IsReferenceValueUnique(CString& name, CString& description, CString& value,
                                            CString& valueDescription, CString& minValue,
                                            CString& maxValue, BOOL isNotBetween, BOOL isRange,
                                            CDictOverrideMap& overrides, DWORD dataDictionaryId,
                                            bool compareContents) {
    const CKelReferenceValue* row =
        FirstNamedIn(*m_pReferenceValues, name, ScopeOf(dataDictionaryId));
    if (!row) return 0;
    if (!compareContents) return -1;
    const CString* const texts[] = {&description, &value, &valueDescription, &minValue, &maxValue};
    const bool same = TextsEqualNoCase(*m_pReferenceValues, *row, texts) &&
                      static_cast<LONG>(row->IsNotBetween) == isNotBetween &&
                      static_cast<LONG>(row->IsRange) == isRange &&
                      SameOverrides(row->Dictionary_Object_ID,
                                    tessmeta::kReferenceValueBindingMetaTable, overrides);
    return same ? static_cast<LONG>(row->Reference_Value_ID) : -1;
}

LONG CDictObjectMgr::GetNameForUniqueReferenceValue(CString& name, CString& description,
                                                    CString& value, CString& valueDescription,
                                                    CString& minValue, CString& maxValue,
                                                    BOOL isNotBetween, BOOL isRange,
                                                    CDictOverrideMap& overrides,
                                                    DWORD dataDictionaryId, bool compareContents) {
    return UniqueName(name, [&] {
        return IsReferenceValueUnique(name, description, value, valueDescription, minValue,
                                      maxValue, isNotBetween, isRange, overrides, dataDictionaryId,
                                      compareContents);
    });
}
