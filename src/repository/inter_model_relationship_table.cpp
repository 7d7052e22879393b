#include "repository/inter_model_relationship_table.h"

#include <memory>

CEnhRepoInterModelRelationshipTable::CEnhRepoInterModelRelationshipTable(CZmfFile* file,
                                                                         CGuidMgr* guids)
    : CEnhRepoTable(file), m_pGuids(guids) {}

ULONG CEnhRepoInterModelRelationshipTable::Insert(ULONG relationshipObjectId, int writeThrough,
                                                  CString& /*guid*/, CString& /*versionGuid*/) {
    auto row = std::make_unique<CKelInterModelRelationship>();
    row->Global_User_ID = relationshipObjectId;
    return InsertRow(std::move(row), writeThrough);
}

ULONG CEnhRepoInterModelRelationshipTable::Insert(ULONG relationshipObjectId,
                                                  const CString& /*guid*/) {
    auto row = std::make_unique<CKelInterModelRelationship>();
    row->Global_User_ID = relationshipObjectId;
    return InsertRow(std::move(row), 0);
}

ULONG CEnhRepoInterModelRelationshipTable::GetInterModelRelID(const CString& guid) {
    const unsigned int objectId = m_pGuids ? m_pGuids->GetUniqueObjectID(guid) : 0;
    const CKelInterModelRelationship* row = objectId ? GetFKRow(objectId) : nullptr;
    return row ? row->GetTechKey() : 0;
}

ULONG CEnhRepoInterModelRelationshipTable::GetIntermodelRelationshipObjGlobalId(
    ULONG relationshipId) const {
    const CKelInterModelRelationship* row = GetRow(relationshipId);
    return row ? row->Global_User_ID : 0;
}

BOOL CEnhRepoInterModelRelationshipTable::GetInterModelRelationshipGUIDFromGlobalId(
    ULONG relationshipObjectId, CString& guid) const {
    return m_pGuids ? m_pGuids->GetObjectGUID(relationshipObjectId, guid) : FALSE;
}

int CEnhRepoInterModelRelationshipTable::Delete(ULONG relationshipId, int deleteObject) {
    const CKelInterModelRelationship* row = GetRow(relationshipId);
    if (!row) return 0;
    if (deleteObject == 1 && m_pGuids) {
        // The identity manager calls back into the repository tables; the row is
        // looked up again afterwards.
        m_pGuids->DeleteObject(static_cast<int>(row->Global_User_ID), 1);
    }
    return CEnhRepoTable::Delete(relationshipId);
}

int CEnhRepoInterModelRelationshipTable::Delete(const CString& guid) {
    const ULONG relationshipId = GetInterModelRelID(guid);
    return relationshipId ? Delete(relationshipId, 0) : 0;
}
