#include "identity/unique_object_table.h"

#include <cstdint>
#include <ctime>

#include "identity/global_id_maps.h"
#include "identity/guid_mgr.h"
#include "identity/guid_text.h"
#include "identity/repo_status.h"
#include "platform/oledatetime.h"

using tessmeta::IsNilGuid;

namespace {

// Files before this version hold no GUIDs.
constexpr DWORD kFirstVersionWithGuids = 500;
// Only files up to this version may hold shared objects nothing refers to any more.
constexpr DWORD kLastVersionWithUnreferencedObjects = 510;

// The modification date as seconds since 1970, read as local time; 0 when the date
// is not valid or lies outside the 32-bit range.
DWORD CreationTimeFrom(const COleDateTime& date) {
    const int year = date.GetYear();
    if (year == AFX_OLE_DATETIME_ERROR) return 0;
    const std::time_t seconds = CTime(year, date.GetMonth(), date.GetDay(), date.GetHour(),
                                      date.GetMinute(), date.GetSecond())
                                    .GetTime();
    return seconds < 0 || seconds > static_cast<std::time_t>(UINT32_MAX)
               ? 0
               : static_cast<DWORD>(seconds);
}

// Whether the global id maps speak for objects of this type.
bool IsGlobalIdMapType(const CGlobalIdMaps& maps, LONG typeId) {
    if (typeId == 0) return false;
    return typeId == maps.GetUserDataTypeObjectTypeId() || typeId == maps.GetDomainObjectTypeId() ||
           typeId == maps.GetDefaultObjectTypeId() || typeId == maps.GetRuleObjectTypeId() ||
           typeId == maps.GetViewInstanceObjectTypeId();
}

// Whether the host's maps still refer to a shared object. Which map answers for
// which type, and whether an id's presence or its absence keeps the object, is not
// settled; until it is, every object is kept: keeping an unreferenced object costs
// one row, dropping a referenced one loses it.
bool KeptByGlobalIdMaps(const CGlobalIdMaps& /*maps*/, const CKelUniqueObject& /*row*/) {
    return true;
}

void CopyToRecord(const CKelUniqueObject& row, CUniqueObjectBase& record) {
    row.StoreColumns(record);
    tessmeta::GuidToText(row.ObjectGuid, record.Object_GUID);
    tessmeta::GuidToText(row.VersionGuid, record.Version_GUID);
}

}  // namespace

CEnhUniqueObjectTable::CEnhUniqueObjectTable(CZmfFile* file, CGuidMgr* owner, int keepGuidMap)
    : CEnhTableBase(file, CUniqueObjectBase::Desc().name), m_pOwner(owner) {
    if (keepGuidMap) m_pByGuid = std::make_unique<GuidMap>();
}

void CEnhUniqueObjectTable::Init(unsigned int hashSize) {
    // Both maps are sized from the stored row count, which the read itself gives:
    // no count of the stored rows ahead of it. They are filed on first use, from
    // the rows in list order; lookups of ids the slots cover never need the id map.
    m_unsizedRequest = hashSize;
    m_idMapPending = true;
    m_byIdSlots.Clear();
    m_byIdSlots.Reserve(StoredRowFigure() + std::size_t{1});

    const bool storedGuids = m_nFileVersion >= kFirstVersionWithGuids;
    // Stored GUIDs are texts, kept in memory as binary GUIDs: each record is read
    // into one reused buffer and only its other columns are copied into the row.
    const std::size_t read =
        LoadRecords<CUniqueObjectBase>([this, storedGuids](const CUniqueObjectBase& record) {
            CRowPtr<CKelUniqueObject> row = NewPooledRow<CKelUniqueObject>();
            row->AssignColumns(record);
            if (storedGuids) {
                // Empty or malformed text leaves the GUID nil.
                tessmeta::GuidFromText(record.Object_GUID.GetValue().View(), row->ObjectGuid);
                tessmeta::GuidFromText(record.Version_GUID.GetValue().View(), row->VersionGuid);
            } else {
                CGuidMgr::CreateNewGUID(&row->ObjectGuid);
                CGuidMgr::CreateNewGUID(&row->VersionGuid);
                if (row->Creation_Time == 0)
                    row->Creation_Time = CreationTimeFrom(row->Modification_Date.GetValue());
                row->Repository_Status = tessmeta::kRepoNew;
            }
            EnterRow(std::move(row));
        });
    SizeMaps(static_cast<ULONG>(read));
    // The GUID map is filed on first use, in list order: the same map as filing
    // each row as it is read. A load that never looks a GUID up does not pay for it;
    // one that does files it in a loop of its own, where the bucket accesses of
    // consecutive rows overlap (between the reads of the scan each stalled on its
    // own: a million rows, 55 ms instead of about 160).
    m_guidMapPending = m_pByGuid != nullptr;
}

