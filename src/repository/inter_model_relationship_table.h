// CEnhRepoInterModelRelationshipTable ("InterModelRelationship"): the inter-model
// relationships of this model.
//
// One row per relationship: InterModelRelationship_ID (key) and Global_User_ID, the
// unique object of type "InterModelRelationship" that stands for the relationship
// and carries its GUIDs in the identity manager. Indexes: by key, and by that
// object (the first row filed for an object answers).
#pragma once

#include "identity/guid_mgr.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "repository/repo_table.h"
#include "zmflib/rows.h"

class CEnhRepoInterModelRelationshipTable;

class CKelInterModelRelationship final
    : public CEnhRow<CInterModelRelationshipBase, CEnhRepoInterModelRelationshipTable> {};

struct SInterModelRelationshipTraits : CEnhTableTraits<CKelInterModelRelationship> {
    static constexpr DWORD Row::*kForeignKey = &Row::Global_User_ID;
    static constexpr EEnhFKIndex kForeignKeyIndex = EEnhFKIndex::Map;
};

class CEnhRepoInterModelRelationshipTable : public CEnhRepoTable<SInterModelRelationshipTraits> {
  public:
    // Both borrowed; `guids` may be null (then nothing is found by GUID and deletes
    // leave objects alone).
    CEnhRepoInterModelRelationshipTable(CZmfFile* file, CGuidMgr* guids);

    // A relationship for the existing object `relationshipObjectId`, under a new key,
    // also in the record store at once with `writeThrough`. The GUID texts are the
    // caller's to give to the identity manager: they are left exactly as given.
    // Returns the relationship id.
    ULONG Insert(ULONG relationshipObjectId, int writeThrough, CString& guid, CString& versionGuid);
    // The same in memory only; the text is not used.
    ULONG Insert(ULONG relationshipObjectId, const CString& guid);

    CKelInterModelRelationship* GetTechKeyRow(ULONG relationshipId) const {
        return GetRow(relationshipId);
    }
    CKelInterModelRelationship* GetGlobalUserIDRow(ULONG relationshipObjectId) {
        return GetFKRow(relationshipObjectId);
    }
    // The relationship whose object has this object GUID; 0 when none.
    ULONG GetInterModelRelID(const CString& guid);
    // The relationship's object; 0 for an unknown id.
    ULONG GetIntermodelRelationshipObjGlobalId(ULONG relationshipId) const;
    // The object GUID of a relationship object (32 digits). FALSE when unknown.
    BOOL GetInterModelRelationshipGUIDFromGlobalId(ULONG relationshipObjectId, CString& guid) const;

    // Removes the relationship; with `deleteObject` 1 its unique object is deleted
    // first (CGuidMgr::DeleteObject(object, 1)). 0 for an unknown id.
    int Delete(ULONG relationshipId, int deleteObject);
    // Removes the relationship found by GetInterModelRelID(guid), keeping its object.
    int Delete(const CString& guid);

  private:
    CGuidMgr* m_pGuids;  // not owned; may be null
};
