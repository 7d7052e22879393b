// CEnhRepoInterModelObjectLinkTable ("InterModelObjectLink"): which objects of this
// model take part in which inter-model relationship.
//
// One row per participating object: InterModelObjectLink_ID (key), Object_ID and
// InterModelRelationship_ID (the key of a relationship row). Indexes over the same
// rows: by link id (the key map), by object (one link per object: the first link
// filed for an object answers, and removing it leaves no entry), and by
// relationship (a balanced tree that keeps every link of a relationship, walked in
// the order the links were filed).
#pragma once

#include <cstdint>

#include "foundation/enh_indexes.h"
#include "platform/collections.h"
#include "platform/types.h"
#include "repository/repo_table.h"
#include "zmflib/rows.h"

class CEnhRepoInterModelObjectLinkTable;

class CKelInterModelObjectLink final
    : public CEnhRow<CInterModelObjectLinkBase, CEnhRepoInterModelObjectLinkTable> {};

struct SInterModelObjectLinkTraits : CEnhTableTraits<CKelInterModelObjectLink> {
    static constexpr DWORD Row::*kForeignKey = &Row::Object_ID;
    static constexpr EEnhFKIndex kForeignKeyIndex = EEnhFKIndex::Map;
};

class CEnhRepoInterModelObjectLinkTable : public CEnhRepoTable<SInterModelObjectLinkTraits> {
  public:
    explicit CEnhRepoInterModelObjectLinkTable(CZmfFile* file);

    // Links `objectId` to relationship `relationshipId` under a new key (also in the
    // record store at once with `writeThrough`). Existing links are not looked at.
    // Returns the link id.
    ULONG Insert(ULONG objectId, ULONG relationshipId, int writeThrough);

    // The object's link, or null.
    CKelInterModelObjectLink* GetUniqueObjectFKRow(ULONG objectId) { return GetFKRow(objectId); }
    // The relationship id of the object's link; 0 when it has none.
    ULONG GetInterModelRelID(ULONG objectId);
    // Whether the object's link names a relationship (id > 0).
    BOOL IsUniqueObjectIDInList(ULONG objectId) { return GetInterModelRelID(objectId) > 0; }
    // Whether the object has a link at all.
    BOOL IsUniqueObjectFound(ULONG objectId) { return GetFKRow(objectId) != nullptr; }

    // The object of the first link of the relationship in the tree's order; 0 when
    // none. GetInterModelRelatedObject answers the same: an object still linked.
    ULONG GetUniqueObjectID(ULONG relationshipId);
    ULONG GetInterModelRelatedObject(ULONG relationshipId) {
        return GetUniqueObjectID(relationshipId);
    }

    // The links of one relationship: the first, then each next one, then null. Any
    // other search or change of the table ends the walk.
    CKelInterModelObjectLink* GetFirstInterModelRelationshipIDFKRow(ULONG relationshipId) {
        return m_byRelationship.GetFirst(relationshipId);
    }
    CKelInterModelObjectLink* GetNextInterModelRelationshipIDFKRow() {
        return m_byRelationship.GetNext();
    }

    // Removes the link with this id / the object's link. 0 when there is none.
    int Remove(ULONG linkId) { return Delete(linkId); }
    int RemoveUniqueObjectID(ULONG objectId);
    // Removes every link of the relationship. Returns how many went.
    int DeleteInterModelRelatoinshipIDFKRow(ULONG relationshipId);

    // Joins the objects to the relationship of the first of them (in list order)
    // that already has one: each object of the list without a link is linked to it,
    // in list order, with write-through. Returns that relationship id; 0 (and
    // nothing done) when none of the objects has a link.
    ULONG MakeIntermodelRelationshipFromCmpMgr(const CList<ULONG>* objectIds);
    // Links every object of the list to `relationshipId`, in list order, with
    // write-through. Returns how many links were made.
    int MakeIntermodelRelationshipFromCmpMgr(const CList<ULONG>* objectIds, ULONG relationshipId);

  protected:
    void AddToExtraIndexes(CKelInterModelObjectLink* row) override { m_byRelationship.Add(row); }
    void RemoveFromExtraIndexes(CKelInterModelObjectLink* row) override {
        m_byRelationship.Remove(row);
    }
    void SizeExtraIndexes(UINT /*bucketCount*/) override { m_byRelationship.MarkLoading(); }

  private:
    static std::int64_t RelationshipOf(const CKelInterModelObjectLink& row) {
        return row.InterModelRelationship_ID;
    }
    CEnhTreeIndex<CKelInterModelObjectLink, &RelationshipOf> m_byRelationship;
};
