// CRepoTableManager: the repository bookkeeping of one open model.
//
// A model added to a shared model repository records, between two exchanges with
// the repository, which of its objects were changed or deleted locally and which of
// its objects stand for objects of other models. The manager owns three tables:
//   - the inter-model object links (CEnhRepoInterModelObjectLinkTable);
//   - the inter-model relationships (CEnhRepoInterModelRelationshipTable), each a
//     unique object of type "InterModelRelationship" with its own GUIDs;
//   - the object modifications (CEnhRepoObjModTable), in a diagram list and a
//     data-dictionary list.
// The objects' repository status flags live in the identity manager; the pending
// check-out requests in CEnhDelayCheckoutTable (delay_checkout_table.h).
//
// Life cycle: the constructor creates and loads the three tables (links,
// relationships, modifications), then repairs older files (below); edits work in
// memory, except those made with write-through, which reach the record store at
// once; Save rewrites the tables; ReleaseStorageTables gives them back. Hand the
// manager to CGuidMgr::SetRepoTableMgr so that deleting an object removes its link,
// its modification row and (through the check-out table) its pending request.
//
// Repair of older files. A file below version 502 may hold deleted dictionary
// objects (kind 1 rows in the data-dictionary list) filed under an object domain
// that no longer stands for their data dictionary. When a dictionary manager is
// given and such rows exist: a file of version 501 with more than one data
// dictionary cannot be repaired, and the user is told once (a message box); any
// other such file has those objects moved to the domain of the diagram-specific
// data dictionary.
#pragma once

#include <memory>

#include "dictionary/dict_object_mgr.h"
#include "identity/guid_mgr.h"
#include "identity/repository_hooks.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "repository/inter_model_link_table.h"
#include "repository/inter_model_relationship_table.h"
#include "repository/obj_mod_table.h"
#include "zmflib/zmf_file.h"

class CRepoTableManager : public IRepositoryHooks {
  public:
    // The text of the one message the manager shows.
    static constexpr const char* kBetaFileWarning =
        "This zmf file was saved in a beta version of Tessary and should not be used with the "
        "Repository. \nPlease save the file under a different name and re-add the diagram to "
        "the Repository.";

    // `file`, `guidMgr` and `dictMgr` are borrowed; `dictMgr` is used only here (and
    // may be null: no repair), `guidMgr` may be null (every modification then goes
    // to the diagram list, and nothing is found by GUID).
    CRepoTableManager(CZmfFile* file, CGuidMgr* guidMgr, CDictObjectMgr* dictMgr,
                      ULONG fileVersion);
    virtual ~CRepoTableManager();
    // The manager owns its tables: it is not copied.
    CRepoTableManager(const CRepoTableManager&) = delete;
    CRepoTableManager& operator=(const CRepoTableManager&) = delete;

    // ---- persistence ---------------------------------------------------------------

    // Writes the links, then the relationships (always whole), then the
    // modifications as CEnhRepoObjModTable::Save does with the two flags. 1 when
    // all three were written.
    int Save(CZmfFile* file, int emptyModifications, int keepModifications);
    // Gives back the record-store tables the three tables hold since Save.
    void ReleaseStorageTables(int flag = 0);

    // ---- modifications -------------------------------------------------------------

    // Records a modification (see CEnhRepoObjModTable::Insert); object id 0 is
    // ignored (returns 0). The FromCmpMgr form writes through.
    ULONG InsertObjectModificationRow(ULONG objectId, LONG kind, int writeThrough);
    ULONG InsertObjectModificationRowFromCmpMgr(ULONG objectId, LONG kind);
    // Removes the object's modification row, if any.
    void RemoveObjectModificationFKRow(ULONG objectId) override;
    int IsObjectModified(ULONG objectId) override;
    int IsObjectDeleted(ULONG objectId) override;
    // 1 when a row of the data-dictionary list is of kind 1 (deleted).
    int IsDeletedDDObjFound() const;
    // The diagram list in insertion order; the Next function returns the row and
    // advances.
    POSITION GetFirstObjectModificationDiagObjRow() const;
    CKelObjectModifications* GetNextObjectModificationDiagObjRow(POSITION& position) const;

    // Clearing after an exchange with the repository. Each removes rows first and
    // only then deletes the objects of the removed kind-1 rows, in order, with
    // CGuidMgr::DeleteObject(id, 1):
    //   ClearDiagDeletedRows: the kind-1 rows of the diagram list;
    //   ClearDataDictDeletedRows: the kind-1 rows of the data-dictionary list whose
    //     object is in domain `domainId` (0: all);
    //   ClearDiagModsAndDels / ClearDataDictModsAndDels: every row of that list;
    //   ClearModsAndDels: every row of both lists (diagram objects deleted first).
    void ClearDiagDeletedRows();
    void ClearDataDictDeletedRows(ULONG domainId);
    void ClearDiagModsAndDels();
    void ClearDataDictModsAndDels();
    void ClearModsAndDels();

