#include "repository/inter_model_link_table.h"

#include <memory>

CEnhRepoInterModelObjectLinkTable::CEnhRepoInterModelObjectLinkTable(CZmfFile* file)
    : CEnhRepoTable(file), m_byRelationship(this) {}

ULONG CEnhRepoInterModelObjectLinkTable::Insert(ULONG objectId, ULONG relationshipId,
                                                int writeThrough) {
    auto row = std::make_unique<CKelInterModelObjectLink>();
    row->Object_ID = objectId;
    row->InterModelRelationship_ID = relationshipId;
    return InsertRow(std::move(row), writeThrough);
}

ULONG CEnhRepoInterModelObjectLinkTable::GetInterModelRelID(ULONG objectId) {
    const CKelInterModelObjectLink* row = GetFKRow(objectId);
    return row ? row->InterModelRelationship_ID : 0;
}

ULONG CEnhRepoInterModelObjectLinkTable::GetUniqueObjectID(ULONG relationshipId) {
    const CKelInterModelObjectLink* row = m_byRelationship.GetFirst(relationshipId);
    return row ? row->Object_ID : 0;
}

int CEnhRepoInterModelObjectLinkTable::RemoveUniqueObjectID(ULONG objectId) {
    const CKelInterModelObjectLink* row = GetFKRow(objectId);
    return row ? Delete(row->GetTechKey()) : 0;
}

int CEnhRepoInterModelObjectLinkTable::DeleteInterModelRelatoinshipIDFKRow(ULONG relationshipId) {
    return DeleteWalk(m_byRelationship.GetFirst(relationshipId),
                      [this] { return m_byRelationship.GetNext(); });
}

ULONG CEnhRepoInterModelObjectLinkTable::MakeIntermodelRelationshipFromCmpMgr(
    const CList<ULONG>* objectIds) {
    if (!objectIds) return 0;
    ULONG relationshipId = 0;
    for (POSITION pos = objectIds->GetHeadPosition(); pos && !relationshipId;)
        relationshipId = GetInterModelRelID(objectIds->GetNext(pos));
    if (!relationshipId) return 0;
    for (POSITION pos = objectIds->GetHeadPosition(); pos;) {
        const ULONG objectId = objectIds->GetNext(pos);
        if (!IsUniqueObjectFound(objectId)) Insert(objectId, relationshipId, 1);
    }
    return relationshipId;
}

int CEnhRepoInterModelObjectLinkTable::MakeIntermodelRelationshipFromCmpMgr(
    const CList<ULONG>* objectIds, ULONG relationshipId) {
    if (!objectIds) return 0;
    int linked = 0;
    for (POSITION pos = objectIds->GetHeadPosition(); pos; ++linked)
        Insert(objectIds->GetNext(pos), relationshipId, 1);
    return linked;
}
