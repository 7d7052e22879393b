#include "repository/repo_table_manager.h"

#include <vector>

#include "platform/hooks.h"

namespace {

constexpr ULONG kFirstRepairedVersion = 502;
constexpr ULONG kBetaVersion = 501;
constexpr int kRelationshipTableId = 57;

bool IsDeleted(const CKelObjectModifications& row) {
    return row.Modification_Kind == CEnhRepoObjModTable::kDeleted;
}

}  // namespace

CRepoTableManager::CRepoTableManager(CZmfFile* file, CGuidMgr* guidMgr, CDictObjectMgr* dictMgr,
                                     ULONG fileVersion)
    : m_pLinks(std::make_unique<CEnhRepoInterModelObjectLinkTable>(file)),
      m_pRelationships(std::make_unique<CEnhRepoInterModelRelationshipTable>(file, guidMgr)),
      m_pModifications(std::make_unique<CEnhRepoObjModTable>(file, guidMgr)),
      m_pGuids(guidMgr) {
    m_pLinks->Init(0);
    m_pRelationships->Init(0);
    m_pModifications->Init(0);
    if (fileVersion < kFirstRepairedVersion && dictMgr && IsDeletedDDObjFound())
        RepairDeletedDictionaryObjects(*dictMgr, fileVersion);
}

CRepoTableManager::~CRepoTableManager() {
    m_pLinks.reset();
    m_pRelationships.reset();
    m_pModifications.reset();
}

void CRepoTableManager::RepairDeletedDictionaryObjects(CDictObjectMgr& dictMgr, ULONG fileVersion) {
    if (fileVersion == kBetaVersion && dictMgr.GetNumOfDataDictionary() > 1) {
        AfxMessageBox(kBetaFileWarning, MB_OK);
        return;
    }
    if (!m_pGuids) return;
    const ULONG domainId =
        dictMgr.GetDataDictionaryObjectDomainID(dictMgr.GetDiagramSpecificData_Dictionary_ID());
    CEnhRepoObjModTable& modifications = *m_pModifications;
    for (POSITION pos = modifications.GetFirstRowPositionDataDictObj(); pos;) {
        const CKelObjectModifications* row = modifications.GetNextRowDataDictObj(pos);
        if (IsDeleted(*row)) m_pGuids->SetUniqueObjectObjectDomainID(row->Object_ID, domainId);
    }
}

// ---- persistence -----------------------------------------------------------------------

int CRepoTableManager::Save(CZmfFile* file, int emptyModifications, int keepModifications) {
    const int links = m_pLinks->Save(file);
    const int relationships = m_pRelationships->Save(file);
    const int modifications = m_pModifications->Save(file, emptyModifications, keepModifications);
    return links && relationships && modifications ? 1 : 0;
}

void CRepoTableManager::ReleaseStorageTables(int flag) {
    for (CEnhTableBase* table : {static_cast<CEnhTableBase*>(m_pLinks.get()),
                                 static_cast<CEnhTableBase*>(m_pRelationships.get()),
                                 static_cast<CEnhTableBase*>(m_pModifications.get())}) {
        CTableBase** handle = table->GetTablePtrAddr();
        if (*handle && table->GetFile()) table->GetFile()->ReleaseTable(handle, flag);
    }
}

// ---- modifications -----------------------------------------------------------------------

ULONG CRepoTableManager::InsertObjectModificationRow(ULONG objectId, LONG kind, int writeThrough) {
    return objectId ? m_pModifications->Insert(objectId, kind, writeThrough) : 0;
}

ULONG CRepoTableManager::InsertObjectModificationRowFromCmpMgr(ULONG objectId, LONG kind) {
    return InsertObjectModificationRow(objectId, kind, 1);
}

void CRepoTableManager::RemoveObjectModificationFKRow(ULONG objectId) {
    m_pModifications->RemoveUniqueID(objectId);
}

int CRepoTableManager::IsObjectModified(ULONG objectId) {
    return m_pModifications->IsObjectModified(objectId);
}

int CRepoTableManager::IsObjectDeleted(ULONG objectId) {
    return m_pModifications->IsObjectDeleted(objectId);
}

