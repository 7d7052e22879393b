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
    m_byKey.InitHashTable(buckets, FALSE);
    m_byObject.InitHashTable(buckets, FALSE);
    m_indexesPending = true;
    ULONG highestKey = 0;
    LoadRows<CKelObjectModifications>([&](std::unique_ptr<CKelObjectModifications> row) {
        const ULONG key = row->GetTechKey();
        if (m_indexesPending && key > highestKey) {
            // Keys rising so far: no loaded row can have this one, and the indexes
            // can wait until they are first needed.
            highestKey = key;
            DeclareKey(*row);
            Append(row.release());
            return;
        }
        CKelObjectModifications* raw = row.release();
        if (!Enter(raw)) delete raw;  // a refused row is dropped
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
    const ULONG key = m_pKeys ? m_pKeys->AllocKeyValue(KeyKind()) : 0;
    row->SetTechKey(key);
    row->Object_ID = objectId;
    row->Modification_Kind = kind;
    CKelObjectModifications* added = row.release();
    if (key) {
        // Allocated keys lie above every key the table holds: no row can have it.
        Append(added);
        m_byKey.SetAt(added, added);
        FileByObject(added);
    } else if (!Enter(added)) {
        delete added;
        return 0;
    }
    if (writeThrough) WriteThroughInsert(added, TableName());
    return added->GetTechKey();
}

ULONG CEnhRepoObjModTable::Insert(CDbObjectBase* row) {
    auto* modification = dynamic_cast<CKelObjectModifications*>(row);
    return modification ? Enter(modification) : 0;
}

ULONG CEnhRepoObjModTable::Enter(CKelObjectModifications* row) {
    EnsureIndexes();
    if (GetRow(row->GetTechKey())) return 0;
    DeclareKey(*row);
    Append(row);
    m_byKey.SetAt(row, row);
    FileByObject(row);
    return row->GetTechKey();
}

void CEnhRepoObjModTable::DeclareKey(CKelObjectModifications& row) {
    if (!m_pKeys) return;
    if (const ULONG key = row.GetTechKey())
        m_pKeys->SetKeyValue(KeyKind(), key);
    else
        row.SetTechKey(m_pKeys->AllocKeyValue(KeyKind()));
}

void CEnhRepoObjModTable::Append(CKelObjectModifications* row) {
    row->m_bDataDictionary = IsDataDictionaryObject(row) != FALSE;
    row->m_pNextOfObject = nullptr;
    if (row->m_bDataDictionary)
        m_dataDictRows.AddTail(row);
    else
        AddRow(row);
    row->SetEnhTable(this);
}

void CEnhRepoObjModTable::EnsureIndexes() const {
    if (!m_indexesPending) return;
    m_indexesPending = false;
    // List by list, in order: the same maps and chains as filing each row on entry.
    for (POSITION pos = GetFirstRowPositionDiagObj(); pos;) {
        CKelObjectModifications* row = GetNextRowDiagObj(pos);
        row->m_pNextOfObject = nullptr;
        m_byKey.SetAt(row, row);
        FileByObject(row);
    }
    for (POSITION pos = GetFirstRowPositionDataDictObj(); pos;) {
        CKelObjectModifications* row = GetNextRowDataDictObj(pos);
        row->m_pNextOfObject = nullptr;
        m_byKey.SetAt(row, row);
        FileByObject(row);
    }
}

CKelObjectModifications* CEnhRepoObjModTable::GetRow(ULONG key) const {
    EnsureIndexes();
    CKelObjectModifications probe;
    probe.SetTechKey(key);
    CKelObjectModifications* row = nullptr;
    m_byKey.Lookup(&probe, row);
    return row;
}

CKelObjectModifications* CEnhRepoObjModTable::GetFKRow(ULONG objectId) const {
    EnsureIndexes();
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
    RemoveAllRows(false, ignored);
}

void CEnhRepoObjModTable::RemoveAllDataDictObjBaseList() {
    std::vector<ULONG> ignored;
    RemoveAllRows(true, ignored);
}

void CEnhRepoObjModTable::RemoveAllRows(bool dataDictionaryList, std::vector<ULONG>& deleted) {
    // With the other list empty the table ends up empty: the maps are dropped at
    // once instead of row by row.
    if ((dataDictionaryList ? GetDiagObjCount() : GetDataDictObjCount()) == 0) DropIndexes();
    RemoveRows(
        dataDictionaryList, [](const CKelObjectModifications&) { return true; }, deleted);
}

void CEnhRepoObjModTable::DropIndexes() {
    m_byKey.RemoveAll();
    m_byObject.RemoveAll();
    m_indexesPending = true;
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

void CEnhRepoObjModTable::FileByObject(CKelObjectModifications* row) const {
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
    if (!m_indexesPending) {     // else they are built from the lists when first needed
        m_byKey.RemoveKey(row);  // keys are unique in the table: the entry is this row's
        UnfileByObject(row);
    }
    if (row->m_bDataDictionary) {
        m_dataDictRows.Remove(row);
        delete row;
    } else {
        Remove(row);
    }
}
