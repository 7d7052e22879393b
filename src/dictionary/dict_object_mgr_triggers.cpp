// The manager's trigger operations.
#include "dictionary/dict_object_mgr.h"

DWORD CDictObjectMgr::InsertTrigger(CString& name, CString& description, int integerField,
                                    DWORD firstAttribute, DWORD event, CString& text,
                                    DWORD secondAttribute, DWORD dataDictionaryId,
                                    DWORD& dictObjectId, BOOL useGivenId) {
    const SDictTriggerNumbers numbers{integerField, firstAttribute, event, secondAttribute};
    return CreateItem(
        tessmeta::kDictTrigger, *m_pTriggers, dataDictionaryId, dictObjectId, useGivenId,
        [&](DWORD id) { return m_pTriggers->Insert(id, name, description, numbers, text, 0, 0); });
}

DWORD CDictObjectMgr::InsertTrigger(DWORD nameId, DWORD descriptionId, int integerField,
                                    DWORD firstAttribute, DWORD event, DWORD textId,
                                    DWORD secondAttribute, DWORD dataDictionaryId,
                                    DWORD& dictObjectId, BOOL useGivenId) {
    const SDictTriggerNumbers numbers{integerField, firstAttribute, event, secondAttribute};
    return CreateItem(tessmeta::kDictTrigger, *m_pTriggers, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pTriggers->Insert(id, nameId, descriptionId, numbers, textId, 0,
                                                     0);
                      });
}

BOOL CDictObjectMgr::UpdateTrigger(DWORD triggerId, CString& name, CString& description,
                                   int integerField, DWORD firstAttribute, DWORD event,
                                   CString& text, DWORD secondAttribute) {
    CKelDictTrigger* row = m_pTriggers->GetRow(triggerId);
    if (!row) return FALSE;
    WriteTexts(*m_pTriggers, *row, {&name, &description, &text});
    m_pTriggers->SetNumbers(triggerId, {integerField, firstAttribute, event, secondAttribute});
    return TRUE;
}

BOOL CDictObjectMgr::DeleteTrigger(DWORD triggerId) {
    return DeleteItem(*m_pTriggers, triggerId);
}

BOOL CDictObjectMgr::TriggerFields(const CKelDictTrigger* row, DWORD& triggerId, CString& name,
                                   CString& description, int& integerField, DWORD& firstAttribute,
                                   DWORD& event, CString& text, DWORD& secondAttribute,
                                   DWORD& dictObjectId) const {
    if (!row) return FALSE;
    triggerId = row->Dictionary_Trigger_ID;
    ReadTexts(*m_pTriggers, *row, {&name, &description, &text});
    const SDictTriggerNumbers numbers = CEnhDictTriggerTbl::NumbersOf(*row);
    integerField = numbers.integerField;
    firstAttribute = numbers.firstAttribute;
    event = numbers.event;
    secondAttribute = numbers.secondAttribute;
    dictObjectId = row->Dictionary_Object_ID;
    return TRUE;
}

BOOL CDictObjectMgr::GetFirstTrigger(DWORD& triggerId, CString& name, CString& description,
                                     int& integerField, DWORD& firstAttribute, DWORD& event,
                                     CString& text, DWORD& secondAttribute, DWORD& dictObjectId) {
    return TriggerFields(ItemOfKindWalk(*m_pTriggers, FirstOfKind(tessmeta::kDictTrigger)),
                         triggerId, name, description, integerField, firstAttribute, event, text,
                         secondAttribute, dictObjectId);
}

BOOL CDictObjectMgr::GetNextTrigger(DWORD& triggerId, CString& name, CString& description,
                                    int& integerField, DWORD& firstAttribute, DWORD& event,
                                    CString& text, DWORD& secondAttribute, DWORD& dictObjectId) {
    return TriggerFields(ItemOfKindWalk(*m_pTriggers, NextOfKind()), triggerId, name, description,
                         integerField, firstAttribute, event, text, secondAttribute, dictObjectId);
}

CKelDictTrigger* CDictObjectMgr::GetFirstTriggerRow() {
    m_triggerRowCursor = m_pTriggers->GetFirstRowPosition();
    return GetNextTriggerRow();
}

CKelDictTrigger* CDictObjectMgr::GetNextTriggerRow() {
    return NextRowOf(*m_pTriggers, m_triggerRowCursor);
}

CKelDictTrigger* CDictObjectMgr::GetTriggerRow(DWORD triggerId) const {
    return m_pTriggers->GetRow(triggerId);
}

CKelDictTrigger* CDictObjectMgr::GetTriggerFKRow(DWORD dictObjectId) const {
    return m_pTriggers->GetDictObjIDFKRow(dictObjectId);
}

BOOL CDictObjectMgr::GetTriggerData(DWORD triggerId, CString& name, CString& description,
                                    int& integerField, DWORD& firstAttribute, DWORD& event,
                                    CString& text, DWORD& secondAttribute) const {
    DWORD key = 0, dictObjectId = 0;
    return TriggerFields(m_pTriggers->GetRow(triggerId), key, name, description, integerField,
                         firstAttribute, event, text, secondAttribute, dictObjectId);
}

BOOL CDictObjectMgr::GetTriggerName(DWORD triggerId, CString& name) const {
    return m_pTriggers->GetName(triggerId, name);
}

BOOL CDictObjectMgr::GetTriggerDesc(DWORD triggerId, CString& description) const {
    return m_pTriggers->GetDescription(triggerId, description);
}

BOOL CDictObjectMgr::GetTriggerValue(DWORD triggerId, CString& text) const {
    return m_pTriggers->GetValue(triggerId, text);
}

int CDictObjectMgr::GetTriggerCount() const {
    return m_pTriggers->GetCount();
}

LONG CDictObjectMgr::IsDictTriggerUnique(CString& name, CString& description, int integerField,
                                         DWORD firstAttribute, DWORD event, CString& text,
                                         DWORD secondAttribute, CDictOverrideMap& overrides,
                                         DWORD dataDictionaryId) {
    const CKelDictTrigger* row = FirstNamedIn(*m_pTriggers, name, ScopeOf(dataDictionaryId));
    if (!row) return 0;
    const CString* const texts[] = {&description, &text};
    const SDictTriggerNumbers stored = CEnhDictTriggerTbl::NumbersOf(*row);
    const bool same = TextsEqualNoCase(*m_pTriggers, *row, texts) &&
                      stored.integerField == integerField &&
                      stored.firstAttribute == firstAttribute && stored.event == event &&
                      stored.secondAttribute == secondAttribute &&
                      SameOverrides(row->Dictionary_Object_ID,
                                    tessmeta::kReferenceValueBindingMetaTable, overrides);
    return same ? static_cast<LONG>(row->Dictionary_Trigger_ID) : -1;
}

LONG CDictObjectMgr::GetNameForUniqueDictTrigger(CString& name, CString& description,
                                                 int integerField, DWORD firstAttribute,
                                                 DWORD event, CString& text, DWORD secondAttribute,
                                                 CDictOverrideMap& overrides,
                                                 DWORD dataDictionaryId) {
    return UniqueName(name, [&] {
        return IsDictTriggerUnique(name, description, integerField, firstAttribute, event, text,
                                   secondAttribute, overrides, dataDictionaryId);
    });
}
