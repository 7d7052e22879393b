#include "dictionary/data_dictionary_table.h"

#include <memory>

CEnhDataDictionaryTable::CEnhDataDictionaryTable(ULONG fileVersion, CNameSpaceMgr* names,
                                                 CGuidMgr* guids, CZmfFile* file)
    : CEnhTable(names, nullptr, guids, file), m_nFileVersion(fileVersion), m_pGuids(guids) {}

void CEnhDataDictionaryTable::Init(unsigned int bucketCount) {
    CEnhTable::Init(bucketCount);
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        CKelDataDictionary* row = GetNextRow(pos);
        if (m_nFileVersion < 501) row->Flags |= kDiagramSpecificFlag;
        if (m_nFileVersion < 502) CreateObjectDomain(*row);
    }
    if (GetCount() == 0 && m_nFileVersion < 500) CreateDiagramSpecificDataDictionary(CString());
}

ULONG CEnhDataDictionaryTable::Insert(const CString& name, const CString& description,
                                      DWORD globalUserId, DWORD dataDictionaryId) {
    auto row = std::make_unique<CKelDataDictionary>();
    row->Global_User_ID = globalUserId;
    return InsertTexts(std::move(row), dataDictionaryId, name, description);
}

ULONG CEnhDataDictionaryTable::Insert(DWORD nameId, DWORD descriptionId, DWORD globalUserId,
                                      DWORD dataDictionaryId) {
    auto row = std::make_unique<CKelDataDictionary>();
    row->Name = nameId;
    row->Description = descriptionId;
    row->Global_User_ID = globalUserId;
    return InsertIds(std::move(row), dataDictionaryId);
}

int CEnhDataDictionaryTable::Delete(DWORD dataDictionaryId, int reallyDelete) {
    return CEnhTable::Delete(dataDictionaryId, reallyDelete);
}

CKelDataDictionary* CEnhDataDictionaryTable::GetRow(const CString& name) const {
    CString text;
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        CKelDataDictionary* row = GetNextRow(pos);
        if (GetName(row, text) && text.CompareNoCase(name) == 0) return row;
    }
    return nullptr;
}

int CEnhDataDictionaryTable::SetSignatureGUID(CKelDataDictionary* row, const CString& guid) {
    if (!row) return 0;
    row->Signature_GUID = guid;
    return 1;
}

BOOL CEnhDataDictionaryTable::IsDiagramSpecificDataDictionary(DWORD id) const {
    return IsDiagramSpecificDataDictionary(GetRow(id));
}

const CKelDataDictionary* CEnhDataDictionaryTable::FirstDiagramSpecific() const {
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        const CKelDataDictionary* row = GetNextRow(pos);
        if (IsDiagramSpecificDataDictionary(row)) return row;
    }
    return nullptr;
}

DWORD CEnhDataDictionaryTable::GetDiagramSpecificData_Dictionary_ID() const {
    const CKelDataDictionary* row = FirstDiagramSpecific();
    return row ? row->Data_Dictionary_ID : 0;
}

DWORD CEnhDataDictionaryTable::GetDiagramSpecificDataDictionaryGlobal_User_ID() const {
    const CKelDataDictionary* row = FirstDiagramSpecific();
    return row ? row->Global_User_ID : 0;
}

BOOL CEnhDataDictionaryTable::UpdateDataDictionaryToDiagramSpecific() {
    POSITION pos = GetFirstRowPosition();
    if (!pos) return FALSE;
    GetNextRow(pos)->Flags |= kDiagramSpecificFlag;
    return TRUE;
}

BOOL CEnhDataDictionaryTable::CreateDiagramSpecificDataDictionary(const CString& name) {
    if (const CKelDataDictionary* existing = FirstDiagramSpecific()) {
        if (!name.IsEmpty()) SetName(existing->Data_Dictionary_ID, name);
        return TRUE;
    }
    auto owned = std::make_unique<CKelDataDictionary>();
    owned->Flags = kDiagramSpecificFlag;
    const CString description(kDefaultDescription);
    const ULONG key = InsertTexts(std::move(owned), 0,
                                  name.IsEmpty() ? CString(kDefaultName) : name, description);
    const CKelDataDictionary* row = GetRow(key);
    if (!key || !row) return FALSE;
    CreateObjectDomain(*row);
    return TRUE;
}

ULONG CEnhDataDictionaryTable::CreateObjectDomain(const CKelDataDictionary& row) {
    if (!m_pGuids) return 0;
    CString name, guid;
    GetName(&row, name);
    m_pGuids->GetObjectGUID(row.Global_User_ID, guid);
    return m_pGuids->CreateObjectDomain(row.Global_User_ID, name, kDomainType, guid, 0);
}

void CEnhDataDictionaryTable::PrependDataDictionaryName(DWORD id, CString& text) const {
    CString name;
    if (!GetName(id, name) || name.IsEmpty()) return;
    text = name + "." + text;
}
