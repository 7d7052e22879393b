// CEnhRepoObjModTable ("ObjectModification"): the model objects modified or deleted
// since the last exchange with the repository.
//
// Rows (CKelObjectModifications): ObjectModification_ID (key), Object_ID and
// Modification_Kind: 1 deleted, 2 modified; any other kind is kept and written as
// given and counts as neither.
//
// Two lists. A row lives in exactly one of them, chosen when it enters the table:
// the data-dictionary list when the identity manager classes the object's type as
// a data-dictionary type, else the diagram list (always, without an identity
// manager). Each list keeps its rows in insertion order; saves write the diagram
// list, then the data-dictionary list.
//
// Lookups by object answer with the first row of the object in the diagram list,
// else the first in the data-dictionary list. An index by object id gives that
// answer in one hash probe: per object it chains the object's rows in exactly that
// order (rows only ever join a list at its tail, so a new row goes after the
// object's rows of its own list). A map by key serves GetRow. Neither changes an
// answer a walk of the two lists would give. After a load both are filed on first
// use, list by list: a session that only saves what it loaded never builds them.
//
// Ownership: the table owns every row of both lists. Removing a row from a list
// (unlinking it, emptying a list) destroys it; a row pointer stays valid only until
// its row leaves the table.
#pragma once

#include <vector>

#include "foundation/enh_table.h"
#include "foundation/enh_table_base.h"
#include "identity/guid_mgr.h"
#include "platform/cmap.h"
#include "platform/collections.h"
#include "platform/types.h"
#include "zmflib/identity_mgr.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

class CEnhRepoObjModTable;

class CKelObjectModifications final : public CEnhRow<CObjectModificationBase, CEnhRepoObjModTable> {
  public:
    bool IsInDataDictionaryList() const { return m_bDataDictionary; }

  private:
    friend class CEnhRepoObjModTable;
    bool m_bDataDictionary = false;                      // which list holds the row
    CKelObjectModifications* m_pNextOfObject = nullptr;  // the object's next row, in lookup order
};

class CEnhRepoObjModTable : public CEnhTableBase {
  public:
    static constexpr LONG kDeleted = 1;
    static constexpr LONG kModified = 2;

    // Both borrowed; `guids` may be null. Keys come from the file's key allocator.
    CEnhRepoObjModTable(CZmfFile* file, CGuidMgr* guids);
    ~CEnhRepoObjModTable() override;
    CEnhRepoObjModTable(const CEnhRepoObjModTable&) = delete;
    CEnhRepoObjModTable& operator=(const CEnhRepoObjModTable&) = delete;

    using CEnhTableBase::Init;
    // Loads every stored row through Insert(CDbObjectBase*): a row whose key is
    // already in the table is dropped. `bucketCount` sizes the maps (0: the size
    // the last save recorded).
    void Init(unsigned int bucketCount) override;

    // Records a modification of kind `kind` for the object:
    //   - no row yet: a new row under a new key (also in the record store at once
    //     with `writeThrough`); returns its key, 0 when it could not be added;
    //   - a row of kind 2 (modified): its kind becomes `kind` (updated in the record
    //     store at once with `writeThrough`); returns its key;
    //   - a row of any other kind: nothing changes; returns 0. A deletion is never
    //     turned back into a modification.
    ULONG Insert(ULONG objectId, LONG kind, int writeThrough);
    // Adds a filled row (a CKelObjectModifications) at the tail of its list: a
    // stored key is declared to the key allocator, a missing one allocated. Refused
    // with 0 when a row with its key is in the table, or when it is not a
    // modification row; otherwise the table owns it and the key is returned.
    virtual ULONG Insert(CDbObjectBase* row);

    CKelObjectModifications* GetRow(ULONG key) const;
    // The object's row in lookup order (see above), or null.
    CKelObjectModifications* GetFKRow(ULONG objectId) const;
    // 1 when the object's row is of kind 2 / kind 1.
    int IsObjectModified(ULONG objectId) const;
    int IsObjectDeleted(ULONG objectId) const;

    // Removes the object's row (the one GetFKRow finds). 0 when there is none.
    int RemoveUniqueID(ULONG objectId);
    // Removes a row of the diagram list / of the data-dictionary list; 0 (nothing
    // done) for a row that is not in that list of this table.
    int RemoveDiagObj(CKelObjectModifications* row);
    int RemoveDataDictObj(CKelObjectModifications* row);
    // Empties both lists / one list.
    void RemoveAll();
    void RemoveAllDiagObjBaseList();
    void RemoveAllDataDictObjBaseList();