int CRepoTableManager::IsDeletedDDObjFound() const {
    for (POSITION pos = m_pModifications->GetFirstRowPositionDataDictObj(); pos;)
        if (IsDeleted(*m_pModifications->GetNextRowDataDictObj(pos))) return 1;
    return 0;
}

POSITION CRepoTableManager::GetFirstObjectModificationDiagObjRow() const {
    return m_pModifications->GetFirstRowPositionDiagObj();
}

CKelObjectModifications* CRepoTableManager::GetNextObjectModificationDiagObjRow(
    POSITION& position) const {
    return m_pModifications->GetNextRowDiagObj(position);
}

void CRepoTableManager::DeleteObjects(const std::vector<ULONG>& objectIds) {
    if (!m_pGuids) return;
    for (ULONG id : objectIds)
        m_pGuids->DeleteObject(static_cast<int>(id), 1);
}

void CRepoTableManager::ClearDiagDeletedRows() {
    std::vector<ULONG> deleted;
    m_pModifications->RemoveRows(false, IsDeleted, deleted);
    DeleteObjects(deleted);
}

void CRepoTableManager::ClearDataDictDeletedRows(ULONG domainId) {
    std::vector<ULONG> deleted;
    m_pModifications->RemoveRows(
        true,
        [&](const CKelObjectModifications& row) {
            return IsDeleted(row) &&
                   (domainId == 0 || (m_pGuids && m_pGuids->GetUniqueObjectObjectDomainID(
                                                      row.Object_ID) == domainId));
        },
        deleted);
    DeleteObjects(deleted);
}

void CRepoTableManager::ClearDiagModsAndDels() {
    std::vector<ULONG> deleted;
    m_pModifications->RemoveAllRows(false, deleted);
    DeleteObjects(deleted);
}

void CRepoTableManager::ClearDataDictModsAndDels() {
    std::vector<ULONG> deleted;
    m_pModifications->RemoveAllRows(true, deleted);
    DeleteObjects(deleted);
}

void CRepoTableManager::ClearModsAndDels() {
    std::vector<ULONG> deleted;
    m_pModifications->RemoveAllRows(false, deleted);
    m_pModifications->RemoveAllRows(true, deleted);
    DeleteObjects(deleted);
}

// ---- inter-model relationships and links --------------------------------------------------

ULONG CRepoTableManager::InsertIMRelationship(ULONG relationshipObjectId, const CString& guid) {
    return m_pRelationships->Insert(relationshipObjectId, guid);
}

ULONG CRepoTableManager::InsertIMObjectLink(ULONG objectId, ULONG relationshipId) {
    return m_pLinks->Insert(objectId, relationshipId, 0);
}

ULONG CRepoTableManager::MakeIntermodelRelationshipFromCmpMgr(CList<ULONG>* objectIds) {
    if (!objectIds || objectIds->IsEmpty()) return 0;
    if (const ULONG joined = m_pLinks->MakeIntermodelRelationshipFromCmpMgr(objectIds))
        return joined;
    if (!m_pGuids) return 0;
    const int object =
        m_pGuids->GetNewUniqueId(m_pGuids->GetInterModelRelationshipObjectTypeId(), 0, 0, 0);
    // Empty texts: UpdateGUIDs leaves the GUIDs GetNewUniqueId gave the object.
    CString guid, versionGuid;
    const ULONG relationshipId =
        m_pRelationships->Insert(static_cast<ULONG>(object), 1, guid, versionGuid);
    m_pGuids->UpdateGUIDs(static_cast<unsigned int>(object), guid, versionGuid);
    m_pLinks->MakeIntermodelRelationshipFromCmpMgr(objectIds, relationshipId);
    return relationshipId;
}

void CRepoTableManager::DeleteInterModelObjectLinkFKRow(ULONG objectId, int deleteObject) {
    const ULONG relationshipId = m_pLinks->GetInterModelRelID(objectId);
    if (!relationshipId) return;
    m_pLinks->RemoveUniqueObjectID(objectId);
    if (!m_pLinks->GetInterModelRelatedObject(relationshipId))
        m_pRelationships->Delete(relationshipId, deleteObject);
}

