// CEnhUniqueObjectTable: every unique object of a model ("UniqueObject"), in memory.
//
// A unique object is the identity of one modelled thing: its 32-bit id (the key all
// other tables refer to), its object type, its model, its domain, two plex ids, two
// GUIDs (identity and version), time stamps and a repository status word.
//
// Rows live in the base's row list, which owns them (load order, then creation
// order), and are found through two maps:
//   - by id: bucket = id mod count, its entries the rows themselves (in the key-map
//     link every CEnhRow has); lookups read a slot per id beside it (id_slots.h),
//     which mirrors the map's answers. The map itself is filed from the rows on
//     first use (a delete, an id beyond the slots, inspection);
//   - by object GUID, only when the owner keeps one: an index whose entries are
//     the rows (guid_index.h), filed from the loaded rows on first use. Its hash
//     mixes all 16 bytes.
//     (Summing the bytes, the obvious choice, has only 4,081 possible values: a
//     million objects would share 4,081 chains of about 245 each.)
// When two rows share an id or an object GUID, the first one entered answers; a row
// whose GUID is changed afterwards (SetObjectGuid) takes its new GUID over. The GUID
// map holds ids, 0 meaning none, so an object stored with id 0 is never found by
// its GUID.
//
// The table numbers objects itself: the base's key counter, raised past every id
// loaded, so an id is never handed out twice while the model is open.
//
// Load and save convert GUIDs between the record store's text columns and the
// rows' binary GUIDs (ObjectGuid, VersionGuid): an in-memory row has no text
// columns, and each record is read into (and written from) one reused record.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>

#include "foundation/enh_table.h"
#include "identity/guid_index.h"
#include "identity/id_traits.h"
#include "platform/guid.h"
#include "platform/id_slots.h"
#include "platform/intrusive_map.h"
#include "platform/types.h"
#include "zmflib/rows.h"

class CGuidMgr;
class CGlobalIdMaps;
class CEnhUniqueObjectTable;

// The stored columns of a unique object but the two GUID texts, and the mark of
// MarkForRemoval, which is not stored (AssignColumns and StoreColumns leave it).
ZMF_ROW_CLASS(CUniqueObjectRow, Tech, Unique_Object_ID, ZMF_COLUMNS_UniqueObject, NoText,
              LONG MarkedForRemoval = 0;)

// One unique object: the record-store columns (binary GUIDs instead of the texts)
// and the mark. A row in a table changes its ObjectGuid only through
// CEnhUniqueObjectTable::SetObjectGuid, which refiles it.
class CKelUniqueObject final : public CEnhRow<CUniqueObjectRow, CEnhUniqueObjectTable, false> {
  public:
    GUID ObjectGuid{};
    // The GUID index's link (guid_index.h), beside the key it chains by; only the
    // index writes it.
    CKelUniqueObject* NextByGuid = nullptr;
    GUID VersionGuid{};
};

class CEnhUniqueObjectTable : public CEnhTableBase {
  public:
    static constexpr DWORD kDefaultFileVersion = 530;

    // Id to row, its entries in the rows' key-map links; the first row entered
    // under an id answers.
    struct SIdKey : SIdHashTraits {
        using Probe = ULONG;
        static CMapNextLink& Link(CKelUniqueObject* row) { return row->KeyMapLink(); }
        static ULONG Of(const CKelUniqueObject* row) { return row->Unique_Object_ID; }
        static bool Equal(const CKelUniqueObject* stored, ULONG id) {
            return stored->Unique_Object_ID == id;
        }
    };
    using IdMap = CIntrusiveMap<CKelUniqueObject, SIdKey>;
    // GUID to id, its entries in the rows.
    using GuidMap = CGuidIndex<CKelUniqueObject>;

    // Opens the file's "UniqueObject" table. `owner` (borrowed, not null) supplies
    // the classification, the repository hooks and the nil-GUID flag; `keepGuidMap`
    // non-zero gives the table its GUID map.
    CEnhUniqueObjectTable(CZmfFile* file, CGuidMgr* owner, int keepGuidMap);

    // The format version of the model file, which decides how rows load and save.
    void SetFileVersion(DWORD version) { m_nFileVersion = version; }
    DWORD GetFileVersion() const { return m_nFileVersion; }

    using CEnhTableBase::Init;
    // Loads every stored row. Both maps get `hashSize` buckets; with 0, the stored
    // row count, which with a GUID map is taken times 1.7 and made odd. Files older
    // than version 500 hold no GUIDs: their objects get new ones, status New, and a
    // creation time from the modification date when they have none.
    void Init(unsigned int hashSize) override;

