// String usages: which object uses which string in which role (usage type).
//
// "StringUsage" rows hold (usage id, object id, usage type id, string id). An object
// has at most one string per role, so (object id, usage type id) names a usage.
// In memory the table keeps
//   - the row list and a map by usage id (the shared table pattern, enh_table.h),
//     usage ids numbered by the table's own counter;
//   - a map by (object id, usage type id), hash = usage type id * 33 + object id;
//     among rows with an equal pair the one added last is found;
//   - a tree by string id (the pattern's foreign-key index): the usages of a string;
//   - on request, a tree by (usage type id * 2^32 + string id): the objects that use
//     a string in a role.
// The maps and both trees are filed from the row list on first use, so a load pays
// only for the rows. A usage whose string changes is re-filed at the end of its new string's
// usages in both trees; one whose string stays the same is not touched.
//
// Deferred loading. Init can stop after sizing the maps and leave the rows in the
// record store, to be read a batch at a time (LoadMoreRows). Every lookup and edit
// of this class reads whatever is left first, so deferral spreads the cost of a load
// without changing any answer. Until the load completes the table keeps its
// record-store table; saving completes the load first.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "foundation/balanced_tree.h"
#include "foundation/enh_table.h"
#include "namespace/name_space_maps.h"
#include "platform/types.h"
#include "zmflib/iterators.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

class CEnhStringUsageTable;

class CKelStringUsage final : public CEnhRow<CStringUsageBase, CEnhStringUsageTable, false> {
  public:
    // The row's entry in the map by (object, usage type). It keeps the hash: a usage
    // re-keyed in place (FixUsage) stays filed under its old pair's hash.
    CMapLink m_objectLink;
};

struct SStringUsageTraits : CEnhTableTraits<CKelStringUsage> {
    static constexpr DWORD Row::*kForeignKey = &Row::String_ID;
    static constexpr EEnhKeySource kKeySource = EEnhKeySource::OwnCounter;
};

// The (object id, usage type id) key of a usage.
struct SStringUsageObjectKey {
    static constexpr bool kGrow = true;  // see cmap.h: a growing model stays fast
    struct Probe {
        CKelStringUsage* row;
        DWORD objectId;
        DWORD usageTypeId;
        operator CKelStringUsage*() const { return row; }
    };
    static Probe Of(CKelStringUsage* row) {
        return {row, row->Object_ID, row->String_Usage_Type_ID};
    }
    static Probe Lookup(DWORD objectId, DWORD usageTypeId) {
        return {nullptr, objectId, usageTypeId};
    }
    static UINT Hash(const Probe& probe) {
        return tessmeta::HashStringUsage(probe.objectId, probe.usageTypeId);
    }
    static CMapLink& Link(CKelStringUsage* row) { return row->m_objectLink; }
    static bool Equal(const CKelStringUsage* stored, const Probe& probe) {
        return stored->Object_ID == probe.objectId &&
               stored->String_Usage_Type_ID == probe.usageTypeId;
    }
};

// The string ids that at least one usage refers to, as of when it was taken.
class CUsedStringIds {
  public:
    bool Contains(ULONG stringId) const;

  private:
    friend class CEnhStringUsageTable;
    std::vector<bool> m_bits;  // by id, when the ids are dense enough
    std::vector<ULONG> m_ids;  // sorted, otherwise
    bool m_dense = true;
};

class CEnhStringUsageTable : public CEnhTable<SStringUsageTraits> {
  public:
    using ObjectMap = tessmeta::CNameSpaceRowMap<CKelStringUsage, SStringUsageObjectKey>;

    // Opens "StringUsage" of `file` (borrowed).
    explicit CEnhStringUsageTable(CZmfFile* file);
    ~CEnhStringUsageTable() override;

    // Sizes both maps to `bucketCount` (0: the stored size figure), creates the role
    // tree when asked, then loads every row, or with `deferLoad` only finds where
    // the rows start (an empty table is complete at once).
    void Init(unsigned int bucketCount, bool buildRoleIndex, bool deferLoad);
    void Init(unsigned int bucketCount) override { Init(bucketCount, false, false); }
    using CEnhTable::Init;