void CRepoTableManager::DeleteInterModelRelationship(const CString& guid) {
    const ULONG relationshipId = m_pRelationships->GetInterModelRelID(guid);
    if (!relationshipId) return;
    m_pRelationships->Delete(relationshipId, 0);
    m_pLinks->DeleteInterModelRelatoinshipIDFKRow(relationshipId);
}

ULONG CRepoTableManager::GetInterRelID(const CString& guid) {
    return m_pRelationships->GetInterModelRelID(guid);
}

ULONG CRepoTableManager::GetUniqueObjectIdFromInterModelRelID(ULONG relationshipId) {
    return m_pLinks->GetUniqueObjectID(relationshipId);
}

ULONG CRepoTableManager::GetUniqueObjectID(unsigned int relationshipId) {
    return m_pLinks->GetUniqueObjectID(relationshipId);
}

ULONG CRepoTableManager::GetInterModelRelIDFromUniqueObjectId(ULONG objectId) {
    return m_pLinks->GetInterModelRelID(objectId);
}

int CRepoTableManager::GetIntermodelRelObjIdsFromParentObj(ULONG objectId, ULONG& relationshipId,
                                                           ULONG& relationshipObjectId) {
    relationshipId = m_pLinks->GetInterModelRelID(objectId);
    relationshipObjectId = m_pRelationships->GetIntermodelRelationshipObjGlobalId(relationshipId);
    return relationshipId && relationshipObjectId ? 1 : 0;
}

ULONG CRepoTableManager::GetInterModelRelIDFromImRelUniqueObjID(ULONG relationshipObjectId) {
    const CKelInterModelRelationship* row =
        m_pRelationships->GetGlobalUserIDRow(relationshipObjectId);
    return row ? row->GetTechKey() : 0;
}

BOOL CRepoTableManager::GetInterModelRelationshipGUIDFromGlobalId(ULONG relationshipObjectId,
                                                                  CString& guid) {
    return m_pRelationships->GetInterModelRelationshipGUIDFromGlobalId(relationshipObjectId, guid);
}

POSITION CRepoTableManager::GetFirstInterModelRelationshipPosition() const {
    return m_pRelationships->GetFirstRowPosition();
}

CInterModelRelationshipBase* CRepoTableManager::GetNextInterModelRelationship(
    POSITION& position) const {
    return m_pRelationships->GetNextRow(position);
}

CTableBase* CRepoTableManager::GetTablePtr(int tableId) const {
    return tableId == kRelationshipTableId ? static_cast<CTableBase*>(*m_pRelationships) : nullptr;
}

// ---- GUIDs ---------------------------------------------------------------------------------

unsigned int CRepoTableManager::GetUniqueObjectID(const CString& guid) {
    return m_pGuids ? m_pGuids->GetUniqueObjectID(guid) : 0;
}

BOOL CRepoTableManager::GetGUID(ULONG objectId, CString& guid) {
    return m_pGuids ? m_pGuids->GetObjectGUID(objectId, guid) : FALSE;
}

BOOL CRepoTableManager::UpdateGUIDs(ULONG objectId, CString& guid, CString& versionGuid) {
    return m_pGuids ? m_pGuids->UpdateGUIDs(objectId, guid, versionGuid) : FALSE;
}

BOOL CRepoTableManager::UpdateVersionGUID(ULONG objectId, CString& versionGuid) {
    return m_pGuids ? m_pGuids->UpdateGUIDs(objectId, versionGuid) : FALSE;
}

void CRepoTableManager::MarkCreate(ULONG objectId, CString& guid, CString& versionGuid,
                                   ULONG relationshipId) {
    if (!objectId) return;
    if (relationshipId) DoInterModelRel(objectId, relationshipId);
    UpdateGUIDs(objectId, guid, versionGuid);
}

void CRepoTableManager::MarkCreate(unsigned int /*objectId*/, unsigned int /*relationshipId*/) {}

void CRepoTableManager::DoInterModelRel(unsigned int /*objectId*/,
                                        unsigned int /*relationshipId*/) {}
