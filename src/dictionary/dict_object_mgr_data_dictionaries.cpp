// The manager's data-dictionary and object-domain operations.
#include "dictionary/dict_object_mgr.h"

POSITION CDictObjectMgr::GetDataDictionaryStartPosition() const {
    return m_pDataDictionaries->GetDataDictionaryStartPosition();
}

CKelDataDictionary* CDictObjectMgr::GetNextDataDictionary(POSITION& position) const {
    return m_pDataDictionaries->GetNextDataDictionary(position);
}

BOOL CDictObjectMgr::GetDataDictionaryName(DWORD dataDictionaryId, CString& name) const {
    return m_pDataDictionaries->GetName(dataDictionaryId, name);
}

BOOL CDictObjectMgr::GetDataDictionaryName(const CKelDataDictionary* row, CString& name) const {
    return m_pDataDictionaries->GetName(row, name);
}

BOOL CDictObjectMgr::GetDataDictionaryDescription(DWORD dataDictionaryId,
                                                  CString& description) const {
    return m_pDataDictionaries->GetDescription(dataDictionaryId, description);
}

BOOL CDictObjectMgr::GetDataDictionaryDescription(const CKelDataDictionary* row,
                                                  CString& description) const {
    return m_pDataDictionaries->GetDescription(row, description);
}

bool CDictObjectMgr::SetDataDictionaryName(DWORD dataDictionaryId, const CString& name) {
    return m_pDataDictionaries->SetName(dataDictionaryId, name) != 0;
}

bool CDictObjectMgr::SetDataDictionaryName(CKelDataDictionary* row, const CString& name) {
    return m_pDataDictionaries->SetName(row, name) != 0;
}

bool CDictObjectMgr::SetDataDictionaryDescription(DWORD dataDictionaryId,
                                                  const CString& description) {
    return m_pDataDictionaries->SetDescription(dataDictionaryId, description) != 0;
}

bool CDictObjectMgr::SetDataDictionaryDescription(CKelDataDictionary* row,
                                                  const CString& description) {
    return m_pDataDictionaries->SetDescription(row, description) != 0;
}

BOOL CDictObjectMgr::IsDiagramSpecificDataDictionary(DWORD dataDictionaryId) const {
    return m_pDataDictionaries->IsDiagramSpecificDataDictionary(dataDictionaryId);
}

BOOL CDictObjectMgr::IsDiagramSpecificDataDictionary(const CKelDataDictionary* row) const {
    return CEnhDataDictionaryTable::IsDiagramSpecificDataDictionary(row);
}

CKelDataDictionary* CDictObjectMgr::GetDataDictionary(DWORD dataDictionaryId) const {
    return m_pDataDictionaries->GetRow(dataDictionaryId);
}

CKelDataDictionary* CDictObjectMgr::GetDataDictionary(const CString& name) const {
    return m_pDataDictionaries->GetRow(name);
}

int CDictObjectMgr::GetNumOfDataDictionary() const {
    return m_pDataDictionaries->GetNumOfDataDictionary();
}

DWORD CDictObjectMgr::GetDiagramSpecificData_Dictionary_ID() const {
    return m_pDataDictionaries->GetDiagramSpecificData_Dictionary_ID();
}

DWORD CDictObjectMgr::GetDiagramSpecificDataDictionaryGlobal_User_ID() const {
    return m_pDataDictionaries->GetDiagramSpecificDataDictionaryGlobal_User_ID();
}

BOOL CDictObjectMgr::IsInDiagramSpecificDataDictionary(DWORD dictObjectId) const {
    DWORD holder = 0;
    return DataDictionaryOf(dictObjectId, holder) &&
                   holder == GetDiagramSpecificData_Dictionary_ID()
               ? TRUE
               : FALSE;
}

BOOL CDictObjectMgr::CreateDiagramSpecificDataDictionary(const CString& name) {
    return m_pDataDictionaries->CreateDiagramSpecificDataDictionary(name);
}

void CDictObjectMgr::PrependDataDictionaryName(DWORD dataDictionaryId, CString& text) const {
    m_pDataDictionaries->PrependDataDictionaryName(dataDictionaryId, text);
}

DWORD CDictObjectMgr::ScopeOf(DWORD dataDictionaryId) const {
    return dataDictionaryId ? dataDictionaryId : GetDiagramSpecificData_Dictionary_ID();
}

DWORD CDictObjectMgr::CreateDataDictionary(const CString& name, const CString& description) {
    const DWORD id = m_pDataDictionaries->Insert(name, description, 0, 0);
    if (const CKelDataDictionary* row = m_pDataDictionaries->GetRow(id))
        m_pDataDictionaries->CreateObjectDomain(*row);
    return id;
}

BOOL CDictObjectMgr::DeleteDataDictionary(DWORD dataDictionaryId) {
    if (!m_pDataDictionaries->GetRow(dataDictionaryId) ||
        m_pDataDictionaries->IsDiagramSpecificDataDictionary(dataDictionaryId))
        return FALSE;
    if (GetDictObjectCountIn(dataDictionaryId)) return FALSE;
    return m_pDataDictionaries->Delete(dataDictionaryId, 1) ? TRUE : FALSE;
}

DWORD CDictObjectMgr::GetDataDictionaryObjectDomainID(DWORD dataDictionaryId) const {
    const CKelDataDictionary* row = m_pDataDictionaries->GetRow(dataDictionaryId);
    return row && m_pGuids ? m_pGuids->GetUniqueObjectObjectDomainID(row->Global_User_ID) : 0;
}

DWORD CDictObjectMgr::GetDictObjObjectDomainID(DWORD dictObjectId) const {
    DWORD holder = 0;
    return DataDictionaryOf(dictObjectId, holder) ? GetDataDictionaryObjectDomainID(holder) : 0;
}

void CDictObjectMgr::AssignDictObjToObjectDomain(DWORD dictObjectId, DWORD globalId) {
    if (!m_pGuids) return;
    const DWORD domain = GetDictObjObjectDomainID(dictObjectId);
    if (domain && !m_pGuids->GetUniqueObjectObjectDomainID(globalId))
        m_pGuids->SetUniqueObjectObjectDomainID(globalId, domain);
}
