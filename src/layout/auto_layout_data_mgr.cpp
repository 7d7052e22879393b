#include "layout/auto_layout_data_mgr.h"

#include <unordered_set>
#include <vector>

CAutoLayoutDataMgr::CAutoLayoutDataMgr(CZmfFile* file, CGuidMgr* guidMgr)
    : m_pFile(file),
      m_pGuidMgr(guidMgr),
      m_pAlgorithms(std::make_unique<CEnhLayoutAlgorithmTable>(file)),
      m_pDataTypes(std::make_unique<CEnhDataTypeTable>(file)),
      m_pPropertyNames(std::make_unique<CEnhLayoutPropertyNameTable>(file)),
      m_pSubmodelAlgorithms(std::make_unique<CEnhSubmodelAlgorithmTable>(file)),
      m_pProperties(std::make_unique<CEnhAlgorithmPropertyTable>(file)) {}

CAutoLayoutDataMgr::~CAutoLayoutDataMgr() {
    // In the order the tables were made.
    m_pAlgorithms.reset();
    m_pDataTypes.reset();
    m_pPropertyNames.reset();
    m_pSubmodelAlgorithms.reset();
    m_pProperties.reset();
}

int CAutoLayoutDataMgr::InitConstantTables() {
    if (m_constantsLoaded) return 1;
    m_constantsLoaded = true;
    m_pAlgorithms->Init(0);
    m_pDataTypes->Init(0);
    m_pPropertyNames->Init(0);
    return 1;
}

int CAutoLayoutDataMgr::Init() {
    InitConstantTables();
    if (m_settingsLoaded) return 1;
    m_settingsLoaded = true;
    m_pSubmodelAlgorithms->Init(0);
    m_pProperties->Init(0);
    return 1;
}

int CAutoLayoutDataMgr::SaveConstantTables(CZmfFile* file) {
    m_pFile = file;
    const int algorithms = m_pAlgorithms->Save(file);
    const int dataTypes = m_pDataTypes->Save(file);
    const int names = m_pPropertyNames->Save(file);
    return algorithms && dataTypes && names ? 1 : 0;
}

int CAutoLayoutDataMgr::Save(CZmfFile* file) {
    const int constants = SaveConstantTables(file);
    const int pairs = m_pSubmodelAlgorithms->Save(file);
    const int values = m_pProperties->Save(file);
    return constants && pairs && values ? 1 : 0;
}

void CAutoLayoutDataMgr::ReleaseStorageTables(int flag) {
    CEnhTableBase* const tables[] = {m_pAlgorithms.get(), m_pDataTypes.get(),
                                     m_pPropertyNames.get(), m_pSubmodelAlgorithms.get(),
                                     m_pProperties.get()};
    for (CEnhTableBase* table : tables) {
        CTableBase** handle = table->GetTablePtrAddr();
        if (*handle && table->GetFile()) table->GetFile()->ReleaseTable(handle, flag);
    }
}

CTableBase* CAutoLayoutDataMgr::GetTablePtr(int tableId) const {
    if (tableId == kAlgorithmPropertyTableId) return *m_pProperties;
    if (tableId == kSubmodelAlgorithmTableId) return *m_pSubmodelAlgorithms;
    return nullptr;
}

CKelLayoutAlgorithm* CAutoLayoutDataMgr::GetLayoutAlgorithmRow(const CString& name) const {
    return m_pAlgorithms->FindByName(name.View());
}
CKelLayoutAlgorithm* CAutoLayoutDataMgr::GetLayoutAlgorithmRow(ULONG id) const {
    return m_pAlgorithms->GetRow(id);
}
CKelLayoutPropertyName* CAutoLayoutDataMgr::GetLayoutPropertyNameRow(ULONG id) const {
    return m_pPropertyNames->GetRow(id);
}
CKelLayoutPropertyName* CAutoLayoutDataMgr::GetLayoutPropertyNameRow(const CString& name) const {
    return m_pPropertyNames->FindByName(name.View());
}
CKelDataType* CAutoLayoutDataMgr::GetDataTypeRow(ULONG id) const {
    return m_pDataTypes->GetRow(id);
}
CKelDataType* CAutoLayoutDataMgr::GetDataTypeRow(const CString& name) const {
    return m_pDataTypes->FindByName(name.View());
}
CKelSubmodelAlgorithm* CAutoLayoutDataMgr::GetSubmodelAlgorithmRow(ULONG submodelId,
                                                                   ULONG algorithmId) const {
    return m_pSubmodelAlgorithms->FindPair(submodelId, algorithmId);
}

