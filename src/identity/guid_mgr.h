// CGuidMgr: the identity of every object of one model.
//
// Every modelled row of the library is a unique object created here
// (GetNewUniqueId) and deleted here (DeleteObject). The manager owns three tables:
//   - the unique objects (CEnhUniqueObjectTable): ids, GUIDs, types, repository
//     status, domains, time stamps;
//   - the object definitions (CEnhObjectDefinitionTable): the model file's own
//     numbering of meta-classes, from which the type ids below are learnt by name;
//   - the object domains (CEnhObjectDomainTable).
// It also keeps the type ids the library classifies objects by, sorted into five
// sets (object_types.def), and the repository status rule (repo_status.h).
//
// Life cycle: construct with the model file (the tables open their record-store
// tables), Init once (loads, learns the type ids, forgets the file), work in
// memory, Save into the file being written, ReleaseStorageTables. The manager
// holds the file only while it loads or saves.
//
// The repository bookkeeping is reached through two borrowed hooks
// (repository_hooks.h): DeleteObject cleans an object's inter-model link,
// modification row and pending check-out through them, and Save asks them which
// objects the repository still tracks. Without them the manager works alone.
//
// Conventions: ids of 0 and unknown ids find nothing; lookups then return 0, false
// or an empty text and leave their outputs untouched. Nothing here throws except
// out-of-memory, and nothing is shown to the user.
#pragma once

#include <memory>
#include <set>

#include "foundation/enh_services.h"
#include "identity/global_id_maps.h"
#include "identity/object_definition_table.h"
#include "identity/object_domain_table.h"
#include "identity/object_types.h"
#include "identity/repository_hooks.h"
#include "identity/unique_object_table.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/guid.h"
#include "platform/types.h"
#include "zmflib/zmf_file.h"

class CGuidMgr : public IObjectIdentityService, public tessmeta::CObjectTypeIds {
  public:
    // Builds the object-definition, unique-object and object-domain tables on
    // `file` (borrowed; may be null for a model that starts empty). `keepGuidMap`
    // non-zero keeps a map from object GUID to object; with 0, lookups by GUID find
    // nothing.
    CGuidMgr(CZmfFile* file, int keepGuidMap);
    virtual ~CGuidMgr();
    CGuidMgr(const CGuidMgr&) = delete;
    CGuidMgr& operator=(const CGuidMgr&) = delete;

    // ---- persistence -------------------------------------------------------------

    // Loads the object definitions, the unique objects (maps sized by `hashSize`,
    // see CEnhUniqueObjectTable::Init; rows read as `fileVersion` prescribes) and
    // the domains, then learns the type ids; forgets the file. Always 1.
    // The maps never grow afterwards: a model that starts empty (or small) and is
    // expected to grow should be given a `hashSize` near its expected object count.
    int Init(unsigned int hashSize, ULONG fileVersion);
    // Does nothing: everything is read by Init.
    void Read(CZmfFile* file);
    // Writes the unique objects, then the object definitions, then the domains into
    // `file`, and remembers it until the storage tables are released.
    //   newIdentity (without keepIdentity): every object becomes New (side bits
    //     cleared) and is written with a new object GUID, copied to the domain of
    //     domain-root objects;
    //   otherwise, when nil GUIDs were found, each nil GUID is replaced once.
    //   maps: for files of version 510 and below, the host's record of which shared
    //     objects (model id 0) are still referenced. Every object is kept: which map
    //     answers for which type is the host's to settle, and keeping an object is
    //     never wrong, while dropping a referenced one loses data.
    // Returns 1 when all three tables were written completely, else 0.
    int Save(CZmfFile* file, CGlobalIdMaps* maps, int newIdentity, int keepIdentity);
    // Gives back the record-store tables the object-definition and unique-object
    // tables hold since Save (`flag` is passed on to CZmfFile::ReleaseTable).
    void ReleaseStorageTables(int flag);

