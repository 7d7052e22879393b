#include "layout/layout_tables.h"

ULONG CEnhSubmodelAlgorithmTable::Insert(ULONG algorithmId, ULONG submodelId, ULONG reserved,
                                         ULONG key) {
    auto row = std::make_unique<CKelSubmodelAlgorithm>();
    row->Layout_Algorithm_ID = algorithmId;
    row->Submodel_ID = submodelId;
    row->Reserved = reserved;
    return InsertIds(std::move(row), key);
}

CKelSubmodelAlgorithm* CEnhSubmodelAlgorithmTable::FindPair(ULONG submodelId,
                                                            ULONG algorithmId) const {
    return m_byPair.Find({nullptr, submodelId, algorithmId});
}

ULONG CEnhAlgorithmPropertyTable::Insert(ULONG propertyNameId, ULONG dataTypeId,
                                         ULONG submodelAlgorithmId, ULONG key,
                                         const CString& value) {
    auto row = std::make_unique<CKelAlgorithmProperty>();
    row->Layout_Property_Name_ID = propertyNameId;
    row->Data_Type_ID = dataTypeId;
    row->Submodel_Algorithm_ID = submodelAlgorithmId;
    row->Value = value;
    return InsertIds(std::move(row), key);
}

int CEnhAlgorithmPropertyTable::UpdateValue(ULONG key, const CString& value) {
    return UpdateRow(key, [&](CKelAlgorithmProperty& row) { row.Value = value; });
}