CKelSubmodelAlgorithm* CAutoLayoutDataMgr::GetFirstSubmodelAlgorithmFKRow(ULONG submodelId) {
    return m_pSubmodelAlgorithms->GetFirstFKRow(submodelId);
}
CKelSubmodelAlgorithm* CAutoLayoutDataMgr::GetNextSubmodelAlgorithmFKRow() {
    return m_pSubmodelAlgorithms->GetNextFKRow();
}
CKelAlgorithmProperty* CAutoLayoutDataMgr::GetFirstAlgorithmPropertyFKRow(
    ULONG submodelAlgorithmId) {
    return m_pProperties->GetFirstFKRow(submodelAlgorithmId);
}
CKelAlgorithmProperty* CAutoLayoutDataMgr::GetNextAlgorithmPropertyFKRow() {
    return m_pProperties->GetNextFKRow();
}

int CAutoLayoutDataMgr::UpdateSubmodelAlgorithmProperty(ULONG submodelId, ULONG algorithmId,
                                                        const CString& propertyName,
                                                        const CString& dataTypeName,
                                                        const CString& value) {
    // Everything is looked up first, so that a bad name leaves no half-made pair.
    const CKelLayoutPropertyName* name = GetLayoutPropertyNameRow(propertyName);
    const CKelDataType* type = GetDataTypeRow(dataTypeName);
    if (!name || !type || !GetLayoutAlgorithmRow(algorithmId)) return 0;

    const CKelSubmodelAlgorithm* pair = GetSubmodelAlgorithmRow(submodelId, algorithmId);
    const ULONG pairId = pair ? pair->Submodel_Algorithm_ID
                              : m_pSubmodelAlgorithms->Insert(algorithmId, submodelId, 0, 0);
    for (const CKelAlgorithmProperty* row = GetFirstAlgorithmPropertyFKRow(pairId); row;
         row = GetNextAlgorithmPropertyFKRow()) {
        if (row->Layout_Property_Name_ID == name->Layout_Property_Name_ID &&
            row->Data_Type_ID == type->Data_Type_ID)
            return m_pProperties->UpdateValue(row->Algorithm_Property_ID, value);
    }
    return static_cast<int>(
        m_pProperties->Insert(name->Layout_Property_Name_ID, type->Data_Type_ID, pairId, 0, value));
}

int CAutoLayoutDataMgr::DeleteSubmodelAlgorithm(ULONG submodelAlgorithmId) {
    std::vector<ULONG> values;  // the index must not change while it is walked
    for (const CKelAlgorithmProperty* row = GetFirstAlgorithmPropertyFKRow(submodelAlgorithmId);
         row; row = GetNextAlgorithmPropertyFKRow())
        values.push_back(row->Algorithm_Property_ID);
    int removed = 0;
    for (ULONG key : values)
        removed += m_pProperties->Delete(key);
    return removed + m_pSubmodelAlgorithms->Delete(submodelAlgorithmId);
}

int CAutoLayoutDataMgr::DeleteSubmodelData(ULONG submodelId) {
    std::vector<ULONG> pairs;
    for (const CKelSubmodelAlgorithm* row = GetFirstSubmodelAlgorithmFKRow(submodelId); row;
         row = GetNextSubmodelAlgorithmFKRow())
        pairs.push_back(row->Submodel_Algorithm_ID);
    for (ULONG key : pairs)
        DeleteSubmodelAlgorithm(key);
    return pairs.empty() ? 0 : 1;
}

int CAutoLayoutDataMgr::RemoveDeadRows(CList<ULONG>* liveSubmodelIds) {
    if (!liveSubmodelIds) return 0;
    std::unordered_set<ULONG> live;
    for (POSITION pos = liveSubmodelIds->GetHeadPosition(); pos;)
        live.insert(liveSubmodelIds->GetNext(pos));

    std::vector<ULONG> dead;
    for (POSITION pos = m_pSubmodelAlgorithms->GetFirstRowPosition(); pos;) {
        const CKelSubmodelAlgorithm* row = m_pSubmodelAlgorithms->GetNextRow(pos);
        if (!live.count(row->Submodel_ID)) dead.push_back(row->Submodel_Algorithm_ID);
    }
    int removed = 0;
    for (ULONG key : dead)
        removed += DeleteSubmodelAlgorithm(key);

    // Values whose submodel algorithm is gone belong to no submodel at all.
    dead.clear();
    for (POSITION pos = m_pProperties->GetFirstRowPosition(); pos;) {
        const CKelAlgorithmProperty* row = m_pProperties->GetNextRow(pos);
        if (!m_pSubmodelAlgorithms->GetRow(row->Submodel_Algorithm_ID))
            dead.push_back(row->Algorithm_Property_ID);
    }
    for (ULONG key : dead)
        removed += m_pProperties->Delete(key);
    return removed;
}