    // ---- inter-model relationships and links ----------------------------------------

    // A relationship row for the existing unique object, in memory only (the text is
    // not used). Returns the relationship id; 0 on failure.
    ULONG InsertIMRelationship(ULONG relationshipObjectId, const CString& guid);
    // A link row, in memory only. Returns the link id.
    ULONG InsertIMObjectLink(ULONG objectId, ULONG relationshipId);
    // Ties the objects together across models. When one of them (the first in list
    // order) already takes part in a relationship, the others without a link join
    // it; otherwise a new relationship (a new "InterModelRelationship" object) is
    // made and every object of the list is linked to it. Rows are written through.
    // Returns the relationship id; 0 for a null or empty list (nothing done).
    ULONG MakeIntermodelRelationshipFromCmpMgr(CList<ULONG>* objectIds);
    // Removes the object's link; when no other object is linked to its relationship
    // any more, the relationship goes too (and its object, with deleteObject 1).
    void DeleteInterModelObjectLinkFKRow(ULONG objectId, int deleteObject) override;
    // Removes the relationship whose object has this GUID (the object stays) and
    // every link to it.
    void DeleteInterModelRelationship(const CString& guid);

    // The relationship whose object has this GUID; 0 if none.
    ULONG GetInterRelID(const CString& guid);
    // The object of the relationship's first link (balanced-tree order); 0 if none.
    ULONG GetUniqueObjectIdFromInterModelRelID(ULONG relationshipId);
    ULONG GetUniqueObjectID(unsigned int relationshipId);
    // The relationship of the object's link; 0 if none.
    ULONG GetInterModelRelIDFromUniqueObjectId(ULONG objectId);
    // Both outputs 0, then the object's relationship and that relationship's object;
    // 1 only when both are non-zero.
    int GetIntermodelRelObjIdsFromParentObj(ULONG objectId, ULONG& relationshipId,
                                            ULONG& relationshipObjectId);
    // The relationship whose object is `relationshipObjectId`; 0 if none.
    ULONG GetInterModelRelIDFromImRelUniqueObjID(ULONG relationshipObjectId);
    // The object GUID of a relationship object.
    BOOL GetInterModelRelationshipGUIDFromGlobalId(ULONG relationshipObjectId, CString& guid);
    // The relationships in table order, as record-store rows.
    POSITION GetFirstInterModelRelationshipPosition() const;
    CInterModelRelationshipBase* GetNextInterModelRelationship(POSITION& position) const;

    CEnhRepoInterModelObjectLinkTable* GetInterModelObjectLinkTable() const {
        return m_pLinks.get();
    }
    CEnhRepoInterModelRelationshipTable* GetInterModelRelationshipTable() const {
        return m_pRelationships.get();
    }
    CEnhRepoObjModTable* GetObjectModificationTable() const { return m_pModifications.get(); }
    // The relationship table's record-store table for 57; null for any other id (and
    // while the table holds none).
    CTableBase* GetTablePtr(int tableId) const;

    // ---- GUIDs, through the identity manager ------------------------------------------

    unsigned int GetUniqueObjectID(const CString& guid);
    BOOL GetGUID(ULONG objectId, CString& guid);
    BOOL UpdateGUIDs(ULONG objectId, CString& guid, CString& versionGuid);
    BOOL UpdateVersionGUID(ULONG objectId, CString& versionGuid);
    // Nothing for object 0; else (for a non-zero relationship id) DoInterModelRel,
    // then UpdateGUIDs.
    void MarkCreate(ULONG objectId, CString& guid, CString& versionGuid, ULONG relationshipId);
    // Kept for hosts that call it; does nothing.
    void MarkCreate(unsigned int objectId, unsigned int relationshipId);

  private:
    // Does nothing: the relationship is made by MakeIntermodelRelationshipFromCmpMgr.
    void DoInterModelRel(unsigned int objectId, unsigned int relationshipId);
    void RepairDeletedDictionaryObjects(CDictObjectMgr& dictMgr, ULONG fileVersion);
    // Deletes the objects of cleared kind-1 rows.
    void DeleteObjects(const std::vector<ULONG>& objectIds);

    std::unique_ptr<CEnhRepoInterModelObjectLinkTable> m_pLinks;
    std::unique_ptr<CEnhRepoInterModelRelationshipTable> m_pRelationships;
    std::unique_ptr<CEnhRepoObjModTable> m_pModifications;
    CGuidMgr* m_pGuids;  // not owned; may be null
};
