#include "dictionary/dict_object_link_table.h"

#include <memory>

namespace {

std::unique_ptr<CKelDictionaryObjectLink> NewLink(DWORD dictObjectId, DWORD parent, DWORD child,
                                                  DWORD ultimateParent, DWORD level, int leaf,
                                                  DWORD globalUserId) {
    auto row = std::make_unique<CKelDictionaryObjectLink>();
    row->Dictionary_Object_ID = dictObjectId;
    row->Parent_ID = parent;
    row->Child_ID = child;
    row->Ultimate_Parent_ID = ultimateParent;
    row->Level = level;
    row->Leaf = leaf;
    row->Global_User_ID = globalUserId;
    return row;
}

}  // namespace

ULONG CEnhDictionaryObjectLinkTable::Insert(DWORD dictObjectId, DWORD parent, DWORD child,
                                            DWORD ultimateParent, DWORD nodeNameId, DWORD level,
                                            int leaf, DWORD globalUserId, DWORD linkId) {
    auto row = NewLink(dictObjectId, parent, child, ultimateParent, level, leaf, globalUserId);
    row->Node_Name = nodeNameId;
    return InsertIds(std::move(row), linkId);
}

ULONG CEnhDictionaryObjectLinkTable::Insert(DWORD dictObjectId, DWORD parent, DWORD child,
                                            DWORD ultimateParent, const CString& nodeName,
                                            DWORD level, int leaf, DWORD globalUserId,
                                            DWORD linkId) {
    return InsertTexts(
        NewLink(dictObjectId, parent, child, ultimateParent, level, leaf, globalUserId), linkId,
        nodeName);
}

CKelDictionaryObjectLink* CEnhDictionaryObjectLinkTable::GetChildAKRow(DWORD child) const {
    CKelDictionaryObjectLink probe;
    probe.Child_ID = child;
    CKelDictionaryObjectLink* row = nullptr;
    m_byChild.Lookup(&probe, row);
    return row;
}

int CEnhDictionaryObjectLinkTable::SetLeaf(ULONG linkId, int leaf) {
    CKelDictionaryObjectLink* row = GetRow(linkId);
    if (!row) return 0;
    row->Leaf = leaf;  // no index depends on it
    return 1;
}

void CEnhDictionaryObjectLinkTable::AddToExtraIndexes(CKelDictionaryObjectLink* row) {
    CEnhDictItemTable::AddToExtraIndexes(row);
    // The newest link of a child answers. Its entry is made afresh so that the map's
    // stored key is always the mapped row, never an older link that may go first.
    m_byChild.RemoveKey(row);
    m_byChild.SetAt(row, row);
    m_byParent.Add(row);
}

void CEnhDictionaryObjectLinkTable::RemoveFromExtraIndexes(CKelDictionaryObjectLink* row) {
    CEnhDictItemTable::RemoveFromExtraIndexes(row);
    CKelDictionaryObjectLink* mapped = nullptr;
    if (m_byChild.Lookup(row, mapped) && mapped == row) m_byChild.RemoveKey(row);
    m_byParent.Remove(row);
}

void CEnhDictionaryObjectLinkTable::SizeExtraIndexes(UINT bucketCount) {
    CEnhDictItemTable::SizeExtraIndexes(bucketCount);
    m_byChild.InitHashTable(bucketCount, TRUE);
    m_byParent.MarkLoading();
}
