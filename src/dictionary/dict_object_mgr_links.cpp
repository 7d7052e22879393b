// The manager's dictionary-object-link operations.
#include "dictionary/dict_object_mgr.h"

DWORD CDictObjectMgr::InsertDictionaryObjectLink(DWORD parent, DWORD child, DWORD ultimateParent,
                                                 DWORD nodeNameId, DWORD level, int leaf,
                                                 DWORD dataDictionaryId, DWORD& dictObjectId,
                                                 BOOL useGivenId) {
    return CreateItem(tessmeta::kDictObjectLink, *m_pLinks, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pLinks->Insert(id, parent, child, ultimateParent, nodeNameId,
                                                  level, leaf, 0, 0);
                      });
}

DWORD CDictObjectMgr::InsertDictionaryObjectLink(DWORD parent, DWORD child, DWORD ultimateParent,
                                                 const CString& nodeName, DWORD level, int leaf,
                                                 DWORD dataDictionaryId, DWORD& dictObjectId,
                                                 BOOL useGivenId) {
    return CreateItem(tessmeta::kDictObjectLink, *m_pLinks, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pLinks->Insert(id, parent, child, ultimateParent, nodeName,
                                                  level, leaf, 0, 0);
                      });
}

BOOL CDictObjectMgr::DeleteDictionaryObjectLink(DWORD linkId) {
    return DeleteItem(*m_pLinks, linkId);
}

CKelDictionaryObjectLink* CDictObjectMgr::GetDictionaryObjectLinkRow(DWORD linkId) const {
    return m_pLinks->GetRow(linkId);
}

CKelDictionaryObjectLink* CDictObjectMgr::GetDictObjLinkDictionaryObjectAKRow(
    DWORD dictObjectId) const {
    return m_pLinks->GetDictionaryObjectAKRow(dictObjectId);
}

CKelDictionaryObjectLink* CDictObjectMgr::GetDictObjLinkChildAKRow(DWORD child) const {
    return m_pLinks->GetChildAKRow(child);
}

CKelDictionaryObjectLink* CDictObjectMgr::GetFirstDictObjLinkParentFKRow(DWORD parent) {
    return m_pLinks->GetFirstParentFKRow(parent);
}

CKelDictionaryObjectLink* CDictObjectMgr::GetNextDictObjLinkParentFKRow() {
    return m_pLinks->GetNextParentFKRow();
}

POSITION CDictObjectMgr::GetFirstDictObjLinkRowPosition() const {
    return m_pLinks->GetFirstRowPosition();
}

CKelDictionaryObjectLink* CDictObjectMgr::GetNextDictObjLinkRow(POSITION& position) const {
    return m_pLinks->GetNextRow(position);
}

int CDictObjectMgr::GetDictObjLinkCount() const {
    return m_pLinks->GetCount();
}

DWORD CDictObjectMgr::LookupDictObjLinkParentID(DWORD item) const {
    const CKelDictionaryObjectLink* link = m_pLinks->GetChildAKRow(item);
    return link ? link->Parent_ID : 0;
}

DWORD CDictObjectMgr::LookupDictObjLinkUltimateParentID(DWORD item) const {
    const CKelDictionaryObjectLink* link = m_pLinks->GetChildAKRow(item);
    return link ? link->Ultimate_Parent_ID : 0;
}

DWORD CDictObjectMgr::HasDictionaryObjectLinkRoot(DWORD item) const {
    const CKelDictionaryObjectLink* link = m_pLinks->GetChildAKRow(item);
    return link && link->Parent_ID == item ? link->Dictionary_Object_Link_ID : 0;
}

DWORD CDictObjectMgr::CreateDictionaryObjectLinkRoot(DWORD item) {
    if (!item) return 0;
    DWORD dictObjectId = 0;
    return InsertDictionaryObjectLink(item, 0, item, DWORD{0}, 0, 1, GetData_Dictionary_ID(item),
                                      dictObjectId, FALSE);
}

DWORD CDictObjectMgr::CreateDictionaryObjectLink(DWORD child, DWORD parent) {
    if (!child) return 0;
    if (!parent) return CreateDictionaryObjectLinkRoot(child);
    DWORD ultimateParent = 0, level = 0;
    if (CKelDictionaryObjectLink* parentLink = m_pLinks->GetChildAKRow(parent)) {
        ultimateParent = parentLink->Ultimate_Parent_ID;
        level = parentLink->Level + 1;
        m_pLinks->SetLeaf(parentLink->Dictionary_Object_Link_ID, 0);
    }
    DWORD dictObjectId = 0;
    return InsertDictionaryObjectLink(parent, child, ultimateParent, DWORD{0}, level, 1,
                                      GetData_Dictionary_ID(child), dictObjectId, FALSE);
}