    // Rewrites the record-store table from memory (see CGuidMgr::Save). Returns 1
    // when every row was written, 0 when the table could not be emptied or an insert
    // failed (the loop goes on after a failure). The handle is kept.
    int Save(CZmfFile* file, CGlobalIdMaps* maps, int newIdentity, int keepIdentity);
    // Objects the last Save left out.
    int GetCleanedObjCount() const { return m_nCleanedObjCount; }

    CKelUniqueObject* GetRow(ULONG id) const {
        return m_byIdSlots.Find(id, [this](ULONG beyond) { return MapFind(beyond); });
    }
    // The id filed under `guid`; 0 when there is none or no GUID map.
    ULONG GetIdByGuid(const GUID& guid) const {
        ULONG id = 0;
        if (const GuidMap* byGuid = FiledGuidMap()) byGuid->Lookup(guid, id);
        return id;
    }

    // A new, empty row from the table's row pool, for Add (rows of a generated or
    // edited model are then no heap blocks of their own either).
    CRowPtr<CKelUniqueObject> NewRow() { return NewPooledRow<CKelUniqueObject>(); }
    // Takes `row` into the list and the maps. Returns its id.
    ULONG Add(CRowPtr<CKelUniqueObject> row);
    // Removes the row mapped under `id` from the maps and the list and destroys it.
    // 0 when there is none.
    int Delete(ULONG id);
    // Gives the row a new object GUID and files it under it.
    void SetObjectGuid(CKelUniqueObject& row, const GUID& guid);

    int GetCount() const { return GetRowCount(); }
    CKelUniqueObject* GetNextRow(POSITION& position) const {
        return static_cast<CKelUniqueObject*>(CEnhTableBase::GetNextRow(position));
    }

    // The row the last walk step returned (CGuidMgr::GetNextUniqueObject); null at
    // first and after that row is deleted.
    CKelUniqueObject* GetCurrentRow() const { return m_pCurrent; }
    void SetCurrentRow(CKelUniqueObject* row) { m_pCurrent = row; }

    bool HasGuidMap() const { return m_pByGuid != nullptr; }
    const IdMap& GetIdMap() const { return FiledIdMap(); }
    const GuidMap* GetGuidMap() const { return FiledGuidMap(); }

  private:
    CKelUniqueObject* MapFind(ULONG id) const { return FiledIdMap().Find(id); }
    // The id map, filed first when the load left it pending.
    IdMap& FiledIdMap() const;
    // The id map's answer for `id` changed: the slots follow it.
    void SyncSlot(ULONG id, CKelUniqueObject* row) {
        m_byIdSlots.Set(id, row, static_cast<std::size_t>(GetRowCount()),
                        [this](ULONG other) { return MapFind(other); });
    }
    // Takes a row into the list and the id map (not the GUID map).
    CKelUniqueObject* EnterRow(CRowPtr<CKelUniqueObject> row);
    // The GUID map (null without one), filed first when the load left it pending.
    GuidMap* FiledGuidMap() const;
    // Gives both maps their load size, for `storedRows` rows, unless done already.
    void SizeMaps(ULONG storedRows) const;
    void SizeMapsWhileLoading() const;
    // Whether Save leaves `row` out as an object the host no longer refers to.
    bool IsCleaned(const CKelUniqueObject& row, const CGlobalIdMaps* maps) const;
    // A new object GUID for a row being saved, copied to its domain when it owns one.
    void RenewObjectGuid(CKelUniqueObject& row);

    mutable IdMap m_byId;
    mutable bool m_idMapPending = false;  // rows not yet filed in it
    CIdSlots<CKelUniqueObject> m_byIdSlots;
    std::unique_ptr<GuidMap> m_pByGuid;     // null unless the owner keeps one
    mutable bool m_guidMapPending = false;  // loaded rows not yet filed in it
    // The bucket count the load asked for (0: from the stored rows), while the
    // maps wait for their size: after the read (the records read are the stored
    // row count), or when a map must be filed while it reads (from a count).
    mutable std::optional<unsigned int> m_unsizedRequest;
    CKelUniqueObject* m_pCurrent = nullptr;
    CGuidMgr* m_pOwner;  // not owned
    DWORD m_nFileVersion = kDefaultFileVersion;
    int m_nCleanedObjCount = 0;
};