    // Removes the rows of one list for which `take(row)` is true, in list order, and
    // appends the object ids of those of kind 1 to `deleted`. The objects themselves
    // are left alone (the caller deletes them once the walk is over).
    template <class Take>
    void RemoveRows(bool dataDictionaryList, Take&& take, std::vector<ULONG>& deleted);
    // The same for every row of the list.
    void RemoveAllRows(bool dataDictionaryList, std::vector<ULONG>& deleted);

    // Whether a row belongs in the data-dictionary list (see above); FALSE for null.
    BOOL IsDataDictionaryObject(const CKelObjectModifications* row) const;

    // The two lists, in insertion order; the Next functions return the row and
    // advance.
    POSITION GetFirstRowPositionDiagObj() const { return GetFirstRowPosition(); }
    CKelObjectModifications* GetNextRowDiagObj(POSITION& position) const {
        return static_cast<CKelObjectModifications*>(GetNextRow(position));
    }
    POSITION GetFirstRowPositionDataDictObj() const { return m_dataDictRows.GetHeadPosition(); }
    CKelObjectModifications* GetNextRowDataDictObj(POSITION& position) const {
        return static_cast<CKelObjectModifications*>(m_dataDictRows.GetNext(position));
    }
    int GetDiagObjCount() const { return GetRowCount(); }
    int GetDataDictObjCount() const { return m_dataDictRows.GetCount(); }

    // Writes the table back:
    //   - keepModifications non-zero: returns 1 at once, the record-store table is
    //     left as it is (later write-through goes to `file`);
    //   - emptyModifications non-zero: every row is removed first;
    //   - then the emptied record-store table gets the diagram list, then the
    //     data-dictionary list. The result of the last insert; 1 when there are no
    //     rows, 0 when the table cannot be emptied.
    int Save(CZmfFile* file, int emptyModifications, int keepModifications);

  private:
    using CKeyMap = CEnhRowMap<CKelObjectModifications, CEnhTechKeyTraits<CKelObjectModifications>>;
    struct SObjectTraits {
        static constexpr bool kGrow = true;
        static UINT Hash(ULONG objectId) { return objectId; }
        static bool Equal(const ULONG& stored, ULONG objectId) { return stored == objectId; }
    };
    // Object id -> the object's first row in lookup order (the head of its chain).
    using CObjectMap =
        CMap<ULONG, ULONG, CKelObjectModifications*, CKelObjectModifications*, SObjectTraits>;

    static const char* TableName() { return CObjectModificationBase::Desc().name; }
    static int KeyKind() { return CObjectModificationBase::Desc().keyKind; }

    // Refused (0) when the key is taken; else declares or allocates the key, appends
    // the row to its list and files it. Takes ownership when it succeeds.
    ULONG Enter(CKelObjectModifications* row);
    // Declares a row's key to the key allocator, or allocates one for key 0.
    void DeclareKey(CKelObjectModifications& row);
    // Appends the row to the list of its class (indexes untouched); takes ownership.
    void Append(CKelObjectModifications* row);
    // Files every row in the maps if a load (or a clearing) left them pending.
    void EnsureIndexes() const;
    // Empties the maps and leaves them to be filed again from the lists.
    void DropIndexes();
    void FileByObject(CKelObjectModifications* row) const;
    void UnfileByObject(CKelObjectModifications* row);
    // Takes the row out of the indexes and its list, and destroys it.
    void Unlink(CKelObjectModifications* row);

    CGuidMgr* m_pGuids;       // not owned; may be null
    CIdentityMgr* m_pKeys;    // not owned
    CRowList m_dataDictRows;  // owns its rows; the diagram list is the base's row list
    // The indexes are derived from the lists: a load leaves them to be filed on
    // first use (a lookup, an insert or a removal), hence mutable.
    mutable CKeyMap m_byKey{10};
    mutable CObjectMap m_byObject{10};
    mutable bool m_indexesPending = false;
};

template <class Take>
void CEnhRepoObjModTable::RemoveRows(bool dataDictionaryList, Take&& take,
                                     std::vector<ULONG>& deleted) {
    POSITION pos =
        dataDictionaryList ? GetFirstRowPositionDataDictObj() : GetFirstRowPositionDiagObj();
    while (pos) {
        // `pos` moves on before the row may go.
        CKelObjectModifications* row =
            dataDictionaryList ? GetNextRowDataDictObj(pos) : GetNextRowDiagObj(pos);
        if (!take(static_cast<const CKelObjectModifications&>(*row))) continue;
        if (row->Modification_Kind == kDeleted) deleted.push_back(row->Object_ID);
        Unlink(row);
    }
}
