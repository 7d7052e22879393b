#include "identity/guid_mgr.h"

#include <ctime>
#include <vector>

#include "identity/guid_text.h"
#include "identity/repo_status.h"

using tessmeta::ApplyRepoStatusRule;
using tessmeta::GuidFromText;
using tessmeta::GuidFromTextIgnoringDashes;
using tessmeta::GuidToText;

namespace {

bool ListHas(const CList<ULONG>& list, LONG typeId) {
    return list.Find(static_cast<ULONG>(typeId)) != nullptr;
}

}  // namespace

CGuidMgr::CGuidMgr(CZmfFile* file, int keepGuidMap) : m_pFile(file) {
    m_pObjectDefinitions = std::make_unique<CEnhObjectDefinitionTable>(file);
    m_pUniqueObjects = std::make_unique<CEnhUniqueObjectTable>(file, this, keepGuidMap);
    m_pObjectDomains = std::make_unique<CEnhObjectDomainTable>(file);
}

CGuidMgr::~CGuidMgr() = default;

// ---- persistence ---------------------------------------------------------------------

int CGuidMgr::Init(unsigned int hashSize, ULONG fileVersion) {
    m_pObjectDefinitions->Init(0);
    m_pUniqueObjects->SetFileVersion(fileVersion);
    m_pUniqueObjects->Init(hashSize);
    m_pObjectDomains->Init(0);
    InitObjectTypeIds();
    m_pFile = nullptr;
    return 1;
}

void CGuidMgr::Read(CZmfFile* /*file*/) {}

int CGuidMgr::Save(CZmfFile* file, CGlobalIdMaps* maps, int newIdentity, int keepIdentity) {
    m_pFile = file;
    const int objects = m_pUniqueObjects->Save(file, maps, newIdentity, keepIdentity);
    const int definitions = m_pObjectDefinitions->Save(file);
    const int domains = m_pObjectDomains->Save(file);
    return objects && definitions && domains ? 1 : 0;
}

void CGuidMgr::ReleaseStorageTables(int flag) {
    if (!m_pFile) return;  // nothing held since Init gave its tables back
    m_pFile->ReleaseTable(m_pObjectDefinitions->GetTablePtrAddr(), flag);
    m_pFile->ReleaseTable(m_pUniqueObjects->GetTablePtrAddr(), flag);
}

// ---- creating and deleting objects ---------------------------------------------------

int CGuidMgr::GetNewUniqueId(const CString& typeName, ULONG modelId, ULONG plexId1, ULONG plexId2) {
    return NewObject(GetObjectTypeId(typeName), modelId, plexId1, plexId2, false);
}

int CGuidMgr::GetNewUniqueId(int typeId, ULONG modelId, ULONG plexId1, ULONG plexId2) {
    return NewObject(typeId, modelId, plexId1, plexId2, true);
}

int CGuidMgr::NewObject(int typeId, ULONG modelId, ULONG plexId1, ULONG plexId2,
                        bool stampCreation) {
    CRowPtr<CKelUniqueObject> row = m_pUniqueObjects->NewRow();
    row->Unique_Object_ID = static_cast<ULONG>(m_pUniqueObjects->GetNextKey());
    row->Object_Type_ID = typeId;
    row->Model_ID = modelId;
    row->Plex_ID_1 = static_cast<LONG>(plexId1);
    row->Plex_ID_2 = static_cast<LONG>(plexId2);
    CreateNewGUID(&row->ObjectGuid);
    CreateNewGUID(&row->VersionGuid);
    row->Repository_Status = ApplyRepoStatusRule(row->Repository_Status, tessmeta::kRepoNew, false);
    if (stampCreation) row->Creation_Time = static_cast<DWORD>(std::time(nullptr));
    if (IsDiagramObject(typeId)) row->Object_Domain_ID = GetModelDomainId();
    return static_cast<int>(m_pUniqueObjects->Add(std::move(row)));
}

int CGuidMgr::DeleteObject(int id, int reallyDelete) {
    const auto objectId = static_cast<ULONG>(id);
    if (GetRepoStatus(objectId) & tessmeta::kRepoNew) reallyDelete = 1;
    if (m_pRepository) m_pRepository->DeleteInterModelObjectLinkFKRow(objectId, reallyDelete);
    if (!reallyDelete) return 1;
    if (m_pRepository) m_pRepository->RemoveObjectModificationFKRow(objectId);
    if (m_pDelayedCheckout) m_pDelayedCheckout->DeleteFKRow(objectId);
    return m_pUniqueObjects->Delete(objectId);
}