void CEnhUniqueObjectTable::SizeMaps(ULONG storedRows) const {
    if (!m_unsizedRequest) return;
    UINT buckets = *m_unsizedRequest;
    m_unsizedRequest.reset();
    if (buckets == 0) {
        if (m_pByGuid) {
            // Room for the GUID map's uneven chains; an odd count spreads hashes better.
            buckets = static_cast<UINT>(static_cast<double>(storedRows) * 1.7);
            if (buckets % 2 == 0) ++buckets;
        } else {
            buckets = storedRows;
        }
    }
    m_byId.InitHashTable(buckets, TRUE);
    if (m_pByGuid) m_pByGuid->InitHashTable(buckets);
}

void CEnhUniqueObjectTable::SizeMapsWhileLoading() const {
    // A map filed while the load still reads (an id the slots cannot cover): the
    // stored rows are counted for the size.
    if (!m_unsizedRequest) return;
    CTableBase* stored = *this;
    SizeMaps(stored ? stored->GetCount() : 0);
}

CEnhUniqueObjectTable::IdMap& CEnhUniqueObjectTable::FiledIdMap() const {
    SizeMapsWhileLoading();
    FileListedRows<CKelUniqueObject>(m_idMapPending,
                                     [this](CKelUniqueObject* row) { m_byId.Add(row, false); });
    return m_byId;
}

CEnhUniqueObjectTable::GuidMap* CEnhUniqueObjectTable::FiledGuidMap() const {
    SizeMapsWhileLoading();
    FileListedRows<CKelUniqueObject>(m_guidMapPending,
                                     [this](CKelUniqueObject* row) { m_pByGuid->File(row); });
    return m_pByGuid.get();
}

ULONG CEnhUniqueObjectTable::Add(CRowPtr<CKelUniqueObject> owned) {
    GuidMap* byGuid = FiledGuidMap();  // before the new row joins the list
    CKelUniqueObject* row = EnterRow(std::move(owned));
    if (byGuid) byGuid->File(row);
    return row->Unique_Object_ID;
}

CKelUniqueObject* CEnhUniqueObjectTable::EnterRow(CRowPtr<CKelUniqueObject> owned) {
    AddRow(owned.get());
    CKelUniqueObject* row = owned.release();
    row->SetEnhTable(this);
    const ULONG id = row->Unique_Object_ID;
    if (m_idMapPending) {
        // The map, filed here if the slots need it, takes this row in its walk.
        if (!m_byIdSlots.SetFirst(id, row, static_cast<std::size_t>(GetRowCount())))
            SyncSlot(id, MapFind(id));
    } else if (!m_byId.Add(row, false)) {
        SyncSlot(id, row);
    }
    if (!m_pOwner->IsNilGUIDStored() && (IsNilGuid(row->ObjectGuid) || IsNilGuid(row->VersionGuid)))
        m_pOwner->MarkNilGUIDStored();
    RaiseNextKey(row->Unique_Object_ID);
    return row;
}

