#include "repository/delay_checkout_table.h"

#include <memory>

namespace {

const char* TableName() {
    return CDelayed_CheckoutBase::Desc().name;
}
int KeyKind() {
    return CDelayed_CheckoutBase::Desc().keyKind;
}

}  // namespace

CEnhDelayCheckoutTable::CEnhDelayCheckoutTable(CZmfFile* file, CIdentityMgr* keys)
    : CEnhTableBase(file, TableName()),
      m_pKeys(keys ? keys : (file ? file->GetIdentityMgr() : nullptr)) {}

CEnhDelayCheckoutTable::~CEnhDelayCheckoutTable() = default;

void CEnhDelayCheckoutTable::Init(unsigned int /*unused*/) {
    CTableBase* stored = *this;
    const ULONG rows = stored ? stored->GetCount() : 0;
    m_byObject.InitHashTable(static_cast<UINT>(rows * 1.25), TRUE);
    LoadRows<CKelDelayCheckout>([this](std::unique_ptr<CKelDelayCheckout> row) {
        CKelDelayCheckout* added = row.get();
        Insert(row.release());
        m_byObject.SetAt(added->Object_ID, added);  // a later row of the object wins
    });
}

ULONG CEnhDelayCheckoutTable::Insert(CKelDelayCheckout* row) {
    std::unique_ptr<CKelDelayCheckout> owned(row);  // freed if the list cannot take it
    AddRow(row);
    owned.release();
    if (const ULONG key = row->GetTechKey()) {
        if (m_pKeys) m_pKeys->SetKeyValue(KeyKind(), key);
    } else if (m_pKeys) {
        row->SetTechKey(m_pKeys->AllocKeyValue(KeyKind()));
    }
    return row->GetTechKey();
}

ULONG CEnhDelayCheckoutTable::Insert(ULONG objectId, ULONG value, ULONG key) {
    if (const CKelDelayCheckout* existing = GetFKRow(objectId)) return existing->GetTechKey();
    auto row = std::make_unique<CKelDelayCheckout>();
    row->Object_ID = objectId;
    row->Request_Value = value;
    row->SetTechKey(key);
    CKelDelayCheckout* added = row.get();
    const ULONG result = Insert(row.release());
    m_byObject.SetAt(objectId, added);
    return result;
}

CKelDelayCheckout* CEnhDelayCheckoutTable::GetFKRow(ULONG objectId) const {
    CKelDelayCheckout* row = nullptr;
    m_byObject.Lookup(objectId, row);
    return row;
}

void CEnhDelayCheckoutTable::DeleteFKRow(ULONG objectId) {
    CKelDelayCheckout* row = GetFKRow(objectId);
    if (!row) return;
    m_byObject.RemoveKey(objectId);
    Remove(row);
}

void CEnhDelayCheckoutTable::RemoveAllRows() {
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        CKelDelayCheckout* row = GetNextRow(pos);  // `pos` has moved on: safe to remove
        m_byObject.RemoveKey(row->Object_ID);
        Remove(row);
    }
}

int CEnhDelayCheckoutTable::Save(CZmfFile* file) {
    return SaveRows(file, TableName());
}
