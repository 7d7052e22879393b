#include "namespace/string_usage_type_table.h"

#include <memory>

#include "namespace/usage_types.h"

CEnhStringUsageTypeTable::CEnhStringUsageTypeTable(CZmfFile* file)
    : CEnhTable(nullptr, nullptr, nullptr, file) {}

void CEnhStringUsageTypeTable::Init(unsigned int bucketCount) {
    CEnhTable::Init(bucketCount);
    for (const char* name : tessmeta::kStringUsageTypeNames) {
        if (!GetUsageTypeId(name)) AddUsageType(name);
    }
}

DWORD CEnhStringUsageTypeTable::GetUsageTypeId(std::string_view name) const {
    const CKelStringUsageType* row = m_byName.Find(NameKey::Lookup(name));
    return row ? row->String_Usage_Type_ID : 0;
}

DWORD CEnhStringUsageTypeTable::AddUsageType(std::string_view name) {
    auto row = std::make_unique<CKelStringUsageType>();  // key 0: numbered on entry
    row->Name = name;
    return EnterRow(std::move(row));
}
