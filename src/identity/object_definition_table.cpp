#include "identity/object_definition_table.h"

#include <memory>

CEnhObjectDefinitionTable::CEnhObjectDefinitionTable(CZmfFile* file)
    : CEnhTable(nullptr, nullptr, nullptr, file) {}

int CEnhObjectDefinitionTable::GetObjectTypeId(std::string_view name) const {
    const CKelObjectDefinition* row = m_byName.Find(name);
    return row ? static_cast<int>(row->Object_Type_ID) : 0;
}

int CEnhObjectDefinitionTable::GetObjectTypeString(int typeId, CString& name) const {
    const CKelObjectDefinition* row = GetRow(static_cast<ULONG>(typeId));
    if (!row) return 0;
    name = row->Name.GetValue();
    return 1;
}

ULONG CEnhObjectDefinitionTable::Insert(const CString& name, ULONG typeId) {
    auto row = std::make_unique<CKelObjectDefinition>();
    row->Name = name;
    return InsertIds(std::move(row), typeId);
}

void CEnhObjectDefinitionTable::AddToExtraIndexes(CKelObjectDefinition* row) {
    m_byName.Add(row);
}

void CEnhObjectDefinitionTable::RemoveFromExtraIndexes(CKelObjectDefinition* row) {
    m_byName.Remove(row);
}

void CEnhObjectDefinitionTable::SizeExtraIndexes(UINT bucketCount) {
    m_byName.Size(bucketCount);
}
