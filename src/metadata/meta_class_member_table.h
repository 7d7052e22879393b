// CEnhMetaClassMemberTbl: the model objects that properties are attached to
// ("MetaClass_Member"). A member stands for one row of a model table: the pair
// (meta-table key, table row id). Property values point at members, and each
// member is a unique object of type "MetaClass Member".
//
// Rows are found by key (the key map) and by the pair, through a balanced tree
// under the key (meta-table key << 32) | table row id; several members may share
// a pair, and a walk yields them in insertion order. Like the foreign-key index of
// every table, the tree of a load is filed on first use, in load order.
//
// Load repairs. A stored member whose table row id is 0 stands for nothing: it is
// dropped (not written back at the next save) and its unique object is deleted
// when still New. A member whose unique object id an earlier member of the same
// load already had is given a new unique object, as is a member stored without one
// (only when a CGuidMgr is set).
#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "foundation/balanced_tree.h"
#include "foundation/enh_table.h"
#include "identity/guid_mgr.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"

class CEnhMetaClassMemberTbl;

// One member: key, MetaTable_ID, Name (the kind of member), Description (a second
// text, usually empty), TableRow_ID, Member_Value and Global_User_ID.
class CKelMetaClassMember final : public CEnhRow<CMetaClass_MemberBase, CEnhMetaClassMemberTbl> {};

struct SMetaClassMemberTraits : CEnhTableTraits<CKelMetaClassMember> {
    static constexpr const char* kObjectType = "MetaClass Member";
};

class CEnhMetaClassMemberTbl : public CEnhTable<SMetaClassMemberTraits> {
  public:
    // Opens the file's "MetaClass_Member" table. Both pointers are borrowed; without
    // a CGuidMgr members get no unique objects.
    CEnhMetaClassMemberTbl(CZmfFile* file, CGuidMgr* guids);

    // Loads every stored member, with the repairs above.
    using CEnhTable::Init;
    void Init(unsigned int bucketCount) override;

    // A new member (the second text only when `secondText` is not null), with a new
    // key and a new unique object (model and plex ids 0). Returns its key.
    ULONG Insert(unsigned int metaTableKey, const CString& name, unsigned int tableRowId,
                 const char* secondText, ULONG value);

    // The members of one (meta-table key, table row id): the first, then each next
    // one, then null. Any other search or delete on this table ends the walk.
    CKelMetaClassMember* GetFirstRow(ULONG metaTableKey, ULONG tableRowId) {
        return static_cast<CKelMetaClassMember*>(
            Pairs().GetFirst(PairKey(metaTableKey, tableRowId)));
    }
    CKelMetaClassMember* GetNextRow() {
        return static_cast<CKelMetaClassMember*>(Pairs().GetNext());
    }
    using CEnhTable::GetNextRow;

    // The tree key of a pair.
    static std::int64_t PairKey(ULONG metaTableKey, ULONG tableRowId) {
        return static_cast<std::int64_t>((std::uint64_t{metaTableKey} << 32) | tableRowId);
    }

    // Delete(key) (inherited) removes the member and deletes its unique object with
    // DeleteObject(id, 0): outright only while it is New.

  protected:
    bool AdmitLoadedRow(CKelMetaClassMember& row) override;
    void AddToExtraIndexes(CKelMetaClassMember* row) override;
    void RemoveFromExtraIndexes(CKelMetaClassMember* row) override;
    // Called by Init before the rows load: they are filed on first use.
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    // Unique object ids seen by the running load: a bitmap for ids below
    // kBitmapLimit (the usual case, no per-id allocation), a set above.
    class CSeenIds {
      public:
        // True when `id` was seen before; records it.
        bool Add(DWORD id);
        void Clear();

      private:
        static constexpr DWORD kBitmapLimit = DWORD{1} << 26;
        std::vector<std::uint64_t> m_bits;
        std::unordered_set<DWORD> m_large;
    };

    int NewMemberObject();
    static std::int64_t PairKey(const CKelMetaClassMember& row) {
        return PairKey(row.MetaTable_ID, row.TableRow_ID);
    }
    // The tree, filed first if a load left it pending.
    CBalancedTree& Pairs();

    CSeenIds m_seen;
    CBalancedTree m_byPair;       // members by PairKey
    bool m_pairsPending = false;  // loaded members not yet filed in it
};
