#include "zmflib/table_base.h"

#include <algorithm>

#include "zmflib/db_object.h"
#include "zmflib/iterators.h"
#include "zmflib/zmf_file.h"

CTableBase::CTableBase(CZmfFile* file, const SZmfTableDesc& desc) : m_file(file), m_desc(desc) {}

CTableBase::~CTableBase() = default;

int CTableBase::Insert(const CDbObjectBase* row) {
    if (!row) return 0;
    if (!m_failCalls.empty()) {
        ++m_insertCalls;
        if (std::binary_search(m_failCalls.begin(), m_failCalls.end(), m_insertCalls)) return 0;
    }
    m_file->CountRow();
    return DoInsert(row);
}

int CTableBase::Update(const CDbObjectBase* row) {
    return row ? DoUpdate(row) : 0;
}
int CTableBase::Delete(const CDbObjectBase* row) {
    return row ? DoDelete(row) : 0;
}
int CTableBase::Get(CDbObjectBase* row) {
    return row ? DoGet(row) : 0;
}
POSITION CTableBase::GetStartPosition() {
    return DoGetStartPosition();
}

void CTableBase::GetNext(POSITION& pos, CDbObjectBase* row) {
    if (!pos || !row) {
        pos = nullptr;
        return;
    }
    DoGetNext(pos, row);
}

ULONG CTableBase::GetCount() {
    return DoGetCount();
}

void CTableBase::SetSizeEstimate(LONG n) {
    m_sizeEstimate = n;
    m_hasSizeEstimate = true;
    m_sizeEstimateDirty = true;
}

LONG CTableBase::GetSizeEstimate() {
    if (m_hasSizeEstimate) return m_sizeEstimate;
    return static_cast<LONG>(std::max<ULONG>(1, GetCount()));
}

std::unique_ptr<CZmfCursor> CTableBase::OpenCursor() {
    return DoOpenCursor();
}

void CTableBase::FailInsertCalls(std::vector<ULONG> calls) {
    std::sort(calls.begin(), calls.end());
    m_failCalls = std::move(calls);
    m_insertCalls = 0;
}

CIteratorBase::CIteratorBase(CTableBase* table) : m_table(table) {
    if (table) m_cursor = table->OpenCursor();
}

CIteratorBase::~CIteratorBase() = default;

void CIteratorBase::StoreTextsIn(CStringArena* texts) {
    if (m_cursor) m_cursor->StoreTextsIn(texts);
}

int CIteratorBase::GetNext(CDbObjectBase* row) {
    if (!m_cursor || !row || !m_cursor->Next(row)) return 0;
    m_table->GetFile()->CountRow();
    return 1;
}