    CEnhObjectDefinitionTable* GetObjectDefinitionTable() const {
        return m_pObjectDefinitions.get();
    }
    CEnhObjectDomainTable* GetEnhObjectDomainTable() const { return m_pObjectDomains.get(); }
    CEnhUniqueObjectTable* GetUniqueObjectTable() const { return m_pUniqueObjects.get(); }

    // The repository hooks; both borrowed, either may be null.
    void SetRepoTableMgr(IRepositoryHooks* repository) { m_pRepository = repository; }
    void SetEnhDelayedCheckOutTable(IDelayedCheckoutHooks* delayedCheckout) {
        m_pDelayedCheckout = delayedCheckout;
    }
    IRepositoryHooks* GetRepoTableMgr() const { return m_pRepository; }
    IDelayedCheckoutHooks* GetEnhDelayedCheckOutTable() const { return m_pDelayedCheckout; }

    // ---- creating and deleting objects ---------------------------------------------

    // A new object of the named type (0 when the model lacks it), as below but with
    // creation time 0.
    int GetNewUniqueId(const CString& typeName, ULONG modelId, ULONG plexId1, ULONG plexId2);
    // A new object: the next id, new GUIDs, status New, created now; diagram types
    // are filed under the model's domain. Returns the id.
    int GetNewUniqueId(int typeId, ULONG modelId, ULONG plexId1, ULONG plexId2) override;
    // A New object is always deleted outright. Otherwise the object's inter-model
    // link goes (with the effective flag) and, only when reallyDelete is set, its
    // modification row, pending check-out and the object itself. Returns 1 when the
    // object stays by choice, else whether it was found and deleted.
    int DeleteObject(int id, int reallyDelete) override;
    // Marks (or unmarks) an object; id 0 and unknown ids are ignored.
    void MarkForRemoval(ULONG id, int mark);
    // Deletes every marked object (DeleteObject(id, 1)), in list order.
    void RemoveMarkedObjects();

    // ---- lookups and updates --------------------------------------------------------

    BOOL IsUniqueObjectIdValid(LONG id) const;
    // Whether the object exists and has type `typeId`.
    BOOL VerifyObjectType(int typeId, int id) const;

    // The type of object `id`; 0 if unknown. (Not const: a const overload would
    // leave calls on a non-const manager torn between it and the name overload.)
    int GetObjectTypeId(unsigned int id) {
        const CKelUniqueObject* row = Find(id);
        return row ? static_cast<int>(row->Object_Type_ID) : 0;
    }
    BOOL SetObjectTypeId(unsigned int id, int typeId);
    // The id of a meta-class name; 0 when the model lacks it.
    int GetObjectTypeId(const CString& name) override;
    // The type name of object `id` / of type `typeId`; 0 (name untouched) if unknown.
    int GetObjectType(unsigned int id, CString& name) const;
    int GetObjectTypeString(int typeId, CString& name) const;
    // All four outputs become 0 for an unknown id.
    BOOL GetObjectTypeAndModelIds(LONG id, LONG& typeId, LONG& modelId, LONG& plexId1,
                                  LONG& plexId2) const;
    BOOL UpdateUniqueObjectPlexIds(LONG id, LONG plexId1, LONG plexId2);
    // Writes the first plex id.
    BOOL SetInterModelId(ULONG id, ULONG value);
    BOOL UpdateUniqueObjModelID(ULONG id, ULONG modelId);

    // GUID texts: 32 lower-case digits, the nil GUID as empty text.
    BOOL GetObjectGUID(unsigned int id, CString& objectGuid) const;
    BOOL GetVersionGUID(unsigned int id, CString& versionGuid) const;
    BOOL GetGUIDs(unsigned int id, CString& objectGuid, CString& versionGuid) const;
    // Sets the GUIDs from text (32 digits or the dashed form; empty or malformed
    // text leaves that GUID as it was) and files the object under its object GUID.
    BOOL UpdateGUIDs(unsigned int id, const CString& objectGuid, const CString& versionGuid);
    BOOL UpdateGUIDs(unsigned int id, const CString& versionGuid);
    // The object with this object GUID (dashes anywhere are ignored); 0 without a
    // GUID map, for text that is not a GUID, and when none matches.
    unsigned int GetUniqueObjectID(const CString& objectGuid) const;

