// CEnhBoundDictObjectTbl ("Bound_Dictionary_Object"): bindings of dictionary items
// to model objects. A binding says that model object Object_ID, of the class with
// meta-table key Meta_Table_ID, uses dictionary item Dictionary_Object_ID (a
// registry id), optionally with a value override: a text of the name space owned by
// the binding's own unique object (type "Bound Dictionary Object").
//
// Indexes, each walked first/next (one walk of each at a time):
//   - by item (the pattern's foreign-key tree): every binding of an item;
//   - by item and meta table: the bindings of an item on one class of object;
//   - by model object: everything bound to one object.
// All are filed on first use after a load. The last two are list indexes: a row
// leaves them in constant time, so deleting the bindings of many items that share
// model objects (all attachments of a type bound to the same columns) stays linear,
// where a tree walks every binding of the object for each one it removes.
#pragma once

#include <cstdint>

#include "foundation/enh_indexes.h"
#include "foundation/enh_table.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "zmflib/rows.h"

class CEnhBoundDictObjectTbl;

// One binding: Bound_Dictionary_Object_ID (key), Dictionary_Object_ID,
// Meta_Table_ID, Object_ID, Value_Override (string id), Global_User_ID.
class CKelBoundDictObject final
    : public CEnhRow<CBound_Dictionary_ObjectBase, CEnhBoundDictObjectTbl> {
  private:
    friend class CEnhBoundDictObjectTbl;
    SEnhListLink m_itemAndMetaTableLink;  // among the bindings of its item on its meta table
    SEnhListLink m_objectLink;            // among the bindings of its model object
};

struct SBoundDictObjectTraits : CEnhTableTraits<CKelBoundDictObject> {
    static constexpr DWORD Row::*kForeignKey = &Row::Dictionary_Object_ID;
    static constexpr std::array kTexts{
        Text{&Row::Value_Override, "Bound Dictionary Object Value Override"}};
    static constexpr const char* kObjectType = "Bound Dictionary Object";
};

class CEnhBoundDictObjectTbl : public CEnhTable<SBoundDictObjectTraits> {
  public:
    // All pointers borrowed; `names` and `guids` may be null.
    CEnhBoundDictObjectTbl(CNameSpaceMgr* names, CIdentityMgr* keys, CGuidMgr* guids,
                           CZmfFile* file)
        : CEnhTable(names, keys, guids, file), m_byItemAndMetaTable(this), m_byObject(this) {}

    // Adds a binding under key `key` (0: a new one) for unique object `globalUserId`
    // (0: a new one). The override is a text (interned for the binding; empty: none)
    // or a string id (0: none). Returns the key.
    ULONG Insert(DWORD dictObjectId, DWORD metaTableKey, DWORD objectId,
                 const CString& valueOverride, DWORD globalUserId, ULONG key);
    ULONG Insert(DWORD dictObjectId, DWORD metaTableKey, DWORD objectId, DWORD valueOverrideId,
                 DWORD globalUserId, ULONG key);

    int GetValueOverride(ULONG key, CString& out) const { return GetText(key, 0, out); }
    int GetValueOverride(const CKelBoundDictObject* row, CString& out) const {
        return GetText(row, 0, out);
    }
    int SetValueOverride(ULONG key, const CString& text) { return SetText(key, 0, text); }

    // Removes every binding of an item / of an item on one meta table, with their
    // override usages and unique objects. Returns how many went.
    int DeleteAllDictObjectReferences(DWORD dictObjectId);
    int DeleteAllDictObjectMetaTableReferences(DWORD dictObjectId, DWORD metaTableKey);
    // Removes everything bound to a model object. Returns how many went.
    int DeleteAllObjectReferences(DWORD objectId);

    // The bindings of an item on one meta table.
    CKelBoundDictObject* GetFirstBoundObjectMetaTableFKRow(DWORD dictObjectId, DWORD metaTableKey) {
        return m_byItemAndMetaTable.GetFirst(ItemAndMetaTable(dictObjectId, metaTableKey));
    }
    CKelBoundDictObject* GetNextBoundObjectMetaTableFKRow() {
        return m_byItemAndMetaTable.GetNext();
    }
    // Every binding of an item.
    CKelBoundDictObject* GetFirstBoundDictObjectFKRow(DWORD dictObjectId) {
        return GetFirstFKRow(dictObjectId);
    }
    CKelBoundDictObject* GetNextBoundDictObjectFKRow() { return GetNextFKRow(); }
    // Everything bound to a model object.
    CKelBoundDictObject* GetFirstObjectFKRow(DWORD objectId) {
        return m_byObject.GetFirst(objectId);
    }
    CKelBoundDictObject* GetNextObjectFKRow() { return m_byObject.GetNext(); }

  protected:
    void AddToExtraIndexes(CKelBoundDictObject* row) override;
    void RemoveFromExtraIndexes(CKelBoundDictObject* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    static std::int64_t ItemAndMetaTable(DWORD dictObjectId, DWORD metaTableKey) {
        return static_cast<std::int64_t>((static_cast<std::uint64_t>(dictObjectId) << 32) |
                                         metaTableKey);
    }
    static std::int64_t ItemAndMetaTableOf(const CKelBoundDictObject& row) {
        return ItemAndMetaTable(row.Dictionary_Object_ID, row.Meta_Table_ID);
    }
    static std::int64_t ObjectOf(const CKelBoundDictObject& row) { return row.Object_ID; }

    CEnhListIndex<CKelBoundDictObject, &ItemAndMetaTableOf,
                  &CKelBoundDictObject::m_itemAndMetaTableLink>
        m_byItemAndMetaTable;
    CEnhListIndex<CKelBoundDictObject, &ObjectOf, &CKelBoundDictObject::m_objectLink> m_byObject;
};
