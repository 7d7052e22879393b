#include "namespace/string_usage_table.h"

#include <algorithm>
#include <utility>

// ---- CUsedStringIds -------------------------------------------------------------------

bool CUsedStringIds::Contains(ULONG stringId) const {
    if (m_dense) return stringId < m_bits.size() && m_bits[stringId];
    return std::binary_search(m_ids.begin(), m_ids.end(), stringId);
}

// ---- CEnhStringUsageTable -------------------------------------------------------------

CEnhStringUsageTable::CEnhStringUsageTable(CZmfFile* file)
    : CEnhTable(nullptr, nullptr, nullptr, file) {}

CEnhStringUsageTable::~CEnhStringUsageTable() = default;

void CEnhStringUsageTable::Init(unsigned int bucketCount, bool buildRoleIndex, bool deferLoad) {
    if (buildRoleIndex) {
        m_pRoleIndex = std::make_unique<CBalancedTree>();
        m_pRoleIndex->Init();
    }
    // Like the string-id tree, the role tree is filed from the rows on first use.
    m_roleIndexPending = true;
    const UINT buckets = LoadBucketCount(bucketCount);
    if (!deferLoad) {
        CEnhTable::Init(buckets);
        m_loadComplete = true;
        return;
    }
    // The shared load reads the held record-store table. With the table set aside
    // it reads nothing: it only sizes the maps and leaves the index to be filed.
    CTableBase** handle = GetTablePtrAddr();
    CTableBase* held = std::exchange(*handle, nullptr);
    CEnhTable::Init(buckets);
    *handle = held;
    m_pPendingRows = std::make_unique<CIteratorBase>(held);
    ReadAhead();
    if (!m_pNextRow) LoadMoreRows(0);  // nothing stored: complete at once
}

void CEnhStringUsageTable::ReadAhead() {
    m_pNextRow = NewPooledRow<CKelStringUsage>();
    if (!m_pPendingRows || !m_pPendingRows->GetNext(m_pNextRow.get())) m_pNextRow.reset();
}

int CEnhStringUsageTable::LoadMoreRows(int count) {
    int loaded = 0;
    while (m_pNextRow && (count <= 0 || loaded < count)) {
        EnterRow(std::move(m_pNextRow));
        ++loaded;
        ReadAhead();
    }
    if (!m_pNextRow && !m_loadComplete) {
        m_loadComplete = true;
        m_pPendingRows.reset();
        ReleaseHeldTable();
    }
    return loaded;
}

void CEnhStringUsageTable::ReleaseHeldTable() {
    CTableBase** handle = GetTablePtrAddr();
    if (*handle && GetFile()) GetFile()->ReleaseTable(handle, 0);
}

DWORD CEnhStringUsageTable::GetStringId(DWORD objectId, DWORD usageTypeId) {
    CompleteLoad();
    const CKelStringUsage* row =
        FiledObjectMap().Find(SStringUsageObjectKey::Lookup(objectId, usageTypeId));
    return row ? row->String_ID : 0;
}

void CEnhStringUsageTable::SetUsage(DWORD objectId, DWORD usageTypeId, DWORD stringId) {
    if (stringId == 0) {
        RemoveUsage(objectId, usageTypeId);
        return;
    }
    CompleteLoad();
    if (CKelStringUsage* row =
            FiledObjectMap().Find(SStringUsageObjectKey::Lookup(objectId, usageTypeId))) {
        if (row->String_ID != stringId) ChangeStringId(row, stringId);
        return;
    }
    CRowPtr<CKelStringUsage> row = NewPooledRow<CKelStringUsage>();  // key 0: numbered on entry
    row->Object_ID = objectId;
    row->String_Usage_Type_ID = usageTypeId;
    row->String_ID = stringId;
    EnterRow(std::move(row));
}

int CEnhStringUsageTable::RemoveUsage(DWORD objectId, DWORD usageTypeId) {
    CompleteLoad();
    CKelStringUsage* row =
        FiledObjectMap().TakeFound(SStringUsageObjectKey::Lookup(objectId, usageTypeId));
    if (!row) return 0;
    DeleteRow(row);
    return 1;
}

int CEnhStringUsageTable::FixUsage(DWORD objectId, DWORD usageTypeId, DWORD newObjectId,
                                   DWORD newUsageTypeId) {
    CompleteLoad();
    CKelStringUsage* row =
        FiledObjectMap().Find(SStringUsageObjectKey::Lookup(objectId, usageTypeId));
    if (!row) return 0;
    if (m_pRoleIndex) {
        RoleIndex();  // file it under the pair it has now
        m_fixedRoleKeys.emplace(row, RoleKey(*row));
    }
    row->Object_ID = newObjectId;
    row->String_Usage_Type_ID = newUsageTypeId;
    return 1;
}

void CEnhStringUsageTable::DeleteRow(CKelStringUsage* row) {
    const ULONG key = row->GetTechKey();
    if (GetRow(key) == row) {
        CEnhTable::Delete(key);
        return;
    }
    // A later row loaded with the same usage id: the usage-id map never held it.
    FKIndex().Delete(static_cast<std::int64_t>(row->String_ID), row);
    RemoveFromExtraIndexes(row);
    Remove(row);
}

void CEnhStringUsageTable::ChangeStringId(CKelStringUsage* row, DWORD stringId) {
    CBalancedTree& byString = FKIndex();
    byString.Delete(static_cast<std::int64_t>(row->String_ID), row);
    if (m_pRoleIndex) {
        RoleIndex().Delete(FiledRoleKey(*row), row);
        m_fixedRoleKeys.erase(row);
    }
    row->String_ID = stringId;
    byString.Insert(static_cast<std::int64_t>(stringId), row);
    if (m_pRoleIndex) m_pRoleIndex->Insert(RoleKey(*row), row);
}