    // Walk of all objects in list order: GetNextUniqueObject returns the id at the
    // position, advances it and makes that object the current one, whose model and
    // plex ids FixCurrentUniqueObjectPlexIds overwrites.
    POSITION GetUniqueObjectStartPosition() const;
    ULONG GetNextUniqueObject(POSITION& position);
    void FixCurrentUniqueObjectPlexIds(ULONG modelId, ULONG plexId1, ULONG plexId2);
    int GetUniqueObjCount() const;

    // ---- classification (sets of object_types.def; type id 0 is in none) ------------

    int IsObjectDomainRootObject(LONG typeId) const { return InSet(m_domainRootTypes, typeId); }
    BOOL IsDiagramObject(int typeId) const { return InSet(m_diagramTypes, typeId); }
    BOOL IsOriginalDataDictionaryObject(int typeId) const {
        return InSet(m_originalDictionaryTypes, typeId);
    }
    BOOL IsProgrammableDataDictionaryObject(int typeId) const {
        return InSet(m_programmableDictionaryTypes, typeId);
    }
    BOOL IsInternalObject(int typeId) const { return InSet(m_internalTypes, typeId); }
    // Original or programmable dictionary, the Data Dictionary or the Dictionary
    // Object type.
    BOOL IsDataDictionaryObject(int typeId) const;
    BOOL IsDiagObject(int typeId) const { return !IsDataDictionaryObject(typeId); }

    // ---- GUIDs ------------------------------------------------------------------------

    // A new GUID. On failure the GUID is nil and the result false.
    static bool CreateNewGUID(GUID* guid);
    // A new GUID as text (36-character dashed form, or 32 digits with noDashes). On
    // failure the text is empty (emptyOnFailure) or all zero digits in the asked
    // form, and the result false.
    static bool CreateNewGUID(CString& text, bool emptyOnFailure, bool noDashes);

    // ---- object types -----------------------------------------------------------------

    // Learns the id of every meta-class of object_types.def by name and fills the
    // classification sets. Init calls it.
    void InitObjectTypeIds();

    // The type ids themselves: one getter per entry of object_types.def
    // (GetEntityObjectTypeId() and so on) and GetPathNodeObjectTypeId(), always 0,
    // inherited from CObjectTypeIds.

    // ---- repository status (rule in repo_status.h) --------------------------------------

    // 0 for id 0 and unknown ids.
    ULONG GetRepoStatus(unsigned int id) const;
    void FlagOnRepoStatus(unsigned int id, ULONG value, bool force);
    // Finds the object by GUID text; force off.
    void FlagOnRepoStatus(const CString& objectGuid, ULONG value);
    // An id with two arguments would otherwise reach the GUID-text overload through
    // CString's character constructor.
    void FlagOnRepoStatus(unsigned int id, ULONG value) = delete;
    // Clears `bits` (no rule).
    void FlagOffRepoStatus(unsigned int id, ULONG bits);
    // Applies the rule (force off) to every object.
    void SetAllRepoStatusFlag(ULONG value);
    // Applies the rule (force off), in list order, to the objects whose type is in
    // `typeIds` when inList is set (with onlyNew: only to New ones), or to the
    // objects whose type is not in it when inList is 0 (with onlyNew: only New ones).
    void SetSpecificObjectRepoStatusFlag(ULONG value, const CList<ULONG>& typeIds, int inList,
                                         int onlyNew);
    // 1 when an object whose type is not excluded is in the state asked for: with b
    // 0, state 2 (a 0) or New (a non-zero); with b non-zero, state 4.
    int GotCheckedOutObj(const CList<ULONG>& excludedTypeIds, int a, int b) const;
    // 1 when some object is held in the repository (state 2 or 4).
    int HasRepositoryObject() const;
    // Makes the chosen objects New with new GUIDs (chosen as by
    // SetSpecificObjectRepoStatusFlag without onlyNew).
    void ResetSpecificObjectsToNew(const CList<ULONG>& typeIds, int inList);

