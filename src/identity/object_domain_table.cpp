#include "identity/object_domain_table.h"

#include <string_view>

namespace {

const char* DomainTableName(CZmfFile* file) {
    const char* name = file ? file->GetTableName(CEnhObjectDomainTable::kTableNumber) : nullptr;
    return name ? name : "";
}

constexpr std::string_view kModelDomainType = "DIAGRAM";

}  // namespace

CEnhObjectDomainTable::CEnhObjectDomainTable(CZmfFile* file)
    : CEnhTableBase(file, DomainTableName(file)),
      m_pKeys(file ? file->GetIdentityMgr() : nullptr) {}

void CEnhObjectDomainTable::Init(unsigned int bucketCount) {
    CTableBase* stored = *this;
    const UINT buckets = bucketCount ? bucketCount : (stored ? stored->GetCount() : 0);
    m_byId.InitHashTable(buckets, TRUE);
    LoadRows<CKelObjectDomain>(
        [this](std::unique_ptr<CKelObjectDomain> row) { Add(std::move(row)); });
}

ULONG CEnhObjectDomainTable::Insert(const CString& name, const CString& type, const CString& guid,
                                    ULONG key) {
    auto row = std::make_unique<CKelObjectDomain>();
    row->Object_Domain_ID = key;
    row->Name = name;
    row->Domain_Type = type;
    row->GUID = guid;
    CKelObjectDomain* added = row.get();
    Add(std::move(row));
    return added->Object_Domain_ID;
}

void CEnhObjectDomainTable::Add(std::unique_ptr<CKelObjectDomain> owned) {
    AddRow(owned.get());
    CKelObjectDomain* row = owned.release();
    row->SetEnhTable(this);
    if (m_pKeys) {
        if (row->Object_Domain_ID)
            m_pKeys->SetKeyValue(kKeyKind, row->Object_Domain_ID);
        else
            row->Object_Domain_ID = m_pKeys->AllocKeyValue(kKeyKind);
    }
    CKelObjectDomain*& mapped = m_byId[row->Object_Domain_ID];
    if (!mapped) mapped = row;
    // Byte comparison: "Diagram" or "DIAGRAM " is not the model's domain.
    if (m_nModelDomainId == 0 && row->Domain_Type.GetValue().View() == kModelDomainType)
        m_nModelDomainId = row->Object_Domain_ID;
}

CKelObjectDomain* CEnhObjectDomainTable::GetRow(ULONG id) const {
    CKelObjectDomain* row = nullptr;
    m_byId.Lookup(id, row);
    return row;
}

int CEnhObjectDomainTable::Save(CZmfFile* file) {
    return SaveRows(file, DomainTableName(file));
}
