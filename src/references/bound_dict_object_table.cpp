#include "references/bound_dict_object_table.h"

#include <memory>

namespace {

std::unique_ptr<CKelBoundDictObject> NewBinding(DWORD dictObjectId, DWORD metaTableKey,
                                                DWORD objectId, DWORD globalUserId) {
    auto row = std::make_unique<CKelBoundDictObject>();
    row->Dictionary_Object_ID = dictObjectId;
    row->Meta_Table_ID = metaTableKey;
    row->Object_ID = objectId;
    row->Global_User_ID = globalUserId;
    return row;
}

}  // namespace

ULONG CEnhBoundDictObjectTbl::Insert(DWORD dictObjectId, DWORD metaTableKey, DWORD objectId,
                                     const CString& valueOverride, DWORD globalUserId, ULONG key) {
    return InsertTexts(NewBinding(dictObjectId, metaTableKey, objectId, globalUserId), key,
                       valueOverride);
}

ULONG CEnhBoundDictObjectTbl::Insert(DWORD dictObjectId, DWORD metaTableKey, DWORD objectId,
                                     DWORD valueOverrideId, DWORD globalUserId, ULONG key) {
    auto row = NewBinding(dictObjectId, metaTableKey, objectId, globalUserId);
    row->Value_Override = valueOverrideId;
    return InsertIds(std::move(row), key);
}

int CEnhBoundDictObjectTbl::DeleteAllDictObjectReferences(DWORD dictObjectId) {
    return DeleteAllFKRows(dictObjectId);
}

int CEnhBoundDictObjectTbl::DeleteAllDictObjectMetaTableReferences(DWORD dictObjectId,
                                                                   DWORD metaTableKey) {
    return DeleteWalk(GetFirstBoundObjectMetaTableFKRow(dictObjectId, metaTableKey),
                      [this] { return GetNextBoundObjectMetaTableFKRow(); });
}

int CEnhBoundDictObjectTbl::DeleteAllObjectReferences(DWORD objectId) {
    return DeleteWalk(GetFirstObjectFKRow(objectId), [this] { return GetNextObjectFKRow(); });
}

void CEnhBoundDictObjectTbl::AddToExtraIndexes(CKelBoundDictObject* row) {
    m_byItemAndMetaTable.Add(row);
    m_byObject.Add(row);
}

void CEnhBoundDictObjectTbl::RemoveFromExtraIndexes(CKelBoundDictObject* row) {
    m_byItemAndMetaTable.Remove(row);
    m_byObject.Remove(row);
}

void CEnhBoundDictObjectTbl::SizeExtraIndexes(UINT /*bucketCount*/) {
    m_byItemAndMetaTable.MarkLoading();
    m_byObject.MarkLoading();
}