std::int64_t CEnhStringUsageTable::RoleKey(std::int64_t usageTypeId, std::int64_t stringId) {
    // usage type * 2^32 + string id, wrapping like the signed 64-bit sum it stands for
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(usageTypeId) << 32) +
                                     static_cast<std::uint64_t>(stringId));
}

std::int64_t CEnhStringUsageTable::RoleKey(const CKelStringUsage& row) {
    return RoleKey(static_cast<std::int64_t>(row.String_Usage_Type_ID),
                   static_cast<std::int64_t>(row.String_ID));
}

CBalancedTree& CEnhStringUsageTable::RoleIndex() {
    FileListedRows<CKelStringUsage>(m_roleIndexPending, [this](CKelStringUsage* row) {
        m_pRoleIndex->Insert(RoleKey(*row), row);
    });
    return *m_pRoleIndex;
}

std::int64_t CEnhStringUsageTable::FiledRoleKey(const CKelStringUsage& row) const {
    if (!m_fixedRoleKeys.empty()) {
        auto it = m_fixedRoleKeys.find(&row);
        if (it != m_fixedRoleKeys.end()) return it->second;
    }
    return RoleKey(row);
}

DWORD CEnhStringUsageTable::GetFirstObjectId(int usageTypeId, int stringId) {
    CompleteLoad();
    if (m_pRoleIndex) {
        m_roleWalkFiltered = false;
        auto* row =
            static_cast<CKelStringUsage*>(RoleIndex().GetFirst(RoleKey(usageTypeId, stringId)));
        return row ? row->Object_ID : 0;
    }
    m_roleWalkFiltered = true;
    m_roleWalkUsageType = static_cast<DWORD>(usageTypeId);
    for (CKelStringUsage* row = GetFirstUsageOfString(stringId); row;
         row = GetNextUsageOfString()) {
        if (row->String_Usage_Type_ID == m_roleWalkUsageType) return row->Object_ID;
    }
    return 0;
}

DWORD CEnhStringUsageTable::GetNextObjectId() {
    if (!m_roleWalkFiltered) {
        auto* row = m_pRoleIndex ? static_cast<CKelStringUsage*>(m_pRoleIndex->GetNext()) : nullptr;
        return row ? row->Object_ID : 0;
    }
    for (CKelStringUsage* row = GetNextUsageOfString(); row; row = GetNextUsageOfString()) {
        if (row->String_Usage_Type_ID == m_roleWalkUsageType) return row->Object_ID;
    }
    return 0;
}

CKelStringUsage* CEnhStringUsageTable::GetFirstUsageOfString(int stringId) {
    CompleteLoad();
    return static_cast<CKelStringUsage*>(FKIndex().GetFirst(static_cast<std::int64_t>(stringId)));
}

CKelStringUsage* CEnhStringUsageTable::GetNextUsageOfString() {
    return static_cast<CKelStringUsage*>(FKIndex().GetNext());
}

CUsedStringIds CEnhStringUsageTable::CollectUsedStringIds() {
    CompleteLoad();
    CUsedStringIds used;
    ULONG maxId = 0;
    for (POSITION pos = GetFirstRowPosition(); pos;)
        maxId = std::max<ULONG>(maxId, GetNextRow(pos)->String_ID);
    // A bitmap while it costs no more than a few bytes per usage; a sorted list of
    // ids when a stray huge id would make it large.
    const auto rows = static_cast<std::uint64_t>(GetCount());
    used.m_dense = maxId <= 128 * rows + (1u << 20);
    if (used.m_dense) {
        used.m_bits.assign(static_cast<size_t>(maxId) + 1, false);
        for (POSITION pos = GetFirstRowPosition(); pos;)
            used.m_bits[GetNextRow(pos)->String_ID] = true;
    } else {
        used.m_ids.reserve(static_cast<size_t>(rows));
        for (POSITION pos = GetFirstRowPosition(); pos;)
            used.m_ids.push_back(GetNextRow(pos)->String_ID);
        std::sort(used.m_ids.begin(), used.m_ids.end());
        used.m_ids.erase(std::unique(used.m_ids.begin(), used.m_ids.end()), used.m_ids.end());
    }
    return used;
}

int CEnhStringUsageTable::Save(CZmfFile* file) {
    CompleteLoad();
    return SaveGuarded(file);
}

void CEnhStringUsageTable::AddToExtraIndexes(CKelStringUsage* row) {
    if (!m_objectMapPending) m_byObject.Add(row);
    if (m_pRoleIndex && !m_roleIndexPending) m_pRoleIndex->Insert(RoleKey(*row), row);
}

void CEnhStringUsageTable::RemoveFromExtraIndexes(CKelStringUsage* row) {
    // Filed first: a row that leaves the map uncovers none it shadowed, which
    // filing the rows left afterwards would.
    FiledObjectMap().Remove(row);
    // A pending tree is filed from the rows still listed: nothing to take out.
    if (m_pRoleIndex && !m_roleIndexPending) {
        m_pRoleIndex->Delete(FiledRoleKey(*row), row);
        m_fixedRoleKeys.erase(row);
    }
}

void CEnhStringUsageTable::SizeExtraIndexes(UINT bucketCount) {
    m_byObject.InitHashTable(bucketCount);
    // Called by the load only: like the trees, the map is filed from the rows on
    // first use (in list order, the same entries as filing each row as it enters).
    m_objectMapPending = true;
}

CEnhStringUsageTable::ObjectMap& CEnhStringUsageTable::FiledObjectMap() const {
    FileListedRows<CKelStringUsage>(m_objectMapPending,
                                    [this](CKelStringUsage* row) { m_byObject.Add(row); });
    return m_byObject;
}
