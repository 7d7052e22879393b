// CEnhReferencedObjectTbl ("Referenced_Object"): objects of other tables that a
// model refers to. A row records that model Model_ID refers to object Object_ID of
// the class with meta-table key Meta_Table_ID; the row is a unique object of its own
// (type "Referenced Object"). Rows are walked by model (the pattern's foreign-key
// tree) and by referred object (a tree), both filed on first use after a load.
#pragma once

#include <cstdint>

#include "foundation/enh_indexes.h"
#include "foundation/enh_table.h"
#include "identity/guid_mgr.h"
#include "zmflib/rows.h"

class CEnhReferencedObjectTbl;

// One reference: Referenced_Object_ID (key), Model_ID, Object_ID, Meta_Table_ID,
// Global_User_ID.
class CKelReferencedObject final : public CEnhRow<CReferenced_ObjectBase, CEnhReferencedObjectTbl> {
};

struct SReferencedObjectTraits : CEnhTableTraits<CKelReferencedObject> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr const char* kObjectType = "Referenced Object";
};

class CEnhReferencedObjectTbl : public CEnhTable<SReferencedObjectTraits> {
  public:
    // All pointers borrowed; `guids` may be null.
    CEnhReferencedObjectTbl(CIdentityMgr* keys, CGuidMgr* guids, CZmfFile* file)
        : CEnhTable(nullptr, keys, guids, file), m_byObject(this) {}

    // Adds a reference under key `key` (0: a new one) for unique object
    // `globalUserId` (0: a new one). Returns the key.
    ULONG Insert(DWORD modelId, DWORD objectId, DWORD metaTableId, DWORD globalUserId, ULONG key);

    // The references a model makes.
    CKelReferencedObject* GetFirstModelRow(DWORD modelId) { return GetFirstFKRow(modelId); }
    CKelReferencedObject* GetNextModelRow() { return GetNextFKRow(); }
    // The references to one object, from any model.
    CKelReferencedObject* GetFirstObjectRow(DWORD objectId) {
        return m_byObject.GetFirst(objectId);
    }
    CKelReferencedObject* GetNextObjectRow() { return m_byObject.GetNext(); }

  protected:
    void AddToExtraIndexes(CKelReferencedObject* row) override { m_byObject.Add(row); }
    void RemoveFromExtraIndexes(CKelReferencedObject* row) override { m_byObject.Remove(row); }
    void SizeExtraIndexes(UINT /*bucketCount*/) override { m_byObject.MarkLoading(); }

  private:
    static std::int64_t ObjectOf(const CKelReferencedObject& row) { return row.Object_ID; }
    CEnhTreeIndex<CKelReferencedObject, &ObjectOf> m_byObject;
};
