#include "repository/obj_mod_table.h"

#include <memory>

CEnhRepoObjModTable::CEnhRepoObjModTable(CZmfFile* file, CGuidMgr* guids)
    : CEnhTableBase(file, TableName()),
      m_pGuids(guids),
      m_pKeys(file ? file->GetIdentityMgr() : nullptr) {}

CEnhRepoObjModTable::~CEnhRepoObjModTable() {
    // The base destroys the diagram list's rows.
    for (POSITION pos = m_dataDictRows.GetHeadPosition(); pos;)
        delete static_cast<CKelObjectModifications*>(m_dataDictRows.GetNext(pos));
}

void CEnhRepoObjModTable::Init(unsigned int bucketCount) {
    const UINT buckets = LoadBucketCount(bucketCount);
    m_byKey.InitHashTable(buckets, TRUE);
    m_byObject.InitHashTable(buckets, TRUE);
    LoadRows<CKelObjectModifications>([this](std::unique_ptr<CKelObjectModifications> row) {
        CKelObjectModifications* raw = row.release();
        if (!Insert(raw)) delete raw;  // a refused row is dropped
    });
}

ULONG CEnhRepoObjModTable::Insert(ULONG objectId, LONG kind, int writeThrough) {
    if (CKelObjectModifications* row = GetFKRow(objectId)) {
        if (row->Modification_Kind != kModified) return 0;
        row->Modification_Kind = kind;
        if (writeThrough) WriteThroughUpdate(row, TableName());
        return row->GetTechKey();
    }
    auto row = std::make_unique<CKelObjectModifications>();
    row->SetTechKey(m_pKeys ? m_pKeys->AllocKeyValue(CObjectModificationBase::Desc().keyKind) : 0);
    row->Object_ID = objectId;
    row->Modification_Kind = kind;
    CKelObjectModifications* added = row.release();
    const ULONG key = Insert(added);
    if (!key) {
        delete added;
        return 0;
    }
    if (writeThrough) WriteThroughInsert(added, TableName());
    return key;
}

ULONG CEnhRepoObjModTable::Insert(CDbObjectBase* base) {
    auto* row = dynamic_cast<CKelObjectModifications*>(base);
    if (!row || GetRow(row->GetTechKey())) return 0;
    const int keyKind = CObjectModificationBase::Desc().keyKind;
    if (const ULONG key = row->GetTechKey()) {
        if (m_pKeys) m_pKeys->SetKeyValue(keyKind, key);
    } else if (m_pKeys) {
        row->SetTechKey(m_pKeys->AllocKeyValue(keyKind));
    }
    row->m_bDataDictionary = IsDataDictionaryObject(row) != FALSE;
    row->m_pNextOfObject = nullptr;
    if (row->m_bDataDictionary)
        row->SetListPosition(m_dataDictRows.AddTail(row));
    else
        AddRow(row);
    row->SetEnhTable(this);
    m_byKey.SetAt(row, row);
    FileByObject(row);
    return row->GetTechKey();
}

CKelObjectModifications* CEnhRepoObjModTable::GetRow(ULONG key) const {
    CKelObjectModifications probe;
    probe.SetTechKey(key);
    CKelObjectModifications* row = nullptr;
    m_byKey.Lookup(&probe, row);
    return row;
}

CKelObjectModifications* CEnhRepoObjModTable::GetFKRow(ULONG objectId) const {
    CKelObjectModifications* row = nullptr;
    m_byObject.Lookup(objectId, row);
    return row;
}

int CEnhRepoObjModTable::IsObjectModified(ULONG objectId) const {
    const CKelObjectModifications* row = GetFKRow(objectId);
    return row && row->Modification_Kind == kModified ? 1 : 0;
}

int CEnhRepoObjModTable::IsObjectDeleted(ULONG objectId) const {
    const CKelObjectModifications* row = GetFKRow(objectId);
    return row && row->Modification_Kind == kDeleted ? 1 : 0;
}

int CEnhRepoObjModTable::RemoveUniqueID(ULONG objectId) {
    CKelObjectModifications* row = GetFKRow(objectId);
    if (!row) return 0;
    Unlink(row);
    return 1;
}

int CEnhRepoObjModTable::RemoveDiagObj(CKelObjectModifications* row) {
    if (!row || row->GetEnhTable() != this || row->m_bDataDictionary) return 0;
    Unlink(row);
    return 1;
}

int CEnhRepoObjModTable::RemoveDataDictObj(CKelObjectModifications* row) {
    if (!row || row->GetEnhTable() != this || !row->m_bDataDictionary) return 0;
    Unlink(row);
    return 1;
}

void CEnhRepoObjModTable::RemoveAll() {
    RemoveAllDiagObjBaseList();
    RemoveAllDataDictObjBaseList();
}

void CEnhRepoObjModTable::RemoveAllDiagObjBaseList() {
    std::vector<ULONG> ignored;
    RemoveRows(
        false, [](const CKelObjectModifications&) { return true; }, ignored);
}

void CEnhRepoObjModTable::RemoveAllDataDictObjBaseList() {
    std::vector<ULONG> ignored;
    RemoveRows(
        true, [](const CKelObjectModifications&) { return true; }, ignored);
}

BOOL CEnhRepoObjModTable::IsDataDictionaryObject(const CKelObjectModifications* row) const {
    if (!m_pGuids || !row) return FALSE;
    return m_pGuids->IsDataDictionaryObject(m_pGuids->GetObjectTypeId(row->Object_ID));
}

int CEnhRepoObjModTable::Save(CZmfFile* file, int emptyModifications, int keepModifications) {
    if (keepModifications) {
        SetFile(file);
        return 1;
    }
    if (emptyModifications) RemoveAll();
    CTableBase* table = BeginSave(file, TableName(), GetDiagObjCount() + GetDataDictObjCount());
    if (!table) return 0;
    int result = 1;
    for (POSITION pos = GetFirstRowPositionDiagObj(); pos;)
        result = table->Insert(GetNextRowDiagObj(pos));
    for (POSITION pos = GetFirstRowPositionDataDictObj(); pos;)
        result = table->Insert(GetNextRowDataDictObj(pos));
    return result;
}

void CEnhRepoObjModTable::FileByObject(CKelObjectModifications* row) {
    CKelObjectModifications*& head = m_byObject[row->Object_ID];
    if (!head) {
        head = row;
        return;
    }
    // After the object's rows of the same list: a diagram row goes before the
    // object's first data-dictionary row, a data-dictionary row at the end.
    CKelObjectModifications** link = &head;
    while (*link && (row->m_bDataDictionary || !(*link)->m_bDataDictionary))
        link = &(*link)->m_pNextOfObject;
    row->m_pNextOfObject = *link;
    *link = row;
}

void CEnhRepoObjModTable::UnfileByObject(CKelObjectModifications* row) {
    auto* pair = m_byObject.PLookup(row->Object_ID);
    if (!pair) return;
    CKelObjectModifications** link = &pair->value;
    while (*link && *link != row)
        link = &(*link)->m_pNextOfObject;
    if (!*link) return;
    *link = row->m_pNextOfObject;
    if (!pair->value) m_byObject.RemoveKey(row->Object_ID);
}

void CEnhRepoObjModTable::Unlink(CKelObjectModifications* row) {
    CKelObjectModifications* mapped = nullptr;
    if (m_byKey.Lookup(row, mapped) && mapped == row) m_byKey.RemoveKey(row);
    UnfileByObject(row);
    if (row->m_bDataDictionary) {
        const POSITION position = row->GetListPosition();
        delete row;
        m_dataDictRows.RemoveAt(position);
    } else {
        Remove(row);
    }
}
