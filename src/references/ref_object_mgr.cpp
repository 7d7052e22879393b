#include "references/ref_object_mgr.h"

CRefObjectMgr::CRefObjectMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file)
    : m_pReferenced(std::make_unique<CEnhReferencedObjectTbl>(nullptr, guids, file)),
      m_pBound(std::make_unique<CEnhBoundDictObjectTbl>(names, nullptr, guids, file)),
      m_pFile(file) {}

CRefObjectMgr::~CRefObjectMgr() = default;

int CRefObjectMgr::Init() {
    m_pReferenced->Init(0);
    m_pBound->Init(0);
    return 1;
}

int CRefObjectMgr::Save(CZmfFile* file) {
    m_pFile = file;
    const int referenced = m_pReferenced->Save(file);
    const int bound = m_pBound->Save(file);
    return referenced && bound ? 1 : 0;
}

void CRefObjectMgr::ReleaseStorageTables() {
    if (!m_pFile) return;
    m_pFile->ReleaseTable(m_pReferenced->GetTablePtrAddr(), 0);
    m_pFile->ReleaseTable(m_pBound->GetTablePtrAddr(), 0);
}

DWORD CRefObjectMgr::InsertBoundDictObject(DWORD dictObjectId, DWORD metaTableKey, DWORD objectId,
                                           const CString& valueOverride) {
    return m_pBound->Insert(dictObjectId, metaTableKey, objectId, valueOverride, 0, 0);
}

BOOL CRefObjectMgr::DeleteBoundDictObject(DWORD key) {
    return m_pBound->Delete(key) ? TRUE : FALSE;
}

DWORD CRefObjectMgr::InsertReferencedObject(DWORD modelId, DWORD objectId, DWORD metaTableId) {
    return m_pReferenced->Insert(modelId, objectId, metaTableId, 0, 0);
}

BOOL CRefObjectMgr::DeleteReferencedObject(DWORD key) {
    return m_pReferenced->Delete(key) ? TRUE : FALSE;
}

int CRefObjectMgr::DeleteObjectReferences(DWORD objectId) {
    return m_pBound->DeleteAllObjectReferences(objectId) +
           m_pReferenced->DeleteWalk(m_pReferenced->GetFirstObjectRow(objectId),
                                     [this] { return m_pReferenced->GetNextObjectRow(); });
}