    // ---- object domains -------------------------------------------------------------------

    // Adds a domain (id `domainId`, or a new one when 0) and files object `objectId`
    // under it. Returns the domain id.
    ULONG CreateObjectDomain(ULONG objectId, const CString& name, CString type, const CString& guid,
                             ULONG domainId);
    ULONG GetUniqueObjectObjectDomainID(ULONG objectId) const;
    void SetUniqueObjectObjectDomainID(ULONG objectId, ULONG domainId);
    // Unknown domains read as empty text and ignore writes.
    CString GetObjectDomainName(ULONG domainId) const;
    void SetObjectDomainName(ULONG domainId, const CString& name);
    CString GetObjectDomainGUID(ULONG domainId) const;
    void SetObjectDomainGUID(ULONG domainId, const CString& guid);
    // Files every object of a diagram type under the model's domain.
    void AssignObjectDomain();
    // The first "DIAGRAM" domain; 0 when the model has none.
    ULONG GetModelDomainId() const { return m_pObjectDomains->GetModelDomainId(); }

    // ---- dictionary objects found invalid, and flags -------------------------------------

    void AddDictionaryObjectID(ULONG id) { m_invalidDictionaryObjectIds.insert(id); }
    void RemoveDictionaryObjectID(ULONG id) { m_invalidDictionaryObjectIds.erase(id); }
    std::set<ULONG>& GetInValidDictionaryObjectIDSet() { return m_invalidDictionaryObjectIds; }
    void ClearInValidDictionaryObjectIDs() { m_invalidDictionaryObjectIds.clear(); }
    void CheckInValidDictionaryObjectIDs(bool check) { m_bCheckInvalidDictionaryObjectIds = check; }
    bool CheckInValidDictionaryObjectIDs() const { return m_bCheckInvalidDictionaryObjectIds; }

    // Set by Init when a stored GUID was nil; the next Save replaces nil GUIDs.
    void MarkNilGUIDStored(bool stored = true) { m_bNilGuidStored = stored; }
    bool IsNilGUIDStored() const { return m_bNilGuidStored; }

  private:
    using CTypeIdSet = std::set<int>;

    static BOOL InSet(const CTypeIdSet& set, int typeId) {
        return set.count(typeId) ? TRUE : FALSE;
    }
    CKelUniqueObject* Find(ULONG id) const { return m_pUniqueObjects->GetRow(id); }
    int NewObject(int typeId, ULONG modelId, ULONG plexId1, ULONG plexId2, bool stampCreation);
    // The status rule, with new GUIDs when the object becomes New by reset.
    void ResetToNew(CKelUniqueObject& row);

    std::unique_ptr<CEnhUniqueObjectTable> m_pUniqueObjects;
    std::unique_ptr<CEnhObjectDefinitionTable> m_pObjectDefinitions;
    std::unique_ptr<CEnhObjectDomainTable> m_pObjectDomains;
    CZmfFile* m_pFile;                          // not owned; the file being loaded or last saved to
    IRepositoryHooks* m_pRepository = nullptr;  // not owned
    IDelayedCheckoutHooks* m_pDelayedCheckout = nullptr;  // not owned

    CTypeIdSet m_domainRootTypes;
    CTypeIdSet m_diagramTypes;
    CTypeIdSet m_originalDictionaryTypes;
    CTypeIdSet m_programmableDictionaryTypes;
    CTypeIdSet m_internalTypes;

    std::set<ULONG> m_invalidDictionaryObjectIds;
    bool m_bNilGuidStored = false;
    bool m_bCheckInvalidDictionaryObjectIds = false;
};