int CEnhUniqueObjectTable::Delete(ULONG id) {
    CKelUniqueObject* row = GetRow(id);
    if (!row) return 0;
    FiledIdMap().Remove(row);
    SyncSlot(id, nullptr);
    if (GuidMap* byGuid = FiledGuidMap(); byGuid && GetIdByGuid(row->ObjectGuid) == id)
        byGuid->Remove(row->ObjectGuid);
    if (m_pCurrent == row) m_pCurrent = nullptr;
    Remove(row);
    return 1;
}

void CEnhUniqueObjectTable::SetObjectGuid(CKelUniqueObject& row, const GUID& guid) {
    GuidMap* byGuid = FiledGuidMap();
    if (byGuid && GetIdByGuid(row.ObjectGuid) == row.Unique_Object_ID)
        byGuid->Remove(row.ObjectGuid);
    row.ObjectGuid = guid;
    if (byGuid) byGuid->Refile(&row);
}

bool CEnhUniqueObjectTable::IsCleaned(const CKelUniqueObject& row,
                                      const CGlobalIdMaps* maps) const {
    if (!maps || m_nFileVersion > kLastVersionWithUnreferencedObjects) return false;
    if (row.Model_ID != 0 || !IsGlobalIdMapType(*maps, row.Object_Type_ID)) return false;
    if (IRepositoryHooks* repository = m_pOwner->GetRepoTableMgr()) {
        if (repository->IsObjectModified(row.Unique_Object_ID) ||
            repository->IsObjectDeleted(row.Unique_Object_ID))
            return false;
    }
    return !KeptByGlobalIdMaps(*maps, row);
}

void CEnhUniqueObjectTable::RenewObjectGuid(CKelUniqueObject& row) {
    GUID guid;
    CGuidMgr::CreateNewGUID(&guid);
    SetObjectGuid(row, guid);
    if (m_pOwner->IsObjectDomainRootObject(row.Object_Type_ID)) {
        CString text;
        tessmeta::GuidToText(guid, text);
        m_pOwner->SetObjectDomainGUID(row.Object_Domain_ID, text);
    }
}

int CEnhUniqueObjectTable::Save(CZmfFile* file, CGlobalIdMaps* maps, int newIdentity,
                                int keepIdentity) {
    m_nCleanedObjCount = 0;
    CTableBase* table = BeginSave(file, CUniqueObjectBase::Desc().name, GetRowCount());
    if (!table) return 0;

    const bool renew = newIdentity && !keepIdentity;
    bool repairNil = false;
    if (!renew && m_pOwner->IsNilGUIDStored()) {
        m_pOwner->MarkNilGUIDStored(false);
        repairNil = true;
    }

    const COleDateTime now = COleDateTime::GetCurrentTime();
    CUniqueObjectBase record;  // one record, its text storage reused row after row
    bool failed = false;
    for (POSITION pos = GetFirstRowPosition(); pos;) {
        CKelUniqueObject& row = *GetNextRow(pos);
        if (renew) {
            row.Repository_Status =
                tessmeta::ApplyRepoStatusRule(row.Repository_Status, tessmeta::kRepoNew, false) &
                ~tessmeta::kRepoSideBits;
        }
        if (IsCleaned(row, maps)) {
            ++m_nCleanedObjCount;
            continue;
        }
        if (row.Modification_Date.GetValue().m_dt == 0.0) row.Modification_Date = now;
        if (renew) {
            RenewObjectGuid(row);
        } else if (repairNil) {
            if (IsNilGuid(row.ObjectGuid)) RenewObjectGuid(row);
            if (IsNilGuid(row.VersionGuid)) CGuidMgr::CreateNewGUID(&row.VersionGuid);
        }
        CopyToRecord(row, record);
        if (!table->Insert(&record)) failed = true;
    }
    return failed ? 0 : 1;
}
