#include "references/referenced_object_table.h"

#include <memory>

ULONG CEnhReferencedObjectTbl::Insert(DWORD modelId, DWORD objectId, DWORD metaTableId,
                                      DWORD globalUserId, ULONG key) {
    auto row = std::make_unique<CKelReferencedObject>();
    row->Model_ID = modelId;
    row->Object_ID = objectId;
    row->Meta_Table_ID = metaTableId;
    row->Global_User_ID = globalUserId;
    return InsertIds(std::move(row), key);
}
