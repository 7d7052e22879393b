// CEnhDictionaryObjectLinkTable ("Dictionary_Object_Link"): links that arrange
// dictionary items into trees. Each link places one item (Child) under its parent
// item (Parent) and records the root of its tree (Ultimate_Parent_ID), its depth
// (Level: 0 for a root, the parent's level + 1 below) and whether it has children
// (Leaf). A root link stores its own item as Parent and 0 as Child. A link is itself
// a dictionary item of kind "Dictionary Object Link", with an optional node name.
//
// Indexes: by link id (key map), by the link's own registry id (the pattern's
// foreign-key map, GetDictionaryObjectAKRow), by child (a map: the link filed last
// for a child answers, and a removed link leaves no entry behind) and by parent (a
// tree, walked first/next). Linking checks neither cycles nor existing links; depth
// is computed from the parent's stored level when linking and never propagated.
#pragma once

#include <cstdint>

#include "dictionary/dict_item_table.h"
#include "foundation/enh_indexes.h"
#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "zmflib/rows.h"

class CEnhDictionaryObjectLinkTable;

// One link: Dictionary_Object_Link_ID (key), Dictionary_Object_ID (its own registry
// id), Ultimate_Parent_ID, Parent_ID, Child_ID, Node_Name (string id), Level, Leaf,
// Global_User_ID.
class CKelDictionaryObjectLink final
    : public CKelDictItem<CDictionary_Object_LinkBase, CEnhDictionaryObjectLinkTable> {};

struct SDictionaryObjectLinkTraits : CEnhDictItemTraits<CKelDictionaryObjectLink> {
    static constexpr std::array kTexts{Text{&Row::Node_Name, "Dictionary Object Link Node Name"}};
    static constexpr const char* kObjectType = "Dictionary Object Link";
    static constexpr bool kNamed = false;
};

class CEnhDictionaryObjectLinkTable : public CEnhDictItemTable<SDictionaryObjectLinkTraits> {
  public:
    // All pointers borrowed; `names` and `guids` may be null.
    CEnhDictionaryObjectLinkTable(CNameSpaceMgr* names, CIdentityMgr* keys, CGuidMgr* guids,
                                  CZmfFile* file)
        : CEnhDictItemTable(names, keys, guids, file), m_byParent(this) {}

    // Adds a link under key `linkId` (0: a new one) with unique object
    // `globalUserId` (0: a new one). The node name is a string id (0: none) or a
    // text interned for the link's object. Returns the key.
    ULONG Insert(DWORD dictObjectId, DWORD parent, DWORD child, DWORD ultimateParent,
                 DWORD nodeNameId, DWORD level, int leaf, DWORD globalUserId, DWORD linkId);
    ULONG Insert(DWORD dictObjectId, DWORD parent, DWORD child, DWORD ultimateParent,
                 const CString& nodeName, DWORD level, int leaf, DWORD globalUserId, DWORD linkId);

    CKelDictionaryObjectLink* GetDictionaryObjectAKRow(DWORD dictObjectId) {
        return GetDictObjIDFKRow(dictObjectId);
    }
    CKelDictionaryObjectLink* GetChildAKRow(DWORD child) const;
    // The links under one parent; one walk at a time.
    CKelDictionaryObjectLink* GetFirstParentFKRow(DWORD parent) {
        return m_byParent.GetFirst(parent);
    }
    CKelDictionaryObjectLink* GetNextParentFKRow() { return m_byParent.GetNext(); }
    // Sets the leaf flag; 0 for an unknown key.
    int SetLeaf(ULONG linkId, int leaf);

  protected:
    void AddToExtraIndexes(CKelDictionaryObjectLink* row) override;
    void RemoveFromExtraIndexes(CKelDictionaryObjectLink* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    static std::int64_t ParentOf(const CKelDictionaryObjectLink& row) { return row.Parent_ID; }
    struct SChildTraits {
        static constexpr bool kGrow = true;
        static UINT Hash(CKelDictionaryObjectLink* row) { return row->Child_ID; }
        static bool Equal(CKelDictionaryObjectLink* const& stored, CKelDictionaryObjectLink* row) {
            return stored->Child_ID == row->Child_ID;
        }
    };

    CEnhRowMap<CKelDictionaryObjectLink, SChildTraits> m_byChild{10};
    CEnhTreeIndex<CKelDictionaryObjectLink, &ParentOf> m_byParent;
};
