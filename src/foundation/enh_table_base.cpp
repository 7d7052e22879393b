#include "foundation/enh_table_base.h"

#include <algorithm>

#include "platform/cstring.h"
#include "platform/hooks.h"

namespace tessmeta {

void TraceFlushFailure(int line) {
    CString message;
    message.Format("Flush to zmflib Failure at line: %d\n", line);
    Trace(message);
}

}  // namespace tessmeta

CEnhTableBase::CEnhTableBase(CZmfFile* file) : m_pFile(file) {}

CEnhTableBase::CEnhTableBase(CZmfFile* file, const char* tableName) : m_pFile(file) {
    if (m_pFile) m_pTable = m_pFile->GetTable(tableName);
}

CEnhTableBase::~CEnhTableBase() {
    for (POSITION pos = m_rows.GetHeadPosition(); pos;)
        DestroyRow(m_rows.GetNext(pos));
    m_rows.Clear();
}

CStringArena& CEnhTableBase::TextArena() {
    if (!m_pTextArena) m_pTextArena = std::make_unique<CStringArena>();
    return *m_pTextArena;
}

void CEnhTableBase::DestroyRow(CDbObjectBase* row) {
    CRowDeleter deleter;
    if (m_rowsBesideTexts)
        deleter = CRowDeleter::ForArenaRows();
    else if (m_pRowPool && m_pRowPool->Owns(row))
        deleter.pool = m_pRowPool.get();
    deleter(row);
}

int CEnhTableBase::Get(CDbObjectBase* row) {
    return m_pTable ? m_pTable->Get(row) : 0;
}

void CEnhTableBase::Remove(CDbObjectBase* row) {
    if (!row) return;
    if (m_rows.IsLinked(row)) m_rows.Remove(row);
    DestroyRow(row);
}

std::size_t CEnhTableBase::StoredRowFigure() const {
    if (!m_pTable || !m_pTable->HasStoredSizeEstimate()) return 0;
    // Capped: a damaged figure must not reserve much address space.
    constexpr LONG kLargestHint = LONG{1} << 26;
    return static_cast<std::size_t>(std::clamp<LONG>(m_pTable->GetSizeEstimate(), 0, kLargestHint));
}

namespace {
// Saves write the row count as the figure, so up to this bound it is trusted
// without a count; above it one count of the stored rows is cheap next to the load
// that follows.
constexpr LONG kTrustedFigure = 1 << 16;
}  // namespace

bool CEnhTableBase::SLoadSize::NeedsRows() const {
    return !requested && (!hasFigure || figure > kTrustedFigure);
}

UINT CEnhTableBase::SLoadSize::Buckets(ULONG storedRows) const {
    if (requested) return requested;
    if (!hasFigure) return static_cast<UINT>(std::max<ULONG>(storedRows, 1));
    if (figure <= 0) return 1;
    if (figure <= kTrustedFigure) return static_cast<UINT>(figure);
    return static_cast<UINT>(std::clamp<ULONG>(storedRows, 1, static_cast<ULONG>(figure)));
}

CEnhTableBase::SLoadSize CEnhTableBase::LoadSize(unsigned int requested) const {
    SLoadSize size;
    size.requested = requested;
    size.hasFigure = m_pTable && m_pTable->HasStoredSizeEstimate();
    if (size.hasFigure) size.figure = m_pTable->GetSizeEstimate();
    return size;
}

UINT CEnhTableBase::LoadBucketCount(unsigned int requested) {
    const SLoadSize size = LoadSize(requested);
    return size.Buckets(size.NeedsRows() && m_pTable ? m_pTable->GetCount() : 0);
}

void CEnhTableBase::ReleaseHandle() {
    if (m_pTable && m_pFile) m_pFile->ReleaseTable(&m_pTable, 0);
    m_pTable = nullptr;
}

CTableBase* CEnhTableBase::BeginSave(CZmfFile* file, const char* tableName, LONG sizeEstimate) {
    m_pFile = file;
    m_pTable = file ? file->GetEmptyTable(tableName) : nullptr;
    if (m_pTable) m_pTable->SetSizeEstimate(sizeEstimate);
    return m_pTable;
}

int CEnhTableBase::SaveRows(CZmfFile* file, const char* tableName) {
    CTableBase* table = BeginSave(file, tableName, GetRowCount());
    if (!table) return 0;
    int result = 1;
    for (POSITION pos = GetFirstRowPosition(); pos;)
        result = table->Insert(GetNextRow(pos));
    return result;
}

int CEnhTableBase::SaveRowsGuarded(CZmfFile* file, const char* tableName) {
    return tessmeta::GuardedSave([&] {
        CTableBase* table = BeginSave(file, tableName, GetRowCount());
        if (!table) throw __LINE__;
        for (POSITION pos = GetFirstRowPosition(); pos;)
            ZMF_CHECKED_INSERT(table, GetNextRow(pos));
        return 1;
    });
}

CTableBase* CEnhTableBase::StorageTable(const char* tableName) {
    if (m_pTable) return m_pTable;
    return m_pFile ? m_pFile->GetTable(tableName) : nullptr;
}

int CEnhTableBase::WriteThroughInsert(const CDbObjectBase* row, const char* tableName) {
    CTableBase* table = StorageTable(tableName);
    return table ? table->Insert(row) : 0;
}

int CEnhTableBase::WriteThroughUpdate(const CDbObjectBase* row, const char* tableName) {
    CTableBase* table = StorageTable(tableName);
    return table ? table->Update(row) : 0;
}
