// The manager's reusable-procedure operations.
#include "dictionary/dict_object_mgr.h"

DWORD CDictObjectMgr::InsertProcedure(CString& name, CString& description, CString& text,
                                      DWORD numericAttribute, DWORD dataDictionaryId,
                                      DWORD& dictObjectId, BOOL useGivenId) {
    return CreateItem(tessmeta::kDictProcedure, *m_pProcedures, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pProcedures->Insert(id, name, description, text,
                                                       numericAttribute, 0, 0);
                      });
}

DWORD CDictObjectMgr::InsertProcedure(DWORD nameId, DWORD descriptionId, DWORD textId,
                                      DWORD numericAttribute, DWORD dataDictionaryId,
                                      DWORD& dictObjectId, BOOL useGivenId) {
    return CreateItem(tessmeta::kDictProcedure, *m_pProcedures, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pProcedures->Insert(id, nameId, descriptionId, textId,
                                                       numericAttribute, 0, 0);
                      });
}

BOOL CDictObjectMgr::UpdateProcedure(DWORD procedureId, CString& name, CString& description,
                                     CString& text, DWORD numericAttribute) {
    CKelReusableProc* row = m_pProcedures->GetRow(procedureId);
    if (!row) return FALSE;
    WriteTexts(*m_pProcedures, *row, {&name, &description, &text});
    m_pProcedures->SetNumericAttribute(procedureId, numericAttribute);
    return TRUE;
}

BOOL CDictObjectMgr::DeleteProcedure(DWORD procedureId) {
    return DeleteItem(*m_pProcedures, procedureId);
}

BOOL CDictObjectMgr::ProcedureFields(const CKelReusableProc* row, DWORD& procedureId, CString& name,
                                     CString& description, CString& text, DWORD& numericAttribute,
                                     DWORD& dictObjectId) const {
    if (!row) return FALSE;
    procedureId = row->Reusable_Procedure_ID;
    ReadTexts(*m_pProcedures, *row, {&name, &description, &text});
    numericAttribute = row->Numeric_Attribute;
    dictObjectId = row->Dictionary_Object_ID;
    return TRUE;
}

BOOL CDictObjectMgr::GetFirstProcedure(DWORD& procedureId, CString& name, CString& description,
                                       CString& text, DWORD& numericAttribute,
                                       DWORD& dictObjectId) {
    return ProcedureFields(ItemOfKindWalk(*m_pProcedures, FirstOfKind(tessmeta::kDictProcedure)),
                           procedureId, name, description, text, numericAttribute, dictObjectId);
}

BOOL CDictObjectMgr::GetNextProcedure(DWORD& procedureId, CString& name, CString& description,
                                      CString& text, DWORD& numericAttribute, DWORD& dictObjectId) {
    return ProcedureFields(ItemOfKindWalk(*m_pProcedures, NextOfKind()), procedureId, name,
                           description, text, numericAttribute, dictObjectId);
}

CKelReusableProc* CDictObjectMgr::GetFirstProcedureRow() {
    m_procedureRowCursor = m_pProcedures->GetFirstRowPosition();
    return GetNextProcedureRow();
}

CKelReusableProc* CDictObjectMgr::GetNextProcedureRow() {
    return NextRowOf(*m_pProcedures, m_procedureRowCursor);
}

CKelReusableProc* CDictObjectMgr::GetProcedureRow(DWORD procedureId) const {
    return m_pProcedures->GetRow(procedureId);
}

CKelReusableProc* CDictObjectMgr::GetProcedureFKRow(DWORD dictObjectId) const {
    return m_pProcedures->GetDictObjIDFKRow(dictObjectId);
}

BOOL CDictObjectMgr::GetProcedureData(DWORD procedureId, CString& name, CString& description,
                                      CString& text, DWORD& numericAttribute) const {
    DWORD key = 0, dictObjectId = 0;
    return ProcedureFields(m_pProcedures->GetRow(procedureId), key, name, description, text,
                           numericAttribute, dictObjectId);
}

BOOL CDictObjectMgr::GetProcedureName(DWORD procedureId, CString& name) const {
    return m_pProcedures->GetName(procedureId, name);
}

BOOL CDictObjectMgr::GetProcedureDesc(DWORD procedureId, CString& description) const {
    return m_pProcedures->GetDescription(procedureId, description);
}

BOOL CDictObjectMgr::GetProcedureValue(DWORD procedureId, CString& text) const {
    return m_pProcedures->GetValue(procedureId, text);
}

int CDictObjectMgr::GetProcedureCount() const {
    return m_pProcedures->GetCount();
}

LONG CDictObjectMgr::IsReusableProcUnique(CString& name, CString& description, CString& text,
                                          DWORD numericAttribute, CDictOverrideMap& overrides,
                                          DWORD dataDictionaryId) {
    const CKelReusableProc* row = FirstNamedIn(*m_pProcedures, name, ScopeOf(dataDictionaryId));
    if (!row) return 0;
    const CString* const texts[] = {&description, &text};
    const bool same = TextsEqualNoCase(*m_pProcedures, *row, texts) &&
                      row->Numeric_Attribute == numericAttribute &&
                      SameOverrides(row->Dictionary_Object_ID,
                                    tessmeta::kReferenceValueBindingMetaTable, overrides);
    return same ? static_cast<LONG>(row->Reusable_Procedure_ID) : -1;
}

LONG CDictObjectMgr::GetNameForUniqueReusableProc(CString& name, CString& description,
                                                  CString& text, DWORD numericAttribute,
                                                  CDictOverrideMap& overrides,
                                                  DWORD dataDictionaryId) {
    return UniqueName(name, [&] {
        return IsReusableProcUnique(name, description, text, numericAttribute, overrides,
                                    dataDictionaryId);
    });
}