void CGuidMgr::MarkForRemoval(ULONG id, int mark) {
    if (id == 0) return;
    if (CKelUniqueObject* row = Find(id)) row->MarkedForRemoval = mark;
}

void CGuidMgr::RemoveMarkedObjects() {
    // Ids first: a deletion may delete further objects through the repository
    // hooks, which must not happen under a walk of the list.
    std::vector<ULONG> marked;
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        const CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        if (row->MarkedForRemoval) marked.push_back(row->Unique_Object_ID);
    }
    for (ULONG id : marked)
        DeleteObject(static_cast<int>(id), 1);
}

// ---- lookups and updates ---------------------------------------------------------------

BOOL CGuidMgr::IsUniqueObjectIdValid(LONG id) const {
    return Find(static_cast<ULONG>(id)) ? TRUE : FALSE;
}

BOOL CGuidMgr::VerifyObjectType(int typeId, int id) const {
    const CKelUniqueObject* row = Find(static_cast<ULONG>(id));
    return row && row->Object_Type_ID == typeId ? TRUE : FALSE;
}

BOOL CGuidMgr::SetObjectTypeId(unsigned int id, int typeId) {
    CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    row->Object_Type_ID = typeId;
    return TRUE;
}

int CGuidMgr::GetObjectTypeId(const CString& name) {
    return m_pObjectDefinitions->GetObjectTypeId(name.View());
}

int CGuidMgr::GetObjectType(unsigned int id, CString& name) const {
    const CKelUniqueObject* row = Find(id);
    return row ? GetObjectTypeString(row->Object_Type_ID, name) : 0;
}

int CGuidMgr::GetObjectTypeString(int typeId, CString& name) const {
    return m_pObjectDefinitions->GetObjectTypeString(typeId, name);
}

BOOL CGuidMgr::GetObjectTypeAndModelIds(LONG id, LONG& typeId, LONG& modelId, LONG& plexId1,
                                        LONG& plexId2) const {
    const CKelUniqueObject* row = Find(static_cast<ULONG>(id));
    typeId = row ? row->Object_Type_ID.GetValue() : 0;
    modelId = row ? static_cast<LONG>(row->Model_ID) : 0;
    plexId1 = row ? row->Plex_ID_1.GetValue() : 0;
    plexId2 = row ? row->Plex_ID_2.GetValue() : 0;
    return row ? TRUE : FALSE;
}

BOOL CGuidMgr::UpdateUniqueObjectPlexIds(LONG id, LONG plexId1, LONG plexId2) {
    CKelUniqueObject* row = Find(static_cast<ULONG>(id));
    if (!row) return FALSE;
    row->Plex_ID_1 = plexId1;
    row->Plex_ID_2 = plexId2;
    return TRUE;
}

BOOL CGuidMgr::SetInterModelId(ULONG id, ULONG value) {
    CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    row->Plex_ID_1 = static_cast<LONG>(value);
    return TRUE;
}

BOOL CGuidMgr::UpdateUniqueObjModelID(ULONG id, ULONG modelId) {
    CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    row->Model_ID = modelId;
    return TRUE;
}

BOOL CGuidMgr::GetObjectGUID(unsigned int id, CString& objectGuid) const {
    const CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    GuidToText(row->ObjectGuid, objectGuid);
    return TRUE;
}

BOOL CGuidMgr::GetVersionGUID(unsigned int id, CString& versionGuid) const {
    const CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    GuidToText(row->VersionGuid, versionGuid);
    return TRUE;
}

BOOL CGuidMgr::GetGUIDs(unsigned int id, CString& objectGuid, CString& versionGuid) const {
    const CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    GuidToText(row->ObjectGuid, objectGuid);
    GuidToText(row->VersionGuid, versionGuid);
    return TRUE;
}

BOOL CGuidMgr::UpdateGUIDs(unsigned int id, const CString& objectGuid, const CString& versionGuid) {
    CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    GUID guid = row->ObjectGuid;
    GuidFromText(objectGuid.View(), guid);
    m_pUniqueObjects->SetObjectGuid(*row, guid);
    GuidFromText(versionGuid.View(), row->VersionGuid);
    return TRUE;
}

BOOL CGuidMgr::UpdateGUIDs(unsigned int id, const CString& versionGuid) {
    CKelUniqueObject* row = Find(id);
    if (!row) return FALSE;
    GuidFromText(versionGuid.View(), row->VersionGuid);
    return TRUE;
}

