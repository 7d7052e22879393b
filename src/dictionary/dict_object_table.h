// The dictionary-object registry and the constant table of dictionary-object kinds.
//
// CEnhDictObjectTable ("Dictionary_Object") gives every dictionary item one row and
// one id: the data dictionary that holds it, its kind (a row of the kind table) and
// its unique-object id, which it shares with the row of the item's own table. Rows
// are found by id in the key map and walked by kind (Dictionary_Object_Type_ID):
// the rows of one kind in the order they entered, as a balanced tree of the kinds
// would yield them. The walk is a list index rather than the tree: a row leaves it
// in constant time, where the tree walks every row of the kind, which made deleting
// many items of one kind quadratic. The registry creates no unique objects of its
// own: the item's table does, and the registry row takes that id.
//
// CEnhDictObjectTypeTable ("Dictionary_Object_Type") holds the twelve kinds under
// keys of this model, found by key and by exact name. CompleteKinds adds every kind
// a model lacks.
#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/enh_indexes.h"
#include "foundation/enh_table.h"
#include "platform/types.h"
#include "zmflib/rows.h"

class CEnhDictObjectTable;
class CEnhDictObjectTypeTable;

// One registry row: Dictionary_Object_ID (key), Data_Dictionary_ID,
// Dictionary_Object_Type_ID, Reserved (kept as loaded), Global_User_ID.
class CKelDictObject final : public CEnhRow<CDictionary_ObjectBase, CEnhDictObjectTable> {
  public:
    SEnhListLink m_kindLink;  // its place among the rows of its kind
};

struct SDictObjectTraits : CEnhTableTraits<CKelDictObject> {
    static constexpr DWORD Row::*kUniqueId = nullptr;  // the item's table owns the object
};

class CEnhDictObjectTable : public CEnhTable<SDictObjectTraits> {
  public:
    // `keys` null: the file's key allocator. Both pointers borrowed.
    CEnhDictObjectTable(CIdentityMgr* keys, CZmfFile* file)
        : CEnhTable(nullptr, keys, nullptr, file), m_byKind(this) {}

    // Adds a registry row with key `dictObjectId` (0: a new one). Returns the key.
    ULONG Insert(DWORD dataDictionaryId, DWORD kindId, DWORD globalUserId, ULONG dictObjectId) {
        auto row = std::make_unique<CKelDictObject>();
        row->Data_Dictionary_ID = dataDictionaryId;
        row->Dictionary_Object_Type_ID = kindId;
        row->Global_User_ID = globalUserId;
        return InsertIds(std::move(row), dictObjectId);
    }

    // The rows of one kind (Dictionary_Object_Type_ID) in the order they entered:
    // the first, then each next one, then null. One walk at a time.
    CKelDictObject* GetFirstFKRow(DWORD kindId) { return m_byKind.GetFirst(kindId); }
    CKelDictObject* GetNextFKRow() { return m_byKind.GetNext(); }

  protected:
    void AddToExtraIndexes(CKelDictObject* row) override { m_byKind.Add(row); }
    void RemoveFromExtraIndexes(CKelDictObject* row) override { m_byKind.Remove(row); }
    void SizeExtraIndexes(UINT /*bucketCount*/) override { m_byKind.MarkLoading(); }

  private:
    static std::int64_t KindOf(const CKelDictObject& row) { return row.Dictionary_Object_Type_ID; }
    CEnhListIndex<CKelDictObject, &KindOf, &CKelDictObject::m_kindLink> m_byKind;
};

// One kind: Dictionary_Object_Type_ID (key), Name, Kind_Code, Reserved (0).
class CKelDictObjectType final
    : public CEnhRow<CDictionary_Object_TypeBase, CEnhDictObjectTypeTable> {};

struct SDictObjectTypeTraits : CEnhTableTraits<CKelDictObjectType> {};

class CEnhDictObjectTypeTable : public CEnhTable<SDictObjectTypeTraits> {
  public:
    CEnhDictObjectTypeTable(CIdentityMgr* keys, CZmfFile* file)
        : CEnhTable(nullptr, keys, nullptr, file) {}

    // The kind named exactly `name`, or null (the first loaded of a name answers).
    CKelDictObjectType* GetRowByName(std::string_view name) const { return m_byName.Find(name); }

    // Adds kind `code` named `name` under a new key. Returns the key.
    ULONG Insert(const char* name, DWORD code);
    // Adds, in code order, each of the twelve kinds that no row names. Returns how
    // many were added.
    int CompleteKinds();

  protected:
    void AddToExtraIndexes(CKelDictObjectType* row) override { m_byName.Add(row); }
    void RemoveFromExtraIndexes(CKelDictObjectType* row) override { m_byName.Remove(row); }
    void SizeExtraIndexes(UINT bucketCount) override { m_byName.Size(bucketCount); }

  private:
    static std::string_view NameOf(const CKelDictObjectType& row) {
        return row.Name.GetValue().View();
    }
    CEnhTextKeyIndex<CKelDictObjectType, &NameOf> m_byName;
};