    // Reads up to `count` more rows (0 or less: all that are left) and returns how
    // many it read. When the rows run out the load is complete and the record-store
    // table is given back. On a table that Init never ran on there is nothing to
    // read: the call only completes it.
    int LoadMoreRows(int count);
    bool IsLoadComplete() const { return m_loadComplete; }
    void CompleteLoad() {
        if (!m_loadComplete) LoadMoreRows(0);
    }

    // The string id of (object, usage type), or 0.
    DWORD GetStringId(DWORD objectId, DWORD usageTypeId);
    // Makes `stringId` the string of (object, usage type): updates the usage there
    // is or adds one. String id 0 removes the usage.
    void SetUsage(DWORD objectId, DWORD usageTypeId, DWORD stringId);
    // Removes the usage of (object, usage type): 1, or 0 when there is none.
    int RemoveUsage(DWORD objectId, DWORD usageTypeId);
    // Gives the usage found for (objectId, usageTypeId) a new object id and usage
    // type in place. Nothing is re-indexed: the usage is then found neither under
    // its old pair nor under its new one (unless the two pairs hash alike), and
    // stays in the role tree under its old usage type. 1, or 0 when there is no
    // such usage.
    int FixUsage(DWORD objectId, DWORD usageTypeId, DWORD newObjectId, DWORD newUsageTypeId);

    // The objects that use `stringId` in the role `usageTypeId`, in tree order, then
    // 0. The key is usage type * 2^32 + string id in signed 64-bit arithmetic, so a
    // negative string id finds nothing. Without the role tree the usages of the
    // string are filtered by usage type instead: the same answers, except that a
    // usage rewritten by FixUsage counts under its new usage type. Another walk of
    // the same tree ends this one.
    DWORD GetFirstObjectId(int usageTypeId, int stringId);
    DWORD GetNextObjectId();
    // Every usage of `stringId` (sign-extended, as above), then null.
    CKelStringUsage* GetFirstUsageOfString(int stringId);
    CKelStringUsage* GetNextUsageOfString();

    // The string ids in use now (completes the load).
    CUsedStringIds CollectUsedStringIds();

    // Rewrites "StringUsage" in list order, guarded; completes the load first.
    int Save(CZmfFile* file);

    // Inspection.
    bool HasRoleIndex() const { return m_pRoleIndex != nullptr; }
    const ObjectMap& GetObjectMap() const { return FiledObjectMap(); }

  protected:
    void AddToExtraIndexes(CKelStringUsage* row) override;
    void RemoveFromExtraIndexes(CKelStringUsage* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    // The map by (object, usage type), filed first when the load left it pending.
    ObjectMap& FiledObjectMap() const;
    // Rows leave only through RemoveUsage, which finds them the way the maps filed
    // them (see FixUsage).
    using CEnhTable::Delete;
    using CEnhTable::DeleteAllFKRows;

    static std::int64_t RoleKey(std::int64_t usageTypeId, std::int64_t stringId);
    static std::int64_t RoleKey(const CKelStringUsage& row);

    CBalancedTree& RoleIndex();
    // The role key a row is filed under in the role tree.
    std::int64_t FiledRoleKey(const CKelStringUsage& row) const;
    void DeleteRow(CKelStringUsage* row);
    void ChangeStringId(CKelStringUsage* row, DWORD stringId);
    void ReadAhead();
    void ReleaseHeldTable();

    mutable ObjectMap m_byObject;                 // rows by (object id, usage type id)
    mutable bool m_objectMapPending = false;      // rows not yet filed in it
    std::unique_ptr<CBalancedTree> m_pRoleIndex;  // null unless Init asked for it
    bool m_roleIndexPending = false;              // rows not yet filed in it
    // Rows that FixUsage changed, with the role key they stay filed under.
    std::unordered_map<const CKelStringUsage*, std::int64_t> m_fixedRoleKeys;
    bool m_loadComplete = false;
    // A deferred load: the read position in the record-store table, and the next
    // row, read ahead so that the load is known complete as soon as the rows run
    // out. Both null otherwise.
    std::unique_ptr<CIteratorBase> m_pPendingRows;
    CRowPtr<CKelStringUsage> m_pNextRow;
    // A role walk without the role tree: the usage type it filters on.
    bool m_roleWalkFiltered = false;
    DWORD m_roleWalkUsageType = 0;
};