unsigned int CGuidMgr::GetUniqueObjectID(const CString& objectGuid) const {
    GUID guid;
    if (!m_pUniqueObjects->HasGuidMap() || !GuidFromTextIgnoringDashes(objectGuid.View(), guid))
        return 0;
    return m_pUniqueObjects->GetIdByGuid(guid);
}

POSITION CGuidMgr::GetUniqueObjectStartPosition() const {
    return m_pUniqueObjects->GetFirstRowPosition();
}

ULONG CGuidMgr::GetNextUniqueObject(POSITION& position) {
    CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(position);
    m_pUniqueObjects->SetCurrentRow(row);
    return row->Unique_Object_ID;
}

void CGuidMgr::FixCurrentUniqueObjectPlexIds(ULONG modelId, ULONG plexId1, ULONG plexId2) {
    CKelUniqueObject* row = m_pUniqueObjects->GetCurrentRow();
    if (!row) return;
    row->Model_ID = modelId;
    row->Plex_ID_1 = static_cast<LONG>(plexId1);
    row->Plex_ID_2 = static_cast<LONG>(plexId2);
}

int CGuidMgr::GetUniqueObjCount() const {
    return m_pUniqueObjects->GetCount();
}

// ---- classification and object types ---------------------------------------------------

BOOL CGuidMgr::IsDataDictionaryObject(int typeId) const {
    if (IsOriginalDataDictionaryObject(typeId) || IsProgrammableDataDictionaryObject(typeId))
        return TRUE;
    return typeId != 0 && (typeId == GetDataDictionaryObjectTypeId() ||
                           typeId == GetDictionaryObjectTypeId())
               ? TRUE
               : FALSE;
}

void CGuidMgr::InitObjectTypeIds() {
    for (std::size_t i = 0; i < tessmeta::kObjectTypeCount; ++i)
        m_objectTypeIds[i] = m_pObjectDefinitions->GetObjectTypeId(tessmeta::kObjectTypes[i].name);

    const std::pair<unsigned, CTypeIdSet*> sets[] = {
        {tessmeta::kSetDomainRoot, &m_domainRootTypes},
        {tessmeta::kSetDiagram, &m_diagramTypes},
        {tessmeta::kSetOriginalDictionary, &m_originalDictionaryTypes},
        {tessmeta::kSetProgrammableDictionary, &m_programmableDictionaryTypes},
        {tessmeta::kSetInternal, &m_internalTypes},
    };
    for (const auto& [bit, set] : sets) {
        set->clear();
        for (std::size_t i = 0; i < tessmeta::kObjectTypeCount; ++i) {
            // A meta-class the model lacks has id 0, which classifies as nothing.
            if ((tessmeta::kObjectTypes[i].sets & bit) && m_objectTypeIds[i] != 0)
                set->insert(m_objectTypeIds[i]);
        }
    }
}

// ---- GUIDs -------------------------------------------------------------------------------

bool CGuidMgr::CreateNewGUID(GUID* guid) {
    if (tessmeta::CreateGuid(guid) == RPC_S_OK) return true;
    if (UuidCreateNil(guid) != RPC_S_OK) *guid = GUID{};
    return false;
}

bool CGuidMgr::CreateNewGUID(CString& text, bool emptyOnFailure, bool noDashes) {
    GUID guid;
    RPC_CSTR converted = nullptr;
    if (tessmeta::CreateGuid(&guid) == RPC_S_OK && UuidToStringA(&guid, &converted) == RPC_S_OK) {
        text = reinterpret_cast<const char*>(converted);
        RpcStringFreeA(&converted);
        if (noDashes) text.Remove('-');
        return true;
    }
    if (emptyOnFailure)
        text.Empty();
    else if (noDashes)
        text = "00000000000000000000000000000000";
    else
        text = "00000000-0000-0000-0000-000000000000";
    return false;
}

// ---- repository status ------------------------------------------------------------------------

ULONG CGuidMgr::GetRepoStatus(unsigned int id) const {
    const CKelUniqueObject* row = id ? Find(id) : nullptr;
    return row ? row->Repository_Status : 0;
}

void CGuidMgr::FlagOnRepoStatus(unsigned int id, ULONG value, bool force) {
    if (CKelUniqueObject* row = Find(id))
        row->Repository_Status = ApplyRepoStatusRule(row->Repository_Status, value, force);
}

