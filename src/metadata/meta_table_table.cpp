#include "metadata/meta_table_table.h"

#include <memory>

const char* const CEnhMetaTableTbl::AltKeyNames[NumAltKeys] = {"Entity",
                                                               "Indexes",
                                                               "Attribute",
                                                               "View",
                                                               "Procedure",
                                                               "Trigger",
                                                               "Package",
                                                               "Dictionary Trigger",
                                                               "Storage Object",
                                                               "Model",
                                                               "Foreign Key",
                                                               "Diagram",
                                                               "Submodel",
                                                               "Supertype",
                                                               "Templated Procedure",
                                                               "Default",
                                                               "Rule",
                                                               "User Datatype",
                                                               "Domain",
                                                               "Reference Value",
                                                               "Data Dictionary",
                                                               "Entity Display",
                                                               "View Display",
                                                               "View Field",
                                                               "Relationship Display",
                                                               "View Relationship Display",
                                                               "Supertype Display",
                                                               "Graphic Object"};

CEnhMetaTableTbl::CEnhMetaTableTbl(CZmfFile* file) : CEnhTable(nullptr, nullptr, nullptr, file) {}

void CEnhMetaTableTbl::Init(unsigned int bucketCount) {
    CEnhTable::Init(bucketCount);
    InitTable();
}

void CEnhMetaTableTbl::InitTable() {
    for (const char* name : AltKeyNames) {
        if (GetRow(std::string_view(name))) continue;
        auto row = std::make_unique<CKelMetaTable>();
        row->Name = name;
        InsertIds(std::move(row), 0);
    }
}

ULONG CEnhMetaTableTbl::GetTechKey(int value) const {
    if (value < 0 || value >= NumAltKeys) return 0;
    const CKelMetaTable* row = GetRow(std::string_view(AltKeyNames[value]));
    return row ? row->MetaTable_ID : 0;
}

int CEnhMetaTableTbl::GetStringEnum(ULONG key) const {
    const CKelMetaTable* row = GetRow(key);
    if (!row) return -1;
    const std::string_view name = row->Name.GetValue().View();
    for (int value = 0; value < NumAltKeys; ++value)
        if (name == AltKeyNames[value]) return value;
    return -1;
}

CKelMetaTable* CEnhMetaTableTbl::GetRow(std::string_view name) const {
    CKelMetaTable* row = nullptr;
    return m_byName.Lookup(name, row) ? row : nullptr;
}

void CEnhMetaTableTbl::AddToExtraIndexes(CKelMetaTable* row) {
    CKelMetaTable*& mapped = m_byName[row->Name.GetValue().View()];
    if (!mapped) mapped = row;
}

void CEnhMetaTableTbl::RemoveFromExtraIndexes(CKelMetaTable* row) {
    const std::string_view name = row->Name.GetValue().View();
    CKelMetaTable* mapped = nullptr;
    if (m_byName.Lookup(name, mapped) && mapped == row) m_byName.RemoveKey(name);
}

void CEnhMetaTableTbl::SizeExtraIndexes(UINT bucketCount) {
    m_byName.InitHashTable(bucketCount, TRUE);
}