void CGuidMgr::FlagOnRepoStatus(const CString& objectGuid, ULONG value) {
    if (const unsigned int id = GetUniqueObjectID(objectGuid)) FlagOnRepoStatus(id, value, false);
}

void CGuidMgr::FlagOffRepoStatus(unsigned int id, ULONG bits) {
    if (CKelUniqueObject* row = Find(id)) row->Repository_Status &= ~bits;
}

void CGuidMgr::SetAllRepoStatusFlag(ULONG value) {
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        row->Repository_Status = ApplyRepoStatusRule(row->Repository_Status, value, false);
    }
}

void CGuidMgr::SetSpecificObjectRepoStatusFlag(ULONG value, const CList<ULONG>& typeIds, int inList,
                                               int onlyNew) {
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        const bool listed = ListHas(typeIds, row->Object_Type_ID);
        const bool isNew = (row->Repository_Status & tessmeta::kRepoNew) != 0;
        const bool chosen = inList ? listed : !listed;
        if (chosen && (!onlyNew || isNew))
            row->Repository_Status = ApplyRepoStatusRule(row->Repository_Status, value, false);
    }
}

int CGuidMgr::GotCheckedOutObj(const CList<ULONG>& excludedTypeIds, int a, int b) const {
    const DWORD wanted =
        b ? tessmeta::kRepoStored2 : (a ? tessmeta::kRepoNew : tessmeta::kRepoStored);
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        const CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        if (!ListHas(excludedTypeIds, row->Object_Type_ID) && (row->Repository_Status & wanted))
            return 1;
    }
    return 0;
}

int CGuidMgr::HasRepositoryObject() const {
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        const CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        if (row->Repository_Status & (tessmeta::kRepoStored | tessmeta::kRepoStored2)) return 1;
    }
    return 0;
}

void CGuidMgr::ResetSpecificObjectsToNew(const CList<ULONG>& typeIds, int inList) {
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        const bool listed = ListHas(typeIds, row->Object_Type_ID);
        if (inList ? listed : !listed) ResetToNew(*row);
    }
}

void CGuidMgr::ResetToNew(CKelUniqueObject& row) {
    row.Repository_Status = ApplyRepoStatusRule(row.Repository_Status, tessmeta::kRepoNew, false);
    GUID guid;
    CreateNewGUID(&guid);
    m_pUniqueObjects->SetObjectGuid(row, guid);
    CreateNewGUID(&row.VersionGuid);
}

// ---- object domains
// ------------------------------------------------------------------------------

ULONG CGuidMgr::CreateObjectDomain(ULONG objectId, const CString& name, CString type,
                                   const CString& guid, ULONG domainId) {
    const ULONG id = m_pObjectDomains->Insert(name, type, guid, domainId);
    SetUniqueObjectObjectDomainID(objectId, id);
    return id;
}

ULONG CGuidMgr::GetUniqueObjectObjectDomainID(ULONG objectId) const {
    const CKelUniqueObject* row = objectId ? Find(objectId) : nullptr;
    return row ? row->Object_Domain_ID : 0;
}

void CGuidMgr::SetUniqueObjectObjectDomainID(ULONG objectId, ULONG domainId) {
    if (CKelUniqueObject* row = Find(objectId)) row->Object_Domain_ID = domainId;
}

CString CGuidMgr::GetObjectDomainName(ULONG domainId) const {
    const CKelObjectDomain* row = m_pObjectDomains->GetRow(domainId);
    return row ? row->Name.GetValue() : CString();
}

void CGuidMgr::SetObjectDomainName(ULONG domainId, const CString& name) {
    if (CKelObjectDomain* row = m_pObjectDomains->GetRow(domainId)) row->Name = name;
}

CString CGuidMgr::GetObjectDomainGUID(ULONG domainId) const {
    const CKelObjectDomain* row = m_pObjectDomains->GetRow(domainId);
    return row ? row->GUID.GetValue() : CString();
}

void CGuidMgr::SetObjectDomainGUID(ULONG domainId, const CString& guid) {
    if (CKelObjectDomain* row = m_pObjectDomains->GetRow(domainId)) row->GUID = guid;
}

void CGuidMgr::AssignObjectDomain() {
    const ULONG modelDomain = GetModelDomainId();
    for (POSITION pos = m_pUniqueObjects->GetFirstRowPosition(); pos;) {
        CKelUniqueObject* row = m_pUniqueObjects->GetNextRow(pos);
        if (IsDiagramObject(row->Object_Type_ID)) row->Object_Domain_ID = modelDomain;
    }
}
